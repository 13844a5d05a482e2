#include "pimAvMngApi/platform/Alarm.h"

std::string AlarmSeverity::toString() const {
    switch (m_value) {
        case CLEARED:
            return "cleared";
        case WARNING:
            return "warning";
        case MINOR:
            return "minor";
        case MAJOR:
            return "major";
        case CRITICAL:
            return "critical";
        default:
            return "indeterminate";
    }
}

void AlarmSeverity::fromString(const std::string& word) {
    static const char* const kWords[] = {"cleared", "indeterminate", "warning", "minor", "major", "critical"};
    m_value = INDETERMINATE;
    for (int32_t code = CLEARED; code <= CRITICAL; ++code) {
        if (word == kWords[code]) {
            m_value = code;
            return;
        }
    }
}

void AlarmSeverity::Serialize(Json::Value& out) const {
    out["severity"] = Json::Value(toString());
}

void AlarmSeverity::Deserialize(Json::Value& in) {
    fromString(in.get("severity", "indeterminate").asString());
}

void Alarm::Serialize(Json::Value& out) const {
    out["code"] = Json::Value(m_code);
    m_severity.Serialize(out);
    out["text"] = Json::Value(m_text);
    out["time"] = Json::Value(static_cast<Json::UInt64>(m_time));
}

void Alarm::Deserialize(Json::Value& in) {
    m_code = in.get("code", 0u).asUInt();
    m_severity.Deserialize(in);
    m_text = in.get("text", "").asString();
    m_time = in.get("time", Json::Value(static_cast<Json::UInt64>(0))).asUInt64();
}
