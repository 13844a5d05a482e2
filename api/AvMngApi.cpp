// Typed client API: the class frame and the session operations.

#include "pimAvMngApi/api/AvMngApi.h"
#include "api/TypedExchange.h"
#include "pimAvMngApi/model/AudioStreamData.h"
#include "pimAvMngApi/model/VideoStreamData.h"
#include "platform/IpcWire.h"
#include "platform/RecordArrays.h"

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

void writeTrace(const char* pretty, int line, const char* direction, const Json::Value& document) {
    Logger::log(7, "AVMANAGER JSON API %s:%d:%s\n%s", abiSignature(pretty).c_str(), line, direction,
                renderDocument(document).c_str());
}

}  // namespace pimav::detail

namespace {

// Appends each element of `array` (default 0) as an unsigned 64-bit id.
void appendIds(const Json::Value& array, std::list<unsigned long long>& ids) {
    for (Json::Value::ArrayIndex i = 0; i < array.size(); ++i) {
        ids.push_back(array.get(i, 0).asUInt64());
    }
}

// Appends the source of `stream` to `sources`: the fields every source has, then, when
// the stream's record is a `Data`, those that `fill` copies from it.
template <typename Data, typename Source, typename Fill>
void appendSourceOf(AvMngApi& api, StreamData* stream, std::list<Source>& sources, Fill fill) {
    Source source;
    api.getSourceInfo(source, stream);
    if (const auto* data = dynamic_cast<const Data*>(stream)) {
        fill(source, *data);
    }
    sources.push_back(source);
}

}  // namespace

using namespace pimav::detail;

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
    return PIMAV_EXCHANGE(addSourceSession, writtenBy(*api), readInto(*api));
}

int AvMngApi::addDestinationSession(DestinationApi* api) {
    PIMAV_CHK_NULL(api, "addDestinationSession");
    return PIMAV_EXCHANGE(addDestinationSession, writtenBy(*api), readInto(*api));
}

int AvMngApi::addDestinationSession(SourceApi* api) {
    PIMAV_CHK_NULL(api, "addDestinationSession");
    return PIMAV_EXCHANGE(addDestinationSessionManually, writtenBy(*api), readInto(*api));
}

int AvMngApi::updateSession(SourceApi* api) {
    PIMAV_CHK_NULL(api, "updateSession");
    return PIMAV_EXCHANGE(updateSession, writtenBy(*api), NoReply());
}

int AvMngApi::removeSession(session_id_t id) {
    return PIMAV_EXCHANGE(removeSession, withMember("id", idValue(id)), NoReply());
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
    return PIMAV_EXCHANGE(getSessionBasicInfo, withMember("id", idValue(id)), readInto(*info));
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
            case StreamType::AUDIO:
                appendSourceOf<AudioStreamData>(*this, stream, api->m_audio_sources,
                                                [](AudioSource& source, const AudioStreamData& audio) {
                                                    source.m_link_offset = audio.m_link_offset;
                                                    source.m_codec = audio.m_codec;
                                                    source.m_ptime = audio.m_ptime;
                                                    source.m_channel_freq = audio.m_channel_freq;
                                                });
                break;
            case StreamType::VIDEO:
                appendSourceOf<VideoStreamData>(*this, stream, api->m_video_sources,
                                                [](VideoSource& source, const VideoStreamData& video) {
                                                    source.m_video_format = video.m_video_format;
                                                    source.m_link_offset = video.m_sof_link_offset;
                                                });
                break;
            case StreamType::ANCILLARY:
                appendSourceOf<StreamData>(*this, stream, api->m_ancillary_sources,
                                           [](Source&, const StreamData&) {});
                break;
            default:
                break;
        }
    }
    return 0;
}

int AvMngApi::getSourceSessionList(SessionStreamList* list) {
    PIMAV_CHK_NULL(list, "getSourceSessionList");
    return PIMAV_EXCHANGE(getSourceSessionList, readInto(*list, "list"));
}

int AvMngApi::getDestinationSessionList(SessionStreamList* list) {
    PIMAV_CHK_NULL(list, "getDestinationSessionList");
    return PIMAV_EXCHANGE(getDestinationSessionList, readInto(*list, "list"));
}

int AvMngApi::getAdvertisedSessionList(AdvSessionsDb* db) {
    PIMAV_CHK_NULL(db, "getAdvertisedSessionList");
    return PIMAV_EXCHANGE(getAdvertisedSessionList, readInto(*db, "list"));
}

int AvMngApi::pauseResumeSession(session_id_t id, bool pause) {
    const auto write = [&](Json::Value& request) {
        request["id"] = idValue(id);
        request["pause"] = Json::Value(pause);
    };
    return PIMAV_EXCHANGE(pauseResumeSession, write, NoReply());
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
    PIMAV_TRY_DESERIALIZE(appendEach(reply["list"], streams));
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
