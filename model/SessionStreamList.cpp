#include "pimAvMngApi/model/SessionStreamList.h"

#include <cstdlib>

#include "model/KeptKeys.h"

using namespace pimav::detail;

namespace {

// A list member must be an array; null (absent) reads as empty.
void requireArrayOrNull(const Json::Value& v, const char* what) {
    if (!v.isNull() && !v.isArray()) {
        Json::throwLogicError(std::string("SessionStreamList: ") + what + " is not an array");
    }
}

}  // namespace

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
    Json::Value streams(Json::arrayValue);
    for (const Stream& stream : m_streams) {
        Json::Value element(Json::objectValue);
        stream.Serialize(element);
        streams.append(element);
    }
    out["streams"] = streams;
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
    m_streams.clear();
    const Json::Value streams = in.get("streams", Json::Value());
    requireArrayOrNull(streams, "\"streams\"");
    for (Json::Value::ArrayIndex i = 0; i < streams.size(); ++i) {
        Json::Value element = streams[i];
        Stream stream;
        stream.Deserialize(element);
        m_streams.push_back(stream);
    }
}

void SessionStreamList::Serialize(Json::Value& out) const {
    out = Json::Value(Json::arrayValue);
    for (const Session& session : m_sessions) {
        Json::Value element(Json::objectValue);
        session.Serialize(element);
        out.append(element);
    }
}

void SessionStreamList::Deserialize(Json::Value& in) {
    m_sessions.clear();
    requireArrayOrNull(in, "the session list");
    for (Json::Value::ArrayIndex i = 0; i < in.size(); ++i) {
        Session session;
        session.Deserialize(in[i]);
        m_sessions.push_back(session);
    }
}

const SessionStreamList::Session* SessionStreamList::find(uint64_t id) const {
    for (const Session& session : m_sessions) {
        if (session.m_id == id) {
            return &session;
        }
    }
    return nullptr;
}
