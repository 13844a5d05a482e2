// The daemon's CURVE access rules in this process, where its log lines can be read: the
// audit lines of refused connections and of state changes, and the client key folder.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ServedEmulator.h"
#include "common/ClientAccess.h"
#include "support/CurveKeyFolder.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

using namespace pimav::detail;

TEST(AccessAudit, RefusalsAndStateChangesAreLoggedWithTheClientKey) {
    if (!curveSupported()) {
        GTEST_SKIP() << "this libzmq has no CURVE support";
    }
    const CurveKeyFolder keys;
    const ClientKeys clientKeys = ClientKeys::load(keys.path("clients"));
    ServerOptions options;
    CurveKeyPair server;
    ASSERT_TRUE(readCurveKeyFile(keys.path("server.key"), server).ok());
    options.curveSecretKey = server.secretKey;
    options.clientKeys = &clientKeys;
    LogCapture capture;
    {
        ServedEmulator served(options);
        zmq::context_t context;
        const Json::Value sender = jsonOf(R"({"name":"audit","audio-sources":[{"channel-list":[{"channel":0}]}]})");
        Json::Value reply;
        EXPECT_EQ(keys.client("full", served.port(), context)->getSourceSessionList(reply), 0);
        EXPECT_EQ(keys.client("readonly", served.port(), context)->addSourceSession(sender, reply),
                  kReadOnlyKey);
        EXPECT_EQ(keys.client("full", served.port(), context)->addSourceSession(sender, reply), 0);
        EXPECT_EQ(keys.client("unknown", served.port(), context)->getSourceSessionList(reply),
                  ClientJsonApi::kErrKeyRefused);
    }
    const std::string full = keys.publicKey("full");
    const std::string readOnly = keys.publicKey("readonly");
    const std::string unknown = keys.publicKey("unknown");
    struct Line {
        int level;
        std::string text;
    };
    const Line expected[] = {
        {4, "emulator: audit: client " + full + " command 2 (CFG Add Source Session) result 0"},
        {4, "emulator: audit: client " + readOnly + " command 2 (CFG Add Source Session) result -43"},
        {2, "emulator: audit: client " + unknown + " from 127.0.0.1 refused: unknown key"},
        {5, "emulator: audit: client " + full + " from 127.0.0.1 accepted (full access)"},
    };
    for (const Line& line : expected) {
        const auto lines = capture.at(line.level);
        EXPECT_NE(std::find(lines.begin(), lines.end(), line.text), lines.end()) << line.text;
    }
    // Reads are not audited.
    EXPECT_EQ(capture.count("command 5 (GET Source List) result"), 0u);
}

TEST(AccessAudit, AKeyFolderWithAFaultyFileIsRefusedNamingIt) {
    const CurveKeyFolder keys;
    struct Case {
        const char* fault;
        std::string file;
        std::string content;
        std::string named;
    };
    const Case cases[] = {
        {"not a key", "clients/typo.pub", "not a key\n", "clients/typo.pub: public key has 9 characters"},
        {"full and read-only", "clients/readonly/full.pub", "", "cannot be read-only and not"},
    };
    for (const Case& c : cases) {
        if (c.content.empty()) {
            std::filesystem::copy_file(keys.path("full.pub"), keys.path(c.file));
        } else {
            std::ofstream(keys.path(c.file)) << c.content;
        }
        try {
            ClientKeys::load(keys.path("clients"));
            ADD_FAILURE() << c.fault << ": accepted";
        } catch (const std::runtime_error& e) {
            EXPECT_NE(std::string(e.what()).find(c.named), std::string::npos) << c.fault << ": " << e.what();
        }
        std::filesystem::remove(keys.path(c.file));
    }
}
