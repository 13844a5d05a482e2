// The emulator as a process: malformed input, crashes between save and load, and a
// second client implementation of the wire protocol.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "EmulatorProcess.h"
#include "pimAvMngApi/api/AvMngApiJson.h"
#include "platform/IpcWire.h"

using namespace pimav::detail;

namespace {

Json::Value audioSender(const std::string& name, unsigned channels) {
    Json::Value doc;
    doc["name"] = name;
    Json::Value source;
    source["codec"] = "L24";
    source["ptime"] = 1000;
    source["channel-freq"] = 48000;
    for (unsigned c = 0; c < channels; ++c) {
        Json::Value channel;
        channel["channel"] = c;
        source["channel-list"].append(channel);
    }
    doc["audio-sources"].append(source);
    return doc;
}

}  // namespace

TEST(EmulatorRobustness, UnreadableRequestsGetAnErrorReplyAndTheDaemonGoesOn) {
    EmulatorProcess emulator;
    struct Case {
        const char* what;
        std::vector<std::string> frames;
        int code;
    };
    const std::vector<Case> cases = {
        {"one frame", {encodeCommandId(5)}, -13},
        {"three frames", {encodeCommandId(5), "", ""}, -13},
        {"short id frame", {"ab", ""}, -13},
        {"unknown id", {encodeCommandId(56), ""}, -13},
        {"huge id", {encodeCommandId(0xFFFFFFFFu), ""}, -13},
        {"bad JSON", {encodeCommandId(4), "{\"id\":"}, -13},
        {"JSON array", {encodeCommandId(4), "[1,2]"}, -13},
        {"JSON number", {encodeCommandId(4), "42"}, -13},
        {"wrong kind of id", {encodeCommandId(4), "{\"id\":\"seven\"}"}, -13},
        {"missing request", {encodeCommandId(4), ""}, -13},
        {"unknown session", {encodeCommandId(0), "{\"id\":999999}"}, -16},
        {"session id 0", {encodeCommandId(15), "{\"id\":0}"}, -14},
        {"position out of range", {encodeCommandId(25), "{\"pos\":11}"}, -8},
    };
    for (const auto& c : cases) {
        const Json::Value reply = parse(emulator.callRaw(c.frames));
        ASSERT_TRUE(reply.isObject()) << c.what;
        ASSERT_TRUE(reply["error"].isObject()) << c.what;
        EXPECT_EQ(reply["error"]["code"].asInt(), c.code) << c.what;
        EXPECT_FALSE(reply["error"]["message"].asString().empty()) << c.what;
    }
}

TEST(EmulatorRobustness, SavedConfigurationSurvivesKillBetweenSaveAndLoad) {
    const std::string dir = makeTempDir("persist");
    uint64_t sessionId = 0;
    {
        EmulatorProcess emulator(dir);
        const Json::Value added = emulator.call(2, audioSender("kept", 4));
        ASSERT_TRUE(added["session-id"].isUInt64()) << compact(added);
        sessionId = added["session-id"].asUInt64();
        Json::Value save;
        save["pos"] = 3;
        save["name"] = "before crash";
        save["startup"] = true;
        ASSERT_EQ(compact(emulator.call(9, save)), "{}");
        Json::Value clear;
        clear["default"] = true;
        ASSERT_EQ(compact(emulator.call(11, clear)), "{}");
        EXPECT_EQ(emulator.call(51)["senders"].size(), 0u);
        emulator.kill9();
    }
    EmulatorProcess restarted(dir);
    const Json::Value table = restarted.call(13);
    ASSERT_EQ(table["list"].size(), 1u) << compact(table);
    EXPECT_EQ(table["list"][0]["index"].asUInt(), 3u);
    EXPECT_EQ(table["list"][0]["name"].asString(), "before crash");
    EXPECT_EQ(table["startup"].asUInt(), 3u);
    // The running state at the time of the kill (empty) is what comes back ...
    EXPECT_EQ(restarted.call(51)["senders"].size(), 0u);
    // ... and loading position 3 restores the saved session with its id.
    Json::Value load;
    load["pos"] = 3;
    ASSERT_EQ(compact(restarted.call(11, load)), "{}");
    const Json::Value ids = restarted.call(51);
    ASSERT_EQ(ids["senders"].size(), 1u);
    EXPECT_EQ(ids["senders"][0].asUInt64(), sessionId);
    // No temporary files are left behind by the atomic writes.
    const auto listing = run({"/bin/ls", "-a", dir});
    EXPECT_EQ(listing.out.find(".tmp"), std::string::npos) << listing.out;
}

TEST(EmulatorRobustness, RunningSessionsSurviveKill) {
    const std::string dir = makeTempDir("running");
    Json::Value added;
    {
        EmulatorProcess emulator(dir);
        added = emulator.call(2, audioSender("survivor", 2));
        ASSERT_TRUE(added["session-id"].isUInt64());
        emulator.kill9();
    }
    EmulatorProcess restarted(dir);
    Json::Value request;
    request["id"] = added["session-id"];
    const Json::Value info = restarted.call(15, request);
    EXPECT_EQ(info["name"].asString(), "survivor");
    EXPECT_EQ(info["session-list"].size(), 1u);
    // New sessions get new ids after the restart.
    const Json::Value second = restarted.call(2, audioSender("next", 2));
    EXPECT_GT(second["session-id"].asUInt64(), added["session-id"].asUInt64());
}

TEST(EmulatorRobustness, PythonClientGetsTheSameRepliesAsTheCppClient) {
    EmulatorProcess emulator;
    emulator.call(2, audioSender("python", 2));
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
