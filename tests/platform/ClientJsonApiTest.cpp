#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>
#include <zmq.hpp>

#include "pimAvMngApi/platform/ClientJsonApi.h"
#include "platform/IpcWire.h"
#include "support/FakeDaemon.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

using namespace pimav::detail;

namespace {

using Clock = std::chrono::steady_clock;

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

// An endpoint on which nothing listens: a daemon's port, freed again.
std::string deadEndpoint() {
    FakeDaemon gone;
    return gone.endpoint();
}

long msSince(Clock::time_point start) {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

TEST(IpcWire, CommandIdIsFourLittleEndianBytes) {
    EXPECT_EQ(encodeCommandId(0x01020304u), std::string("\x04\x03\x02\x01", 4));
    for (uint32_t id : {0u, 55u, 256u, 0xFFFFFFFFu}) {
        const std::string frame = encodeCommandId(id);
        uint32_t back = 7;
        ASSERT_TRUE(decodeCommandId(frame.data(), frame.size(), back));
        EXPECT_EQ(back, id);
    }
    uint32_t untouched = 9;
    EXPECT_FALSE(decodeCommandId("\x01\x02\x03", 3, untouched));
    EXPECT_FALSE(decodeCommandId("\x01\x02\x03\x04\x05", 5, untouched));
    EXPECT_EQ(untouched, 9u);
}

TEST(IpcWire, DocumentsAreCompactAndParsingIsStrict) {
    EXPECT_EQ(renderDocument(jsonOf(R"({"b": [1, 2], "a": {"x": "y"}})")),
              R"({"a":{"x":"y"},"b":[1,2]})");
    Json::Value doc = "keep";
    std::string why;
    for (const std::string bad : {"", "{", "{} trailing", "not json", "{\"a\":1}{}"}) {
        EXPECT_FALSE(parseDocument(bad.data(), bad.size(), doc, &why)) << bad;
        EXPECT_FALSE(why.empty()) << bad;
        EXPECT_EQ(doc, Json::Value("keep")) << bad;
    }
    const std::string ok = " {\"a\":1}\n";
    ASSERT_TRUE(parseDocument(ok.data(), ok.size(), doc));
    EXPECT_EQ(doc["a"].asInt(), 1);
}

TEST(ClientJsonApi, ErrorCodesAreDistinctNamedAndBelowLibraryCodes) {
    std::set<int> codes;
    std::set<std::string> texts;
    for (int code :
         {ClientJsonApi::kErrNotInitialised, ClientJsonApi::kErrSocket, ClientJsonApi::kErrConnect,
          ClientJsonApi::kErrSendFailed, ClientJsonApi::kErrTimeout, ClientJsonApi::kErrReceiveFailed,
          ClientJsonApi::kErrBadReply, ClientJsonApi::kErrReplyNotJson}) {
        EXPECT_LT(code, -23);
        codes.insert(code);
        texts.insert(ClientJsonApi::describeError(code));
    }
    EXPECT_EQ(codes.size(), 8u);
    EXPECT_EQ(texts.size(), 8u);
    EXPECT_EQ(texts.count(ClientJsonApi::describeError(-7)), 0u);
}

TEST(ClientJsonApi, BaseHooksHaveUsableDefaults) {
    ClientJsonApi base;
    EXPECT_EQ(base.getClientTimeout(), 150000);
    std::string description = "x";
    EXPECT_EQ(base.getCommandDescription(12, description), 0);
    EXPECT_EQ(description, "command 12");
    ErrorReport report;
    EXPECT_EQ(base.getLastErrorMessage(report), 0);
    EXPECT_EQ(report.code, 0);
}

TEST(ClientJsonApi, SendsDocumentedFramesAndReturnsReplyDocument) {
    FakeDaemon daemon;
    const Json::Value answer = jsonOf(R"({"list":[{"id":1,"name":"a"}],"n":1.5,"s":"\u00e9"})");
    daemon.replyWith(answer);
    zmq::context_t ctx;
    EndpointClient client(daemon.endpoint());
    ASSERT_EQ(client.init(ctx), 0);

    IpcMsg withDoc(0x01020304u, jsonOf(R"({"pause": true, "id": 7})"));
    Json::Value reply = jsonOf(R"({"stale":1})");
    ASSERT_EQ(client.sendMessage(withDoc, reply), 0);
    EXPECT_EQ(reply, answer);  // replaced, not merged

    IpcMsg noDoc(5);
    ASSERT_EQ(client.sendMessage(noDoc, reply), 0);

    const auto seen = daemon.requests();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].frameCount, 2u);
    EXPECT_EQ(seen[0].idFrame, std::string("\x04\x03\x02\x01", 4));
    EXPECT_EQ(seen[0].documentText, R"({"id":7,"pause":true})");
    EXPECT_EQ(seen[1].frameCount, 2u);
    EXPECT_EQ(seen[1].commandId, 5u);
    EXPECT_FALSE(seen[1].hasDocument);
    EXPECT_TRUE(seen[1].documentText.empty());
}

TEST(ClientJsonApi, SendBeforeInitFailsWithReport) {
    LogCapture capture;
    EndpointClient client("tcp://127.0.0.1:1");
    IpcMsg msg(4, Json::Value(Json::objectValue));
    Json::Value reply = "untouched";
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrNotInitialised);
    EXPECT_EQ(reply, Json::Value("untouched"));
    ASSERT_EQ(capture.at(2).size(), 1u);
    EXPECT_NE(capture.at(2)[0].find("command 4 (cmd-4) failed with -101"), std::string::npos)
        << capture.at(2)[0];
    ErrorReport report;
    client.getLastErrorMessage(report);
    EXPECT_EQ(report.code, ClientJsonApi::kErrNotInitialised);
    EXPECT_EQ(report.commandId, 4u);
    EXPECT_EQ(report.commandDescription, "cmd-4");
    EXPECT_EQ(report.text.rfind("client not initialised", 0), 0u) << report.text;
}

TEST(ClientJsonApi, RefusedEndpointFailsInitAndEverySendUntilFixed) {
    LogCapture capture;
    zmq::context_t ctx;
    for (const char* bad :
         {"", "tcp://*:5559", "tcp://bad host:5559", "nonsense://x", "tcp://127.0.0.1:notaport"}) {
        EndpointClient client(bad);
        EXPECT_EQ(client.init(ctx), ClientJsonApi::kErrConnect) << bad;
    }
    EXPECT_EQ(capture.count("init failed with -103"), 5u);

    FakeDaemon daemon;
    EndpointClient client("");
    ASSERT_EQ(client.init(ctx), ClientJsonApi::kErrConnect);
    IpcMsg msg(3);
    Json::Value reply;
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrConnect);
    client.endpoint = daemon.endpoint();  // the next call builds its socket afresh
    EXPECT_EQ(client.sendMessage(msg, reply), 0);
}

TEST(ClientJsonApi, SilentDaemonTimesOutAndNextCallSucceeds) {
    FakeDaemon daemon;
    daemon.replyWith(jsonOf(R"({"ok":true})"));
    daemon.silentFor(1);
    zmq::context_t ctx;
    EndpointClient client(daemon.endpoint(), 300);
    ASSERT_EQ(client.init(ctx), 0);
    LogCapture capture;

    IpcMsg msg(9, jsonOf(R"({"pos":1})"));
    Json::Value reply = "untouched";
    const auto start = Clock::now();
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrTimeout);
    const long waited = msSince(start);
    EXPECT_GE(waited, 290);
    EXPECT_LT(waited, 10000);
    EXPECT_EQ(reply, Json::Value("untouched"));
    ASSERT_EQ(capture.at(2).size(), 1u);
    EXPECT_NE(capture.at(2)[0].find("no reply from " + daemon.endpoint() + " within 300 ms"),
              std::string::npos)
        << capture.at(2)[0];

    // Same object, same daemon: a stuck REQ socket would refuse this send.
    ASSERT_EQ(client.sendMessage(msg, reply), 0);
    EXPECT_EQ(reply, jsonOf(R"({"ok":true})"));
    EXPECT_EQ(daemon.requestCount(), 2u);
    ErrorReport report;
    client.getLastErrorMessage(report);
    EXPECT_EQ(report.code, ClientJsonApi::kErrTimeout);  // kept after a later success
    EXPECT_EQ(report.commandId, 9u);
}

TEST(ClientJsonApi, NoDaemonAtAllTimesOutWithoutHanging) {
    zmq::context_t ctx;
    EndpointClient client(deadEndpoint(), 200);
    ASSERT_EQ(client.init(ctx), 0);  // connecting is asynchronous
    LogCapture capture;
    IpcMsg msg(5);
    Json::Value reply;
    for (int i = 0; i < 2; ++i) {
        const auto start = Clock::now();
        EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrTimeout);
        EXPECT_LT(msSince(start), 10000);
    }
    EXPECT_EQ(capture.at(2).size(), 2u);
}

TEST(ClientJsonApi, MalformedRepliesAreRejectedAndTheSocketStaysUsable) {
    FakeDaemon daemon;
    daemon.sendNonJson("<html>");
    daemon.queue(FakeDaemon::Action::raw(""));
    daemon.queue(FakeDaemon::Action::rawFrames({"{}", "{}"}));
    daemon.queue(FakeDaemon::Action::rawFrames({"1", "2", "3"}));
    daemon.replyWith(jsonOf("[1,2]"));
    zmq::context_t ctx;
    EndpointClient client(daemon.endpoint());
    ASSERT_EQ(client.init(ctx), 0);
    LogCapture capture;
    IpcMsg msg(22);
    Json::Value reply = "untouched";
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrReplyNotJson);
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrReplyNotJson);
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrBadReply);
    EXPECT_EQ(client.sendMessage(msg, reply), ClientJsonApi::kErrBadReply);
    EXPECT_EQ(reply, Json::Value("untouched"));
    EXPECT_EQ(capture.at(2).size(), 4u);
    EXPECT_EQ(client.sendMessage(msg, reply), 0);
    EXPECT_EQ(reply, jsonOf("[1,2]"));
}

TEST(ClientJsonApi, DaemonRefusalsBecomeTheirNegativeCode) {
    struct Case {
        const char* reply;
        int result;
    };
    const Case cases[] = {
        {R"({"error":{"code":-16,"message":"no session with id 9"}})", -16},
        {R"({"error":{"code":-1,"message":"","user-messages":["Reference clock must be PTP."]}})", -1},
        // Not a refusal: no negative integer code.
        {R"({"error":{"code":0}})", 0},
        {R"({"error":{"code":"-16"}})", 0},
        {R"({"error":"text"})", 0},
        {R"({"errors":{"code":-16}})", 0},
    };
    FakeDaemon daemon;
    zmq::context_t ctx;
    EndpointClient client(daemon.endpoint());
    ASSERT_EQ(client.init(ctx), 0);
    for (const Case& c : cases) {
        daemon.replyWith(jsonOf(c.reply));
        LogCapture capture;
        IpcMsg msg(4, jsonOf(R"({"id":9})"));
        Json::Value reply;
        EXPECT_EQ(client.sendMessage(msg, reply), c.result) << c.reply;
        EXPECT_EQ(reply, jsonOf(c.reply)) << "the refusal document is handed over";
        EXPECT_EQ(capture.at(2).size(), c.result < 0 ? 1u : 0u) << c.reply;
    }
    ErrorReport report;
    client.getLastErrorMessage(report);
    EXPECT_EQ(report.code, -1);
    EXPECT_EQ(report.text, "refused by the daemon");
    EXPECT_EQ(report.commandId, 4u);
    EXPECT_EQ(report.commandDescription, "cmd-4");

    daemon.replyWith(jsonOf(R"({"error":{"code":-16,"message":"no session with id 9"}})"));
    LogCapture capture;
    IpcMsg msg(4);
    Json::Value reply;
    client.sendMessage(msg, reply);
    EXPECT_EQ(capture.at(2).at(0),
              "ClientJsonApi: command 4 (cmd-4) refused by the daemon with -16, refused by the daemon: no session with id 9");
}

TEST(ClientJsonApi, ReinitSwitchesEndpointAndARestartedDaemonIsReachedAgain) {
    zmq::context_t ctx;
    FakeDaemon first;
    auto second = std::make_unique<FakeDaemon>();
    const uint16_t port = second->port();
    EndpointClient client(first.endpoint());
    ASSERT_EQ(client.init(ctx), 0);
    IpcMsg msg(7);
    Json::Value reply;
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
    EXPECT_EQ(reply["back"].asInt(), 1);
}

TEST(ClientJsonApi, ConcurrentCallsOnOneObjectEachGetTheirOwnReply) {
    FakeDaemon daemon;
    daemon.onRequest([](const FakeDaemon::Request& r) { return FakeDaemon::Action::reply(r.document); });
    zmq::context_t ctx;
    EndpointClient client(daemon.endpoint());
    ASSERT_EQ(client.init(ctx), 0);
    constexpr int kThreads = 4;
    constexpr int kCalls = 25;
    std::vector<int> mismatches(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kCalls; ++i) {
                Json::Value request;
                request["thread"] = t;
                request["call"] = i;
                IpcMsg msg(static_cast<unsigned int>(t), request);
                Json::Value reply;
                if (client.sendMessage(msg, reply) != 0 || reply != request) {
                    ++mismatches[static_cast<size_t>(t)];
                }
            }
        });
    }
    for (auto& th : threads) {
        th.join();
    }
    EXPECT_EQ(mismatches, std::vector<int>(kThreads, 0));
    EXPECT_EQ(daemon.requestCount(), static_cast<size_t>(kThreads * kCalls));
}

}  // namespace
