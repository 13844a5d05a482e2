// The emulator as a process: a crash between save and load, and a second client
// implementation of the wire protocol.

#include <gtest/gtest.h>

#include "EmulatorProcess.h"
#include "pimAvMngApi/api/AvMngApiJson.h"
#include "platform/IpcWire.h"

using namespace pimav::detail;

namespace {

Json::Value audioSender(const std::string& name) {
    return parse(R"({"name":")" + name + R"(","audio-sources":[{"codec":"L24","channel-list":[{"channel":0}]}]})");
}

}  // namespace

// What was acknowledged before a kill -9 comes back: the saved table, and the running state
// at the time of the kill (a sender added after the saved one was cleared away). Loading a
// position after a restart is tested in-process.
TEST(EmulatorRobustness, AcknowledgedStateSurvivesKill) {
    const std::string dir = makeTempDir("persist");
    uint64_t running = 0;
    {
        EmulatorProcess emulator(dir);
        ASSERT_NE(emulator.call(2, audioSender("kept"))["session-id"].asUInt64(), 0u);
        ASSERT_EQ(compact(emulator.call(9, parse(R"({"pos":3,"name":"before crash","startup":true})"))), "{}");
        ASSERT_EQ(compact(emulator.call(11, parse(R"({"default":true})"))), "{}");
        running = emulator.call(2, audioSender("survivor"))["session-id"].asUInt64();
        ASSERT_NE(running, 0u);
        emulator.kill9();
    }
    EmulatorProcess restarted(dir);
    const Json::Value table = restarted.call(13);
    EXPECT_EQ(table["list"][0]["name"].asString(), "before crash") << compact(table);
    EXPECT_EQ(table["startup"].asUInt(), 3u);
    Json::Value request;
    request["id"] = Json::UInt64(running);
    EXPECT_EQ(restarted.call(15, request)["name"].asString(), "survivor");
    EXPECT_EQ(compact(restarted.call(51)["senders"]), "[" + std::to_string(running) + "]");
    // No temporary files are left behind by the atomic writes.
    const auto listing = run({"/bin/ls", "-a", dir});
    EXPECT_EQ(listing.out.find(".tmp"), std::string::npos) << listing.out;
}

TEST(EmulatorRobustness, PythonClientGetsTheSameRepliesAsTheCppClient) {
    EmulatorProcess emulator;
    emulator.call(2, audioSender("python"));
    // The library's client, with a short reply limit, pointed at the emulator (the
    // context outlives the client's socket).
    zmq::context_t context(1);
    struct Client : AvMngApiJson {
        int getClientTimeout() override { return 5000; }
    } client;
    client.ipcPort = static_cast<uint32_t>(emulator.port());
    ASSERT_EQ(client.init(context), 0);
    struct Case {
        unsigned id;
        const char* request;
    };
    const std::vector<Case> cases = {
        {51, ""}, {13, ""}, {22, ""}, {19, ""}, {15, "{\"id\":1}"}, {0, "{\"id\":1}"}, {4, "{\"id\":424242}"}, {99, ""},
    };
    for (const auto& c : cases) {
        std::vector<std::string> argv = {"/usr/bin/python3", sourcePath("tests/e2e/wire_client.py"),
                                         emulator.endpoint(), std::to_string(c.id)};
        if (c.request[0] != '\0') {
            argv.emplace_back(c.request);
        }
        const auto python = run(argv);
        ASSERT_EQ(python.status, 0) << python.err;
        IpcMsg msg = c.request[0] != '\0' ? IpcMsg(c.id, parse(c.request)) : IpcMsg(c.id);
        Json::Value cpp;
        const int rc = client.sendMessage(msg, cpp);
        const Json::Value& refusal = static_cast<const Json::Value&>(cpp)["error"];
        EXPECT_EQ(rc, refusal.get("code", 0).asInt()) << "command " << c.id;  // a refusal is its code
        EXPECT_EQ(parse(python.out), cpp) << "command " << c.id;
    }
}
