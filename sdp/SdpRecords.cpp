// JSON forms and log dumps of the SDP records.

#include <cstdint>

#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpGroup.h"
#include "pimAvMngApi/sdp/SdpMedia.h"
#include "pimAvMngApi/sdp/SdpMediaRtpMap.h"
#include "pimAvMngApi/sdp/SdpSession.h"
#include "pimAvMngApi/sdp/SdpSessionTime.h"
#include "platform/WordTable.h"
#include "sdp/SdpText.h"

using namespace pimav::detail;

namespace {

// The member `key` of `in`, or `absent` when it has none. get() would copy the member's
// whole subtree, which shows when a client reads thousands of advertised sessions. Like
// get(), it throws for an `in` that is neither an object nor null.
Json::Value& memberOf(Json::Value& in, const char* key, Json::Value& absent) {
    return in.isMember(key) ? in[key] : absent;
}

}  // namespace

// ---- SdpSessionTime ----

void SdpSessionTime::Serialize(Json::Value& out) const {
    out["start"] = Json::Value(m_start);
    out["stop"] = Json::Value(m_stop);
}

void SdpSessionTime::Deserialize(Json::Value& in) {
    m_start = in.get("start", 0u).asUInt();
    m_stop = in.get("stop", 0u).asUInt();
}

// ---- SdpMediaRtpMap ----

void SdpMediaRtpMap::Serialize(Json::Value& out) const {
    out["payload-type"] = Json::Value(static_cast<int>(m_payload_type));
    out["codec"] = Json::Value(m_codec.toString());
    out["number-channels"] = Json::Value(static_cast<int>(m_number_channels));
    out["channel-freq"] = Json::Value(m_channel_freq);
}

void SdpMediaRtpMap::Deserialize(Json::Value& in) {
    m_payload_type = static_cast<uint8_t>(in.get("payload-type", 0u).asUInt());
    m_codec.setCodec(in.get("codec", "AM824").asString());
    m_number_channels = static_cast<uint16_t>(in.get("number-channels", 1u).asUInt());
    m_channel_freq = in.get("channel-freq", 0u).asUInt();
}

void SdpMediaRtpMap::dump() const {
    Logger::log(6, ">>-----------------------");
    Logger::log(6, "  Payload Type         %d", m_payload_type);
    Logger::log(6, "  Codec                %s", m_codec.toString().c_str());
    Logger::log(6, "  Number Channels      %d", m_number_channels);
    Logger::log(6, "  Channel Freq         %d", m_channel_freq);
    Logger::log(6, ">>-----------------------");
}

// ---- SdpMedia ----

namespace {

constexpr WordRow<SdpMedia::Type> kMediaTypeWords[] = {
    {SdpMedia::AUDIO, "AUDIO"},
    {SdpMedia::VIDEO, "VIDEO"},
};

}  // namespace

std::string SdpMedia::getTypeStr() const {
    return std::string(wordOf(kMediaTypeWords, m_type, "NOT_RECOGNIZED"));
}

SdpMedia::Type SdpMedia::getTypeEnum(std::string text) {
    return codeOf(kMediaTypeWords, text).value_or(NOT_RECOGNIZED);
}

void SdpMedia::Serialize(Json::Value& out) const {
    out["type"] = Json::Value(getTypeStr());
    out["udp"] = Json::Value(m_udp_port);
    out["protocol"] = Json::Value(m_protocol);
    out["ptime"] = Json::Value(static_cast<double>(m_ptime));
    out["number-samples"] = Json::Value(static_cast<int>(m_number_samples));
    out["ttl"] = Json::Value(static_cast<int>(m_ttl));
    out["info"] = Json::Value(m_info);
    out["group"] = Json::Value(m_group);
    for (uint8_t payloadType : m_payload_types) {
        out["payload_types"].append(Json::Value(static_cast<int>(payloadType)));
    }
    for (Json::ArrayIndex i = 0; i < m_rtp_maps.size(); ++i) {
        m_rtp_maps[i].Serialize(out["rtpmap"][i]);
    }
    out["mediaclk"] = Json::Value(m_media_clock);
    out["clock-is-ptp"] = Json::Value(m_clock_is_ptp);
    Json::Value& ptp = out["ptp"];
    ptp["gmid"] = Json::Value(m_ptp_gm_id);
    ptp["domain"] = Json::Value(static_cast<int>(m_ptp_domain));
    out["local-ip"] = Json::Value(IpText(m_local_ip).c_str());
    out["transport-ip"] = Json::Value(IpText(m_transport_ip).c_str());
    Json::Value& video = out["video"];
    m_video.Serialize(video);
    video["depth"] = Json::Value(m_depth);
    video["sampling"] = Json::Value(m_sampling);
    video["colorimetry"] = Json::Value(m_colorimetry);
}

void SdpMedia::Deserialize(Json::Value& in) {
    m_type = getTypeEnum(in.get("type", "").asString());
    m_udp_port = in.get("udp", 0u).asUInt();
    m_protocol = in.get("protocol", "").asString();
    m_ptime = in.get("ptime", 0.0).asFloat();
    m_number_samples = static_cast<uint8_t>(in.get("number-samples", 0u).asUInt());
    m_ttl = static_cast<uint8_t>(in.get("ttl", 0u).asUInt());
    m_info = in.get("info", "").asString();
    m_group = in.get("group", "").asString();
    m_media_clock = in.get("mediaclk", 0u).asUInt();
    m_clock_is_ptp = in.get("clock-is-ptp", false).asBool();
    Json::Value none;
    const Json::Value& ptp = memberOf(in, "ptp", none);
    m_ptp_gm_id = ptp.get("gmid", "").asString();
    m_ptp_domain = static_cast<uint8_t>(ptp.get("domain", 0u).asUInt());
    readAddress(m_local_ip, in.get("local-ip", "").asString());
    readAddress(m_transport_ip, in.get("transport-ip", "").asString());
    if (in.isMember("video") && in["video"].isObject()) {
        Json::Value& video = in["video"];
        m_video.Deserialize(video);
        m_depth = video.get("depth", 0u).asUInt();
        m_sampling = video.get("sampling", "").asString();
        m_colorimetry = video.get("colorimetry", "").asString();
    }
    for (Json::Value& element : memberOf(in, "rtpmap", none)) {
        SdpMediaRtpMap map;
        map.Deserialize(element);
        m_rtp_maps.push_back(map);
    }
    for (const Json::Value& element : memberOf(in, "payload_types", none)) {
        m_payload_types.push_back(static_cast<uint8_t>(element.asUInt()));
    }
}

void SdpMedia::dump() const {
    Logger::log(6, ">------------------------");
    Logger::log(6, " Type                  %s", m_type == AUDIO ? "Audio" : "Video");
    Logger::log(6, " UDP                   %d", m_udp_port);
    Logger::log(6, " Protocol              %s", m_protocol.c_str());
    Logger::log(6, " Ptime                 %f", static_cast<double>(m_ptime));
    Logger::log(6, " Num Samples           %d", m_number_samples);
    Logger::log(6, " Info                  %s", m_info.c_str());
    Logger::log(6, " Local Ip              %s", IpText(m_local_ip).c_str());
    Logger::log(6, " Transport Ip          %s", IpText(m_transport_ip).c_str());
    Logger::log(6, " Media Clock           %d", m_media_clock);
    Logger::log(6, " Sync with PTP         %s", m_clock_is_ptp ? "true" : "false");
    Logger::log(6, " PTP GM id             %s", m_ptp_gm_id.c_str());
    Logger::log(6, " PTP domain            %d", m_ptp_domain);
    Logger::log(6, " TTL                   %d", m_ttl);
    Logger::log(6, " RtpMap:: total of     %d", static_cast<int>(m_rtp_maps.size()));
    for (const SdpMediaRtpMap& map : m_rtp_maps) {
        map.dump();
    }
    Logger::log(6, ">------------------------");
}

// ---- SdpSession ----

void SdpSession::Serialize(Json::Value& out) const {
    out["protocol-version"] = Json::Value(static_cast<int>(m_protocol_version));
    out["user-name"] = Json::Value(m_user_name);
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_session_id));
    out["version"] = Json::Value(static_cast<Json::UInt64>(m_session_version));
    m_time.Serialize(out["time"]);
    out["info"] = Json::Value(m_info);
    out["local-ip"] = Json::Value(IpText(m_local_ip).c_str());
    for (Json::ArrayIndex i = 0; i < m_media.size(); ++i) {
        m_media[i].Serialize(out["media"][i]);
    }
}

void SdpSession::Deserialize(Json::Value& in) {
    m_protocol_version = static_cast<uint8_t>(in.get("protocol-version", 0u).asUInt());
    m_user_name = in.get("user-name", "").asString();
    m_session_id = in.get("id", Json::Value(static_cast<Json::UInt64>(0))).asUInt64();
    m_session_version = in.get("version", Json::Value(static_cast<Json::UInt64>(0))).asUInt64();
    Json::Value none;
    m_time.Deserialize(memberOf(in, "time", none));
    m_info = in.get("info", "").asString();
    readAddress(m_local_ip, in.get("local-ip", "").asString());
    for (Json::Value& element : memberOf(in, "media", none)) {
        SdpMedia entry;
        entry.Deserialize(element);
        m_media.push_back(std::move(entry));
    }
}

void SdpSession::dump() const {
    Logger::log(6, "-------------------------");
    Logger::log(6, "Protocol version       %d", m_protocol_version);
    Logger::log(6, "username               %s", m_user_name.c_str());
    Logger::log(6, "Id                     %llu", static_cast<unsigned long long>(m_session_id));
    Logger::log(6, "version                %llu", static_cast<unsigned long long>(m_session_version));
    Logger::log(6, "Time Start             %d", m_time.m_start);
    Logger::log(6, "Time Stop              %d", m_time.m_stop);
    Logger::log(6, "Info                   %s", m_info.c_str());
    Logger::log(6, "Media:: Total of       %d", static_cast<int>(m_media.size()));
    for (const SdpMedia& media : m_media) {
        media.dump();
    }
    Logger::log(6, "-------------------------");
}
