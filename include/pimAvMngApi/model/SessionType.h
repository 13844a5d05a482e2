#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Kind of a session, JSON key "type".
///
///   0 "unknown"      read from any other text and from a missing key
///   1 "source"
///   2 "destination"
///   other codes are written "unknown"
class SessionType : public IJsonSerializable {
public:
    /// The kinds, by code.
    enum session_type_en : int32_t { UNKNOWN = 0, SOURCE = 1, DESTINATION = 2 };

    SessionType() = default;
    /// A kind holding `code`, kept as given.
    explicit SessionType(int32_t code) : m_value(code) {}
    ~SessionType() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The kind code.
    int32_t get() const { return m_value; }
    /// Sets the kind code; any value is kept as given.
    void set(int32_t code) { m_value = code; }
    /// "source" for 1, "destination" for 2, "unknown" for anything else.
    std::string toString() const;
    /// Sets the code of "source" or "destination"; any other text gives UNKNOWN.
    void fromString(const std::string& word);

    int32_t m_value = UNKNOWN;  ///< The kind code ("type").
};
