// The emulator serving CURVE (--curve-secret, --curve-clients): a full-access key may do
// everything, a read-only key every command that does not change state, an unknown key
// nothing at all.

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "EmulatorProcess.h"
#include "common/RequestServer.h"
#include "platform/CurveKeys.h"
#include "support/CommandRows.h"
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
        {"full access lists", *full, 5, Json::Value(), 0},
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
    Json::Value list;
    ASSERT_EQ(readOnly->getSourceSessionList(list), 0);
    EXPECT_EQ(list["list"].size(), 1u) << compact(list);

    // The read-only key against every command: refused exactly those that change state.
    for (const CommandRowText& row : commandRows()) {
        IpcMsg msg(row.id, Json::Value(Json::objectValue));
        Json::Value reply;
        const int code = readOnly->sendMessage(msg, reply);
        EXPECT_EQ(code == kReadOnlyKey, row.changesState()) << "command " << row.id << ": " << code;
    }
}
