#include "pimAvMngApi/model/Source.h"

#include "pimAvMngApi/platform/Logger.h"

void Source::Serialize(Json::Value& out) const {
    out["name"] = Json::Value(m_name);
    out["transport"] = Json::Value(m_transport.toString());
    out["source-ip"] = Json::Value(m_source_ip.toString());
    out["udp"] = Json::Value(m_udp_port);
    out["dscp"] = Json::Value(m_dscp);
    out["ttl"] = Json::Value(static_cast<int>(m_ttl));
    out["payload-type"] = Json::Value(static_cast<int>(m_payload_type));
    out["link-offset"] = Json::Value(m_link_offset);
    out["media-clk-offset"] = Json::Value(m_media_clk_offset);
    out["network-index"] = Json::Value(m_network_index);
    m_channels.Serialize(out["channel-list"]);
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    m_redundant_type.Serialize(out);
    m_ssrc.Serialize(out["ssrc"]);
}

void Source::Deserialize(Json::Value& in) {
    m_dscp = in.get("dscp", -1).asInt();
    m_link_offset = in.get("link-offset", 0).asUInt();
    m_payload_type = static_cast<uint8_t>(in.get("payload-type", 98).asUInt());
    m_ttl = static_cast<uint8_t>(in.get("ttl", 64).asUInt());
    m_udp_port = in.get("udp", -1).asInt();
    m_media_clk_offset = in.get("media-clk-offset", 0).asInt();
    m_network_index = in.get("network-index", -1).asInt();
    m_id = in.get("id", 0).asUInt64();
    m_name = in.get("name", "").asString();
    m_redundant_type.Deserialize(in);
    m_transport.Deserialize("transport", in);
    m_source_ip.Deserialize("source-ip", in);
    m_channels.Deserialize(in["channel-list"]);
    m_ssrc.Deserialize(in["ssrc"]);
}

void Source::clear() {
    Logger::log(5, "Clearing Source base class");
    m_name.clear();
    m_ttl = 64;
    m_payload_type = 98;
    m_udp_port = -1;
    m_dscp = -1;
    m_network_index = -1;
    m_transport.set(0);
    m_link_offset = 0;
    m_media_clk_offset = 0;
    m_channels.clearChannelList();
    m_redundant_type.set(RedundantType::NONE);
    m_ssrc.m_type = Ssrc::SESSION_ID;
    m_ssrc.m_value = 0;
    m_id = 0;
}

int Source::validate() {
    return 0;
}
