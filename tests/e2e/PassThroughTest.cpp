// Every pass-through method of the JSON layer against the emulator process, over
// ZeroMQ on loopback: each command of tests/data/e2e/pass-through.tsv is sent with a
// request the emulator accepts and its reply is checked for the member it answers with.

#include <gtest/gtest.h>

#include <set>

#include "EmulatorProcess.h"
#include "pimAvMngApi/api/AvMngApiJson.h"
#include "support/CommandRows.h"
#include "support/TestData.h"

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

// The rows of tests/data/e2e/pass-through.tsv of one part, each sent through the
// pass-through method of its command, with {id} standing for `session`.
void runRows(AvMngApiJson& api, const std::string& part, uint64_t session) {
    for (const DataRow& row : dataRows("e2e/pass-through.tsv")) {
        const std::vector<std::string>& f = row.fields;
        if (f[0] != part) {
            continue;
        }
        SCOPED_TRACE(row.where + " command " + f[1]);
        std::string text = f[2];
        for (size_t at = text.find("{id}"); at != std::string::npos; at = text.find("{id}")) {
            text.replace(at, 4, std::to_string(session));
        }
        Json::Value request = text == "-" ? Json::Value() : doc(text);
        Json::Value reply;
        ASSERT_EQ(passThroughOf(commandRows().at(std::stoul(f[1]))).call(api, request, reply), 0);
        ASSERT_TRUE(reply.isObject());
        EXPECT_FALSE(reply.isMember("error")) << compact(reply);
        EXPECT_TRUE(f[3] == "-" ? reply.empty() : reply.isMember(f[3])) << compact(reply);
    }
}

}  // namespace

TEST_F(PassThrough, EveryDeviceCommandIsAnswered) {
    runRows(*s_api, "device", s_sender);
}

// Commands that need a live session run against a fresh sender.
TEST_F(PassThrough, EverySessionCommandIsAnswered) {
    Json::Value reply;
    ASSERT_EQ(s_api->addSourceSession(doc(R"({"name":"rows","audio-sources":[{"channel-list":[{"channel":0}]}]})"),
                                      reply),
              0);
    runRows(*s_api, "session", reply["session-id"].asUInt64());
}

TEST_F(PassThrough, TableCoversEveryPassThroughMethod) {
    std::set<unsigned> ids, withMethod;
    for (const DataRow& row : dataRows("e2e/pass-through.tsv")) {
        ids.insert(static_cast<unsigned>(std::stoul(row.fields[1])));
    }
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
