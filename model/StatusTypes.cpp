// Status, statistics and interface records.

#include "pimAvMngApi/model/HdmiAudioOffset.h"
#include "pimAvMngApi/model/InterfaceLoopBack.h"
#include "pimAvMngApi/model/SdiOffset.h"
#include "pimAvMngApi/model/SdiOffsetList.h"
#include "pimAvMngApi/model/SessionStatus.h"
#include "pimAvMngApi/model/StreamStatus.h"
#include "pimAvMngApi/model/TpcStatistics.h"
#include "pimAvMngApi/model/UserNotifications.h"
#include "pimAvMngApi/model/VideoTimingParameters.h"
#include "platform/RecordArrays.h"
#include "platform/WordTable.h"

using namespace pimav::detail;

namespace {

// "unset" is never read back; an empty text reads as "low_latency".
constexpr WordRow<int32_t> kTimingModeWords[] = {
    {VideoTimingParameters::UNSET, "unset", WordUse::WrittenOnly}, {VideoTimingParameters::FRAME_SYNC, "frame_sync"},
    {VideoTimingParameters::LOW_LATENCY, "low_latency"}, {VideoTimingParameters::LOW_LATENCY, "", WordUse::ReadOnly},
    {VideoTimingParameters::ST2059, "2059"}};

void readAlarms(std::list<Alarm>& alarms, Json::Value& in) {
    alarms.clear();
    appendEach(in["alarms"], alarms);
}

}  // namespace

// ---- VideoTimingParameters ----

std::string VideoTimingParameters::timingModeToString() const {
    return std::string(wordOf(kTimingModeWords, m_timing_mode, "ERROR"));
}

void VideoTimingParameters::Serialize(Json::Value& out) const {
    out["timing-mode"] = Json::Value(timingModeToString());
    if (m_init_buf_delay != -1) {
        out["initBufDelay"] = Json::Value(m_init_buf_delay);
    }
    if (m_min_wr_rd_ptr_thresh != -1) {
        out["minWrRdPtrThresh"] = Json::Value(m_min_wr_rd_ptr_thresh);
    }
    if (m_max_wr_rd_ptr_thresh != -1) {
        out["maxWrRdPtrThresh"] = Json::Value(m_max_wr_rd_ptr_thresh);
    }
    if (m_rtp_pkts_per_frame != -1) {
        out["rtpPktsPerFrame"] = Json::Value(m_rtp_pkts_per_frame);
    }
}

void VideoTimingParameters::Deserialize(Json::Value& in) {
    if (in.isMember("timing-mode")) {
        const std::string word = in.get("timing-mode", "").asString();
        m_timing_mode = codeOf(kTimingModeWords, word).value_or(m_timing_mode);
    }
    const struct {
        const char* key;
        int32_t* member;
    } numbers[] = {{"initBufDelay", &m_init_buf_delay},
                   {"minWrRdPtrThresh", &m_min_wr_rd_ptr_thresh},
                   {"maxWrRdPtrThresh", &m_max_wr_rd_ptr_thresh},
                   {"rtpPktsPerFrame", &m_rtp_pkts_per_frame}};
    for (const auto& n : numbers) {
        if (in.isMember(n.key)) {
            *n.member = in.get(n.key, -1).asInt();
        }
    }
}

// ---- StreamStatus / SessionStatus ----

void StreamStatus::Serialize(Json::Value& out) const {
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    writeEachInto(m_alarms, out, "alarms");
}

void StreamStatus::Deserialize(Json::Value& in) {
    m_id = in.get("id", 0).asUInt64();
    readAlarms(m_alarms, in);
}

void SessionStatus::Serialize(Json::Value& out) const {
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    writeEachInto(m_alarms, out, "alarms");
    writeEachInto(m_streams, out, "streams");
}

void SessionStatus::Deserialize(Json::Value& in) {
    m_id = in.get("id", 0).asUInt64();
    readAlarms(m_alarms, in);
    m_streams.clear();
    appendEach(in["streams"], m_streams);
}

// ---- TpcStatistics ----

void TpcStatistics::Serialize(Json::Value& out) const {
    out["session-id"] = Json::Value(static_cast<Json::UInt64>(m_session_id));
    out["stream-id"] = Json::Value(m_stream_id);
    out["error-detected"] = Json::Value(m_error_detected);
    out["data-detected"] = Json::Value(m_data_detected);
}

void TpcStatistics::Deserialize(Json::Value& in) {
    m_session_id = in.get("session-id", 0).asUInt64();
    m_stream_id = in.get("stream-id", 0).asUInt();
    m_error_detected = in.get("error-detected", false).asBool();
    m_data_detected = in.get("data-detected", false).asBool();
}

// ---- UserNotifications ----

void UserNotifications::Serialize(Json::Value& out) const {
    out["running-is-not-saved"] = Json::Value(m_running_is_not_saved);
    out["startup-applied"] = Json::Value(m_startup_applied);
}

void UserNotifications::Deserialize(Json::Value& in) {
    m_running_is_not_saved = in.get("running-is-not-saved", false).asBool();
    m_startup_applied = in.get("startup-applied", false).asBool();
}

// ---- HdmiAudioOffset ----

void HdmiAudioOffset::Serialize(Json::Value& out) const {
    out["hdmi-audio-offset"] = Json::Value(m_offset);
}

void HdmiAudioOffset::Deserialize(Json::Value& in) {
    if (in.isMember("hdmi-audio-offset")) {
        m_offset = static_cast<uint32_t>(in.get("hdmi-audio-offset", 0).asInt());
    }
}

// ---- SdiOffset / SdiOffsetList ----

void SdiOffset::Serialize(Json::Value& out) const {
    out["sdi-port"] = Json::Value(static_cast<int>(m_sdi_port));
    out["video-offset"] = Json::Value(m_video_offset);
    out["audio-offset"] = Json::Value(m_audio_offset);
}

void SdiOffset::Deserialize(Json::Value& in) {
    if (in.isMember("sdi-port")) {
        m_sdi_port = static_cast<uint8_t>(in.get("sdi-port", 0).asInt());
    }
    if (in.isMember("video-offset")) {
        m_video_offset = static_cast<uint32_t>(in.get("video-offset", 0).asInt());
    }
    if (in.isMember("audio-offset")) {
        m_audio_offset = static_cast<uint32_t>(in.get("audio-offset", 0).asInt());
    }
}

void SdiOffsetList::Serialize(Json::Value& out) const {
    if (m_offsets.empty() && out.isNull()) {
        out = Json::Value(Json::arrayValue);
    }
    Json::Value::ArrayIndex i = 0;
    for (const SdiOffset& offset : m_offsets) {
        offset.Serialize(out[i++]);
    }
}

void SdiOffsetList::Deserialize(Json::Value& in) { appendEach(in, m_offsets); }

// ---- InterfaceLoopBack ----

void InterfaceLoopBack::Serialize(Json::Value& out) const {
    out["enable"] = Json::Value(m_enable);
    m_interface.Serialize(out["interface"]);
}

void InterfaceLoopBack::Deserialize(Json::Value& in) {
    m_enable = in.get("enable", false).asBool();
    m_interface.Deserialize(in["interface"]);
}
