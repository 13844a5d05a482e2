#include <functional>
#include <string>
#include <vector>

#include "support/TypedApiFixture.h"

namespace {

struct Call {
    const char* name;
    std::function<int(AvMngApi&)> run;
};

TEST_F(TypedApiTest, NullPointerArgumentsSendNothing) {
    std::string text;
    const std::vector<Call> calls = {
        {"addSourceSession", [](AvMngApi& a) { return a.addSourceSession(nullptr); }},
        {"addDestinationSession", [](AvMngApi& a) { return a.addDestinationSession((DestinationApi*)nullptr); }},
        {"addDestinationSession", [](AvMngApi& a) { return a.addDestinationSession((SourceApi*)nullptr); }},
        {"updateSession", [](AvMngApi& a) { return a.updateSession(nullptr); }},
        {"getSessionSdp", [](AvMngApi& a) { return a.getSessionSdp(1, nullptr); }},
        {"getSessionBasicInfo", [](AvMngApi& a) { return a.getSessionBasicInfo(1, nullptr); }},
        {"getSessionCfg", [](AvMngApi& a) { return a.getSessionCfg(1, nullptr); }},
        {"getSourceSessionList", [](AvMngApi& a) { return a.getSourceSessionList(nullptr); }},
        {"getDestinationSessionList", [](AvMngApi& a) { return a.getDestinationSessionList(nullptr); }},
        {"getAdvertisedSessionList", [](AvMngApi& a) { return a.getAdvertisedSessionList(nullptr); }},
        {"fileCfgSaveRunning", [](AvMngApi& a) { return a.fileCfgSaveRunning(1, nullptr, false); }},
        {"fileCfgGetTable", [](AvMngApi& a) { return a.fileCfgGetTable(nullptr); }},
        {"cfgSystemClock", [](AvMngApi& a) { return a.cfgSystemClock(nullptr); }},
        {"getGlobalConfig", [](AvMngApi& a) { return a.getGlobalConfig(nullptr); }},
        {"setSdiInterface", [](AvMngApi& a) { return a.setSdiInterface(nullptr); }},
    };
    for (const Call& call : calls) {
        SCOPED_TRACE(call.name);
        log.clear();
        EXPECT_EQ(call.run(api), -4);
        EXPECT_EQ(log.at(2), std::vector<std::string>{std::string(call.name) + ":: Parameter is null."});
        EXPECT_TRUE(log.at(7).empty());
    }
    EXPECT_EQ(daemon.requestCount(), 0u);
}

TEST_F(TypedApiTest, ThrowingSerializeSendsNothing) {
    ThrowingRecord<SourceApi> source;
    ThrowingRecord<DestinationApi> destination;
    ThrowingRecord<ClockConfig> clock;
    ThrowingRecord<AvGlobalCfg> global;
    ThrowingRecord<SdiData> sdi;
    ThrowingRecord<HdmiAudioOffset> hdmi;
    ThrowingRecord<InterfaceLoopBack> loop;
    ThrowingRecord<VideoRefOutputCfg> ref;
    ThrowingRecord<ChannelList> channels;
    const std::vector<Call> calls = {
        {"addSourceSession(SourceApi*)", [&](AvMngApi& a) { return a.addSourceSession(&source); }},
        {"addDestinationSession(DestinationApi*)", [&](AvMngApi& a) { return a.addDestinationSession(&destination); }},
        {"addDestinationSession(SourceApi*)", [&](AvMngApi& a) { return a.addDestinationSession(&source); }},
        {"updateSession(SourceApi*)", [&](AvMngApi& a) { return a.updateSession(&source); }},
        {"disconnectChannels(session_id_t, ChannelList&)", [&](AvMngApi& a) { return a.disconnectChannels(1, channels); }},
        {"cfgSystemClock(ClockConfig*)", [&](AvMngApi& a) { return a.cfgSystemClock(&clock); }},
        {"setGlobalConfig(AvGlobalCfg&)", [&](AvMngApi& a) { return a.setGlobalConfig(global); }},
        {"setSdiInterface(SdiData*)", [&](AvMngApi& a) { return a.setSdiInterface(&sdi); }},
        {"setHdmiAudioOffset(HdmiAudioOffset&)", [&](AvMngApi& a) { return a.setHdmiAudioOffset(hdmi); }},
        {"setInterfaceLoopBackMode(InterfaceLoopBack&)", [&](AvMngApi& a) { return a.setInterfaceLoopBackMode(loop); }},
        {"setVideoReferenceCfg(VideoRefOutputCfg&)", [&](AvMngApi& a) { return a.setVideoReferenceCfg(ref); }},
    };
    for (const Call& call : calls) {
        SCOPED_TRACE(call.name);
        log.clear();
        EXPECT_EQ(call.run(api), -13);
        const std::vector<std::string> lines = log.at(2);
        ASSERT_EQ(lines.size(), 1u);
        const std::string prefix = std::string("TRY_SERIALIZE(int AvMngApi::") + call.name + ")::";
        EXPECT_EQ(lines[0].rfind(prefix, 0), 0u) << lines[0];
        EXPECT_NE(lines[0].find(" Error serializing JSON"), std::string::npos);
        EXPECT_TRUE(traces("IN").empty());
    }
    EXPECT_EQ(daemon.requestCount(), 0u);
}

// A reply that is not JSON is a transport failure: the JSON layer and the typed layer
// each write one CHK line with the transport's code, and outputs stay untouched.
TEST_F(TypedApiTest, TransportFailurePassesThroughWithOneChkLinePerLayer) {
    std::string sdp = "kept";
    std::list<unsigned long long> ids{7};
    SourceApi cfg;
    cfg.m_name = "kept";
    AvGlobalCfg global;
    global.m_device_name = "kept";
    const std::vector<Call> calls = {
        {"int AvMngApi::getSessionSdp(session_id_t, std::__cxx11::string*)",
         [&](AvMngApi& a) { return a.getSessionSdp(1, &sdp); }},
        {"int AvMngApi::getResourceAllocatedIds(std::__cxx11::list<long long unsigned int>&, "
         "std::__cxx11::list<long long unsigned int>&)",
         [&](AvMngApi& a) { return a.getResourceAllocatedIds(ids, ids); }},
        {"int AvMngApi::removeSession(session_id_t)", [&](AvMngApi& a) { return a.removeSession(1); }},
        {"int AvMngApi::getGlobalConfig(AvGlobalCfg*)", [&](AvMngApi& a) { return a.getGlobalConfig(&global); }},
    };
    for (const Call& call : calls) {
        SCOPED_TRACE(call.name);
        log.clear();
        daemon.sendNonJson();
        EXPECT_EQ(call.run(api), ClientJsonApi::kErrReplyNotJson);
        EXPECT_EQ(errors("CHK(int AvMngApiJson::"), 1u);
        EXPECT_EQ(errors(std::string("CHK(") + call.name + ")::"), 1u);
        EXPECT_EQ(log.count("Error Code -108"), 2u);
        EXPECT_TRUE(traces("OUT").empty());
    }
    EXPECT_EQ(sdp, "kept");
    EXPECT_EQ(ids, std::list<unsigned long long>{7});
    EXPECT_EQ(global.m_device_name, "kept");

    // getSessionCfg adds its own CHK line to those of the nested getSessionBasicInfo.
    log.clear();
    daemon.sendNonJson();
    EXPECT_EQ(api.getSessionCfg(1, &cfg), ClientJsonApi::kErrReplyNotJson);
    EXPECT_EQ(errors("CHK("), 3u);
    EXPECT_EQ(errors("CHK(int AvMngApi::getSessionCfg(session_id_t, SourceApi*))::"), 1u);
    EXPECT_EQ(cfg.m_name, "kept");
}

TEST_F(TypedApiTest, TraceLinesCarrySignatureLineAndOneLineDocument) {
    std::string sdp;
    daemon.replyWith(jsonOf(R"({"sdp":"v=0"})"));
    ASSERT_EQ(api.getSessionSdp(42, &sdp), 0);
    const std::string in = "AVMANAGER JSON API int AvMngApi::getSessionSdp(session_id_t, std::__cxx11::string*):";
    ASSERT_EQ(traces("IN").size(), 1u);
    ASSERT_EQ(traces("OUT").size(), 1u);
    const std::string inLine = traces("IN")[0];
    const std::string outLine = traces("OUT")[0];
    EXPECT_EQ(inLine.rfind(in, 0), 0u) << inLine;
    EXPECT_EQ(inLine.substr(inLine.find(":IN\n")), ":IN\n{\"id\":42}");
    EXPECT_EQ(outLine.substr(outLine.find(":OUT\n")), ":OUT\n{\"sdp\":\"v=0\"}");
    // The source line numbers of the two traces differ and are decimal.
    const std::string inNo = inLine.substr(in.size(), inLine.find(":IN") - in.size());
    const std::string outNo = outLine.substr(in.size(), outLine.find(":OUT") - in.size());
    EXPECT_GT(std::stoi(outNo), std::stoi(inNo));
}

TEST_F(TypedApiTest, ConvertJsonToStringIsOneCompactLine) {
    const std::vector<std::pair<Json::Value, std::string>> cases = {
        {Json::Value(), "null"},
        {jsonOf(R"({"pause":true,"id":3})"), R"({"id":3,"pause":true})"},
        {jsonOf(R"({"a":{"b":[1,2]}})"), R"({"a":{"b":[1,2]}})"},
        {Json::Value(Json::objectValue), "{}"},
        {Json::Value(Json::arrayValue), "[]"},
    };
    for (auto [value, text] : cases) {
        EXPECT_EQ(api.convertJsonToString(value), text);
    }
}

TEST_F(TypedApiTest, GainMethodsSendNothing) {
    log.clear();
    EXPECT_EQ(api.setSourceChannelGain(), 0);
    EXPECT_EQ(api.setDestinationChannelGain(), 0);
    EXPECT_EQ(api.getSourceChannelGain(), 0);
    EXPECT_EQ(api.getDestinationChannelGain(), 0);
    EXPECT_EQ(daemon.requestCount(), 0u);
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace
