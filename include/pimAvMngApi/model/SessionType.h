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
    enum session_type_en : int32_t { UNKNOWN = 0, SOURCE = 1, DESTINATION = 2 };

    SessionType() = default;
    explicit SessionType(int32_t code) : m_value(code) {}
    ~SessionType() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    int32_t get() const { return m_value; }
    void set(int32_t code) { m_value = code; }
    std::string toString() const;
    void fromString(const std::string& word);

    int32_t m_value = UNKNOWN;
};
