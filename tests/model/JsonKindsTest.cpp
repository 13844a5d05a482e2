// The daemon parses these documents with typed accessors, so the JSON kind of every written
// number matters as much as its value: a signed member must be written as a signed integer,
// an unsigned one as unsigned, flags as bools and gains as reals.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "pimAvMngApi/model/AudioSource.h"
#include "pimAvMngApi/model/AudioStreamData.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/HdmiAudioOffset.h"
#include "pimAvMngApi/model/InterfaceLoopBack.h"
#include "pimAvMngApi/model/SdiData.h"
#include "pimAvMngApi/model/SdiOffsetList.h"
#include "pimAvMngApi/model/SessionBasicInfo.h"
#include "pimAvMngApi/model/SessionConfigData.h"
#include "pimAvMngApi/model/SessionStatus.h"
#include "pimAvMngApi/model/TpcStatistics.h"
#include "pimAvMngApi/model/VideoSource.h"
#include "pimAvMngApi/model/VideoStreamData.h"
#include "pimAvMngApi/model/VideoTimingParameters.h"
#include "pimAvMngApi/model/VolumeGainApi.h"

namespace {

// The kind of the value at a '/'-separated path of the written document.
Json::ValueType kindAt(const Json::Value& doc, const std::string& path) {
    const Json::Value* v = &doc;
    std::string::size_type pos = 0;
    while (pos <= path.size()) {
        const std::string::size_type end = std::min(path.find('/', pos), path.size());
        const std::string part = path.substr(pos, end - pos);
        v = v->isArray() ? &(*v)[static_cast<Json::ArrayIndex>(std::stoul(part))] : &(*v)[part];
        pos = end + 1;
    }
    return v->type();
}

struct Kinds {
    const char* record;
    std::function<Json::Value()> write;
    std::vector<std::pair<const char*, Json::ValueType>> keys;
};

template <typename T>
std::function<Json::Value()> writer(std::function<void(T&)> fill = nullptr) {
    return [fill] {
        T r;
        if (fill) {
            fill(r);
        }
        Json::Value out;
        r.Serialize(out);
        return out;
    };
}

constexpr Json::ValueType I = Json::intValue;
constexpr Json::ValueType U = Json::uintValue;
constexpr Json::ValueType B = Json::booleanValue;
constexpr Json::ValueType S = Json::stringValue;
constexpr Json::ValueType R = Json::realValue;

TEST(JsonKinds, EveryWrittenMemberHasItsKind) {
    const std::vector<Kinds> table = {
        {"AudioSource",
         writer<AudioSource>(),
         {{"udp", I}, {"dscp", I}, {"ttl", I}, {"payload-type", I}, {"link-offset", U},
          {"media-clk-offset", I}, {"network-index", I}, {"id", U}, {"ssrc/value", U},
          {"ssrc/type", S}, {"transport", S}, {"channel-freq", U}, {"ptime", U}, {"codec", S}}},
        {"VideoSource",
         writer<VideoSource>([](VideoSource& r) { r.m_timing.m_init_buf_delay = 5; }),
         {{"video/sof-sync-enable", B}, {"video/initBufDelay", I}, {"video/timing-mode", S},
          {"tributary/index", I}, {"tributary/type", S}}},
        {"DestinationApi",
         writer<DestinationApi>(),
         {{"session-id", U}, {"link-offset", U}, {"rem-sid/id", U}, {"rem-sid/media-idx", I},
          {"rem-sid/payload-type", I}, {"rem-sid/nmos/sender", S}, {"channel-list", Json::arrayValue}}},
        {"AudioStreamData",
         writer<AudioStreamData>(),
         {{"hw-id", U}, {"id", U}, {"l1-bandwidth", U}, {"media-clk-offset", I},
          {"network-interface-index", I}, {"samples", I}, {"unicast", B}, {"vlan/id", I},
          {"vlan/tpid", I}, {"udp/source", I}, {"ipv4/dscp", I}, {"ipv4/ttl", I},
          {"rtp/payload-type", I}, {"rtp/sscr/value", U}, {"ptime", U}, {"channel-freq", U},
          {"link-offset", U}, {"dst-mac-addr", S}}},
        {"VideoStreamData",
         writer<VideoStreamData>(),
         {{"sync-enable", B}, {"sof-link-offset", U}, {"tributary/index", I}}},
        {"SessionConfigData",
         writer<SessionConfigData>([](SessionConfigData& r) { r.m_audio_streams.emplace_back(); }),
         {{"id", U}, {"version", U}, {"ptp/domain", I}, {"ptp/gmid", S}, {"connection/remote", Json::nullValue},
          {"connection/origin", S}, {"audio-streams/0/ptime", U}, {"type", S}}},
        {"SessionBasicInfo",
         writer<SessionBasicInfo>(),
         {{"id", U}, {"version", U}, {"remote-sid", U}, {"remote-sid-str", S}, {"ptp-domain", I}}},
        {"VolumeGainApi",
         writer<VolumeGainApi>([](VolumeGainApi& r) {
             r.m_session_id = 3;
             r.m_changes.emplace_back(1.0, 2, true);
         }),
         {{"session-id", U}, {"channel-list/0/channel-gain", R}, {"channel-list/0/mute", B},
          {"channel-list/0/position", U}}},
        {"VideoTimingParameters",
         writer<VideoTimingParameters>([](VideoTimingParameters& r) { r.m_rtp_pkts_per_frame = 0; }),
         {{"rtpPktsPerFrame", I}}},
        {"SessionStatus",
         writer<SessionStatus>([](SessionStatus& r) { r.m_streams.emplace_back(); }),
         {{"id", U}, {"streams/0/id", U}}},
        {"TpcStatistics",
         writer<TpcStatistics>(),
         {{"session-id", U}, {"stream-id", U}, {"error-detected", B}, {"data-detected", B}}},
        {"HdmiAudioOffset", writer<HdmiAudioOffset>(), {{"hdmi-audio-offset", U}}},
        {"SdiOffsetList",
         writer<SdiOffsetList>([](SdiOffsetList& r) { r.m_offsets.emplace_back(); }),
         {{"0/sdi-port", I}, {"0/video-offset", U}, {"0/audio-offset", U}}},
        {"SdiData", writer<SdiData>(), {{"sdi-port", I}, {"vpg/patctrl", I}, {"vpg/enable", B}}},
        {"InterfaceLoopBack", writer<InterfaceLoopBack>(), {{"enable", B}, {"interface/type", I}}},
    };
    for (const Kinds& row : table) {
        const Json::Value doc = row.write();
        for (const auto& key : row.keys) {
            EXPECT_EQ(kindAt(doc, key.first), key.second) << row.record << " " << key.first;
        }
    }
}

}  // namespace
