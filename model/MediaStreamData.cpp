// Audio and video stream records and the session records that hold them.

#include <cstdio>
#include <memory>

#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "pimAvMngApi/model/AudioStreamData.h"
#include "pimAvMngApi/model/SessionBasicInfo.h"
#include "pimAvMngApi/model/SessionConfigData.h"
#include "pimAvMngApi/model/VideoStreamData.h"
#include "pimAvMngApi/platform/Logger.h"
#include "platform/RecordArrays.h"

using namespace pimav::detail;

// ---- AudioStreamData ----

AudioStreamData::AudioStreamData() {
    m_type.set(StreamType::AUDIO);
}

void AudioStreamData::Serialize(Json::Value& out) const {
    StreamData::Serialize(out);
    out["ptime"] = Json::Value(m_ptime);
    out["channel-freq"] = Json::Value(m_channel_freq);
    out["link-offset"] = Json::Value(m_link_offset);
    m_codec.Serialize(out);
    out["packet-size"] = Json::Value(getPacketSize());
    out["l1-bandwidth"] = Json::Value(static_cast<Json::UInt64>(m_l1_bandwidth));
    out["samples"] = Json::Value(static_cast<int>(m_samples));
    out["payload-size"] = Json::Value(m_payload_size);
}

void AudioStreamData::Deserialize(Json::Value& in) {
    StreamData::Deserialize(in);
    m_ptime = in.get("ptime", 0).asUInt();
    m_channel_freq = in.get("channel-freq", 0).asUInt();
    m_link_offset = in.get("link-offset", 0).asUInt();
    m_codec.Deserialize(in);
    m_type.set(StreamType::AUDIO);
    m_payload_size = in.get("payload-size", 0).asUInt();
    readSamples(in);
}

void AudioStreamData::dumpDerivedStreamData() {
    Logger::log(6, "AUDIO STREAM DATA:");
    Logger::log(6, "  Channel Freq      %d", static_cast<int>(m_channel_freq));
    Logger::log(6, "  Link Offset       %d [us]", static_cast<int>(m_link_offset));
    Logger::log(6, "  Packet time       %d [us]", static_cast<int>(m_ptime));
    Logger::log(6, "  Num of Samples    %d", static_cast<int>(m_samples));
    Logger::log(6, "  L1 bandwidth      %llu bits/s", static_cast<unsigned long long>(m_l1_bandwidth));
    Logger::log(6, "  Payload Size      %d bytes", static_cast<int>(m_payload_size));
    Logger::log(6, "  Codec             %s", m_codec.toString().c_str());
}

// ---- VideoStreamData ----

VideoStreamData::VideoStreamData() : m_video_format(static_cast<VideoFormat::video_format_t>(1)) {
    m_type.set(StreamType::VIDEO);
    m_udp = UdpPort(20000, 20000);
    m_ipv4.m_dscp = 40;
    m_ipv4.m_ttl = 64;
    m_payload_size = 1376;
}

void VideoStreamData::Serialize(Json::Value& out) const {
    StreamData::Serialize(out);
    m_video_format.Serialize(out["video"]);
    out["packet-size"] = Json::Value(getPacketSize());
    out["sync-enable"] = Json::Value(m_sync_enable);
    out["sof-link-offset"] = Json::Value(m_sof_link_offset);
    m_tributary.Serialize(out);
}

void VideoStreamData::Deserialize(Json::Value& in) {
    StreamData::Deserialize(in);
    m_video_format.Deserialize(in["video"]);
    m_type.set(StreamType::VIDEO);
    m_sync_enable = in.get("sync-enable", true).asBool();
    m_sof_link_offset = in.get("sof-link-offset", 0).asUInt();
    m_tributary.Deserialize(in);
}

void VideoStreamData::dumpDerivedStreamData() {
    Logger::log(6, "VIDEO STREAM DATA:");
    Logger::log(6, "  Video mode          %s", m_video_format.toString().c_str());
    Logger::log(6, "  SOF Sync enable     %s", m_sync_enable ? "true" : "false");
    Logger::log(6, "  SOF link offset     %d ns", static_cast<int>(m_sof_link_offset));
    Logger::log(6, "  Tributary type      %s", m_tributary.toString().c_str());
}

// ---- SessionConfigData ----

void SessionConfigData::Serialize(Json::Value& out) const {
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    out["version"] = Json::Value(static_cast<Json::UInt64>(m_version));
    out["name"] = Json::Value(m_name);
    out["nmos-id"] = Json::Value(m_nmos_id);
    Json::Value& ptp = out["ptp"];
    ptp["domain"] = Json::Value(static_cast<int>(m_ptp_domain));
    ptp["gmid"] = Json::Value(m_ptp_gmid);
    m_connection.Serialize(out["connection"]);
    out["sdp"] = Json::Value(m_sdp);
    writeEachInto(m_audio_streams, out, "audio-streams");
    writeEachInto(m_video_streams, out, "video-streams");
    m_type.Serialize(out);
}

void SessionConfigData::Deserialize(Json::Value& in) {
    m_id = in.get("id", 0).asUInt64();
    m_version = in.get("version", 0).asUInt64();
    m_name = in.get("name", "").asString();
    m_nmos_id = in.get("nmos-id", "").asString();
    m_sdp = in.get("sdp", "").asString();
    Json::Value& ptp = in["ptp"];
    if (!ptp.empty()) {
        m_ptp_domain = static_cast<uint8_t>(ptp.get("domain", 0).asUInt());
        m_ptp_gmid = ptp.get("gmid", "").asString();
    }
    m_connection.Deserialize(in["connection"]);
    m_audio_streams.clear();
    m_video_streams.clear();
    appendEach(in["audio-streams"], m_audio_streams);
    appendEach(in["video-streams"], m_video_streams);
    m_type.Deserialize(in);
}

// ---- SessionBasicInfo ----

namespace {

// A deep copy of a stream record that keeps its most derived kind.
StreamData* cloneStream(const StreamData* stream) {
    if (stream == nullptr) {
        return nullptr;
    }
    if (const auto* audio = dynamic_cast<const AudioStreamData*>(stream)) {
        return new AudioStreamData(*audio);
    }
    if (const auto* video = dynamic_cast<const VideoStreamData*>(stream)) {
        return new VideoStreamData(*video);
    }
    if (const auto* ancillary = dynamic_cast<const AncillaryStreamData*>(stream)) {
        return new AncillaryStreamData(*ancillary);
    }
    return new StreamData(*stream);
}

}  // namespace

SessionBasicInfo::SessionBasicInfo(const SessionBasicInfo& other)
    : IJsonSerializable(other),
      m_id(other.m_id),
      m_version(other.m_version),
      m_name(other.m_name),
      m_rtsp_url(other.m_rtsp_url),
      m_remote_sid(other.m_remote_sid),
      m_ptp_gmid(other.m_ptp_gmid),
      m_ptp_domain(other.m_ptp_domain) {
    try {
        for (const StreamData* stream : other.m_streams) {
            std::unique_ptr<StreamData> copy(cloneStream(stream));
            m_streams.push_back(copy.get());
            copy.release();
        }
    } catch (...) {
        clearStreams();
        throw;
    }
}

SessionBasicInfo::SessionBasicInfo(SessionBasicInfo&& other) noexcept
    : IJsonSerializable(other),
      m_id(other.m_id),
      m_version(other.m_version),
      m_name(std::move(other.m_name)),
      m_streams(std::move(other.m_streams)),
      m_rtsp_url(std::move(other.m_rtsp_url)),
      m_remote_sid(other.m_remote_sid),
      m_ptp_gmid(std::move(other.m_ptp_gmid)),
      m_ptp_domain(other.m_ptp_domain) {
    other.m_streams.clear();
}

SessionBasicInfo& SessionBasicInfo::operator=(const SessionBasicInfo& other) {
    if (this != &other) {
        SessionBasicInfo copy(other);
        *this = std::move(copy);
    }
    return *this;
}

SessionBasicInfo& SessionBasicInfo::operator=(SessionBasicInfo&& other) noexcept {
    if (this != &other) {
        clearStreams();
        m_id = other.m_id;
        m_version = other.m_version;
        m_name = std::move(other.m_name);
        m_streams = std::move(other.m_streams);
        other.m_streams.clear();
        m_rtsp_url = std::move(other.m_rtsp_url);
        m_remote_sid = other.m_remote_sid;
        m_ptp_gmid = std::move(other.m_ptp_gmid);
        m_ptp_domain = other.m_ptp_domain;
    }
    return *this;
}

SessionBasicInfo::~SessionBasicInfo() {
    clearStreams();
}

void SessionBasicInfo::clearStreams() {
    for (StreamData* stream : m_streams) {
        delete stream;
    }
    m_streams.clear();
}

void SessionBasicInfo::Serialize(Json::Value& out) const {
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    out["version"] = Json::Value(static_cast<Json::UInt64>(m_version));
    out["name"] = Json::Value(m_name);
    out["remote-sid"] = Json::Value(static_cast<Json::UInt64>(m_remote_sid));
    char text[24];
    std::snprintf(text, sizeof(text), "%llu", static_cast<unsigned long long>(m_remote_sid));
    out["remote-sid-str"] = Json::Value(text);
    out["ptp-domain"] = Json::Value(static_cast<int>(m_ptp_domain));
    out["rtsp-url"] = Json::Value(m_rtsp_url);
    out["ptp-gmid"] = Json::Value(m_ptp_gmid);
}

void SessionBasicInfo::Deserialize(Json::Value& in) {
    m_id = in.get("id", 0).asUInt64();
    m_version = in.get("version", 0).asUInt64();
    m_name = in.get("name", "").asString();
    m_rtsp_url = in.get("rtsp-url", "").asString();
    m_remote_sid = in.get("remote-sid", 0).asUInt64();
    m_ptp_domain = in.get("ptp-domain", 0).asUInt();
    m_ptp_gmid = in.get("ptp-gmid", "").asString();
    Json::Value& list = in["session-list"];
    for (Json::Value::ArrayIndex i = 0; i < list.size(); ++i) {
        Json::Value& element = list[i];
        const std::string type = element.get("type", "").asString();
        std::unique_ptr<StreamData> stream;
        if (type == "audio") {
            stream = std::make_unique<AudioStreamData>();
        } else {
            stream = std::make_unique<VideoStreamData>();
        }
        stream->Deserialize(element);
        m_streams.push_back(stream.get());
        stream.release();
    }
}
