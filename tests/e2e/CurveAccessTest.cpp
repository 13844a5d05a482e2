// The emulator process serving CURVE (--curve-secret, --curve-clients): a full-access key
// may change state, a read-only key only read, an unknown key nothing at all. Which commands
// change state, and the audit of each key, are tested in-process (tests/emulator).

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "EmulatorProcess.h"
#include "common/RequestServer.h"
#include "platform/CurveKeys.h"
#include "support/CurveKeyFolder.h"
#include "support/LogCapture.h"

using namespace pimav::detail;

TEST(CurveAccess, KeysDecideWhoMayReadAndWhoMayChangeState) {
    if (!curveSupported()) {
        GTEST_SKIP() << "this libzmq has no CURVE support";
    }
    const CurveKeyFolder keys;
    LogCapture quiet;  // the client's refusal lines
    EmulatorProcess emulator("", {"--curve-secret", keys.path("server.key"), "--curve-clients", keys.path("clients")});
    zmq::context_t context;
    const auto full = keys.client("full", emulator.port(), context);
    const auto readOnly = keys.client("readonly", emulator.port(), context);
    const auto unknown = keys.client("unknown", emulator.port(), context);
    const Json::Value sender = parse(R"({"name":"curve","audio-sources":[{"channel-list":[{"channel":0}]}]})");

    struct Case {
        const char* what;
        AvMngApiJson& client;
        unsigned command;
        Json::Value request;
        int code;
    };
    const Case cases[] = {
        {"full access adds", *full, 2, sender, 0},
        {"read-only lists", *readOnly, 5, Json::Value(), 0},
        {"read-only cannot add", *readOnly, 2, sender, kReadOnlyKey},
        {"unknown key", *unknown, 5, Json::Value(), ClientJsonApi::kErrKeyRefused},
    };
    // The unknown key's connection is refused before its request is sent (under qemu its
    // socket then no longer takes the request: the refusal must still be told at once).
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    for (const Case& c : cases) {
        IpcMsg msg = c.request.isNull() ? IpcMsg(c.command) : IpcMsg(c.command, c.request);
        Json::Value reply;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(c.client.sendMessage(msg, reply), c.code) << c.what;
        // A refused key is told at once, not after the time limit.
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5)) << c.what;
    }
}
