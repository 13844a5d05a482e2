// The typed client API against the emulator process: each row makes one typed call and
// checks the typed records it filled from the documents the emulator produced; a command
// that changes the device is read back through another typed call. What a call sends and
// how it reads a reply is tested against the fake daemon (tests/api).

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>

#include "EmulatorProcess.h"
#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/model/AudioStreamData.h"
#include "support/LogCapture.h"

using namespace pimav::detail;

namespace {

using Ids = std::list<unsigned long long>;

constexpr uint64_t kStudioA = 1311738121;  // o= session id of examples/advertised/sap:...studio-a.sdp

ChannelList channels(std::initializer_list<uint32_t> numbers) {
    ChannelList list;
    for (uint32_t n : numbers) {
        ChannelId id;
        id.m_channel = n;
        list.addChannelEntry(id);
    }
    return list;
}

// A record's JSON form as one line, to compare a whole record at once.
std::string text(const IJsonSerializable& record) {
    Json::Value doc;
    record.Serialize(doc);
    return compact(doc);
}

// What the rows share, in the order they run.
struct Ctx {
    Ctx(AvMngApi& a, zmq::context_t& z) : api(a), context(z) {}
    AvMngApi& api;
    zmq::context_t& context;
    SourceApi sender, manual;
    DestinationApi receiver;
    SessionBasicInfo info;

    uint64_t id() const { return sender.m_session_id; }
    SessionBasicInfo basicInfo(uint64_t session) {
        SessionBasicInfo i;
        EXPECT_EQ(api.getSessionBasicInfo(session, &i), 0);
        return i;
    }
    bool senderPaused() {
        SessionStreamList list;
        EXPECT_EQ(api.getSourceSessionList(&list), 0);
        return list.find(id()) != nullptr && list.find(id())->m_paused;
    }
    Ids receivers() {
        Ids senders, receivers;
        EXPECT_EQ(api.getResourceAllocatedIds(senders, receivers), 0);
        return receivers;
    }
    CfgFileTable table() {
        CfgFileTable t;
        EXPECT_EQ(api.fileCfgGetTable(&t), 0);
        return t;
    }
};

struct Row {
    const char* method;               // as declared; overloads as "name(FirstParameterType)"
    std::function<int(Ctx&)> call;    // the typed call, returning its result
    std::function<void(Ctx&)> check;  // the typed records it filled, or the change read back
};

bool contains(const Ids& ids, uint64_t id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

// One row per line group: the call, then what it must have filled or changed.
// clang-format off
const std::vector<Row>& rows() {
    static const std::vector<Row> table = {
        // ---- sessions ----
        {"addSourceSession", [](Ctx& c) {
             AudioSource audio;
             audio.m_codec.setCodecValue(Codec::CODEC_L24);
             audio.m_channels = channels({0, 1});
             VideoSource video;
             video.m_video_format = VideoFormat(VideoFormat::VIDEO_FORMAT_1080P50);
             c.sender.m_name = "typed";
             c.sender.m_audio_sources = {audio};
             c.sender.m_video_sources = {video};
             c.sender.m_ancillary_sources = {Source()};
             return c.api.addSourceSession(&c.sender);
         }, [](Ctx& c) {  // the reply completes the record: ids, addresses, ports, audio defaults
             const AudioSource& a = c.sender.m_audio_sources.front();
             EXPECT_NE(c.id(), 0u);
             EXPECT_NE(a.m_id, 0u);
             EXPECT_EQ(a.m_transport.toString(), "239.69." + std::to_string(c.id()) + ".1");
             EXPECT_EQ(a.m_source_ip.toString(), "192.168.10.20");
             EXPECT_EQ(std::make_tuple(a.m_udp_port, a.m_dscp, a.m_ptime, a.m_channel_freq),
                       std::make_tuple(5004, 34, 1000u, 48000u));
             EXPECT_EQ(c.sender.m_video_sources.front().m_udp_port, 20000);
         }},
        {"addDestinationSession(DestinationApi*)", [](Ctx& c) {
             c.receiver.m_rem_sid.m_id = kStudioA;
             c.receiver.m_channels = channels({4});
             return c.api.addDestinationSession(&c.receiver);
         }, [](Ctx& c) {
             EXPECT_NE(c.receiver.m_session_id, 0u);
             EXPECT_EQ(c.receiver.m_name, "Studio A stereo");  // named after the advertised stream
             EXPECT_EQ(c.basicInfo(c.receiver.m_session_id).m_remote_sid, kStudioA);
         }},
        {"addDestinationSession(SourceApi*)", [](Ctx& c) {
             AudioSource audio;
             audio.m_transport.set(0xEF010203);  // 239.1.2.3
             c.manual.m_audio_sources.push_back(audio);
             return c.api.addDestinationSession(&c.manual);
         }, [](Ctx& c) {
             EXPECT_EQ(c.manual.m_name, "Receiver " + std::to_string(c.manual.m_session_id));
             EXPECT_EQ(c.manual.m_audio_sources.front().m_transport.toString(), "239.1.2.3");
         }},
        {"getSessionSdp", [](Ctx& c) {
             std::string sdp = "kept|";
             const int rc = c.api.getSessionSdp(c.id(), &sdp);
             const std::string group = c.sender.m_audio_sources.front().m_transport.toString();
             EXPECT_EQ(sdp.rfind("kept|v=0\n", 0), 0u) << sdp;  // appended to what the string held
             EXPECT_NE(sdp.find("\ns=typed\nt=0 0\nm=audio 5004 RTP/AVP 98\n"), std::string::npos) << sdp;
             EXPECT_NE(sdp.find("\nc=IN IP4 " + group + "/64\n"), std::string::npos) << sdp;
             return rc;
         }, nullptr},
        {"getSessionBasicInfo", [](Ctx& c) { return c.api.getSessionBasicInfo(c.id(), &c.info); }, [](Ctx& c) {
             EXPECT_EQ(std::make_tuple(c.info.m_id, c.info.m_name, c.info.m_version),
                       std::make_tuple(c.id(), std::string("typed"), uint64_t{1}));
             ASSERT_EQ(c.info.m_streams.size(), 3u);
             const auto* audio = dynamic_cast<const AudioStreamData*>(c.info.m_streams.front());
             ASSERT_NE(audio, nullptr);
             EXPECT_EQ(audio->m_codec.getCodec(), Codec::CODEC_L24);
             // Every stream that is not audio is read as a video stream record.
             EXPECT_EQ(c.info.m_streams.back()->m_type.get(), StreamType::VIDEO);
         }},
        {"getSourceInfo", [](Ctx& c) {
             Source source;
             source.m_channels = channels({7, 8, 9});
             c.api.getSourceInfo(source, c.info.m_streams.front());
             const AudioSource& sent = c.sender.m_audio_sources.front();
             EXPECT_EQ(std::make_tuple(source.m_transport.get(), source.m_id),
                       std::make_tuple(sent.m_transport.get(), sent.m_id));
             EXPECT_EQ(std::make_tuple(source.m_udp_port, source.m_dscp, source.m_ttl, source.m_payload_type),
                       std::make_tuple(5004, 34, uint8_t{64}, uint8_t{98}));
             EXPECT_EQ(text(source.m_channels), text(channels({0, 1})));
             return 0;
         }, nullptr},
        {"getSessionCfg", [](Ctx& c) {
             SourceApi cfg;
             const int rc = c.api.getSessionCfg(c.id(), &cfg);
             EXPECT_EQ(std::make_tuple(cfg.m_session_id, cfg.m_name), std::make_tuple(c.id(), std::string("typed")));
             // Audio stays audio; video and the ancillary stream come back as video sources.
             EXPECT_EQ(std::make_tuple(cfg.m_audio_sources.size(), cfg.m_video_sources.size()),
                       std::make_tuple(size_t{1}, size_t{2}));
             EXPECT_TRUE(cfg.m_ancillary_sources.empty());
             if (rc == 0 && !cfg.m_audio_sources.empty() && !cfg.m_video_sources.empty()) {
                 const AudioSource& a = cfg.m_audio_sources.front();
                 EXPECT_EQ(a.m_transport, c.sender.m_audio_sources.front().m_transport);
                 EXPECT_EQ(std::make_tuple(a.m_codec.getCodec(), a.m_ptime, a.m_channel_freq),
                           std::make_tuple(uint32_t{Codec::CODEC_L24}, 1000u, 48000u));
                 EXPECT_EQ(cfg.m_video_sources.front().m_video_format.toString(), "1080p50");
             }
             return rc;
         }, nullptr},
        {"getSourceSessionList", [](Ctx& c) {
             SessionStreamList l;
             const int rc = c.api.getSourceSessionList(&l);
             EXPECT_EQ(l.m_sessions.size(), 1u);
             const SessionStreamList::Session* s = l.find(c.id());
             EXPECT_TRUE(s != nullptr && s->m_name == "typed" && s->m_streams.size() == 3);
             return rc;
         }, nullptr},
        {"getDestinationSessionList", [](Ctx& c) {
             SessionStreamList l;
             const int rc = c.api.getDestinationSessionList(&l);
             EXPECT_EQ(l.m_sessions.size(), 2u);
             EXPECT_TRUE(l.find(c.receiver.m_session_id) && l.find(c.manual.m_session_id));
             return rc;
         }, nullptr},
        {"getAdvertisedSessionList", [](Ctx& c) {
             AdvSessionsDb db;
             const int rc = c.api.getAdvertisedSessionList(&db);
             EXPECT_EQ(db.m_entries.size(), 3u);
             const AdvSessionEntry& studio = db.m_entries[kStudioA];
             EXPECT_EQ(studio.getSourceUrl(), "sap://192.168.1.50:9875/studio-a");
             EXPECT_TRUE(studio.isInUse());  // the receiver takes its stream
             EXPECT_EQ(studio.m_session.m_session_id, kStudioA);  // the SDP, parsed
             EXPECT_EQ(studio.m_session.m_media.size(), 1u);
             return rc;
         }, nullptr},
        {"pauseResumeSession", [](Ctx& c) { return c.api.pauseResumeSession(c.id(), true); },
         [](Ctx& c) { EXPECT_TRUE(c.senderPaused()); }},
        {"getAlarmStatus", [](Ctx& c) {
             std::list<SessionStatus> sessions(2);
             std::list<Alarm> alarms{Alarm(9, AlarmSeverity(), "caller's", 0)};
             const int rc = c.api.getAlarmStatus(sessions, alarms);
             EXPECT_EQ(sessions.size(), 3u);  // emptied first, then one per session
             EXPECT_EQ(alarms.size(), 1u);    // no global alarm; the caller's entry stays
             const SessionStatus& s = sessions.front();
             EXPECT_EQ(s.m_id, c.id());
             EXPECT_TRUE(s.m_streams.size() == 3 && s.m_streams.front().m_alarms.size() == 1 &&
                         s.m_streams.front().m_alarms.front().m_text == "stream paused");
             return rc;
         }, nullptr},
        {"pauseResumeSession", [](Ctx& c) { return c.api.pauseResumeSession(c.id(), false); },
         [](Ctx& c) { EXPECT_FALSE(c.senderPaused()); }},
        {"getResourceAllocatedIds", [](Ctx& c) {
             Ids senders{99}, receivers;
             const int rc = c.api.getResourceAllocatedIds(senders, receivers);
             EXPECT_EQ(senders, (Ids{99, c.id()}));  // appended
             EXPECT_EQ(receivers, (Ids{c.receiver.m_session_id, c.manual.m_session_id}));
             return rc;
         }, nullptr},
        {"getListOfExistingStreams", [](Ctx& c) {
             std::list<SessionConfigData> streams(1);
             const int rc = c.api.getListOfExistingStreams(streams);
             EXPECT_EQ(streams.size(), 4u);
             const SessionConfigData& s = *std::next(streams.begin());
             EXPECT_EQ(std::make_tuple(s.m_id, s.m_name, s.m_type.get(), s.m_audio_streams.size()),
                       std::make_tuple(c.id(), std::string("typed"), int32_t{SessionType::SOURCE}, size_t{1}));
             EXPECT_EQ(s.m_video_streams.size(), 1u);
             EXPECT_EQ(s.m_sdp.rfind("v=0\n", 0), 0u);
             EXPECT_EQ(streams.back().m_type.get(), SessionType::DESTINATION);
             return rc;
         }, nullptr},
        {"getSessionTPCStats", [](Ctx& c) {
             TpcStatistics t;
             const int rc = c.api.getSessionTPCStats(c.id(), t);
             EXPECT_EQ(text(t), "{\"data-detected\":true,\"error-detected\":false,\"session-id\":" +
                                    std::to_string(c.id()) + ",\"stream-id\":" +
                                    std::to_string(c.sender.m_audio_sources.front().m_id) + "}");
             return rc;
         }, nullptr},
        {"getSessionAllTPCStats", [](Ctx& c) {
             std::list<TpcStatistics> all;
             const int rc = c.api.getSessionAllTPCStats(all);
             EXPECT_EQ(all.size(), 5u);  // three sender streams, one per receiver
             EXPECT_EQ(all.back().m_session_id, c.manual.m_session_id);
             return rc;
         }, nullptr},
        {"getSessionCounters", [](Ctx& c) {
             Json::Value v;
             const int rc = c.api.getSessionCounters(c.id(), v);
             EXPECT_EQ(std::make_tuple(v["id"].asUInt64(), v["streams"].size()), std::make_tuple(c.id(), 3u));
             return rc;
         }, nullptr},
        {"getSessionInternalStatus", [](Ctx& c) {
             Json::Value v;
             const int rc = c.api.getSessionInternalStatus(c.id(), true, false, true, v);
             EXPECT_EQ(compact(v), "{\"clear_counters\":false,\"clear_fifo_levels\":true,\"clear_pending\":true,"
                                        "\"fifo-level\":0,\"id\":" + std::to_string(c.id()) +
                                        ",\"pending\":0,\"state\":\"Enabled\",\"streams\":3}");
             return rc;
         }, nullptr},
        {"getChannelTables", [](Ctx& c) {
             ChannelTables t;
             const int rc = c.api.getChannelTables(t, true);
             EXPECT_EQ(t.m_tables.size(), 1u);
             std::map<uint32_t, uint64_t> used;
             for (const auto& u : t.m_tables.front().m_channels) {
                 used[u.m_channel] = u.m_used ? u.m_session_id : 0;
             }
             EXPECT_EQ(used.size(), t.m_tables.front().m_num_channels);  // "full": every channel
             EXPECT_EQ(std::make_tuple(used[0], used[1], used[2], used[4]),
                       std::make_tuple(c.id(), c.id(), uint64_t{0}, c.receiver.m_session_id));
             return rc;
         }, nullptr},
        {"disconnectChannels", [](Ctx& c) {
             ChannelList l = channels({1});
             return c.api.disconnectChannels(c.id(), l);
         }, [](Ctx& c) {
             const SessionBasicInfo i = c.basicInfo(c.id());
             ASSERT_FALSE(i.m_streams.empty());
             EXPECT_EQ(text(i.m_streams.front()->m_channels), text(channels({0})));
         }},
        {"updateSession", [](Ctx& c) { c.sender.m_name = "typed v2"; return c.api.updateSession(&c.sender); },
         [](Ctx& c) {
             const SessionBasicInfo i = c.basicInfo(c.id());
             EXPECT_EQ(std::make_tuple(i.m_name, i.m_version), std::make_tuple(std::string("typed v2"), uint64_t{2}));
         }},
        // ---- device ----
        {"cfgSystemClock", [](Ctx& c) { ClockConfig k; return c.api.cfgSystemClock(&k); }, nullptr},
        {"getSystemClockInfo", [](Ctx& c) {
             ClockConfig k;
             ClockStatus s;
             ClockCounters n;
             VtcStatus v;
             const int rc = c.api.getSystemClockInfo(&k, &s, &n, &v);
             EXPECT_EQ(k.getClockRefType(), ClockConfig::CLOCK_REF_AUTO_PTP);
             EXPECT_EQ(s.getCurrentClockReference(), ClockStatus::CURRENT_REF_PTP_SLAVE);
             EXPECT_EQ(s.m_interface_status, ClockStatus::INTERFACE_CLOCK_LOCKED);
             EXPECT_EQ(std::make_tuple(n.m_min, n.m_current, n.m_max), std::make_tuple(508u, 512u, 516u));
             EXPECT_TRUE(v.m_locked && v.m_master_locking_status == VtcStatus::WARM_LOCKED);
             return rc;
         }, nullptr},
        {"resetSystemClockCounters", [](Ctx& c) { return c.api.resetSystemClockCounters(); }, [](Ctx& c) {
             ClockCounters n;
             EXPECT_EQ(c.api.getSystemClockInfo(nullptr, nullptr, &n, nullptr), 0);
             EXPECT_EQ(std::make_tuple(n.m_min, n.m_max), std::make_tuple(512u, 512u));
         }},
        {"getGlobalConfig", [](Ctx& c) {
             AvGlobalCfg g;
             const int rc = c.api.getGlobalConfig(&g);
             EXPECT_EQ(g.m_device_name, "avmng-emulator");
             return rc;
         }, nullptr},
        {"setGlobalConfig", [](Ctx& c) {
             AvGlobalCfg g;
             std::tie(g.m_device_name, g.m_ptp_domain) = std::make_tuple("typed-device", 5);
             return c.api.setGlobalConfig(g);
         }, [](Ctx& c) {
             AvGlobalCfg g;
             EXPECT_EQ(c.api.getGlobalConfig(&g), 0);
             EXPECT_EQ(std::make_tuple(g.m_device_name, g.m_ptp_domain),
                       std::make_tuple(std::string("typed-device"), uint8_t{5}));
             EXPECT_EQ(c.basicInfo(c.id()).m_ptp_domain, 5u);  // sessions follow the device's domain
         }},
        {"getUserNotifications", [](Ctx& c) {
             UserNotifications n;
             const int rc = c.api.getUserNotifications(n);
             EXPECT_TRUE(n.m_running_is_not_saved);
             EXPECT_FALSE(n.m_startup_applied);
             return rc;
         }, nullptr},
        {"setSdiInterface", [](Ctx& c) {
             SdiData d;
             std::tie(d.m_sdi_port, d.m_enable, d.m_pattern_control) = std::make_tuple(1, true, 2);
             d.m_video_format = VideoFormat(VideoFormat::VIDEO_FORMAT_1080I50);
             return c.api.setSdiInterface(&d);
         }, nullptr},
        {"getSdiVpgInfo", [](Ctx& c) {
             SdiVpgData port0, port1;
             EXPECT_EQ(c.api.getSdiVpgInfo(0, port0), 0);
             const int rc = c.api.getSdiVpgInfo(1, port1);
             EXPECT_EQ(text(port0), R"({"enable":false,"pattern":"colorbars","port":0,"video_mode":"NA"})");
             EXPECT_EQ(text(port1), R"({"enable":true,"pattern":"pathological","port":1,"video_mode":"1080i50"})");
             return rc;
         }, nullptr},
        {"getSdiInterfaceInfo", [](Ctx& c) {
             bool locked = false;
             std::string mode = "x";
             const int rc = c.api.getSdiInterfaceInfo(0, locked, mode);
             EXPECT_EQ(std::make_tuple(locked, mode), std::make_tuple(true, std::string("1080p50")));
             return rc;
         }, nullptr},
        {"setSdiOffset", [](Ctx& c) {
             SdiOffset o;
             std::tie(o.m_sdi_port, o.m_video_offset, o.m_audio_offset) = std::make_tuple(1, 11, 12);
             return c.api.setSdiOffset(7, o);  // the port is the offset's own; 7 is not sent
         }, nullptr},
        {"getSdiOffset", [](Ctx& c) {
             SdiOffset o0, o1;
             EXPECT_EQ(c.api.getSdiOffset(0, o0), 0);
             const int rc = c.api.getSdiOffset(1, o1);
             EXPECT_EQ(std::make_tuple(o0.m_sdi_port, o0.m_video_offset), std::make_tuple(uint8_t{0}, 0u));
             EXPECT_EQ(std::make_tuple(o1.m_sdi_port, o1.m_video_offset, o1.m_audio_offset),
                       std::make_tuple(uint8_t{1}, 11u, 12u));
             return rc;
         }, nullptr},
        {"setHdmiAudioOffset", [](Ctx& c) {
             HdmiAudioOffset o;
             o.m_offset = 33;
             return c.api.setHdmiAudioOffset(o);
         }, nullptr},
        {"getHdmiAudioOffset", [](Ctx& c) {
             HdmiAudioOffset o;
             const int rc = c.api.getHdmiAudioOffset(o);
             EXPECT_EQ(o.m_offset, 33u);
             return rc;
         }, nullptr},
        {"setInterfaceLoopBackMode", [](Ctx& c) {
             InterfaceLoopBack m;
             std::tie(m.m_enable, m.m_interface) = std::make_tuple(true, DaifType(1, "sdi"));
             return c.api.setInterfaceLoopBackMode(m);
         }, [](Ctx& c) {  // no command reads it back but the running state
             Json::Value running;
             ASSERT_EQ(c.api.jsonApi.fileCfgGetRunning(running), 0);
             EXPECT_EQ(compact(running["running"]["settings"]["loopback"]),
                       R"([{"enable":true,"interface":{"string":"sdi","type":1}}])");
         }},
        {"getVideoReferenceCfg", [](Ctx& c) {
             VideoRefOutputCfg v;
             const int rc = c.api.getVideoReferenceCfg(v);
             EXPECT_EQ(std::make_tuple(v.m_format, v.m_source),
                       std::make_tuple(std::string("1080p50"), std::string("ptp")));
             return rc;
         }, nullptr},
        {"setVideoReferenceCfg", [](Ctx& c) {
             VideoRefOutputCfg v;
             std::tie(v.m_format, v.m_offset) = std::make_tuple("1080i50", 7);
             return c.api.setVideoReferenceCfg(v);
         }, [](Ctx& c) {
             VideoRefOutputCfg v;
             EXPECT_EQ(c.api.getVideoReferenceCfg(v), 0);
             EXPECT_EQ(std::make_tuple(v.m_format, v.m_offset), std::make_tuple(std::string("1080i50"), 7));
         }},
        // ---- saved configurations, last: loading replaces the running state ----
        {"fileCfgSaveRunning", [](Ctx& c) {
             std::string name = "typed save";
             return c.api.fileCfgSaveRunning(3, &name, false);
         }, nullptr},
        {"fileCfgGetTable", [](Ctx& c) {
             CfgFileTable t;
             const int rc = c.api.fileCfgGetTable(&t);
             EXPECT_TRUE(t.getFileInfo(3)->m_name == "typed save" && t.getFileInfo(3)->m_size > 0);
             EXPECT_EQ(t.getStartupPosition(), CfgFileTable::kDefaultPosition);
             return rc;
         }, nullptr},
        {"fileCfgSetStartupPos", [](Ctx& c) { return c.api.fileCfgSetStartupPos(3); },
         [](Ctx& c) { EXPECT_EQ(c.table().getStartupPosition(), 3u); }},
        {"removeSession", [](Ctx& c) { return c.api.removeSession(c.manual.m_session_id); },
         [](Ctx& c) { EXPECT_FALSE(contains(c.receivers(), c.manual.m_session_id)); }},
        {"fileCfgLoadCfgToRunning", [](Ctx& c) { return c.api.fileCfgLoadCfgToRunning(3); },
         [](Ctx& c) { EXPECT_TRUE(contains(c.receivers(), c.manual.m_session_id)); }},
        {"fileCfgLoadDefaultToRunning", [](Ctx& c) { return c.api.fileCfgLoadDefaultToRunning(); },
         [](Ctx& c) { EXPECT_TRUE(c.receivers().empty()); }},
        {"fileCfgRemoveConfig", [](Ctx& c) { return c.api.fileCfgRemoveConfig(3); },
         [](Ctx& c) { EXPECT_EQ(c.table().getFileInfo(3)->m_name, ""); }},
    };
    return table;
}
// clang-format on

class TypedApi : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_emulator = new EmulatorProcess("", {"--advertise", sourcePath("examples/advertised")});
        s_context = new zmq::context_t(1);
    }
    static void TearDownTestSuite() {
        delete s_context;
        delete s_emulator;
    }
    static void connect(AvMngApi& api) {
        api.jsonApi.ipcPort = static_cast<uint32_t>(s_emulator->port());
        ASSERT_EQ(api.init(*s_context), 0);
    }

    static EmulatorProcess* s_emulator;
    static zmq::context_t* s_context;
};

EmulatorProcess* TypedApi::s_emulator = nullptr;
zmq::context_t* TypedApi::s_context = nullptr;

}  // namespace

TEST_F(TypedApi, EveryMethodAgainstTheEmulator) {
    AvMngApi api;
    connect(api);
    Ctx ctx(api, *s_context);
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.method);
        ASSERT_EQ(row.call(ctx), 0);
        if (row.check) {
            row.check(ctx);
        }
        ASSERT_FALSE(HasFatalFailure());
    }
}

// A refused request is answered with {"error": {...}}. The transport hands that document
// back like any reply, so the typed layer returns 0 and reads a document that holds none
// of the members it looks for: the records stay as they were.
TEST_F(TypedApi, RefusalsComeBackAsTheDaemonsCodeAndLeaveRecordsAlone) {
    AvMngApi api;
    connect(api);
    const session_id_t unknown = 987654321;
    LogCapture log;
    std::string sdp = "kept";
    EXPECT_EQ(api.getSessionSdp(unknown, &sdp), -16);
    EXPECT_EQ(sdp, "kept");
    EXPECT_TRUE(log.contains("CHK(int AvMngApi::getSessionSdp(session_id_t, std::__cxx11::string*))"));
    EXPECT_TRUE(log.contains("refused by the daemon with -16, refused by the daemon: no session with id 987654321"));
    // The nested call's code comes back from getSessionCfg, with its own CHK line.
    SourceApi cfg;
    EXPECT_EQ(api.getSessionCfg(unknown, &cfg), -16);
    EXPECT_EQ(text(cfg), text(SourceApi()));
    EXPECT_TRUE(log.contains("CHK(int AvMngApi::getSessionCfg(session_id_t, SourceApi*))"));
    TpcStatistics stats;
    EXPECT_EQ(api.getSessionTPCStats(unknown, stats), -16);
    EXPECT_EQ(text(stats), text(TpcStatistics()));
    EXPECT_EQ(api.removeSession(0), -14);
    // The board takes no external clock reference: refused, and the clock stays as it was.
    ClockConfig external;
    external.m_clock_ref = ClockConfig::CLOCK_REF_AUTO_EXTERNAL;
    EXPECT_EQ(api.cfgSystemClock(&external), -8);
    ClockConfig now;
    EXPECT_EQ(api.getSystemClockInfo(&now, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(now.getClockRefType(), ClockConfig::CLOCK_REF_AUTO_PTP);
    ErrorReport report;
    api.getLastErrorMessage(report);
    EXPECT_EQ(report.code, -8);
    EXPECT_EQ(report.commandId, 21u);
}
