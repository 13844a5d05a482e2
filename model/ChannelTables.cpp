#include "pimAvMngApi/model/ChannelTables.h"

#include "model/KeptKeys.h"
#include "platform/RecordArrays.h"

using namespace pimav::detail;

void ChannelTables::Usage::Serialize(Json::Value& out) const {
    writeKeptKeys(m_other_keys, out);
    out["channel"] = Json::Value(m_channel);
    out["used"] = Json::Value(m_used);
    out["session-id"] = Json::Value(static_cast<Json::UInt64>(m_session_id));
    out["stream-id"] = Json::Value(static_cast<Json::UInt64>(m_stream_id));
    out["class"] = Json::Value(m_class);
}

void ChannelTables::Usage::Deserialize(Json::Value& in) {
    keepUnknownKeys(in, {"channel", "used", "session-id", "stream-id", "class"}, m_other_keys);
    m_channel = in.get("channel", 0u).asUInt();
    m_used = in.get("used", false).asBool();
    m_session_id = in.get("session-id", Json::Value(Json::UInt64(0))).asUInt64();
    m_stream_id = in.get("stream-id", Json::Value(Json::UInt64(0))).asUInt64();
    m_class = in.get("class", "").asString();
}

void ChannelTables::Table::Serialize(Json::Value& out) const {
    writeKeptKeys(m_other_keys, out);
    m_interface.Serialize(out["interface"]);
    out["interface-index"] = Json::Value(m_interface_index);
    out["num-channels"] = Json::Value(m_num_channels);
    writeEach(m_channels, out["channels"]);
}

void ChannelTables::Table::Deserialize(Json::Value& in) {
    keepUnknownKeys(in, {"interface", "interface-index", "num-channels", "channels"}, m_other_keys);
    Json::Value interface = in.get("interface", Json::Value());
    m_interface.Deserialize(interface);
    m_interface_index = in.get("interface-index", 0u).asUInt();
    m_num_channels = in.get("num-channels", 0u).asUInt();
    // Read from a copy: the usages do not add members to the caller's document.
    Json::Value channels = in.get("channels", Json::Value());
    readArrayOrNull(channels, m_channels, "ChannelTables", "\"channels\"");
}

size_t ChannelTables::Table::usedCount() const {
    size_t n = 0;
    for (const Usage& usage : m_channels) {
        n += usage.m_used ? 1 : 0;
    }
    return n;
}

void ChannelTables::Serialize(Json::Value& out) const { writeEach(m_tables, out); }

void ChannelTables::Deserialize(Json::Value& in) { readArrayOrNull(in, m_tables, "ChannelTables", "the table list"); }
