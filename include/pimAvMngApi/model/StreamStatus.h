#pragma once

#include <cstdint>
#include <list>

#include "pimAvMngApi/platform/Alarm.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Alarms of one stream.
///
/// JSON form: {"id": unsigned 64-bit, "alarms": [Alarm, ...]}; "alarms" is written only
/// when there are alarms. Reading: "id" defaults to 0; the alarm list is emptied and
/// refilled from "alarms" (a missing key gives none).
class StreamStatus : public IJsonSerializable {
public:
    StreamStatus() = default;
    ~StreamStatus() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint64_t m_id = 0;          ///< The stream id ("id").
    std::list<Alarm> m_alarms;  ///< The stream's alarms ("alarms").
};
