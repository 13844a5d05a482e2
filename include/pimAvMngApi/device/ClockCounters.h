#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// A level counter of the clock domain crossing with its extremes and its underflow and
/// overflow events.
///
/// JSON form: {"cdc": {"current", "min", "max" (unsigned), "underflow-event",
/// "overflow-event" (bool)}}; missing members read as 0 and false.
class ClockCounters : public IJsonSerializable {
public:
    ClockCounters() = default;
    ~ClockCounters() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Counters are equal when every member is.
    bool operator==(const ClockCounters& o) const {
        return m_max == o.m_max && m_min == o.m_min && m_current == o.m_current &&
               m_underflow_event == o.m_underflow_event && m_overflow_event == o.m_overflow_event;
    }

    uint32_t m_max = 0;              ///< Highest level seen ("max").
    uint32_t m_min = 0;              ///< Lowest level seen ("min").
    uint32_t m_current = 0;          ///< Level now ("current").
    bool m_underflow_event = false;  ///< The level ran below its range ("underflow-event").
    bool m_overflow_event = false;   ///< The level ran above its range ("overflow-event").
};
