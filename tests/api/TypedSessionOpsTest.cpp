#include <list>
#include <string>
#include <vector>

#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "support/TypedApiFixture.h"

namespace {

TEST_F(TypedApiTest, SessionRequestsHaveTheirCommandKeysAndKinds) {
    SourceApi source;
    source.m_name = "cam";
    source.m_audio_sources.emplace_back();
    DestinationApi destination;
    destination.m_name = "rx";
    ChannelList channels;
    channels.addChannelEntry(ChannelId(DaifType(1, "sdi"), 0, 3));
    std::string sdp;
    SessionBasicInfo info;
    SessionStreamList list;
    AdvSessionsDb db;
    std::list<unsigned long long> ids;
    std::list<SessionConfigData> streams;
    checkShapes({
        {"addSourceSession", [&](AvMngApi& a) { return a.addSourceSession(&source); }, 2, form(source)},
        {"addDestinationSession", [&](AvMngApi& a) { return a.addDestinationSession(&destination); }, 3,
         form(destination)},
        {"addDestinationSession", [&](AvMngApi& a) { return a.addDestinationSession(&source); }, 14, form(source)},
        {"updateSession", [&](AvMngApi& a) { return a.updateSession(&source); }, 8, form(source)},
        {"removeSession", [](AvMngApi& a) { return a.removeSession(0); }, 4, doc(R"({"id":0})")},
        {"disconnectChannels", [&](AvMngApi& a) { return a.disconnectChannels(18446744073709551615ull, channels); },
         49,
         doc(R"({"id":18446744073709551615,"channel-list":[{"interface":{"type":1,"string":"sdi"},
                 "interface-index":0,"channel":3}]})")},
        {"getSessionSdp", [&](AvMngApi& a) { return a.getSessionSdp(5, &sdp); }, 0, doc(R"({"id":5})")},
        {"getSessionBasicInfo", [&](AvMngApi& a) { return a.getSessionBasicInfo(6, &info); }, 15, doc(R"({"id":6})")},
        {"getSourceSessionList", [&](AvMngApi& a) { return a.getSourceSessionList(&list); }, 5, nullptr},
        {"getDestinationSessionList", [&](AvMngApi& a) { return a.getDestinationSessionList(&list); }, 6, nullptr},
        {"getAdvertisedSessionList", [&](AvMngApi& a) { return a.getAdvertisedSessionList(&db); }, 7, nullptr},
        {"pauseResumeSession", [](AvMngApi& a) { return a.pauseResumeSession(9, true); }, 23,
         doc(R"({"id":9,"pause":true})")},
        {"getResourceAllocatedIds", [&](AvMngApi& a) { return a.getResourceAllocatedIds(ids, ids); }, 51, nullptr,
         "{}", false},
        {"getListOfExistingStreams", [&](AvMngApi& a) { return a.getListOfExistingStreams(streams); }, 50, nullptr,
         "{}", false},
    });
    log.clear();
    ChannelList none;
    ASSERT_EQ(api.disconnectChannels(2, none), 0);
    EXPECT_EQ(log.count("TX AES67_DISCONNECT_CHANNELS: json: {\"channel-list\":[],\"id\":2}"), 1u);
}

TEST_F(TypedApiTest, SdpIsAppendedAndIdListsAreAppendedTo) {
    std::string sdp = "x";
    daemon.queueReply(jsonOf(R"({"sdp":"v=0\r\n"})"));
    ASSERT_EQ(api.getSessionSdp(1, &sdp), 0);
    ASSERT_EQ(api.getSessionSdp(1, &sdp), 0);  // default reply {}: nothing appended
    EXPECT_EQ(sdp, "xv=0\r\n");

    std::list<unsigned long long> senders{1}, receivers;
    daemon.queueReply(jsonOf(R"({"senders":[18446744073709551615,3,null]})"));
    ASSERT_EQ(api.getResourceAllocatedIds(senders, receivers), 0);
    EXPECT_EQ(senders, (std::list<unsigned long long>{1, 18446744073709551615ull, 3, 0}));
    EXPECT_TRUE(receivers.empty());

    // A receivers element of the wrong kind: what was read before it stays.
    daemon.queueReply(jsonOf(R"({"senders":[8],"receivers":[4,{}]})"));
    EXPECT_EQ(api.getResourceAllocatedIds(senders, receivers), -13);
    EXPECT_EQ(senders.back(), 8u);
    EXPECT_EQ(receivers, std::list<unsigned long long>{4});
    EXPECT_EQ(errors("TRY_DESERIALIZE(int AvMngApi::getResourceAllocatedIds("), 1u);
}

TEST_F(TypedApiTest, ExistingStreamsAppendUntilAnElementFails) {
    std::list<SessionConfigData> streams(1);
    daemon.queueReply(jsonOf(R"({"list":[{"id":4,"name":"a"},{"id":5,"name":"b"}]})"));
    ASSERT_EQ(api.getListOfExistingStreams(streams), 0);
    ASSERT_EQ(streams.size(), 3u);
    EXPECT_EQ(streams.back().m_name, "b");

    daemon.queueReply(jsonOf(R"({"list":[{"id":6},{"id":"seven"},{"id":8}]})"));
    EXPECT_EQ(api.getListOfExistingStreams(streams), -13);
    ASSERT_EQ(streams.size(), 4u);
    EXPECT_EQ(streams.back().m_id, 6u);
    EXPECT_EQ(errors("TRY_DESERIALIZE(int AvMngApi::getListOfExistingStreams("), 1u);
}

TEST_F(TypedApiTest, RepliesAreReadIntoTheRecords) {
    SourceApi source;
    source.m_name = "before";
    daemon.queueReply(jsonOf(R"({"session-id":77,"name":"after","audio-sources":[{"name":"a1"}]})"));
    ASSERT_EQ(api.addSourceSession(&source), 0);
    EXPECT_EQ(source.m_session_id, 77u);
    EXPECT_EQ(source.m_name, "after");
    EXPECT_EQ(source.m_audio_sources.size(), 1u);

    SessionStreamList list;
    daemon.queueReply(jsonOf(R"({"list":[{"id":3,"streams":[{"id":1,"type":"audio"}]}]})"));
    ASSERT_EQ(api.getDestinationSessionList(&list), 0);
    ASSERT_EQ(list.m_sessions.size(), 1u);
    EXPECT_EQ(list.m_sessions.front().m_streams.front().m_type, "audio");

    // Replies of the wrong kind: -13 and no OUT line.
    log.clear();
    daemon.queueReply(jsonOf(R"({"session-id":"x"})"));
    EXPECT_EQ(api.addSourceSession(&source), -13);
    daemon.queueReply(jsonOf("[1,2]"));  // not an object: "list" cannot be reached
    EXPECT_EQ(api.getSourceSessionList(&list), -13);
    EXPECT_EQ(errors("TRY_DESERIALIZE(int AvMngApi::addSourceSession(SourceApi*))::"), 1u);
    EXPECT_EQ(errors("TRY_DESERIALIZE(int AvMngApi::getSourceSessionList(SessionStreamList*))::"), 1u);
    EXPECT_TRUE(traces("OUT").empty());
}

TEST_F(TypedApiTest, SessionCfgIsRebuiltFromBasicInfo) {
    daemon.replyWith(jsonOf(R"({"id":12,"name":"mix","session-list":[
        {"type":"audio","name":"a","id":1,"ipv4":{"transport":"239.1.1.1","dscp":46,"ttl":8},
         "udp":{"destination":5006},"rtp":{"payload-type":97},"redundant-type":"secondary",
         "channel-list":[{"channel":1},{"channel":2}],"link-offset":250,"ptime":125,"channel-freq":96000},
        {"type":"video","id":2,"sof-link-offset":900}]})"));
    SourceApi cfg;
    cfg.m_audio_sources.emplace_back();
    ASSERT_EQ(api.getSessionCfg(12, &cfg), 0);
    EXPECT_EQ(daemon.requests()[0].commandId, 15u);
    EXPECT_EQ(cfg.m_session_id, 12u);
    EXPECT_EQ(cfg.m_name, "mix");
    ASSERT_EQ(cfg.m_audio_sources.size(), 2u);  // appended
    ASSERT_EQ(cfg.m_video_sources.size(), 1u);
    EXPECT_TRUE(cfg.m_ancillary_sources.empty());
    const AudioSource& a = cfg.m_audio_sources.back();
    EXPECT_EQ(a.m_transport.toString() + "/" + std::to_string(a.m_udp_port), "239.1.1.1/5006");
    EXPECT_EQ(std::vector<int>({a.m_dscp, a.m_ttl, a.m_payload_type}), std::vector<int>({46, 8, 97}));
    EXPECT_EQ(a.getRedundantType(), "secondary");
    EXPECT_EQ(a.m_channels.numChannelEntries(), 2);
    EXPECT_EQ(std::vector<uint32_t>({a.m_link_offset, a.m_ptime, a.m_channel_freq}),
              std::vector<uint32_t>({250, 125, 96000}));
    EXPECT_EQ(cfg.m_video_sources.back().m_link_offset, 900u);
    EXPECT_EQ(cfg.m_video_sources.back().m_id, 2u);
}

TEST_F(TypedApiTest, SourceInfoReplacesChannelsAndKeepsSourceOnlyFields) {
    Source source;
    source.m_source_ip.set(0x0A000001);
    source.m_media_clk_offset = 5;
    source.m_channels.addChannelEntry(ChannelId(DaifType(), 0, 9));
    source.m_channels.addChannelEntry(ChannelId(DaifType(), 0, 8));
    AncillaryStreamData stream;
    stream.m_channels.addChannelEntry(ChannelId(DaifType(), 0, 1));
    api.getSourceInfo(source, &stream);
    EXPECT_EQ(source.m_channels, stream.m_channels);
    EXPECT_EQ(source.m_dscp, 40);
    EXPECT_EQ(source.m_udp_port, 20000);
    EXPECT_EQ(source.m_source_ip.get(), 0x0A000001u);
    EXPECT_EQ(source.m_media_clk_offset, 5);

    api.getSourceInfo(source, nullptr);
    EXPECT_EQ(log.at(2), std::vector<std::string>{"getSourceInfo:: Parameter is null."});
}

}  // namespace
