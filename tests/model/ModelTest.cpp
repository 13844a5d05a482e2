// The model records: JSON forms, logs and dumps from tests/data/records/model; below, what
// no written document shows.

#include <gtest/gtest.h>

#include "pimAvMngApi/pimAvMngApi.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"
#include "support/RecordScript.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

// A stream kind whose argument is the payload size, which no stream reads.
template <typename T>
RecordKind streamKind() {
    return settingKind<T, uint32_t>([](T& stream, uint32_t payload) { stream.m_payload_size = payload; },
                                    {{"dump", recordAction<T>(&T::dumpStreamData)}});
}

// SdiOffset hides its serialization base: the scripts reach it through this record.
struct SdiOffsetRecord : IJsonSerializable {
    SdiOffsetRecord() = default;
    SdiOffsetRecord(unsigned port, uint32_t video, uint32_t audio)
        : offset(static_cast<uint8_t>(port), video, audio) {}
    void Serialize(Json::Value& out) const override { offset.Serialize(out); }
    void Deserialize(Json::Value& in) override { offset.Deserialize(in); }
    SdiOffset offset;
};

TEST(Model, RecordScripts) {
    const RecordKinds kinds = {
        {"State", recordKind<State, int32_t>()},
        {"StreamType", recordKind<StreamType, int32_t>()},
        {"StreamClass", recordKind<StreamClass, int32_t>()},
        {"SessionType", recordKind<SessionType, int32_t>()},
        {"RedundantType", recordKind<RedundantType, int32_t>()},
        {"TributaryType", recordKind<TributaryType, int32_t, int32_t>()},
        {"DaifType", recordKind<DaifType, int32_t, std::string>()},
        {"IpAddrCfg", recordKind<IpAddrCfg>()},
        {"Vlan", recordKind<Vlan>()},
        {"UdpPort", recordKind<UdpPort, uint16_t, uint16_t>()},
        {"Ssrc", recordKind<Ssrc, int32_t, uint32_t>()},
        {"Rtp", recordKind<Rtp>()},
        {"SessionConnectionInfo", recordKind<SessionConnectionInfo>()},
        {"Source", recordKind<Source>({{"clear", recordAction<Source>(&Source::clear)}})},
        {"AudioSource", recordKind<AudioSource>({{"clear", recordAction<AudioSource>(&AudioSource::clear)}})},
        {"VideoSource", recordKind<VideoSource>({
                            {"clear", recordAction<VideoSource>(&VideoSource::clear)},
                            {"redundant", recordCall<VideoSource>(&VideoSource::setRedundantType)},
                            {"tributary", recordCall<VideoSource>(&VideoSource::setTributaryType)},
                        })},
        {"SourceApi", recordKind<SourceApi>({{"clear", recordAction<SourceApi>(&SourceApi::clear)}})},
        {"AncillaryStreamData", streamKind<AncillaryStreamData>()},
        {"AudioStreamData", streamKind<AudioStreamData>()},
        {"VideoStreamData", streamKind<VideoStreamData>()},
        {"VideoTimingParameters",
         settingKind<VideoTimingParameters, int32_t>(
             [](VideoTimingParameters& t, int32_t mode) { t.m_timing_mode = mode; })},
        {"TpcStatistics", recordKind<TpcStatistics>()},
        {"UserNotifications", recordKind<UserNotifications>()},
        {"HdmiAudioOffset", recordKind<HdmiAudioOffset, uint32_t>()},
        {"InterfaceLoopBack", recordKind<InterfaceLoopBack>()},
        {"StreamStatus", recordKind<StreamStatus>()},
        {"SessionStatus", recordKind<SessionStatus>()},
        {"SdiOffsetList", recordKind<SdiOffsetList>()},
        {"SdiOffset", recordKind<SdiOffsetRecord, unsigned, uint32_t, uint32_t>()},
        {"SdiData",
         settingKind<SdiData, VideoFormat::video_format_t>(  // the format is written, not read
             [](SdiData& d, VideoFormat::video_format_t f) { d.m_video_format = VideoFormat(f); })},
        {"AvGlobalCfg", recordKind<AvGlobalCfg>()},
        {"VtcStatus", recordKind<VtcStatus>()},
        {"VideoRefOutputCfg", recordKind<VideoRefOutputCfg>()},
        {"SdiVpgData", recordKind<SdiVpgData>()},
        {"SessionStreamList", recordKind<SessionStreamList>()},
        {"ChannelTables", recordKind<ChannelTables>()},
        {"SessionConfigData", recordKind<SessionConfigData>()},
        {"SessionBasicInfo", recordKind<SessionBasicInfo>()},
        {"DestinationApi", recordKind<DestinationApi>()},
        {"VolumeGainApi", recordKind<VolumeGainApi, bool>()},
    };
    runRecordScripts("records/model", kinds);
}

// tests/data/model/gain-validate.tsv: command, result, request, then the user messages.
TEST(VolumeGainApi, ValidateTable) {
    for (const DataRow& row : dataRows("model/gain-validate.tsv")) {
        SCOPED_TRACE(row.where);
        ASSERT_GE(row.fields.size(), 3u);
        const std::vector<std::string> messages(row.fields.begin() + 3, row.fields.end());
        LogCapture capture;
        Json::Value request = jsonOf(row.fields[2]);
        const Json::Value before = request;
        EXPECT_EQ(VolumeGainApi::Validate(request, std::stoul(row.fields[0])), std::stoi(row.fields[1]));
        EXPECT_EQ(capture.texts(), messages);
        EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(), messages);
        EXPECT_EQ(request, before);
    }
}

TEST(DestinationApi, MembersReadButNotWritten) {
    DestinationApi d;
    readInto(d, R"({"source-ip":"not an address","network-index":2})");
    EXPECT_EQ(d.m_source_ip, "not an address");
    EXPECT_EQ(d.m_network_index, 2);
    readInto(d, "{}");
    EXPECT_EQ(d.m_network_index, -1);
}

// The streams of a SessionBasicInfo have no written form: their kinds, and copies.
TEST(SessionBasicInfo, StreamsKeepTheirKindAndCopiesAreDeep) {
    SessionBasicInfo info;
    Json::Value doc = jsonOf(R"({"name":"a","session-list":[{"type":"audio","name":"s1"},{"type":"video"},
                                                             {"type":"ancillary"}]})");
    info.Deserialize(doc);
    ASSERT_EQ(info.m_streams.size(), 3u);
    EXPECT_NE(dynamic_cast<AudioStreamData*>(info.m_streams.front()), nullptr);
    EXPECT_NE(dynamic_cast<VideoStreamData*>(*std::next(info.m_streams.begin())), nullptr);
    EXPECT_EQ(info.m_streams.back()->m_type.get(), StreamType::VIDEO);
    info.m_streams.push_back(nullptr);
    SessionBasicInfo copy(info);
    ASSERT_EQ(copy.m_streams.size(), 4u);
    EXPECT_NE(copy.m_streams.front(), info.m_streams.front());
    EXPECT_EQ(dynamic_cast<AudioStreamData*>(copy.m_streams.front())->m_name, "s1");
    EXPECT_EQ(copy.m_streams.back(), nullptr);
    SessionBasicInfo assigned;
    assigned = info;
    assigned = assigned;
    EXPECT_EQ(assigned.m_streams.size(), 4u);
    SessionBasicInfo moved(std::move(copy));
    EXPECT_TRUE(copy.m_streams.empty());  // NOLINT(bugprone-use-after-move): moved-from is empty
    assigned = std::move(moved);
    EXPECT_EQ(assigned.m_streams.size(), 4u);
    EXPECT_EQ(assigned.m_name, "a");

    info.m_streams.pop_back();
    info.Deserialize(doc);  // appends
    EXPECT_EQ(info.m_streams.size(), 6u);
    EXPECT_ANY_THROW(readInto(info, R"({"session-list":[{"type":"audio"},{"type":{}}]})"));
    EXPECT_EQ(info.m_streams.size(), 7u);
}

TEST(SessionStreamList, FindById) {
    SessionStreamList list;
    readInto(list, R"([{"id":1},{"id":12345678901234567890}])");
    ASSERT_NE(list.find(12345678901234567890ull), nullptr);
    EXPECT_EQ(list.find(1), &list.m_sessions.front());
    EXPECT_EQ(list.find(2), nullptr);
}

}  // namespace
