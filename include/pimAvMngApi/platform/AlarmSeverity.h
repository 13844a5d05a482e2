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
    /// The severities, by code.
    enum severity_en : int32_t {
        CLEARED = 0,
        INDETERMINATE = 1,
        WARNING = 2,
        MINOR = 3,
        MAJOR = 4,
        CRITICAL = 5,
    };

    AlarmSeverity() = default;
    /// A severity holding `code`, kept as given.
    explicit AlarmSeverity(int32_t code) : m_value(code) {}
    ~AlarmSeverity() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The severity code.
    int32_t get() const { return m_value; }
    /// Sets the severity code; any value is kept as given.
    void set(int32_t code) { m_value = code; }
    /// The word of the code by the table above.
    std::string toString() const;
    /// The reading rule: the exact word of a code gives it, anything else INDETERMINATE.
    void fromString(const std::string& word);

    /// Severities are equal when their codes are.
    bool operator==(const AlarmSeverity& o) const { return m_value == o.m_value; }

    int32_t m_value = INDETERMINATE;  ///< The severity code ("severity").
};
