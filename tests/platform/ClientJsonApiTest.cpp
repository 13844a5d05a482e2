#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>
#include <zmq.hpp>

#include "common/ClientAccess.h"
#include "pimAvMngApi/platform/ClientJsonApi.h"
#include "platform/CurveKeys.h"
#include "platform/IpcWire.h"
#include "support/CurveKeyFolder.h"
#include "support/FakeDaemon.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"
#include "support/ScopedEnv.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

using Lines = std::vector<std::string>;

// A bare transport aimed at an endpoint of the test's choosing.
class EndpointClient : public ClientJsonApi {
public:
    explicit EndpointClient(std::string endpoint, int timeoutMs = 3000)
        : endpoint(std::move(endpoint)), timeoutMs(timeoutMs) {}
    std::string getIpcConnectAddress() override { return endpoint; }
    int getClientTimeout() override { return timeoutMs; }
    int getCommandDescription(unsigned int id, std::string& description) override {
        description = "cmd-" + std::to_string(id);
        return 0;
    }
    std::string endpoint;
    int timeoutMs;
};

TEST(IpcWire, CommandIdIsFourLittleEndianBytes) {
    EXPECT_EQ(encodeCommandId(0x01020304u), std::string("\x04\x03\x02\x01", 4));
    for (uint32_t id : {0u, 55u, 256u, 0xFFFFFFFFu}) {
        const std::string frame = encodeCommandId(id);
        uint32_t back = 7;
        ASSERT_TRUE(decodeCommandId(frame.data(), frame.size(), back));
        EXPECT_EQ(back, id);
    }
    uint32_t id = 0;  // the four bytes of the frame, not one more
    ASSERT_TRUE(decodeCommandId("\x05\x00\x00\x00\xff", 4, id));
    EXPECT_EQ(id, 5u);
    uint32_t untouched = 9;
    EXPECT_FALSE(decodeCommandId("\x01\x02\x03", 3, untouched));
    EXPECT_FALSE(decodeCommandId("\x01\x02\x03\x04\x05", 5, untouched));
    EXPECT_EQ(untouched, 9u);
}

TEST(IpcWire, DocumentsAreCompactAndParsingIsStrict) {
    EXPECT_EQ(renderDocument(jsonOf(R"({"b": [1, 2], "a": {"x": "y"}})")), R"({"a":{"x":"y"},"b":[1,2]})");
    struct Case {
        std::string text;
        const char* refusal;  // nullptr: accepted
    };
    const Case cases[] = {
        {"", "empty text"},
        {"{", "Line 1"},
        {"{} trailing", "Extra non-whitespace"},
        {"{\"a\":1}{}", "Extra non-whitespace"},
        {" {\"a\":1}\n", nullptr},
        // Strings must be UTF-8: the longest sequences, the highest code points...
        {"[\"\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF\"]", nullptr},
        {R"(["\ud834\udd1e"])", nullptr},
        // ...and nothing else: overlong forms, surrogates, beyond U+10FFFF, cut short.
        {"[\"ok\",\"\xC0\x80\"]", "not UTF-8 at [1]"},
        {"{\"a\":{\"b\":\"\xE0\x9F\xBF\"}}", "not UTF-8 at a.b"},
        {"[\"\xED\xA0\x80\"]", "not UTF-8 at [0]"},
        {R"({"s":["\udc00"]})", "not UTF-8 at s[0]"},
        {"\"\xF4\x90\x80\x80\"", "not UTF-8 at <root>"},
        {"[\"\xE2\x82\"]", "not UTF-8"},
        // Every byte after the lead byte must be a continuation byte.
        {"\"\xE2\x82\x41\"", "not UTF-8"},
        {"\"\xF0\x9F\x98\x41\"", "not UTF-8"},
        {"{\"x\":{\"\xFF\":1}}", "not UTF-8 at x.<member name>"},
    };
    for (const Case& c : cases) {
        Json::Value doc = "keep";
        std::string why;
        EXPECT_EQ(parseDocument(c.text.data(), c.text.size(), doc, &why), c.refusal == nullptr) << c.text;
        if (c.refusal != nullptr) {
            EXPECT_NE(why.find(c.refusal), std::string::npos) << c.text << ": " << why;
            EXPECT_EQ(doc, Json::Value("keep")) << c.text;
        }
    }
}

TEST(ClientJsonApi, SendBeforeInitFailsWithReport) {
    LogCapture capture;
    EndpointClient client("tcp://127.0.0.1:1");
    IpcMsg msg(4, Json::Value(Json::objectValue));
    Json::Value reply = "untouched";
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrNotInitialised);
    EXPECT_EQ(reply, Json::Value("untouched"));
    EXPECT_TRUE(
        capture.matches(2, {"ClientJsonApi: command 4 (cmd-4) failed with -101, client not initialised: *"}))
        << ::testing::PrintToString(capture.at(2));
}

TEST(ClientJsonApi, RefusedEndpointsFailInit) {
    LogCapture capture;
    zmq::context_t ctx;
    for (const char* bad :
         {"", "tcp://*:5559", "tcp://bad host:5559", "nonsense://x", "tcp://127.0.0.1:notaport"}) {
        EndpointClient client(bad);
        EXPECT_EQ(client.init(ctx), ClientJsonApi::kErrConnect) << bad;
    }
    EXPECT_EQ(capture.count("init failed with -103"), 5u);
}

// One exchange per row with a daemon that answers the row's frames (none: no answer). Each
// returns its code well before the client's limit, logs its level 2 line (a pattern of
// LogCapture) and leaves its report, which a later success keeps; the next exchange on the
// same object works.
TEST(ClientJsonApi, EachReplyDecidesTheResultAndTheNextCallWorks) {
    constexpr int64_t kLimit = 1024;
    const auto jsonOfSize = [](size_t size) { return "\"" + std::string(size - 2, 'x') + "\""; };
    constexpr int kTimeout = ClientJsonApi::kErrTimeout, kNotJson = ClientJsonApi::kErrReplyNotJson,
                  kBadReply = ClientJsonApi::kErrBadReply;
    FakeDaemon daemon;
    struct Case {
        const char* name;
        std::vector<std::string> frames;
        int code;
        std::string logged;
        int64_t maxReplyBytes = ClientJsonApi::kDefaultMaxReplyBytes;
    };
    const std::string failed = "ClientJsonApi: command 22 (cmd-22) failed with ";
    const std::string refused = "ClientJsonApi: command 22 (cmd-22) refused by the daemon with ";
    // clang-format off
    const Case cases[] = {
        {"no answer", {}, kTimeout, failed + "-105, *: no reply from " + daemon.endpoint() + " within 300 ms"},
        {"not JSON", {"<html>"}, kNotJson, failed + "-108, reply is not a JSON document: *"},
        {"empty frame", {""}, kNotJson, "*empty text*"},
        {"two frames", {"{}", "{}"}, kBadReply, "*has 2 frames"},
        {"three frames", {"1", "2", "3"}, kBadReply, "*has 3 frames"},
        {"nested 1,001 levels", {std::string(1001, '[') + std::string(1001, ']')}, kNotJson, "*stackLimit*"},
        {"invalid UTF-8", {"{\"name\":\"caf\xE9\"}"}, kNotJson, "*not UTF-8 at name*"},
        {"one byte over the size limit", {jsonOfSize(kLimit + 1)}, ClientJsonApi::kErrReplyTooLarge,
         "*dropped while the reply arrived (limit 1024 bytes)", kLimit},
        {"exactly the size limit", {jsonOfSize(kLimit)}, 0, "", kLimit},
        {"refusal", {R"({"error":{"code":-16,"message":"no session with id 9"}})"}, -16,
         refused + "-16, refused by the daemon: no session with id 9"},
        {"refusal without a message", {R"({"error":{"code":-1,"message":"","user-messages":["PTP"]}})"}, -1,
         refused + "-1, refused by the daemon"},
        {"error code 0", {R"({"error":{"code":0}})"}, 0, ""},
        {"error code as text", {R"({"error":{"code":"-16"}})"}, 0, ""},
        {"error as text", {R"({"error":"text"})"}, 0, ""},
        {"errors", {R"({"errors":{"code":-16}})"}, 0, ""},
    };
    // clang-format on
    zmq::context_t ctx;
    EndpointClient client(daemon.endpoint());
    ASSERT_EQ(client.init(ctx), 0);
    IpcMsg msg(22, jsonOf(R"({"pause": true, "id": 7})"));
    IpcMsg next(5);
    const Json::Value stale = jsonOf(R"({"stale":1})");  // replaced, never merged
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const int limitMs = c.frames.empty() ? 300 : 20000;
        client.setClientTimeoutMs(limitMs);
        client.setMaxReplyBytes(c.maxReplyBytes);
        daemon.queue(c.frames.empty() ? FakeDaemon::Action::silent()
                                      : FakeDaemon::Action::rawFrames(c.frames));
        daemon.queueReply(jsonOf(R"({"next":true})"));
        LogCapture capture;
        Json::Value reply = stale;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(client.sendMessage(msg, reply), c.code);
        const auto waited = std::chrono::steady_clock::now() - start;
        EXPECT_LT(waited, std::chrono::seconds(5));
        EXPECT_GE(waited, std::chrono::milliseconds(c.code == kTimeout ? limitMs - 10 : 0));
        // The daemon's own codes lie above the library's: its document is handed over.
        EXPECT_EQ(reply, c.code > ClientJsonApi::kErrNotInitialised ? jsonOf(c.frames[0]) : stale);
        EXPECT_TRUE(capture.matches(2, c.code < 0 ? Lines{c.logged} : Lines{}))
            << ::testing::PrintToString(capture.at(2));
        ASSERT_EQ(client.sendMessage(next, reply), 0);
        EXPECT_EQ(reply, jsonOf(R"({"next":true})"));
        if (c.code < 0) {
            ErrorReport report;
            client.getLastErrorMessage(report);
            EXPECT_EQ(report.code, c.code);
            EXPECT_EQ(report.commandId, 22u);
            EXPECT_EQ(report.commandDescription, "cmd-22");
        }
    }
    // The frames: the command id, then the compact document or nothing.
    const auto seen = daemon.requests();
    ASSERT_EQ(seen.size(), 2 * std::size(cases));
    EXPECT_EQ(seen[0].frameCount, 2u);
    EXPECT_EQ(seen[0].commandId, 22u);
    EXPECT_EQ(seen[0].documentText, R"({"id":7,"pause":true})");
    EXPECT_EQ(seen[1].frameCount, 2u);
    EXPECT_EQ(seen[1].commandId, 5u);
    EXPECT_TRUE(seen[1].documentText.empty());
}

// tests/data/platform/time-limits.tsv: the host's setter, then AVMNG_TIMEOUT_MS, then the hook.
TEST(ClientJsonApi, TimeLimitComesFromTheHostThenTheEnvironmentThenTheHook) {
    zmq::context_t ctx;
    for (const DataRow& row : dataRows("platform/time-limits.tsv")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::string>& f = row.fields;
        ScopedEnv env("AVMNG_TIMEOUT_MS", f[0] == "-" ? nullptr : f[0].c_str());
        LogCapture capture;
        EndpointClient client("tcp://127.0.0.1:1", std::stoi(f[2]));  // init connects later
        if (f[1] != "-") {
            client.setClientTimeoutMs(std::stoi(f[1]));
        }
        ASSERT_EQ(client.init(ctx), 0);
        EXPECT_EQ(client.clientTimeoutMs(), std::stoi(f[3]));
        EXPECT_EQ(
            capture.count("AVMNG_TIMEOUT_MS=\"" + f[0] + "\" ignored: not a time limit in milliseconds"),
            f[4] == "1" ? 1u : 0u);
    }
}

// Each call after a failed one builds its socket afresh, init builds it for the endpoint
// of the moment, and a daemon restarted on the same port is reached again.
TEST(ClientJsonApi, EndpointChangesAndRestartsAreFollowed) {
    zmq::context_t ctx;
    FakeDaemon first;
    auto second = std::make_unique<FakeDaemon>();
    const uint16_t port = second->port();
    EndpointClient client("");
    LogCapture quiet;
    ASSERT_EQ(client.init(ctx), ClientJsonApi::kErrConnect);
    IpcMsg msg(7);
    Json::Value reply;
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrConnect);
    client.endpoint = first.endpoint();
    ASSERT_EQ(client.sendMessage(msg, reply), 0);
    client.endpoint = second->endpoint();
    ASSERT_EQ(client.init(ctx), 0);
    ASSERT_EQ(client.sendMessage(msg, reply), 0);
    EXPECT_EQ(first.requestCount(), 1u);
    EXPECT_EQ(second->requestCount(), 1u);

    second.reset();
    second = std::make_unique<FakeDaemon>(port);
    second->replyWith(jsonOf(R"({"back":1})"));
    ASSERT_EQ(client.sendMessage(msg, reply), 0);
    EXPECT_EQ(reply, jsonOf(R"({"back":1})"));
}

TEST(ClientJsonApi, ConcurrentCallsOnOneObjectEachGetTheirOwnReply) {
    FakeDaemon daemon;
    daemon.onRequest([](const FakeDaemon::Request& r) { return FakeDaemon::Action::reply(r.document); });
    zmq::context_t ctx;
    EndpointClient client(daemon.endpoint());
    ASSERT_EQ(client.init(ctx), 0);
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 25; ++i) {
                const Json::Value request = jsonOf("[" + std::to_string(t) + "," + std::to_string(i) + "]");
                IpcMsg msg(static_cast<unsigned int>(t), request);
                Json::Value reply;
                mismatches += client.sendMessage(msg, reply) != 0 || reply != request ? 1 : 0;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mismatches, 0);
    EXPECT_EQ(daemon.requestCount(), 100u);
}

TEST(ClientJsonApiCurve, KeysFromTheEnvironmentOrTheHostEncryptOrFailInit) {
    if (!curveSupported()) {
        GTEST_SKIP() << "this libzmq has no CURVE support";
    }
    const CurveKeyFolder keys;
    CurveKeyPair server;
    ASSERT_TRUE(readCurveKeyFile(keys.path("server.key"), server).ok());
    std::string dir = keys.path("");
    dir.pop_back();
    const auto expand = [&](std::string text) {
        for (const auto& [name, value] : {std::pair<std::string, std::string>{"{server}", server.publicKey},
                                          {"{other}", keys.publicKey("unknown")},
                                          {"{dir}", dir}}) {
            for (size_t at; (at = text.find(name)) != std::string::npos;) {
                text.replace(at, name.size(), value);
            }
        }
        return text;
    };
    // The daemon lets in the client keys of the folder (full.key among them).
    const ClientKeys clientKeys = ClientKeys::load(keys.path("clients"));
    ServerOptions curve;
    curve.curveSecretKey = server.secretKey;
    curve.clientKeys = &clientKeys;
    FakeDaemon curveServer(0, curve);
    curveServer.replyWith(jsonOf(R"({"curve":true})"));
    zmq::context_t ctx;
    for (const DataRow& row : dataRows("platform/curve-client-keys.tsv")) {
        SCOPED_TRACE(row.where);
        std::vector<std::string> f;
        for (const std::string& field : row.fields) {
            f.push_back(expand(field));
        }
        f.resize(7);
        ScopedEnv serverKey("AVMNG_CURVE_SERVER_KEY", f[0].c_str());
        ScopedEnv clientKeys("AVMNG_CURVE_KEYFILE", f[1].c_str());
        LogCapture capture;
        EndpointClient client(curveServer.endpoint(), 400);
        if (f[2] != "-") {
            client.setCurveKeys(f[2], f[3]);
        }
        EXPECT_EQ(client.init(ctx), std::stoi(f[4]));
        IpcMsg msg(5);
        Json::Value reply;
        EXPECT_EQ(client.sendMessage(msg, reply), std::stoi(f[5]));
        if (f[5] == "0") {
            EXPECT_EQ(reply, jsonOf(R"({"curve":true})"));
            EXPECT_TRUE(capture.at(2).empty());
        } else {
            ASSERT_FALSE(capture.at(2).empty());
            EXPECT_TRUE(matchesPattern(f[6].c_str(), capture.at(2)[0].c_str())) << capture.at(2)[0];
        }
    }
}

}  // namespace
