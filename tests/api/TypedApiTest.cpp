// The typed client API against a daemon in the test: each call of tests/data/api/typed-calls.txt
// with the request it sends, the reply it reads, its result, trace and error lines; below,
// what the case file cannot say.

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <map>
#include <stdexcept>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "support/FakeDaemon.h"
#include "support/JsonText.h"
#include "support/KindedJson.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

using Lines = std::vector<std::string>;

// A record whose Serialize throws, standing in for any request record.
template <typename Record>
struct Throwing : Record {
    void Serialize(Json::Value&) const override { throw std::runtime_error("cannot serialize"); }
};

// Everything the calls read from and write to, kept across the calls of one case.
struct Values {
    SourceApi source;
    DestinationApi destination;
    ChannelList channels;
    std::string sdp, name = "show 1", mode;
    SessionBasicInfo info;
    SessionStreamList list;
    AdvSessionsDb db;
    std::list<unsigned long long> senders, receivers;
    std::list<SessionConfigData> streams;
    CfgFileTable table;
    ClockConfig clock;
    AvGlobalCfg global;
    std::list<SessionStatus> sessions;
    std::list<Alarm> alarms;
    UserNotifications notifications;
    TpcStatistics tpc;
    std::list<TpcStatistics> tpcs;
    Json::Value counters;
    ChannelTables tables;
    SdiData sdi;
    bool locked = false;
    SdiOffset offset{1, 20, 30};
    SdiVpgData vpg;
    HdmiAudioOffset hdmi{7};
    InterfaceLoopBack loop;
    VideoRefOutputCfg ref;
    Throwing<SourceApi> badSource;
    Throwing<DestinationApi> badDestination;
    Throwing<ClockConfig> badClock;
    Throwing<AvGlobalCfg> badGlobal;
    Throwing<SdiData> badSdi;
    Throwing<HdmiAudioOffset> badHdmi;
    Throwing<InterfaceLoopBack> badLoop;
    Throwing<VideoRefOutputCfg> badRef;
    Throwing<ChannelList> badChannels;

    // The records a case may fill ("set NAME JSON"); these and the other values can be
    // looked at ("output NAME JSON").
    IJsonSerializable* record(const std::string& n) {
        // clang-format off
        const std::map<std::string, IJsonSerializable*> records = {
            {"source", &source}, {"destination", &destination}, {"channels", &channels}, {"info", &info},
            {"list", &list}, {"db", &db}, {"table", &table}, {"clock", &clock}, {"global", &global},
            {"notifications", &notifications}, {"tpc", &tpc}, {"tables", &tables}, {"sdi", &sdi},
            {"vpg", &vpg}, {"hdmi", &hdmi}, {"loop", &loop}, {"ref", &ref}};
        // clang-format on
        const auto it = records.find(n);
        return it == records.end() ? nullptr : it->second;
    }
    template <typename T>
    static Json::Value form(const T& value) {
        Json::Value out;
        if constexpr (std::is_same_v<T, unsigned long long>) {
            out = Json::UInt64(value);
        } else if constexpr (std::is_base_of_v<IJsonSerializable, T> || std::is_same_v<T, SdiOffset>) {
            value.Serialize(out);
        } else {
            out = Json::Value(Json::arrayValue);
            for (const auto& item : value) {
                out.append(form(item));
            }
        }
        return out;
    }
    Json::Value view(const std::string& n) {
        if (IJsonSerializable* r = record(n)) {
            return form(*r);
        }
        // clang-format off
        const std::map<std::string, Json::Value> others = {
            {"sdp", sdp}, {"mode", mode}, {"locked", locked}, {"counters", counters}, {"offset", form(offset)},
            {"senders", form(senders)}, {"receivers", form(receivers)}, {"streams", form(streams)},
            {"sessions", form(sessions)}, {"alarms", form(alarms)}, {"tpcs", form(tpcs)}};
        // clang-format on
        return others.at(n);
    }
};

using Call = std::function<int(AvMngApi&, Values&)>;

// A call: `method` of the AvMngApi `a`, on the values `v`.
// clang-format off
#define PIMAV_CALL(label, method) {label, [](AvMngApi& a, [[maybe_unused]] Values& v) { return a.method; }}
// clang-format on

// The calls by label: the method's name, with the variant in brackets.
const std::map<std::string, Call>& calls() {
    static const std::map<std::string, Call> all = {
        PIMAV_CALL("addSourceSession", addSourceSession(&v.source)),
        PIMAV_CALL("addDestinationSession", addDestinationSession(&v.destination)),
        PIMAV_CALL("addDestinationSession(source)", addDestinationSession(&v.source)),
        PIMAV_CALL("updateSession", updateSession(&v.source)),
        PIMAV_CALL("removeSession", removeSession(0)),
        PIMAV_CALL("disconnectChannels", disconnectChannels(18446744073709551615ull, v.channels)),
        PIMAV_CALL("getSessionSdp", getSessionSdp(5, &v.sdp)),
        PIMAV_CALL("getSessionBasicInfo", getSessionBasicInfo(6, &v.info)),
        PIMAV_CALL("getSessionCfg", getSessionCfg(12, &v.source)),
        PIMAV_CALL("getSourceSessionList", getSourceSessionList(&v.list)),
        PIMAV_CALL("getDestinationSessionList", getDestinationSessionList(&v.list)),
        PIMAV_CALL("getAdvertisedSessionList", getAdvertisedSessionList(&v.db)),
        PIMAV_CALL("pauseResumeSession", pauseResumeSession(9, true)),
        PIMAV_CALL("getResourceAllocatedIds", getResourceAllocatedIds(v.senders, v.receivers)),
        PIMAV_CALL("getListOfExistingStreams", getListOfExistingStreams(v.streams)),
        PIMAV_CALL("fileCfgSaveRunning", fileCfgSaveRunning(3, &v.name, true)),
        PIMAV_CALL("fileCfgLoadCfgToRunning", fileCfgLoadCfgToRunning(4)),
        PIMAV_CALL("fileCfgLoadDefaultToRunning", fileCfgLoadDefaultToRunning()),
        PIMAV_CALL("fileCfgGetTable", fileCfgGetTable(&v.table)),
        PIMAV_CALL("fileCfgSetStartupPos", fileCfgSetStartupPos(2)),
        PIMAV_CALL("fileCfgRemoveConfig", fileCfgRemoveConfig(7)),
        PIMAV_CALL("cfgSystemClock", cfgSystemClock(&v.clock)),
        PIMAV_CALL("getSystemClockInfo", getSystemClockInfo(nullptr, nullptr, nullptr, nullptr)),
        PIMAV_CALL("resetSystemClockCounters", resetSystemClockCounters()),
        PIMAV_CALL("getGlobalConfig", getGlobalConfig(&v.global)),
        PIMAV_CALL("setGlobalConfig", setGlobalConfig(v.global)),
        PIMAV_CALL("getAlarmStatus", getAlarmStatus(v.sessions, v.alarms)),
        PIMAV_CALL("getUserNotifications", getUserNotifications(v.notifications)),
        PIMAV_CALL("getSessionTPCStats", getSessionTPCStats(9, v.tpc)),
        PIMAV_CALL("getSessionAllTPCStats", getSessionAllTPCStats(v.tpcs)),
        PIMAV_CALL("getSessionCounters", getSessionCounters(10, v.counters)),
        PIMAV_CALL("getSessionInternalStatus", getSessionInternalStatus(11, true, false, true, v.counters)),
        PIMAV_CALL("getChannelTables", getChannelTables(v.tables, true)),
        PIMAV_CALL("getChannelTables(short)", getChannelTables(v.tables, false)),
        PIMAV_CALL("setSdiInterface", setSdiInterface(&v.sdi)),
        PIMAV_CALL("getSdiInterfaceInfo(0)", getSdiInterfaceInfo(0, v.locked, v.mode)),
        PIMAV_CALL("getSdiInterfaceInfo(1)", getSdiInterfaceInfo(1, v.locked, v.mode)),
        PIMAV_CALL("setSdiOffset(5)", setSdiOffset(5, v.offset)),
        PIMAV_CALL("setSdiOffset(0)", setSdiOffset(0, v.offset)),
        PIMAV_CALL("getSdiOffset(1)", getSdiOffset(1, v.offset)),
        PIMAV_CALL("getSdiOffset(2)", getSdiOffset(2, v.offset)),
        PIMAV_CALL("getSdiVpgInfo(0)", getSdiVpgInfo(0, v.vpg)),
        PIMAV_CALL("getSdiVpgInfo(1)", getSdiVpgInfo(1, v.vpg)),
        PIMAV_CALL("setHdmiAudioOffset", setHdmiAudioOffset(v.hdmi)),
        PIMAV_CALL("getHdmiAudioOffset", getHdmiAudioOffset(v.hdmi)),
        PIMAV_CALL("setInterfaceLoopBackMode", setInterfaceLoopBackMode(v.loop)),
        PIMAV_CALL("getVideoReferenceCfg", getVideoReferenceCfg(v.ref)),
        PIMAV_CALL("setVideoReferenceCfg", setVideoReferenceCfg(v.ref)),
        // Null pointers.
        PIMAV_CALL("addSourceSession(null)", addSourceSession(nullptr)),
        PIMAV_CALL("addDestinationSession(null)",
                   addDestinationSession(static_cast<DestinationApi*>(nullptr))),
        PIMAV_CALL("addDestinationSession(null source)",
                   addDestinationSession(static_cast<SourceApi*>(nullptr))),
        PIMAV_CALL("updateSession(null)", updateSession(nullptr)),
        PIMAV_CALL("getSessionSdp(null)", getSessionSdp(1, nullptr)),
        PIMAV_CALL("getSessionBasicInfo(null)", getSessionBasicInfo(1, nullptr)),
        PIMAV_CALL("getSessionCfg(null)", getSessionCfg(1, nullptr)),
        PIMAV_CALL("getSourceSessionList(null)", getSourceSessionList(nullptr)),
        PIMAV_CALL("getDestinationSessionList(null)", getDestinationSessionList(nullptr)),
        PIMAV_CALL("getAdvertisedSessionList(null)", getAdvertisedSessionList(nullptr)),
        PIMAV_CALL("fileCfgSaveRunning(null)", fileCfgSaveRunning(1, nullptr, false)),
        PIMAV_CALL("fileCfgGetTable(null)", fileCfgGetTable(nullptr)),
        PIMAV_CALL("cfgSystemClock(null)", cfgSystemClock(nullptr)),
        PIMAV_CALL("getGlobalConfig(null)", getGlobalConfig(nullptr)),
        PIMAV_CALL("setSdiInterface(null)", setSdiInterface(nullptr)),
        // Request records that cannot be written.
        PIMAV_CALL("addSourceSession(throwing)", addSourceSession(&v.badSource)),
        PIMAV_CALL("addDestinationSession(throwing)", addDestinationSession(&v.badDestination)),
        PIMAV_CALL("addDestinationSession(throwing source)", addDestinationSession(&v.badSource)),
        PIMAV_CALL("updateSession(throwing)", updateSession(&v.badSource)),
        PIMAV_CALL("disconnectChannels(throwing)", disconnectChannels(1, v.badChannels)),
        PIMAV_CALL("cfgSystemClock(throwing)", cfgSystemClock(&v.badClock)),
        PIMAV_CALL("setGlobalConfig(throwing)", setGlobalConfig(v.badGlobal)),
        PIMAV_CALL("setSdiInterface(throwing)", setSdiInterface(&v.badSdi)),
        PIMAV_CALL("setHdmiAudioOffset(throwing)", setHdmiAudioOffset(v.badHdmi)),
        PIMAV_CALL("setInterfaceLoopBackMode(throwing)", setInterfaceLoopBackMode(v.badLoop)),
        PIMAV_CALL("setVideoReferenceCfg(throwing)", setVideoReferenceCfg(v.badRef)),
    };
    return all;
}
#undef PIMAV_CALL

// An AvMngApi connected over loopback to a daemon of its own, every log line captured.
class TypedApiTest : public ::testing::Test {
protected:
    void SetUp() override {
        api.jsonApi.ipcPort = daemon.port();
        ASSERT_EQ(api.init(context, "127.0.0.1"), 0);
    }

    // The typed layer's trace lines of `method` ("IN" or "OUT"), in order.
    Lines traces(const std::string& method, const std::string& dir) const {
        Lines found;
        for (const std::string& line : log.at(7)) {
            if (line.rfind("AVMANAGER JSON API int AvMngApi::" + method + "(", 0) == 0 &&
                line.find(":" + dir + "\n") != std::string::npos) {
                found.push_back(line);
            }
        }
        return found;
    }

    zmq::context_t context;
    FakeDaemon daemon;
    AvMngApi api;
    LogCapture log{7};
};

TEST_F(TypedApiTest, CallsOfTheCaseFile) {
    for (const DataCase& c : dataCases("api/typed-calls.txt")) {
        SCOPED_TRACE(c.where + " " + c.title);
        Values values;
        daemon.replyWith(Json::Value(Json::objectValue));
        for (size_t i = 0; i < c.lines.size(); ++i) {
            const auto& [key, value] = c.lines[i];
            if (key == "set") {
                const size_t space = value.find(' ');
                Json::Value doc = jsonOf(value.substr(space + 1));
                values.record(value.substr(0, space))->Deserialize(doc);
            } else if (key == "reply") {
                daemon.replyWith(jsonOf(value));
            } else if (key == "reply-once") {
                daemon.queueReply(jsonOf(value));
            } else if (key == "reply-not-json") {
                daemon.sendNonJson();
            } else if (key == "call") {
                // The expectations of this call: the lines up to the next call.
                DataCase e{c.places[i], value, {}, {}};
                for (size_t j = i + 1; j < c.lines.size() && c.lines[j].first != "call"; ++j) {
                    e.lines.push_back(c.lines[j]);
                }
                SCOPED_TRACE(e.where + " call " + value);
                log.clear();
                daemon.clearRequests();
                const auto call = calls().find(value);
                ASSERT_NE(call, calls().end()) << "no call " << value;
                const int result = call->second(api, values);
                EXPECT_EQ(result, std::stoi(e.get("result", "0")));
                const std::string method = value.substr(0, value.find('('));
                const auto requests = daemon.requests();
                const bool sent = e.has("command");
                ASSERT_EQ(requests.size(), sent ? 1u : 0u);
                if (sent) {
                    EXPECT_EQ(requests[0].commandId, std::stoul(e.get("command")));
                    EXPECT_EQ(requests[0].hasDocument, e.has("request"));
                }
                const Lines in = traces(method, "IN");
                if (e.has("request")) {
                    EXPECT_EQ(requests[0].documentText, jsonText(jsonOf(e.get("request"))));
                }
                if (e.get("in", e.has("request") ? "1" : "0") == "1") {
                    ASSERT_EQ(in.size(), 1u);
                    EXPECT_EQ(in[0].substr(in[0].find(":IN\n")), ":IN\n" + requests[0].documentText);
                } else {
                    EXPECT_EQ(in, Lines{});
                }
                EXPECT_EQ(traces(method, "OUT").size(),
                          e.get("out", sent && result == 0 ? "1" : "0") == "1" ? 1u : 0u);
                EXPECT_TRUE(log.matches(2, e.all("error"))) << ::testing::PrintToString(log.at(2));
                for (const std::string& line : e.all("logged")) {
                    EXPECT_EQ(log.count(line), 1u) << line;
                }
                for (const std::string& output : e.all("output")) {
                    const size_t space = output.find(' ');
                    const std::string mismatch = kindedMismatch(kindedJsonOf(output.substr(space + 1)),
                                                                values.view(output.substr(0, space)), true);
                    EXPECT_TRUE(mismatch.empty()) << output.substr(0, space) << ": " << mismatch;
                }
            }
        }
    }
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
        EXPECT_EQ(status.getCurrentClockReference() == ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE,
                  (mask & 2) != 0);
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

TEST_F(TypedApiTest, TraceLinesCarryTheSourceLineOfEachDirection) {
    std::string sdp;
    daemon.replyWith(jsonOf(R"({"sdp":"v=0"})"));
    ASSERT_EQ(api.getSessionSdp(42, &sdp), 0);
    const std::string head =
        "AVMANAGER JSON API int AvMngApi::getSessionSdp(session_id_t, std::__cxx11::string*):";
    const Lines in = traces("getSessionSdp", "IN"), out = traces("getSessionSdp", "OUT");
    ASSERT_EQ(in.size(), 1u);
    ASSERT_EQ(out.size(), 1u);
    ASSERT_EQ(in[0].rfind(head, 0), 0u) << in[0];
    ASSERT_EQ(out[0].rfind(head, 0), 0u) << out[0];
    EXPECT_EQ(out[0].substr(out[0].find(":OUT\n")), ":OUT\n{\"sdp\":\"v=0\"}");
    EXPECT_GT(std::stoi(out[0].substr(head.size())), std::stoi(in[0].substr(head.size())));
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
    EXPECT_EQ(log.at(2), Lines{"getSourceInfo:: Parameter is null."});
}

TEST_F(TypedApiTest, GainMethodsSendNothing) {
    EXPECT_EQ(api.setSourceChannelGain(), 0);
    EXPECT_EQ(api.setDestinationChannelGain(), 0);
    EXPECT_EQ(api.getSourceChannelGain(), 0);
    EXPECT_EQ(api.getDestinationChannelGain(), 0);
    EXPECT_EQ(daemon.requestCount(), 0u);
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace
