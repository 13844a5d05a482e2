// Sender configuration: AudioSource, VideoSource and the session record SourceApi.

#include "pimAvMngApi/model/SourceApi.h"

#include "pimAvMngApi/platform/Logger.h"
#include "platform/RecordArrays.h"

using namespace pimav::detail;

// ---- AudioSource ----

void AudioSource::Serialize(Json::Value& out) const {
    Source::Serialize(out);
    out["channel-freq"] = Json::Value(m_channel_freq);
    out["ptime"] = Json::Value(m_ptime);
    m_codec.Serialize(out);
}

void AudioSource::Deserialize(Json::Value& in) {
    Source::Deserialize(in);
    m_channel_freq = in.get("channel-freq", 0).asUInt();
    m_ptime = in.get("ptime", 0).asUInt();
    m_codec.Deserialize(in);
}

void AudioSource::clear() {
    Logger::log(5, "Clearing Audio Source");
    Source::clear();
    m_ptime = 0;
    m_channel_freq = 0;
}

// ---- VideoSource ----

void VideoSource::Serialize(Json::Value& out) const {
    Source::Serialize(out);
    Json::Value& video = out["video"];
    m_video_format.Serialize(video);
    video["sof-sync-enable"] = Json::Value(m_sof_sync_enable);
    m_timing.Serialize(video);
    m_tributary.Serialize(out);
}

void VideoSource::Deserialize(Json::Value& in) {
    Source::Deserialize(in);
    Json::Value& video = in["video"];
    m_video_format.Deserialize(video);
    m_timing.Deserialize(video);
    if (video.empty()) {
        m_sof_sync_enable = false;
    } else {
        m_sof_sync_enable = video.get("sof-sync-enable", true).asBool();
    }
    m_tributary.Deserialize(in);
}

void VideoSource::clear() {
    Logger::log(5, "Clearing Video Source");
    Source::clear();
    m_sof_sync_enable = true;
    m_tributary.set(TributaryType::NONE);
    m_tributary.setIndex(-1);
}

// ---- SourceApi ----

namespace {

// Appends one fresh T per element of in[key] when it is an array; `logSource` adds the
// per-element source address line.
template <typename T>
void readList(std::list<T>& list, const char* key, Json::Value& in, bool logSource) {
    Json::Value& array = in[key];
    if (!array.isArray()) {
        return;
    }
    for (Json::Value::ArrayIndex i = 0; i < array.size(); ++i) {
        T element;
        element.Deserialize(array[i]);
        list.push_back(element);
        if (logSource) {
            Logger::log(5, "Source IP in Source API: %s", element.m_source_ip.toString().c_str());
        }
    }
}

}  // namespace

void SourceApi::clear() {
    m_session_id = 0;
    m_name.clear();
    m_ancillary_sources.clear();
    m_audio_sources.clear();
    m_video_sources.clear();
}

void SourceApi::Serialize(Json::Value& out) const {
    out["session-id"] = Json::Value(static_cast<Json::UInt64>(m_session_id));
    out["name"] = Json::Value(m_name);
    writeEachInto(m_ancillary_sources, out, "ancillary-sources");
    writeEachInto(m_audio_sources, out, "audio-sources");
    writeEachInto(m_video_sources, out, "video-sources");
}

void SourceApi::Deserialize(Json::Value& in) {
    clear();
    m_session_id = in.get("session-id", 0).asUInt64();
    m_name = in.get("name", "").asString();
    readList(m_ancillary_sources, "ancillary-sources", in, false);
    readList(m_audio_sources, "audio-sources", in, true);
    readList(m_video_sources, "video-sources", in, true);
}
