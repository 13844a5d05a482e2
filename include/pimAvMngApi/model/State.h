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
    enum state_en : int32_t { DISABLED = 0, ENABLED = 1, PAUSED = 2 };

    State() = default;
    explicit State(int32_t code) : m_value(code) {}
    ~State() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    int32_t get() const { return m_value; }
    void set(int32_t code) { m_value = code; }
    std::string toString() const;
    /// The reading rule: "Enabled" 1, "Paused" 2, anything else 0.
    void fromString(const std::string& word);

    int32_t m_value = DISABLED;
};
