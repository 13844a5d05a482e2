#include <gtest/gtest.h>

#include <climits>
#include <regex>
#include <string>
#include <thread>
#include <vector>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApiJson.h"
#include "support/FakeDaemon.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"
#include "support/TestJsonApi.h"

namespace {

using ReqFn = int (AvMngApiJson::*)(const Json::Value&, Json::Value&);
using GainFn = int (AvMngApiJson::*)(Json::Value&, Json::Value&);
using ReplyOnlyFn = int (AvMngApiJson::*)(Json::Value&);

// One pass-through method: its command id and its exact signature (the member pointer
// types reject a method whose parameter list differs).
struct PassThrough {
    unsigned int id;
    const char* name;
    ReqFn withRequest;
    GainFn gain;
    ReplyOnlyFn replyOnly;

    bool sendsDocument() const { return replyOnly == nullptr; }
    int call(AvMngApiJson& api, Json::Value& request, Json::Value& reply) const {
        if (withRequest != nullptr) {
            return (api.*withRequest)(request, reply);
        }
        if (gain != nullptr) {
            return (api.*gain)(request, reply);
        }
        return (api.*replyOnly)(reply);
    }
    std::string signature() const {
        const char* params = withRequest != nullptr ? "(const Json::Value&, Json::Value&)"
                             : gain != nullptr      ? "(Json::Value&, Json::Value&)"
                                                    : "(Json::Value&)";
        return std::string("int AvMngApiJson::") + name + params;
    }
};

#define REQ(id, m)                                 \
    PassThrough {                                  \
        id, #m, &AvMngApiJson::m, nullptr, nullptr \
    }
#define GAIN(id, m)                                \
    PassThrough {                                  \
        id, #m, nullptr, &AvMngApiJson::m, nullptr \
    }
#define ONLY(id, m)                                \
    PassThrough {                                  \
        id, #m, nullptr, nullptr, &AvMngApiJson::m \
    }

const std::vector<PassThrough>& passThroughs() {
    static const std::vector<PassThrough> all = {
        REQ(0, getSessionSdp),
        REQ(2, addSourceSession),
        REQ(3, addDestinationSession),
        REQ(4, removeSession),
        ONLY(5, getSourceSessionList),
        ONLY(6, getDestinationSessionList),
        ONLY(7, getAdvertisedSessionList),
        REQ(8, updateSession),
        REQ(9, fileCfgSaveRunning),
        ONLY(10, fileCfgGetRunning),
        REQ(11, fileCfgLoadCfgToRunning),
        REQ(12, fileCfgLoadConfiguration),
        ONLY(13, fileCfgGetTable),
        REQ(14, addDestinationSessionManually),
        REQ(15, getSessionBasicInfo),
        REQ(16, getChannelUsageTable),
        ONLY(17, getDigitalInterfaces),
        ONLY(18, getWebServices),
        ONLY(19, getCodecs),
        REQ(20, getSessionTPCStatistics),
        REQ(21, cfgSystemClk),
        ONLY(22, getSystemClockInfo),
        REQ(23, pauseResumeSession),
        ONLY(24, getAlarmStatus),
        REQ(25, fileCfgSetStartupPos),
        REQ(26, fileCfgRemoveConfig),
        ONLY(27, getGlobalConfig),
        REQ(28, setGlobalConfig),
        REQ(29, setSdiPatternGeneratorConfig),
        REQ(30, setHdmiPatternGeneratorConfig),
        ONLY(31, getSdiInterfaceInfo),
        ONLY(32, getSdiOffsets),
        REQ(33, setSdiOffsets),
        ONLY(34, getHdmiAudioOffset),
        REQ(35, setHdmiAudioOffset),
        REQ(36, getSessionCounters),
        ONLY(37, getSdiVpgInfo),
        REQ(38, getSessionInternalStatus),
        ONLY(39, resetSystemClockCounters),
        ONLY(40, getUserNotifications),
        ONLY(41, getTdmCfgOptions),
        REQ(43, setInterfaceLoopBackMode),
        ONLY(44, getAudioCfgOptions),
        ONLY(45, getVideoReferenceCfg),
        REQ(46, setVideoReferenceCfg),
        ONLY(47, getDefaultConfigurationParams),
        ONLY(48, getInternalDebugInfo),
        REQ(49, disconnectChannels),
        ONLY(50, getListOfExistingStreams),
        ONLY(51, getResourceAllocatedIds),
        GAIN(52, setSourceChannelGain),
        GAIN(53, setDestinationChannelGain),
        GAIN(54, getSourceChannelGain),
        GAIN(55, getDestinationChannelGain),
    };
    return all;
}

const char* const kDescriptions[56] = {
    "GET Session SDP",
    "Save SDP info",
    "CFG Add Source Session",
    "CFG Add Destination Session",
    "CFG remove Session",
    "GET Source List",
    "GET Destination list",
    "GET Advertised sessions",
    "CFG Update session",
    "FILE Save running",
    "GET running configuration",
    "FILE Load to running",
    "FILE Load configuration to running",
    "FILE GET file Table info",
    "CFG Add Destination Session Manually",
    "GET Session basic info",
    "GET Channel Table",
    "GET Digital interface list",
    "GET Web services list",
    "GET Codec List",
    "GET Session TPC statistics",
    "CLK SET Configuration",
    "CLK GET Info: config status and counters",
    "Pause or resume a session",
    "GET alarm status of system",
    "FILE Select startup config",
    "FILE Remove saved config",
    "GET Global config",
    "CFG Global config",
    "SET SDI pattern generator config",
    "SET HDMI pattern generator config",
    "GET SDI interface information",
    "GET SDI Offsets",
    "SET SDI Offsets",
    "GET HDMI Audio Offset",
    "SET HDMI Audio Offset",
    "GET Session Counters",
    "GET SDI VPG information",
    "GET Session internal status and counters",
    "Reset System Clock Counters",
    "GET Notification List",
    "GET TDM option list",
    "Remove external advertisement",
    "SET Interface Loopback mode",
    "GET Audio Config Options",
    "GET video reference Config",
    "SET video reference Config",
    "GET the default configuration parameters",
    "GET internal debug info",
    "CFG disconnect channel(s) from session",
    "GET senders info",
    "GET list of allocated session ids.",
    "SET set gain of channels on Talker XC",
    "SET set gain of channels on Listener XC",
    "GET get gain of channels in source streams",
    "GET get gain of channels on Listener XC",
};

// "CHK(<signature>)::<line> Error Code <code>"
void expectChkLine(const std::string& line, const std::string& signature, int code) {
    const std::string prefix = "CHK(" + signature + ")::";
    const std::string suffix = " Error Code " + std::to_string(code);
    ASSERT_EQ(line.rfind(prefix, 0), 0u) << line;
    ASSERT_GT(line.size(), prefix.size() + suffix.size()) << line;
    EXPECT_EQ(line.substr(line.size() - suffix.size()), suffix) << line;
    const std::string lineNumber = line.substr(prefix.size(), line.size() - prefix.size() - suffix.size());
    EXPECT_TRUE(std::regex_match(lineNumber, std::regex("[1-9][0-9]*"))) << line;
}

std::vector<std::string> chkLines(const LogCapture& capture) {
    std::vector<std::string> out;
    for (const auto& line : capture.at(2)) {
        if (line.rfind("CHK(", 0) == 0) {
            out.push_back(line);
        }
    }
    return out;
}

TEST(AvMngApiJson, DefaultsAndHooks) {
    AvMngApiJson api;
    EXPECT_EQ(api.ipcPort, 5559u);
    EXPECT_EQ(api.ipcHost, "127.0.0.1");
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://127.0.0.1:5559");
    EXPECT_EQ(api.getClientTimeout(), 150000);
    api.ipcPort = 7;
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://127.0.0.1:7");
    api.ipcPort = 4294967295u;
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://127.0.0.1:4294967295");
}

TEST(AvMngApiJson, InitWithHostReplacesHostOnly) {
    zmq::context_t ctx;
    AvMngApiJson api;
    std::string host = "10.1.2.3";
    EXPECT_EQ(api.init(ctx, host), 0);
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://10.1.2.3:5559");
    std::string empty;
    EXPECT_EQ(api.init(ctx, empty), 0);  // not validated here
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://:5559");
}

TEST(AvMngApiJson, FailingInitLogsOneChkPerLevelAndKeepsHost) {
    zmq::context_t ctx;
    AvMngApiJson api;
    LogCapture capture;
    std::string host = "bad host";
    EXPECT_EQ(api.init(ctx, host), ClientJsonApi::kErrConnect);
    EXPECT_EQ(api.ipcHost, "bad host");
    const auto chk = chkLines(capture);
    ASSERT_EQ(chk.size(), 2u);
    expectChkLine(chk[0], "int AvMngApiJson::init(zmq::context_t&)", ClientJsonApi::kErrConnect);
    expectChkLine(chk[1], "int AvMngApiJson::init(zmq::context_t&, std::__cxx11::string&)",
                  ClientJsonApi::kErrConnect);

    capture.clear();
    EXPECT_EQ(api.init(ctx), ClientJsonApi::kErrConnect);
    ASSERT_EQ(chkLines(capture).size(), 1u);
    expectChkLine(chkLines(capture)[0], "int AvMngApiJson::init(zmq::context_t&)",
                  ClientJsonApi::kErrConnect);
}

TEST(AvMngApiJson, CommandDescriptionsForEveryId) {
    AvMngApiJson api;
    for (unsigned int id = 0; id < 56; ++id) {
        std::string text = "previous contents";
        EXPECT_EQ(api.getCommandDescription(id, text), 0);
        EXPECT_EQ(text, kDescriptions[id]) << id;
        std::string direct;
        Aes67Commands::getCommandNameStr(static_cast<aes67_command_id_t>(id), direct);
        EXPECT_EQ(direct, kDescriptions[id]) << id;
    }
    EXPECT_EQ(Aes67Commands::kCommandCount, 56u);
    EXPECT_EQ(AES67_DISCONNECT_CHANNELS, 49u);
    EXPECT_EQ(sizeof(aes67_command_id_t), 4u);
}

TEST(AvMngApiJson, UnknownIdsAppendNotRecognized) {
    AvMngApiJson api;
    for (unsigned int id : {56u, 57u, 1000u, UINT_MAX}) {
        std::string text = "x";
        EXPECT_EQ(api.getCommandDescription(id, text), 0);
        EXPECT_EQ(text, "xnot recognized") << id;
        std::string empty;
        api.getCommandDescription(id, empty);
        EXPECT_EQ(empty, "not recognized");
    }
}

TEST(AvMngApiJson, ConcurrentFirstUseOfCommandTable) {
    // Run in a fresh process (threadsafe death-test style re-executes this test alone),
    // so that the table really is built by the racing threads.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            std::vector<std::thread> threads;
            std::vector<int> wrong(8, 0);
            for (int t = 0; t < 8; ++t) {
                threads.emplace_back([&wrong, t] {
                    for (unsigned int id = 0; id < 56; ++id) {
                        std::string text;
                        Aes67Commands::getCommandNameStr(static_cast<aes67_command_id_t>((id + 7u * t) % 56u),
                                                         text);
                        if (text != kDescriptions[(id + 7u * t) % 56u]) {
                            ++wrong[static_cast<size_t>(t)];
                        }
                    }
                });
            }
            for (auto& th : threads) {
                th.join();
            }
            std::exit(wrong == std::vector<int>(8, 0) ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(AvMngApiJson, EveryPassThroughSendsItsIdAndDocumentOverTheWire) {
    ASSERT_EQ(passThroughs().size(), 54u);
    FakeDaemon daemon;
    daemon.onRequest([](const FakeDaemon::Request& r) {
        Json::Value reply;
        reply["answer-to"] = r.commandId;
        reply["nested"]["list"].append("v");
        return FakeDaemon::Action::reply(reply);
    });
    zmq::context_t ctx;
    TestJsonApi api;
    ASSERT_EQ(api.connectTo(ctx, daemon), 0);
    LogCapture capture;
    for (const auto& p : passThroughs()) {
        Json::Value request;
        request["id"] = Json::UInt64(1000000000000ULL + p.id);
        request["name"] = p.name;
        Json::Value reply = "old";
        ASSERT_EQ(p.call(api, request, reply), 0) << p.name;
        EXPECT_EQ(reply["answer-to"].asUInt(), p.id) << p.name;
        EXPECT_EQ(reply["nested"]["list"][0].asString(), "v") << p.name;
    }
    EXPECT_TRUE(capture.at(2).empty());
    const auto seen = daemon.requests();
    ASSERT_EQ(seen.size(), passThroughs().size());
    for (size_t i = 0; i < seen.size(); ++i) {
        const auto& p = passThroughs()[i];
        EXPECT_EQ(seen[i].commandId, p.id) << p.name;
        EXPECT_EQ(seen[i].frameCount, 2u) << p.name;
        EXPECT_EQ(seen[i].hasDocument, p.sendsDocument()) << p.name;
        if (p.sendsDocument()) {
            EXPECT_EQ(seen[i].documentText,
                      "{\"id\":" + std::to_string(1000000000000ULL + p.id) + ",\"name\":\"" + p.name + "\"}");
        }
    }
}

TEST(AvMngApiJson, TransportResultsMapToZeroOrTheCodeWithOneChkLine) {
    for (const auto& p : passThroughs()) {
        ScriptedJsonApi api;
        api.result = 3;
        api.replyDocument = jsonOf(R"({"r":1})");
        Json::Value request = jsonOf(R"({"id":5})");
        Json::Value reply;
        LogCapture capture;
        EXPECT_EQ(p.call(api, request, reply), 0) << p.name;
        EXPECT_EQ(reply, api.replyDocument) << p.name;
        ASSERT_EQ(api.sent.size(), 1u);
        EXPECT_EQ(api.sent[0].commandId, p.id);
        EXPECT_EQ(api.sent[0].hasPayload, p.sendsDocument());
        if (p.sendsDocument()) {
            EXPECT_EQ(api.sent[0].payload, request);
        }
        EXPECT_TRUE(capture.lines().empty()) << p.name;

        api.result = -7;
        reply = "before";
        EXPECT_EQ(p.call(api, request, reply), -7) << p.name;
        EXPECT_EQ(reply, Json::Value("before")) << p.name;
        ASSERT_EQ(capture.lines().size(), 1u) << p.name;
        EXPECT_EQ(capture.lines()[0].level, 2);
        expectChkLine(capture.lines()[0].text, p.signature(), -7);
    }
}

TEST(AvMngApiJson, SilentDaemonGivesTimeoutThenTheSameObjectRecovers) {
    FakeDaemon daemon;
    daemon.replyWith(jsonOf(R"({"sessions":[]})"));
    daemon.silentFor(1);
    zmq::context_t ctx;
    TestJsonApi api(250);
    ASSERT_EQ(api.connectTo(ctx, daemon), 0);
    LogCapture capture;
    Json::Value reply;
    EXPECT_EQ(api.removeSession(jsonOf(R"({"id":12})"), reply), ClientJsonApi::kErrTimeout);
    const auto chk = chkLines(capture);
    ASSERT_EQ(chk.size(), 1u);
    expectChkLine(chk[0], "int AvMngApiJson::removeSession(const Json::Value&, Json::Value&)",
                  ClientJsonApi::kErrTimeout);
    ErrorReport report;
    api.getLastErrorMessage(report);
    EXPECT_EQ(report.code, ClientJsonApi::kErrTimeout);
    EXPECT_EQ(report.commandId, 4u);
    EXPECT_EQ(report.commandDescription, "CFG remove Session");

    EXPECT_EQ(api.getSourceSessionList(reply), 0);
    EXPECT_EQ(reply, jsonOf(R"({"sessions":[]})"));
}

}  // namespace
