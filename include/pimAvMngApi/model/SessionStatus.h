#pragma once

#include <cstdint>
#include <list>

#include "pimAvMngApi/model/StreamStatus.h"
#include "pimAvMngApi/platform/Alarm.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Alarms of one session and of its streams.
///
/// JSON form: {"id": unsigned 64-bit, "alarms": [Alarm, ...], "streams": [StreamStatus, ...]};
/// each list is written only when not empty. Reading: "id" defaults to 0; both lists are
/// emptied and refilled from "alarms" and "streams".
class SessionStatus : public IJsonSerializable {
public:
    SessionStatus() = default;
    ~SessionStatus() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint64_t m_id = 0;                  ///< The session id ("id").
    std::list<Alarm> m_alarms;          ///< Alarms of the session ("alarms").
    std::list<StreamStatus> m_streams;  ///< Alarms of its streams ("streams").
};
