#include <list>
#include <string>
#include <vector>

#include "support/TypedApiFixture.h"

namespace {

TEST_F(TypedApiTest, DeviceRequestsHaveTheirCommandKeysAndKinds) {
    std::string name = "show 1";
    CfgFileTable table;
    ClockConfig clock;
    AvGlobalCfg global;
    global.m_device_name = "dev";
    std::list<SessionStatus> sessions;
    std::list<Alarm> alarms;
    UserNotifications notifications;
    TpcStatistics tpc;
    std::list<TpcStatistics> tpcs;
    Json::Value counters;
    ChannelTables tables;
    SdiData sdi;
    bool locked = false;
    std::string mode;
    SdiOffset offset(1, 20, 30);
    SdiVpgData vpg;
    HdmiAudioOffset hdmi(7);
    InterfaceLoopBack loop;
    VideoRefOutputCfg ref;
    const char* oneOffset = R"({"sdi-offsets":[{"sdi-port":1,"video-offset":20,"audio-offset":30}]})";
    checkShapes({
        {"fileCfgSaveRunning", [&](AvMngApi& a) { return a.fileCfgSaveRunning(3, &name, true); }, 9,
         doc(R"({"pos":3,"name":"show 1","startup":true})")},
        {"fileCfgLoadCfgToRunning", [](AvMngApi& a) { return a.fileCfgLoadCfgToRunning(4); }, 11, doc(R"({"pos":4})")},
        {"fileCfgLoadDefaultToRunning", [](AvMngApi& a) { return a.fileCfgLoadDefaultToRunning(); }, 11,
         doc(R"({"default":true})")},
        {"fileCfgGetTable", [&](AvMngApi& a) { return a.fileCfgGetTable(&table); }, 13, nullptr},
        {"fileCfgSetStartupPos", [](AvMngApi& a) { return a.fileCfgSetStartupPos(2); }, 25, doc(R"({"pos":2})")},
        {"fileCfgRemoveConfig", [](AvMngApi& a) { return a.fileCfgRemoveConfig(7); }, 26, doc(R"({"pos":7})")},
        {"cfgSystemClock", [&](AvMngApi& a) { return a.cfgSystemClock(&clock); }, 21, form(clock)},
        {"getSystemClockInfo", [](AvMngApi& a) { return a.getSystemClockInfo(nullptr, nullptr, nullptr, nullptr); },
         22, nullptr},
        {"resetSystemClockCounters", [](AvMngApi& a) { return a.resetSystemClockCounters(); }, 39, nullptr},
        {"getGlobalConfig", [&](AvMngApi& a) { return a.getGlobalConfig(&global); }, 27, nullptr,
         R"({"global":{"device-name":"dev"}})"},
        {"setGlobalConfig", [&](AvMngApi& a) { return a.setGlobalConfig(global); }, 28, form(global, "global")},
        {"getAlarmStatus", [&](AvMngApi& a) { return a.getAlarmStatus(sessions, alarms); }, 24, nullptr},
        {"getUserNotifications", [&](AvMngApi& a) { return a.getUserNotifications(notifications); }, 40, nullptr},
        {"getSessionTPCStats", [&](AvMngApi& a) { return a.getSessionTPCStats(9, tpc); }, 20, doc(R"({"id":9})")},
        {"getSessionAllTPCStats", [&](AvMngApi& a) { return a.getSessionAllTPCStats(tpcs); }, 20,
         doc(R"({"all":true})")},
        {"getSessionCounters", [&](AvMngApi& a) { return a.getSessionCounters(10, counters); }, 36,
         doc(R"({"id":10})")},
        {"getSessionInternalStatus",
         [&](AvMngApi& a) { return a.getSessionInternalStatus(11, true, false, true, counters); }, 38,
         doc(R"({"id":11,"clear_fifo_levels":true,"clear_counters":false,"clear_pending":true})")},
        {"getChannelTables", [&](AvMngApi& a) { return a.getChannelTables(tables, true); }, 16,
         doc(R"({"full":true})")},
        {"setSdiInterface", [&](AvMngApi& a) { return a.setSdiInterface(&sdi); }, 29, form(sdi, "sdi")},
        {"getSdiInterfaceInfo", [&](AvMngApi& a) { return a.getSdiInterfaceInfo(0, locked, mode); }, 31, nullptr,
         R"({"sdi":[{}]})"},
        {"setSdiOffset", [&](AvMngApi& a) { return a.setSdiOffset(5, offset); }, 33, doc(oneOffset)},
        {"setSdiOffset", [&](AvMngApi& a) { return a.setSdiOffset(0, offset); }, 33, doc(oneOffset)},
        {"getSdiOffset", [&](AvMngApi& a) { return a.getSdiOffset(0, offset); }, 32, nullptr,
         R"({"sdi-offsets":[{"sdi-port":1}]})"},
        {"getSdiVpgInfo", [&](AvMngApi& a) { return a.getSdiVpgInfo(0, vpg); }, 37, nullptr,
         R"({"sdi-vpg-info":[{}]})"},
        {"setHdmiAudioOffset", [&](AvMngApi& a) { return a.setHdmiAudioOffset(hdmi); }, 35,
         doc(R"({"hdmi-audio-offset":7})")},
        {"getHdmiAudioOffset", [&](AvMngApi& a) { return a.getHdmiAudioOffset(hdmi); }, 34, nullptr},
        {"setInterfaceLoopBackMode", [&](AvMngApi& a) { return a.setInterfaceLoopBackMode(loop); }, 43, form(loop)},
        {"getVideoReferenceCfg", [&](AvMngApi& a) { return a.getVideoReferenceCfg(ref); }, 45, nullptr},
        {"setVideoReferenceCfg", [&](AvMngApi& a) { return a.setVideoReferenceCfg(ref); }, 46,
         form(ref, "video-ref")},
    });
    EXPECT_EQ(global.m_device_name, "dev");
}

TEST_F(TypedApiTest, SystemClockInfoFillsOnlyTheRecordsGiven) {
    daemon.replyWith(jsonOf(R"({"config":{"ref-type":5},"status":{"current-ref":{"code":2}},
                                "counters":{"cdc":{"current":512}},"smpte-2059":{"locked":true}})"));
    for (int mask = 0; mask < 16; ++mask) {
        SCOPED_TRACE(mask);
        ClockConfig config;
        ClockStatus status;
        ClockCounters counters;
        VtcStatus vtc;
        ASSERT_EQ(api.getSystemClockInfo(mask & 1 ? &config : nullptr, mask & 2 ? &status : nullptr,
                                         mask & 4 ? &counters : nullptr, mask & 8 ? &vtc : nullptr),
                  0);
        EXPECT_EQ(config.getClockRefType() == ClockConfig::CLOCK_REF_AUTO_EXTERNAL, (mask & 1) != 0);
        EXPECT_EQ(status.getCurrentClockReference() == ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE, (mask & 2) != 0);
        EXPECT_EQ(counters.m_current == 512u, (mask & 4) != 0);
        EXPECT_EQ(vtc.m_locked, (mask & 8) != 0);
    }
    // A member of the wrong kind stops reading there: earlier records keep what they got.
    daemon.replyWith(jsonOf(R"({"config":{"ref-type":5},"status":[],"smpte-2059":{"locked":true}})"));
    ClockConfig config;
    ClockStatus status;
    VtcStatus vtc;
    EXPECT_EQ(api.getSystemClockInfo(&config, &status, nullptr, &vtc), -13);
    EXPECT_EQ(config.getClockRefType(), ClockConfig::CLOCK_REF_AUTO_EXTERNAL);
    EXPECT_FALSE(vtc.m_locked);
}

TEST_F(TypedApiTest, AlarmStatusReplacesSessionsAndAppendsGlobalAlarms) {
    std::list<SessionStatus> sessions(3);
    std::list<Alarm> alarms(1);
    daemon.replyWith(jsonOf(R"({"sessions":[{"id":1},{"id":2}],"global":[{"code":7}]})"));
    ASSERT_EQ(api.getAlarmStatus(sessions, alarms), 0);
    ASSERT_EQ(api.getAlarmStatus(sessions, alarms), 0);
    EXPECT_EQ(sessions.size(), 2u);
    EXPECT_EQ(sessions.back().m_id, 2u);
    EXPECT_EQ(alarms.size(), 3u);
    EXPECT_EQ(alarms.back().m_code, 7u);

    // The OUT line comes first, so a failing read still leaves it; sessions read stay.
    log.clear();
    daemon.replyWith(jsonOf(R"({"sessions":[{"id":4},{"id":{}}],"global":[{"code":8}]})"));
    EXPECT_EQ(api.getAlarmStatus(sessions, alarms), -13);
    EXPECT_EQ(sessions.size(), 1u);
    EXPECT_EQ(alarms.size(), 3u);
    EXPECT_EQ(traces("OUT").size(), 1u);
    EXPECT_EQ(errors("TRY_DESERIALIZE(int AvMngApi::getAlarmStatus("), 1u);
}

TEST_F(TypedApiTest, TpcStatisticsReadElementZeroOrAppendAll) {
    std::list<TpcStatistics> all(1);
    daemon.replyWith(jsonOf(R"({"tpc":[{"stream-id":1},{"stream-id":2},{"stream-id":3}]})"));
    ASSERT_EQ(api.getSessionAllTPCStats(all), 0);
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all.back().m_stream_id, 3u);

    TpcStatistics one;
    ASSERT_EQ(api.getSessionTPCStats(1, one), 0);
    EXPECT_EQ(one.m_stream_id, 1u);
    daemon.replyWith(jsonOf("{}"));  // no "tpc": the record reads a null element
    ASSERT_EQ(api.getSessionTPCStats(1, one), 0);
    EXPECT_EQ(one.m_stream_id, 0u);
    daemon.replyWith(jsonOf(R"({"tpc":{"stream-id":1}})"));
    EXPECT_EQ(api.getSessionTPCStats(1, one), -13);
}

TEST_F(TypedApiTest, IndexedRepliesSelectOneEntryOrRefuseTheIndex) {
    SdiOffset offset;
    daemon.replyWith(jsonOf(R"({"sdi-offsets":[{"sdi-port":0,"video-offset":1},{"sdi-port":1,"video-offset":2}]})"));
    EXPECT_EQ(api.getSdiOffset(2, offset), -1);
    EXPECT_TRUE(traces("OUT").empty());
    ASSERT_EQ(api.getSdiOffset(1, offset), 0);
    EXPECT_EQ(offset, SdiOffset(1, 2, 0));

    SdiVpgData vpg;
    daemon.replyWith(jsonOf(R"({"sdi-vpg-info":[{"port":1,"pattern":"ramp"}]})"));
    EXPECT_EQ(api.getSdiVpgInfo(1, vpg), -1);
    ASSERT_EQ(api.getSdiVpgInfo(0, vpg), 0);
    EXPECT_EQ(vpg.m_pattern, "ramp");

    bool locked = false;
    std::string mode = "old";
    daemon.replyWith(jsonOf(R"({"interface":[{"locked":true,"video_mode":"1080p25"}],"sdi":[{"locked":true}]})"));
    ASSERT_EQ(api.getSdiInterfaceInfo(0, locked, mode), 0);
    EXPECT_TRUE(locked);
    EXPECT_EQ(mode, "NA");
    daemon.replyWith(jsonOf(R"({"interface":[{"locked":false,"video_mode":"1080p25"}]})"));
    ASSERT_EQ(api.getSdiInterfaceInfo(0, locked, mode), 0);
    EXPECT_FALSE(locked);
    EXPECT_EQ(mode, "1080p25");
    EXPECT_EQ(api.getSdiInterfaceInfo(1, locked, mode), -1);
    EXPECT_EQ(log.at(2), (std::vector<std::string>{"Error getting SDI offsets - index 2 out of range",
                                                    "Error getting SDI VPG info - index 1 out of range",
                                                    "Error getting interface info - index 1 out of range"}));
    daemon.replyWith(jsonOf(R"({"sdi":[{"locked":true,"video_mode":{}}]})"));
    EXPECT_EQ(api.getSdiInterfaceInfo(0, locked, mode), -13);
    EXPECT_TRUE(locked);  // written before the failing read
}

TEST_F(TypedApiTest, RecordsReadTheirReplyMember) {
    AvGlobalCfg global;
    VideoRefOutputCfg ref;
    ChannelTables tables;
    UserNotifications notifications;
    HdmiAudioOffset hdmi;
    Json::Value counters = jsonOf(R"({"old":1})");
    for (const char* reply : {R"({"global":{"ptp-domain":9}})", R"({"video-ref":{"format":"1080p50"}})",
                              R"({"list":[{"num-channels":16}]})", R"({"notifications":{"startup-applied":true}})",
                              R"({"hdmi-audio-offset":12})", R"({"rx":{"packets":5}})"}) {
        daemon.queueReply(jsonOf(reply));
    }
    ASSERT_EQ(api.getGlobalConfig(&global), 0);
    ASSERT_EQ(api.getVideoReferenceCfg(ref), 0);
    ASSERT_EQ(api.getChannelTables(tables, false), 0);
    ASSERT_EQ(api.getUserNotifications(notifications), 0);
    ASSERT_EQ(api.getHdmiAudioOffset(hdmi), 0);
    ASSERT_EQ(api.getSessionCounters(3, counters), 0);
    EXPECT_EQ(global.m_ptp_domain, 9);
    EXPECT_EQ(ref.m_format, "1080p50");
    ASSERT_EQ(tables.m_tables.size(), 1u);
    EXPECT_EQ(tables.m_tables.front().m_num_channels, 16u);
    EXPECT_TRUE(notifications.m_startup_applied);
    EXPECT_EQ(hdmi.m_offset, 12u);
    EXPECT_JSON_EQ(counters, R"({"rx":{"packets":5}})");
}

}  // namespace
