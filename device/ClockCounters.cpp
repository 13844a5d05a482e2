#include "pimAvMngApi/device/ClockCounters.h"

void ClockCounters::Serialize(Json::Value& out) const {
    Json::Value& cdc = out["cdc"];
    cdc["current"] = m_current;
    cdc["min"] = m_min;
    cdc["max"] = m_max;
    cdc["underflow-event"] = m_underflow_event;
    cdc["overflow-event"] = m_overflow_event;
}

void ClockCounters::Deserialize(Json::Value& in) {
    Json::Value& cdc = in["cdc"];
    m_current = cdc.get("current", 0u).asUInt();
    m_min = cdc.get("min", 0u).asUInt();
    m_max = cdc.get("max", 0u).asUInt();
    m_underflow_event = cdc.get("underflow-event", false).asBool();
    m_overflow_event = cdc.get("overflow-event", false).asBool();
}
