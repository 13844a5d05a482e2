// Typed client API: the class frame and the session operations.

#include "api/AvMngApiTrace.h"
#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/model/AudioStreamData.h"
#include "pimAvMngApi/model/VideoStreamData.h"

#include <cctype>

namespace pimav::detail {

std::string abiSignature(const char* pretty) {
    static const std::string kPlain = "std::string";
    static const std::string kAbi = "std::__cxx11::string";
    std::string text(pretty);
    size_t pos = 0;
    while ((pos = text.find(kPlain, pos)) != std::string::npos) {
        const size_t end = pos + kPlain.size();
        const bool wholeName = end == text.size() || !(std::isalnum(static_cast<unsigned char>(text[end])) ||
                                                       text[end] == '_');
        if (wholeName) {
            text.replace(pos, kPlain.size(), kAbi);
            pos += kAbi.size();
        } else {
            pos = end;
        }
    }
    return text;
}

}  // namespace pimav::detail

namespace {

Json::Value idValue(session_id_t id) { return Json::Value(static_cast<Json::UInt64>(id)); }

// Appends each element of `array` (default 0) as an unsigned 64-bit id.
void appendIds(const Json::Value& array, std::list<unsigned long long>& ids) {
    for (Json::Value::ArrayIndex i = 0; i < array.size(); ++i) {
        ids.push_back(array.get(i, 0).asUInt64());
    }
}

void appendStreams(Json::Value& array, std::list<SessionConfigData>& streams) {
    for (Json::Value::ArrayIndex i = 0; i < array.size(); ++i) {
        SessionConfigData data;
        data.Deserialize(array[i]);
        streams.push_back(data);
    }
}

}  // namespace

// ---- frame ----

int AvMngApi::init(zmq::context_t& context, std::string host) { return jsonApi.init(context, host); }

int AvMngApi::getLastErrorMessage(ErrorReport& report) { return jsonApi.getLastErrorMessage(report); }

std::string AvMngApi::convertJsonToString(Json::Value& value) {
    std::string text;
    IJsonSerializable::convertJsonToString(value, text);
    return text;
}

// ---- sessions ----

int AvMngApi::addSourceSession(SourceApi* api) {
    PIMAV_CHK_NULL(api, "addSourceSession");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(api->Serialize(request));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.addSourceSession(request, reply));
    PIMAV_TRY_DESERIALIZE(api->Deserialize(reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::addDestinationSession(DestinationApi* api) {
    PIMAV_CHK_NULL(api, "addDestinationSession");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(api->Serialize(request));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.addDestinationSession(request, reply));
    PIMAV_TRY_DESERIALIZE(api->Deserialize(reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::addDestinationSession(SourceApi* api) {
    PIMAV_CHK_NULL(api, "addDestinationSession");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(api->Serialize(request));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.addDestinationSessionManually(request, reply));
    PIMAV_TRY_DESERIALIZE(api->Deserialize(reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::updateSession(SourceApi* api) {
    PIMAV_CHK_NULL(api, "updateSession");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(api->Serialize(request));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.updateSession(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::removeSession(session_id_t id) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["id"] = idValue(id));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.removeSession(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::disconnectChannels(session_id_t id, ChannelList& channels) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["id"] = idValue(id));
    PIMAV_TRY_SERIALIZE(channels.Serialize(request["channel-list"]));
    PIMAV_TRACE_IN(request);
    if (Logger::isEnabled(7)) {
        const std::string text = convertJsonToString(request);
        Logger::log(7, "TX AES67_DISCONNECT_CHANNELS: json: %s", text.c_str());
    }
    PIMAV_CHK(jsonApi.disconnectChannels(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSessionSdp(session_id_t id, std::string* sdp) {
    PIMAV_CHK_NULL(sdp, "getSessionSdp");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["id"] = idValue(id));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.getSessionSdp(request, reply));
    PIMAV_TRY_DESERIALIZE(sdp->append(reply.get("sdp", "").asString()));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSessionBasicInfo(session_id_t id, SessionBasicInfo* info) {
    PIMAV_CHK_NULL(info, "getSessionBasicInfo");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["id"] = idValue(id));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.getSessionBasicInfo(request, reply));
    PIMAV_TRY_DESERIALIZE(info->Deserialize(reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSessionCfg(session_id_t id, SourceApi* api) {
    PIMAV_CHK_NULL(api, "getSessionCfg");
    SessionBasicInfo info;
    PIMAV_CHK(getSessionBasicInfo(id, &info));
    api->m_session_id = info.m_id;
    api->m_name = info.m_name;
    for (StreamData* stream : info.m_streams) {
        if (stream == nullptr) {
            continue;
        }
        switch (stream->m_type.get()) {
            case StreamType::AUDIO: {
                AudioSource source;
                getSourceInfo(source, stream);
                if (const auto* audio = dynamic_cast<const AudioStreamData*>(stream)) {
                    source.m_link_offset = audio->m_link_offset;
                    source.m_codec = audio->m_codec;
                    source.m_ptime = audio->m_ptime;
                    source.m_channel_freq = audio->m_channel_freq;
                }
                api->m_audio_sources.push_back(source);
                break;
            }
            case StreamType::VIDEO: {
                VideoSource source;
                getSourceInfo(source, stream);
                if (const auto* video = dynamic_cast<const VideoStreamData*>(stream)) {
                    source.m_video_format = video->m_video_format;
                    source.m_link_offset = video->m_sof_link_offset;
                }
                api->m_video_sources.push_back(source);
                break;
            }
            case StreamType::ANCILLARY: {
                Source source;
                getSourceInfo(source, stream);
                api->m_ancillary_sources.push_back(source);
                break;
            }
            default:
                break;
        }
    }
    return 0;
}

int AvMngApi::getSourceSessionList(SessionStreamList* list) {
    PIMAV_CHK_NULL(list, "getSourceSessionList");
    Json::Value reply;
    PIMAV_CHK(jsonApi.getSourceSessionList(reply));
    PIMAV_TRY_DESERIALIZE(list->Deserialize(reply["list"]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getDestinationSessionList(SessionStreamList* list) {
    PIMAV_CHK_NULL(list, "getDestinationSessionList");
    Json::Value reply;
    PIMAV_CHK(jsonApi.getDestinationSessionList(reply));
    PIMAV_TRY_DESERIALIZE(list->Deserialize(reply["list"]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getAdvertisedSessionList(AdvSessionsDb* db) {
    PIMAV_CHK_NULL(db, "getAdvertisedSessionList");
    Json::Value reply;
    PIMAV_CHK(jsonApi.getAdvertisedSessionList(reply));
    PIMAV_TRY_DESERIALIZE(db->Deserialize(reply["list"]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::pauseResumeSession(session_id_t id, bool pause) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["id"] = idValue(id));
    PIMAV_TRY_SERIALIZE(request["pause"] = Json::Value(pause));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.pauseResumeSession(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getResourceAllocatedIds(std::list<unsigned long long>& senders,
                                      std::list<unsigned long long>& receivers) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getResourceAllocatedIds(reply));
    PIMAV_TRY_DESERIALIZE(appendIds(reply["senders"], senders));
    PIMAV_TRY_DESERIALIZE(appendIds(reply["receivers"], receivers));
    return 0;
}

int AvMngApi::getListOfExistingStreams(std::list<SessionConfigData>& streams) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getListOfExistingStreams(reply));
    PIMAV_TRY_DESERIALIZE(appendStreams(reply["list"], streams));
    return 0;
}

void AvMngApi::getSourceInfo(Source& source, StreamData* stream) {
    if (stream == nullptr) {
        Logger::log(2, "%s:: Parameter is null.", "getSourceInfo");
        return;
    }
    source.m_transport = stream->m_ipv4.m_transport;
    source.m_udp_port = static_cast<int32_t>(stream->m_udp.m_destination);
    source.m_dscp = static_cast<int32_t>(stream->m_ipv4.m_dscp);
    source.m_ttl = stream->m_ipv4.m_ttl;
    source.m_payload_type = stream->m_rtp.m_payload_type;
    source.m_name = stream->m_name;
    // Entry by entry: existing entries overwritten in order, surplus removed, missing appended.
    source.m_channels.m_channels = stream->m_channels.m_channels;
    source.m_id = stream->m_id;
    source.m_redundant_type.set(stream->m_redundant_type.get());
}
