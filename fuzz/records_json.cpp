// Feeds arbitrary JSON documents to every record's Deserialize and writes the result
// back with Serialize. Reading may throw the JSON library's exceptions (the documented
// failure of a document of the wrong kind); anything else, a crash, a leak or undefined
// behaviour is a finding.

#include <json/json.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "FuzzSupport.h"
#include "pimAvMngApi/pimAvMngApi.h"

namespace {

template <typename T>
void roundTrip(const Json::Value& doc, T record) {
    Json::Value in = doc;  // Deserialize may add null members to its input
    try {
        record.Deserialize(in);
    } catch (const std::exception&) {
        // Documented: a value of the wrong JSON kind throws out of Deserialize.
    }
    Json::Value out;
    record.Serialize(out);
    try {
        record.Deserialize(out);
    } catch (const std::exception&) {
    }
}

void feedAll(const Json::Value& doc) {
    roundTrip(doc, State());
    roundTrip(doc, StreamType());
    roundTrip(doc, StreamClass());
    roundTrip(doc, SessionType());
    roundTrip(doc, RedundantType());
    roundTrip(doc, TributaryType());
    roundTrip(doc, DaifType());
    roundTrip(doc, ChannelId());
    roundTrip(doc, ChannelList());
    roundTrip(doc, Alarm());
    roundTrip(doc, IpAddrCfg());
    roundTrip(doc, Vlan());
    roundTrip(doc, UdpPort());
    roundTrip(doc, Ssrc());
    roundTrip(doc, Rtp());
    roundTrip(doc, SessionConnectionInfo());
    roundTrip(doc, VideoTimingParameters());
    roundTrip(doc, StreamStatus());
    roundTrip(doc, SessionStatus());
    roundTrip(doc, TpcStatistics());
    roundTrip(doc, UserNotifications());
    roundTrip(doc, HdmiAudioOffset());
    roundTrip(doc, SdiOffset());
    roundTrip(doc, SdiOffsetList());
    roundTrip(doc, InterfaceLoopBack());
    roundTrip(doc, DestinationApiSessionSel());
    roundTrip(doc, DestinationApi());
    roundTrip(doc, VolumeGainApi(false));
    roundTrip(doc, VolumeGainApi(true));
    roundTrip(doc, Source());
    roundTrip(doc, StreamData());
    roundTrip(doc, AncillaryStreamData());
    roundTrip(doc, AudioStreamData());
    roundTrip(doc, VideoStreamData());
    roundTrip(doc, AudioSource());
    roundTrip(doc, VideoSource());
    roundTrip(doc, SourceApi());
    roundTrip(doc, SessionConfigData());
    roundTrip(doc, SessionBasicInfo());
    roundTrip(doc, SdiData());
    roundTrip(doc, VideoFormat());
    roundTrip(doc, VideoFormat(VideoFormat::VIDEO_FORMAT_1080I59_94));
    roundTrip(doc, Codec());
    roundTrip(doc, BitstreamType());
    roundTrip(doc, BoardModel(JUNIPER, BitstreamType::MODULE_HDMI_ST2110));
    roundTrip(doc, ClockConfig());
    roundTrip(doc, ClockStatus());
    roundTrip(doc, ClockCounters());
    roundTrip(doc, CfgFileTable());
    Json::Value request = doc;
    for (unsigned command = 51; command <= 56; ++command) {
        VolumeGainApi::Validate(request, command);
    }
    StreamData dumped;
    Json::Value in = doc;
    try {
        dumped.Deserialize(in);
    } catch (const std::exception&) {
    }
    dumped.dumpStreamData();
    SessionBasicInfo info;
    in = doc;
    try {
        info.Deserialize(in);
    } catch (const std::exception&) {
    }
    SessionBasicInfo copy(info);
    for (StreamData* stream : copy.m_streams) {
        stream->dumpStreamData();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    pimav::detail::formatAndDropLogLines();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value doc;
    std::string errors;
    const char* begin = reinterpret_cast<const char*>(data);
    if (!reader->parse(begin, begin + size, &doc, &errors)) {
        return 0;
    }
    feedAll(doc);
    if (doc.isObject()) {
        for (const std::string& key : doc.getMemberNames()) {
            feedAll(doc[key]);
        }
    }
    ErrorAuxMsg::getInstance()->clear();
    return 0;
}
