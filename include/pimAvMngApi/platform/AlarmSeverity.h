#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Severity of an alarm, JSON key "severity" (the levels of ITU-T X.733).
///
///   0 "cleared"  1 "indeterminate"  2 "warning"  3 "minor"  4 "major"  5 "critical"
/// Reading compares exactly; any other text and a missing key give 1 "indeterminate".
/// Codes outside the table are written "indeterminate".
class AlarmSeverity : public IJsonSerializable {
public:
    enum severity_en : int32_t {
        CLEARED = 0,
        INDETERMINATE = 1,
        WARNING = 2,
        MINOR = 3,
        MAJOR = 4,
        CRITICAL = 5,
    };

    AlarmSeverity() = default;
    explicit AlarmSeverity(int32_t code) : m_value(code) {}
    ~AlarmSeverity() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    int32_t get() const { return m_value; }
    void set(int32_t code) { m_value = code; }
    std::string toString() const;
    void fromString(const std::string& word);

    bool operator==(const AlarmSeverity& o) const { return m_value == o.m_value; }

    int32_t m_value = INDETERMINATE;
};
