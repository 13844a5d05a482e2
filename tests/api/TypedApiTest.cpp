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

    // The records a case may fill ("set NAME JSON") or look at ("output NAME JSON").
    IJsonSerializable* record(const std::string& n) {
        const std::map<std::string, IJsonSerializable*> records = {
            {"source", &source}, {"destination", &destination}, {"channels", &channels}, {"info", &info},
            {"list", &list}, {"db", &db}, {"table", &table}, {"clock", &clock}, {"global", &global},
            {"notifications", &notifications}, {"tpc", &tpc}, {"tables", &tables}, {"sdi", &sdi},
            {"vpg", &vpg}, {"hdmi", &hdmi}, {"loop", &loop}, {"ref", &ref}};
        const auto it = records.find(n);
        return it == records.end() ? nullptr : it->second;
    }
    template <typename List>
    static Json::Value each(const List& items) {
        Json::Value out(Json::arrayValue);
        for (const auto& item : items) {
            if constexpr (std::is_same_v<std::decay_t<decltype(item)>, unsigned long long>) {
                out.append(Json::UInt64(item));
            } else {
                item.Serialize(out[out.size()]);
            }
        }
        return out;
    }
    Json::Value view(const std::string& n) {
        if (IJsonSerializable* r = record(n)) {
            Json::Value out;
            r->Serialize(out);
            return out;
        }
        const std::map<std::string, std::function<Json::Value()>> others = {
            {"sdp", [this] { return Json::Value(sdp); }},
            {"mode", [this] { return Json::Value(mode); }},
            {"locked", [this] { return Json::Value(locked); }},
            {"counters", [this] { return counters; }},
            {"senders", [this] { return each(senders); }},
            {"receivers", [this] { return each(receivers); }},
            {"streams", [this] { return each(streams); }},
            {"sessions", [this] { return each(sessions); }},
            {"alarms", [this] { return each(alarms); }},
            {"tpcs", [this] { return each(tpcs); }},
            {"offset", [this] {
                 Json::Value out;
                 offset.Serialize(out);
                 return out;
             }},
        };
        return others.at(n)();
    }
};

using Call = std::function<int(AvMngApi&, Values&)>;

// The calls by label: the method's name, with the variant in brackets.
const std::map<std::string, Call>& calls() {
    static const std::map<std::string, Call> all = {
        {"addSourceSession", [](AvMngApi& a, Values& v) { return a.addSourceSession(&v.source); }},
        {"addDestinationSession", [](AvMngApi& a, Values& v) { return a.addDestinationSession(&v.destination); }},
        {"addDestinationSession(source)", [](AvMngApi& a, Values& v) { return a.addDestinationSession(&v.source); }},
        {"updateSession", [](AvMngApi& a, Values& v) { return a.updateSession(&v.source); }},
        {"removeSession", [](AvMngApi& a, Values&) { return a.removeSession(0); }},
        {"disconnectChannels", [](AvMngApi& a, Values& v) { return a.disconnectChannels(18446744073709551615ull, v.channels); }},
        {"getSessionSdp", [](AvMngApi& a, Values& v) { return a.getSessionSdp(5, &v.sdp); }},
        {"getSessionBasicInfo", [](AvMngApi& a, Values& v) { return a.getSessionBasicInfo(6, &v.info); }},
        {"getSessionCfg", [](AvMngApi& a, Values& v) { return a.getSessionCfg(12, &v.source); }},
        {"getSourceSessionList", [](AvMngApi& a, Values& v) { return a.getSourceSessionList(&v.list); }},
        {"getDestinationSessionList", [](AvMngApi& a, Values& v) { return a.getDestinationSessionList(&v.list); }},
        {"getAdvertisedSessionList", [](AvMngApi& a, Values& v) { return a.getAdvertisedSessionList(&v.db); }},
        {"pauseResumeSession", [](AvMngApi& a, Values&) { return a.pauseResumeSession(9, true); }},
        {"getResourceAllocatedIds", [](AvMngApi& a, Values& v) { return a.getResourceAllocatedIds(v.senders, v.receivers); }},
        {"getListOfExistingStreams", [](AvMngApi& a, Values& v) { return a.getListOfExistingStreams(v.streams); }},
        {"fileCfgSaveRunning", [](AvMngApi& a, Values& v) { return a.fileCfgSaveRunning(3, &v.name, true); }},
        {"fileCfgLoadCfgToRunning", [](AvMngApi& a, Values&) { return a.fileCfgLoadCfgToRunning(4); }},
        {"fileCfgLoadDefaultToRunning", [](AvMngApi& a, Values&) { return a.fileCfgLoadDefaultToRunning(); }},
        {"fileCfgGetTable", [](AvMngApi& a, Values& v) { return a.fileCfgGetTable(&v.table); }},
        {"fileCfgSetStartupPos", [](AvMngApi& a, Values&) { return a.fileCfgSetStartupPos(2); }},
        {"fileCfgRemoveConfig", [](AvMngApi& a, Values&) { return a.fileCfgRemoveConfig(7); }},
        {"cfgSystemClock", [](AvMngApi& a, Values& v) { return a.cfgSystemClock(&v.clock); }},
        {"getSystemClockInfo", [](AvMngApi& a, Values&) { return a.getSystemClockInfo(nullptr, nullptr, nullptr, nullptr); }},
        {"resetSystemClockCounters", [](AvMngApi& a, Values&) { return a.resetSystemClockCounters(); }},
        {"getGlobalConfig", [](AvMngApi& a, Values& v) { return a.getGlobalConfig(&v.global); }},
        {"setGlobalConfig", [](AvMngApi& a, Values& v) { return a.setGlobalConfig(v.global); }},
        {"getAlarmStatus", [](AvMngApi& a, Values& v) { return a.getAlarmStatus(v.sessions, v.alarms); }},
        {"getUserNotifications", [](AvMngApi& a, Values& v) { return a.getUserNotifications(v.notifications); }},
        {"getSessionTPCStats", [](AvMngApi& a, Values& v) { return a.getSessionTPCStats(9, v.tpc); }},
        {"getSessionAllTPCStats", [](AvMngApi& a, Values& v) { return a.getSessionAllTPCStats(v.tpcs); }},
        {"getSessionCounters", [](AvMngApi& a, Values& v) { return a.getSessionCounters(10, v.counters); }},
        {"getSessionInternalStatus", [](AvMngApi& a, Values& v) { return a.getSessionInternalStatus(11, true, false, true, v.counters); }},
        {"getChannelTables", [](AvMngApi& a, Values& v) { return a.getChannelTables(v.tables, true); }},
        {"getChannelTables(short)", [](AvMngApi& a, Values& v) { return a.getChannelTables(v.tables, false); }},
        {"setSdiInterface", [](AvMngApi& a, Values& v) { return a.setSdiInterface(&v.sdi); }},
        {"getSdiInterfaceInfo(0)", [](AvMngApi& a, Values& v) { return a.getSdiInterfaceInfo(0, v.locked, v.mode); }},
        {"getSdiInterfaceInfo(1)", [](AvMngApi& a, Values& v) { return a.getSdiInterfaceInfo(1, v.locked, v.mode); }},
        {"setSdiOffset(5)", [](AvMngApi& a, Values& v) { return a.setSdiOffset(5, v.offset); }},
        {"setSdiOffset(0)", [](AvMngApi& a, Values& v) { return a.setSdiOffset(0, v.offset); }},
        {"getSdiOffset(1)", [](AvMngApi& a, Values& v) { return a.getSdiOffset(1, v.offset); }},
        {"getSdiOffset(2)", [](AvMngApi& a, Values& v) { return a.getSdiOffset(2, v.offset); }},
        {"getSdiVpgInfo(0)", [](AvMngApi& a, Values& v) { return a.getSdiVpgInfo(0, v.vpg); }},
        {"getSdiVpgInfo(1)", [](AvMngApi& a, Values& v) { return a.getSdiVpgInfo(1, v.vpg); }},
        {"setHdmiAudioOffset", [](AvMngApi& a, Values& v) { return a.setHdmiAudioOffset(v.hdmi); }},
        {"getHdmiAudioOffset", [](AvMngApi& a, Values& v) { return a.getHdmiAudioOffset(v.hdmi); }},
        {"setInterfaceLoopBackMode", [](AvMngApi& a, Values& v) { return a.setInterfaceLoopBackMode(v.loop); }},
        {"getVideoReferenceCfg", [](AvMngApi& a, Values& v) { return a.getVideoReferenceCfg(v.ref); }},
        {"setVideoReferenceCfg", [](AvMngApi& a, Values& v) { return a.setVideoReferenceCfg(v.ref); }},
        // Null pointers.
        {"addSourceSession(null)", [](AvMngApi& a, Values&) { return a.addSourceSession(nullptr); }},
        {"addDestinationSession(null)", [](AvMngApi& a, Values&) { return a.addDestinationSession(static_cast<DestinationApi*>(nullptr)); }},
        {"addDestinationSession(null source)", [](AvMngApi& a, Values&) { return a.addDestinationSession(static_cast<SourceApi*>(nullptr)); }},
        {"updateSession(null)", [](AvMngApi& a, Values&) { return a.updateSession(nullptr); }},
        {"getSessionSdp(null)", [](AvMngApi& a, Values&) { return a.getSessionSdp(1, nullptr); }},
        {"getSessionBasicInfo(null)", [](AvMngApi& a, Values&) { return a.getSessionBasicInfo(1, nullptr); }},
        {"getSessionCfg(null)", [](AvMngApi& a, Values&) { return a.getSessionCfg(1, nullptr); }},
        {"getSourceSessionList(null)", [](AvMngApi& a, Values&) { return a.getSourceSessionList(nullptr); }},
        {"getDestinationSessionList(null)", [](AvMngApi& a, Values&) { return a.getDestinationSessionList(nullptr); }},
        {"getAdvertisedSessionList(null)", [](AvMngApi& a, Values&) { return a.getAdvertisedSessionList(nullptr); }},
        {"fileCfgSaveRunning(null)", [](AvMngApi& a, Values&) { return a.fileCfgSaveRunning(1, nullptr, false); }},
        {"fileCfgGetTable(null)", [](AvMngApi& a, Values&) { return a.fileCfgGetTable(nullptr); }},
        {"cfgSystemClock(null)", [](AvMngApi& a, Values&) { return a.cfgSystemClock(nullptr); }},
        {"getGlobalConfig(null)", [](AvMngApi& a, Values&) { return a.getGlobalConfig(nullptr); }},
        {"setSdiInterface(null)", [](AvMngApi& a, Values&) { return a.setSdiInterface(nullptr); }},
        // Request records that cannot be written.
        {"addSourceSession(throwing)", [](AvMngApi& a, Values& v) { return a.addSourceSession(&v.badSource); }},
        {"addDestinationSession(throwing)", [](AvMngApi& a, Values& v) { return a.addDestinationSession(&v.badDestination); }},
        {"addDestinationSession(throwing source)", [](AvMngApi& a, Values& v) { return a.addDestinationSession(&v.badSource); }},
        {"updateSession(throwing)", [](AvMngApi& a, Values& v) { return a.updateSession(&v.badSource); }},
        {"disconnectChannels(throwing)", [](AvMngApi& a, Values& v) { return a.disconnectChannels(1, v.badChannels); }},
        {"cfgSystemClock(throwing)", [](AvMngApi& a, Values& v) { return a.cfgSystemClock(&v.badClock); }},
        {"setGlobalConfig(throwing)", [](AvMngApi& a, Values& v) { return a.setGlobalConfig(v.badGlobal); }},
        {"setSdiInterface(throwing)", [](AvMngApi& a, Values& v) { return a.setSdiInterface(&v.badSdi); }},
        {"setHdmiAudioOffset(throwing)", [](AvMngApi& a, Values& v) { return a.setHdmiAudioOffset(v.badHdmi); }},
        {"setInterfaceLoopBackMode(throwing)", [](AvMngApi& a, Values& v) { return a.setInterfaceLoopBackMode(v.badLoop); }},
        {"setVideoReferenceCfg(throwing)", [](AvMngApi& a, Values& v) { return a.setVideoReferenceCfg(v.badRef); }},
    };
    return all;
}

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

// `line` as `pattern` says: "#" stands for a decimal number (a source line), "*" for any text.
bool matches(const char* pattern, const char* line) {
    if (*pattern == '*') {
        return matches(pattern + 1, line) || (*line != '\0' && matches(pattern, line + 1));
    }
    if (*pattern == '#') {
        const char* end = line;
        while (std::isdigit(static_cast<unsigned char>(*end))) {
            ++end;
        }
        return end != line && matches(pattern + 1, end);
    }
    return *pattern == *line && (*line == '\0' || matches(pattern + 1, line + 1));
}

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
                DataCase e{c.where, value, {}};
                for (size_t j = i + 1; j < c.lines.size() && c.lines[j].first != "call"; ++j) {
                    e.lines.push_back(c.lines[j]);
                }
                SCOPED_TRACE("call " + value);
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
                EXPECT_EQ(traces(method, "OUT").size(), e.get("out", sent && result == 0 ? "1" : "0") == "1" ? 1u : 0u);
                const Lines errors = log.at(2);
                const Lines patterns = e.all("error");
                EXPECT_EQ(errors.size(), patterns.size()) << ::testing::PrintToString(errors);
                for (size_t k = 0; k < std::min(errors.size(), patterns.size()); ++k) {
                    EXPECT_TRUE(matches(patterns[k].c_str(), errors[k].c_str())) << errors[k] << "\nis not\n" << patterns[k];
                }
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

TEST_F(TypedApiTest, TraceLinesCarryTheSourceLineOfEachDirection) {
    std::string sdp;
    daemon.replyWith(jsonOf(R"({"sdp":"v=0"})"));
    ASSERT_EQ(api.getSessionSdp(42, &sdp), 0);
    const std::string head = "AVMANAGER JSON API int AvMngApi::getSessionSdp(session_id_t, std::__cxx11::string*):";
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
