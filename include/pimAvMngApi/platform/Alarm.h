#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "pimAvMngApi/platform/AlarmSeverity.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// One alarm raised by the daemon.
///
/// JSON form (an object):
///   {"code": 0,                  unsigned, the daemon's alarm code
///    "severity": "indeterminate",  AlarmSeverity word
///    "text": "",                 description for the user
///    "time": 0}                  unsigned 64-bit, seconds since the epoch when raised
/// Reading: missing keys give 0, "indeterminate", "" and 0; values of the wrong JSON
/// kind make jsoncpp throw out of Deserialize.
class Alarm : public IJsonSerializable {
public:
    Alarm() = default;
    /// An alarm with every member given.
    Alarm(uint32_t code, const AlarmSeverity& severity, std::string text, uint64_t time)
        : m_code(code), m_severity(severity), m_text(std::move(text)), m_time(time) {}
    ~Alarm() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Alarms are equal when every member is.
    bool operator==(const Alarm& o) const {
        return m_code == o.m_code && m_severity == o.m_severity && m_text == o.m_text && m_time == o.m_time;
    }

    uint32_t m_code = 0;       ///< "code".
    AlarmSeverity m_severity;  ///< "severity".
    std::string m_text;        ///< "text".
    uint64_t m_time = 0;       ///< "time".
};
