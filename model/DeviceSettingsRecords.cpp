// Device-level settings and status records that the typed API passes through whole:
// AvGlobalCfg, VtcStatus, VideoRefOutputCfg, SdiVpgData.

#include "model/KeptKeys.h"
#include "pimAvMngApi/model/AvGlobalCfg.h"
#include "pimAvMngApi/model/SdiVpgData.h"
#include "pimAvMngApi/model/VideoRefOutputCfg.h"
#include "pimAvMngApi/model/VtcStatus.h"

using namespace pimav::detail;

void AvGlobalCfg::Serialize(Json::Value& out) const {
    writeKeptKeys(m_other_keys, out);
    out["device-name"] = Json::Value(m_device_name);
    out["mdns"] = Json::Value(m_mdns);
    out["ptp-domain"] = Json::Value(static_cast<Json::UInt>(m_ptp_domain));
    out["dscp-audio"] = Json::Value(m_dscp_audio);
    out["dscp-video"] = Json::Value(m_dscp_video);
    out["dscp-ancillary"] = Json::Value(m_dscp_ancillary);
    out["dscp-ptp"] = Json::Value(m_dscp_ptp);
}

void AvGlobalCfg::Deserialize(Json::Value& in) {
    keepUnknownKeys(
        in, {"device-name", "mdns", "ptp-domain", "dscp-audio", "dscp-video", "dscp-ancillary", "dscp-ptp"},
        m_other_keys);
    m_device_name = in.get("device-name", "").asString();
    m_mdns = in.get("mdns", true).asBool();
    m_ptp_domain = static_cast<uint8_t>(in.get("ptp-domain", 0u).asUInt());
    m_dscp_audio = in.get("dscp-audio", 34).asInt();
    m_dscp_video = in.get("dscp-video", 40).asInt();
    m_dscp_ancillary = in.get("dscp-ancillary", 40).asInt();
    m_dscp_ptp = in.get("dscp-ptp", 46).asInt();
}

void VtcStatus::Serialize(Json::Value& out) const {
    writeKeptKeys(m_other_keys, out);
    out["locked"] = Json::Value(m_locked);
    out["domain"] = Json::Value(static_cast<Json::UInt>(m_domain));
    out["master-locking-status"] = Json::Value(m_master_locking_status);
    out["current-local-offset"] = Json::Value(m_current_local_offset);
}

void VtcStatus::Deserialize(Json::Value& in) {
    keepUnknownKeys(in, {"locked", "domain", "master-locking-status", "current-local-offset"},
                           m_other_keys);
    m_locked = in.get("locked", false).asBool();
    m_domain = static_cast<uint8_t>(in.get("domain", 127u).asUInt());
    m_master_locking_status = in.get("master-locking-status", 0u).asUInt();
    m_current_local_offset = in.get("current-local-offset", 0).asInt();
}

void VideoRefOutputCfg::Serialize(Json::Value& out) const {
    writeKeptKeys(m_other_keys, out);
    out["enable"] = Json::Value(m_enable);
    out["source"] = Json::Value(m_source);
    out["format"] = Json::Value(m_format);
    out["offset"] = Json::Value(m_offset);
}

void VideoRefOutputCfg::Deserialize(Json::Value& in) {
    keepUnknownKeys(in, {"enable", "source", "format", "offset"}, m_other_keys);
    m_enable = in.get("enable", true).asBool();
    m_source = in.get("source", "ptp").asString();
    m_format = in.get("format", "").asString();
    m_offset = in.get("offset", 0).asInt();
}

void SdiVpgData::Serialize(Json::Value& out) const {
    writeKeptKeys(m_other_keys, out);
    out["port"] = Json::Value(static_cast<Json::UInt>(m_port));
    out["enable"] = Json::Value(m_enable);
    out["pattern"] = Json::Value(m_pattern);
    out["video_mode"] = Json::Value(m_video_mode);
}

void SdiVpgData::Deserialize(Json::Value& in) {
    keepUnknownKeys(in, {"port", "enable", "pattern", "video_mode"}, m_other_keys);
    m_port = static_cast<uint8_t>(in.get("port", 0u).asUInt());
    m_enable = in.get("enable", false).asBool();
    m_pattern = in.get("pattern", "").asString();
    m_video_mode = in.get("video_mode", "NA").asString();
}
