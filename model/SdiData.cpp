#include "pimAvMngApi/model/SdiData.h"

void SdiData::Serialize(Json::Value& out) const {
    out["sdi-port"] = Json::Value(static_cast<int>(m_sdi_port));
    Json::Value& vpg = out["vpg"];
    vpg["patctrl"] = Json::Value(m_pattern_control);
    vpg["video-format"] = Json::Value(m_video_format.toString());
    vpg["enable"] = Json::Value(m_enable);
    vpg["sync-enable"] = Json::Value(m_sync_enable);
}

void SdiData::Deserialize(Json::Value& in) {
    m_sdi_port = static_cast<uint8_t>(in.get("sdi-port", 0).asInt());
    Json::Value& vpg = in["vpg"];
    m_pattern_control = vpg.get("patctrl", 0).asInt();
    m_enable = vpg.get("enable", false).asBool();
    m_sync_enable = vpg.get("sync-enable", false).asBool();
}
