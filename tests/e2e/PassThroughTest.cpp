// Every pass-through method of the JSON layer against the emulator process, over
// ZeroMQ on loopback: each command is sent with a request the emulator accepts and its
// reply is checked for the member that command answers with.

#include <gtest/gtest.h>

#include <functional>

#include "EmulatorProcess.h"
#include "pimAvMngApi/api/AvMngApiJson.h"
#include "support/CommandRows.h"

using namespace pimav::detail;


namespace {

class E2eJsonApi : public AvMngApiJson {
public:
    int getClientTimeout() override { return 5000; }
};

Json::Value doc(const std::string& text) { return parse(text); }

class PassThrough : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_emulator = new EmulatorProcess("", {"--advertise", sourcePath("examples/advertised")});
        s_context = new zmq::context_t(1);
        s_api = new E2eJsonApi();
        s_api->ipcPort = static_cast<uint32_t>(s_emulator->port());
        ASSERT_EQ(s_api->init(*s_context), 0);
        Json::Value reply;
        ASSERT_EQ(s_api->addSourceSession(
                      doc(R"({"name":"e2e","audio-sources":[{"codec":"L24","ptime":1000,"channel-freq":48000,
                              "channel-list":[{"channel":0},{"channel":1}]}]})"),
                      reply),
                  0);
        s_sender = reply["session-id"].asUInt64();
        ASSERT_NE(s_sender, 0u) << compact(reply);
    }
    static void TearDownTestSuite() {
        delete s_api;
        delete s_context;
        delete s_emulator;
    }

    static EmulatorProcess* s_emulator;
    static zmq::context_t* s_context;
    static E2eJsonApi* s_api;
    static uint64_t s_sender;
};

EmulatorProcess* PassThrough::s_emulator = nullptr;
zmq::context_t* PassThrough::s_context = nullptr;
E2eJsonApi* PassThrough::s_api = nullptr;
uint64_t PassThrough::s_sender = 0;

// One command, sent through the pass-through method of its row in tests/data/commands.tsv.
struct Row {
    unsigned id;
    // Builds the request from the sender session's id ("" for reply-only commands).
    std::function<std::string(uint64_t)> request;
    // Member the reply must hold ("" for an empty object).
    const char* member;
};

std::string withId(uint64_t id) { return "{\"id\":" + std::to_string(id) + "}"; }

#define NONE [](uint64_t) { return std::string(); }
#define FIXED(text) [](uint64_t) { return std::string(text); }

const std::vector<Row>& rows() {
    static const std::vector<Row> table = {
        {0, withId, "sdp"},
        {5, NONE, "list"},
        {6, NONE, "list"},
        {7, NONE, "list"},
        {8, [](uint64_t id) { return "{\"session-id\":" + std::to_string(id) +
                                     ",\"name\":\"renamed\",\"audio-sources\":[{\"codec\":\"L16\"}]}"; }, ""},
        {9, FIXED(R"({"pos":2,"name":"table row","startup":false})"), ""},
        {10, NONE, "running"},
        {13, NONE, "startup"},
        {11, FIXED(R"({"pos":2})"), ""},
        {12, [](uint64_t) { return std::string(R"({"running":{"sessions":[]}})"); }, ""},
        {2, FIXED(R"({"name":"again","audio-sources":[{"channel-list":[{"channel":3}]}]})"), "session-id"},
        // Studio A of examples/advertised, by the session id of its origin line.
        {3, FIXED(R"({"name":"listener","rem-sid":{"id":1311738121,"media-idx":0},"channel-list":[{"channel":4}]})"),
         "session-id"},
        {14, FIXED(R"({"name":"manual","audio-sources":[{"transport":"239.1.2.3","udp":5004}]})"),
         "session-id"},
        {16, FIXED(R"({"full":true})"), "list"},
        {17, NONE, "list"},
        {18, NONE, "list"},
        {19, NONE, "list"},
        {20, FIXED(R"({"all":true})"), "tpc"},
        {21, FIXED(R"({"ref-type":4})"), ""},
        {22, NONE, "status"},
        {24, NONE, "global"},
        {25, FIXED(R"({"pos":10})"), ""},
        {27, NONE, "global"},
        {28, FIXED(R"({"global":{"device-name":"e2e"}})"), ""},
        {29, FIXED(R"({"sdi":{"pattern":"ramp"}})"), ""},
        {30, FIXED(R"({"hdmi":{"pattern":"ramp"}})"), ""},
        {31, NONE, "sdi"},
        {32, NONE, "sdi-offsets"},
        {33, FIXED(R"({"sdi-offsets":[{"sdi-port":1,"video-offset":5,"audio-offset":6}]})"), ""},
        {34, NONE, "hdmi-audio-offset"},
        {35, FIXED(R"({"hdmi-audio-offset":12})"), ""},
        {37, NONE, "sdi-vpg-info"},
        {39, NONE, ""},
        {40, NONE, "notifications"},
        {41, NONE, "modes"},
        {43, FIXED(R"({"enable":true,"interface":{"type":1,"string":"sdi"}})"), ""},
        {44, NONE, "codec"},
        {45, NONE, "video-ref"},
        {46, FIXED(R"({"video-ref":{"format":"1080i50"}})"), ""},
        {47, NONE, "board"},
        {48, NONE, "sessions"},
        {50, NONE, "list"},
        {51, NONE, "senders"},
        {53, FIXED(R"({"channel-list":[{"channel-gain":0.5,"position":1,"mute":false}]})"), ""},
        {55, FIXED(R"({"channel-list":[{"position":1}]})"), "channel-list"},
        {26, FIXED(R"({"pos":2})"), ""},
    };
    return table;
}

// Commands that need a live session: run against a fresh sender each time.
const std::vector<Row>& sessionRows() {
    static const std::vector<Row> table = {
        {15, withId, "session-list"},
        {23, [](uint64_t id) { return "{\"id\":" + std::to_string(id) + ",\"pause\":true}"; }, ""},
        {36, withId, "streams"},
        {38, [](uint64_t id) {
             return "{\"id\":" + std::to_string(id) +
                    ",\"clear_fifo_levels\":true,\"clear_counters\":false,\"clear_pending\":false}";
         }, "state"},
        {49, [](uint64_t id) { return "{\"id\":" + std::to_string(id) + ",\"channel-list\":[{\"channel\":0}]}"; },
         "disconnected"},
        {52, [](uint64_t id) {
             return "{\"session-id\":" + std::to_string(id) +
                    ",\"channel-list\":[{\"channel-gain\":2.0,\"position\":0,\"mute\":true}]}";
         }, ""},
        {54, [](uint64_t id) { return "{\"session-id\":" + std::to_string(id) + "}"; }, "channel-list"},
        {4, withId, ""},
    };
    return table;
}

void runRow(AvMngApiJson& api, const Row& row, uint64_t session) {
    const std::string text = row.request(session);
    Json::Value request = text.empty() ? Json::Value() : doc(text);
    Json::Value reply;
    ASSERT_EQ(passThroughOf(commandRows().at(row.id)).call(api, request, reply), 0) << "command " << row.id;
    ASSERT_TRUE(reply.isObject()) << "command " << row.id;
    EXPECT_FALSE(reply.isMember("error")) << "command " << row.id << ": " << compact(reply);
    if (row.member[0] == '\0') {
        EXPECT_TRUE(reply.empty()) << "command " << row.id << ": " << compact(reply);
    } else {
        EXPECT_TRUE(reply.isMember(row.member)) << "command " << row.id << ": " << compact(reply);
    }
}

}  // namespace

TEST_F(PassThrough, EveryDeviceCommandIsAnswered) {
    for (const auto& row : rows()) {
        runRow(*s_api, row, s_sender);
    }
}

TEST_F(PassThrough, EverySessionCommandIsAnswered) {
    Json::Value reply;
    ASSERT_EQ(s_api->addSourceSession(doc(R"({"name":"rows","audio-sources":[{"channel-list":[{"channel":0}]}]})"),
                                      reply),
              0);
    const uint64_t id = reply["session-id"].asUInt64();
    for (const auto& row : sessionRows()) {
        runRow(*s_api, row, id);
    }
}

TEST_F(PassThrough, TableCoversEveryPassThroughMethod) {
    std::set<unsigned> ids;
    for (const auto& row : rows()) {
        ids.insert(row.id);
    }
    for (const auto& row : sessionRows()) {
        ids.insert(row.id);
    }
    std::set<unsigned> withMethod;
    for (const CommandRowText& row : commandRows()) {
        if (row.hasMethod()) {
            withMethod.insert(row.id);
        }
    }
    EXPECT_EQ(ids, withMethod);
}

TEST_F(PassThrough, GainRequestsAreValidated) {
    Json::Value request = doc(R"({"channel-list":[{"channel-gain":"loud","position":1,"mute":false}]})");
    Json::Value reply;
    ASSERT_EQ(s_api->setDestinationChannelGain(request, reply), -13);
    EXPECT_EQ(reply["error"]["code"].asInt(), -13);
    EXPECT_EQ(reply["error"]["user-messages"][0].asString(), "'channel-gain' field at node '0' isn't a floating point number.");
    request = doc(R"({"channel-list":[]})");
    ASSERT_EQ(s_api->getSourceChannelGain(request, reply = Json::Value()), -13);
    EXPECT_EQ(reply["error"]["user-messages"][0].asString(), "Must specify the session-ID for this command");
}
