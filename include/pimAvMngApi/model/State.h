#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Run state of a stream, JSON key "state".
///
///   0 "Disabled"  read from any other text and from a missing key
///   1 "Enabled"
///   2 "Paused"
///   other codes are written "Undefined" (never produced by reading)
class State : public IJsonSerializable {
public:
    /// The run states, by code.
    enum state_en : int32_t { DISABLED = 0, ENABLED = 1, PAUSED = 2 };

    State() = default;
    /// A state holding `code`, kept as given.
    explicit State(int32_t code) : m_value(code) {}
    ~State() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The state code.
    int32_t get() const { return m_value; }
    /// Sets the state code; any value is kept as given.
    void set(int32_t code) { m_value = code; }
    /// The word of the code by the table above.
    std::string toString() const;
    /// The reading rule: "Enabled" 1, "Paused" 2, anything else 0.
    void fromString(const std::string& word);

    int32_t m_value = DISABLED;  ///< The state code ("state").
};
