#include "pimAvMngApi/platform/Alarm.h"

#include "platform/WordTable.h"

namespace {

constexpr pimav::detail::WordRow<int32_t> kSeverityWords[] = {
    {AlarmSeverity::CLEARED, "cleared"}, {AlarmSeverity::INDETERMINATE, "indeterminate"},
    {AlarmSeverity::WARNING, "warning"}, {AlarmSeverity::MINOR, "minor"},
    {AlarmSeverity::MAJOR, "major"},     {AlarmSeverity::CRITICAL, "critical"},
};

}  // namespace

PIMAV_WORD_TYPE_MEMBERS(AlarmSeverity, m_value, kSeverityWords, "indeterminate", INDETERMINATE, "severity",
                        "indeterminate")

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
