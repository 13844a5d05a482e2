#include "pimAvMngApi/model/SessionStreamList.h"

#include <cstdlib>

#include "model/KeptKeys.h"
#include "platform/RecordArrays.h"

using namespace pimav::detail;

void SessionStreamList::Stream::Serialize(Json::Value& out) const {
    writeKeptKeys(m_other_keys, out);
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    out["name"] = Json::Value(m_name);
    out["type"] = Json::Value(m_type);
    out["class"] = Json::Value(m_class);
    out["state"] = Json::Value(m_state);
    m_channels.Serialize(out["channel-list"]);
}

void SessionStreamList::Stream::Deserialize(Json::Value& in) {
    keepUnknownKeys(in, {"id", "name", "type", "class", "state", "channel-list"}, m_other_keys);
    m_id = in.get("id", Json::Value(Json::UInt64(0))).asUInt64();
    m_name = in.get("name", "").asString();
    m_type = in.get("type", "").asString();
    m_class = in.get("class", "").asString();
    m_state = in.get("state", "").asString();
    Json::Value channels = in.get("channel-list", Json::Value());
    m_channels.Deserialize(channels);
}

void SessionStreamList::Session::Serialize(Json::Value& out) const {
    writeKeptKeys(m_other_keys, out);
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    out["id-str"] = Json::Value(std::to_string(m_id));
    out["name"] = Json::Value(m_name);
    out["version"] = Json::Value(static_cast<Json::UInt64>(m_version));
    out["paused"] = Json::Value(m_paused);
    writeEach(m_streams, out["streams"]);
}

void SessionStreamList::Session::Deserialize(Json::Value& in) {
    keepUnknownKeys(in, {"id", "id-str", "name", "version", "paused", "streams"}, m_other_keys);
    if (in.isMember("id") || !in.isMember("id-str")) {
        m_id = in.get("id", Json::Value(Json::UInt64(0))).asUInt64();
    } else {
        m_id = std::strtoull(in["id-str"].asString().c_str(), nullptr, 10);
    }
    m_name = in.get("name", "").asString();
    m_version = in.get("version", Json::Value(Json::UInt64(0))).asUInt64();
    m_paused = in.get("paused", false).asBool();
    // Read from a copy: the streams do not add members to the caller's document.
    Json::Value streams = in.get("streams", Json::Value());
    readArrayOrNull(streams, m_streams, "SessionStreamList", "\"streams\"");
}

void SessionStreamList::Serialize(Json::Value& out) const { writeEach(m_sessions, out); }

void SessionStreamList::Deserialize(Json::Value& in) {
    readArrayOrNull(in, m_sessions, "SessionStreamList", "the session list");
}

const SessionStreamList::Session* SessionStreamList::find(uint64_t id) const {
    for (const Session& session : m_sessions) {
        if (session.m_id == id) {
            return &session;
        }
    }
    return nullptr;
}
