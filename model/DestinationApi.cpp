#include "pimAvMngApi/model/DestinationApi.h"

void DestinationApiSessionSel::Serialize(Json::Value& out) const {
    out["media-idx"] = Json::Value(static_cast<int>(m_media_idx));
    out["payload-type"] = Json::Value(static_cast<int>(m_payload_type));
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    Json::Value& nmos = out["nmos"];
    nmos["sender"] = Json::Value(m_nmos_sender);
    nmos["receiver"] = Json::Value(m_nmos_receiver);
}

void DestinationApiSessionSel::Deserialize(Json::Value& in) {
    m_media_idx = static_cast<uint8_t>(in.get("media-idx", 0).asUInt());
    m_payload_type = static_cast<uint8_t>(in.get("payload-type", 0).asUInt());
    m_id = in.get("id", 0).asUInt64();
    Json::Value& nmos = in["nmos"];
    if (nmos.empty()) {
        return;
    }
    m_nmos_sender = nmos.get("sender", "").asString();
    m_nmos_receiver = nmos.get("receiver", "").asString();
}

void DestinationApi::Serialize(Json::Value& out) const {
    out["session-id"] = Json::Value(static_cast<Json::UInt64>(m_session_id));
    out["name"] = Json::Value(m_name);
    out["link-offset"] = Json::Value(m_link_offset);
    out["user-sdp"] = Json::Value(m_user_sdp);
    m_rem_sid.Serialize(out["rem-sid"]);
    m_channels.Serialize(out["channel-list"]);
}

void DestinationApi::Deserialize(Json::Value& in) {
    m_session_id = in.get("session-id", 0).asUInt64();
    m_name = in.get("name", "").asString();
    m_link_offset = in.get("link-offset", 0).asUInt();
    m_user_sdp = in.get("user-sdp", "").asString();
    m_rem_sid.Deserialize(in["rem-sid"]);
    m_channels.Deserialize(in["channel-list"]);
    m_source_ip = in.get("source-ip", "").asString();
    m_network_index = in.get("network-index", -1).asInt();
}
