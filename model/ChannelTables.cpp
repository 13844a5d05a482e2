#include "pimAvMngApi/model/ChannelTables.h"

#include "model/KeptKeys.h"

using namespace pimav::detail;

namespace {

void requireArrayOrNull(const Json::Value& v, const char* what) {
    if (!v.isNull() && !v.isArray()) {
        Json::throwLogicError(std::string("ChannelTables: ") + what + " is not an array");
    }
}

}  // namespace

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
    Json::Value channels(Json::arrayValue);
    for (const Usage& usage : m_channels) {
        Json::Value element(Json::objectValue);
        usage.Serialize(element);
        channels.append(element);
    }
    out["channels"] = channels;
}

void ChannelTables::Table::Deserialize(Json::Value& in) {
    keepUnknownKeys(in, {"interface", "interface-index", "num-channels", "channels"}, m_other_keys);
    Json::Value interface = in.get("interface", Json::Value());
    m_interface.Deserialize(interface);
    m_interface_index = in.get("interface-index", 0u).asUInt();
    m_num_channels = in.get("num-channels", 0u).asUInt();
    m_channels.clear();
    const Json::Value channels = in.get("channels", Json::Value());
    requireArrayOrNull(channels, "\"channels\"");
    for (Json::Value::ArrayIndex i = 0; i < channels.size(); ++i) {
        Json::Value element = channels[i];
        Usage usage;
        usage.Deserialize(element);
        m_channels.push_back(usage);
    }
}

size_t ChannelTables::Table::usedCount() const {
    size_t n = 0;
    for (const Usage& usage : m_channels) {
        n += usage.m_used ? 1 : 0;
    }
    return n;
}

void ChannelTables::Serialize(Json::Value& out) const {
    out = Json::Value(Json::arrayValue);
    for (const Table& table : m_tables) {
        Json::Value element(Json::objectValue);
        table.Serialize(element);
        out.append(element);
    }
}

void ChannelTables::Deserialize(Json::Value& in) {
    m_tables.clear();
    requireArrayOrNull(in, "the table list");
    for (Json::Value::ArrayIndex i = 0; i < in.size(); ++i) {
        Table table;
        table.Deserialize(in[i]);
        m_tables.push_back(table);
    }
}
