// What requests and files can do to the emulator's state: a request without its members or
// with content the device cannot keep, a write that fails, a file that cannot be read at
// start-up, and the limits. In each case the state is either changed whole and written,
// or left as it was.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <regex>

#include "EmulatorHarness.h"
#include "support/CommandRows.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

const std::string kSender =
    R"({"name":"one","audio-sources":[{"channel-list":[{"channel":0},{"channel":1}]}]})";

std::string jsonText(const Json::Value& doc) {
    return renderReply(doc);
}

// A document nested `levels` objects deep: {"a":{"a":...{}}}.
std::string nested(unsigned levels) {
    std::string text;
    for (unsigned i = 1; i < levels; ++i) {
        text += "{\"a\":";
    }
    return text + "{}" + std::string(levels - 1, '}');
}

std::string userSdp() {
    return fileText(PIMAV_SOURCE_DIR "/examples/advertised/commentary.sdp");
}
std::string userSdpEscaped() {
    const std::string quoted = jsonText(Json::Value(userSdp()));
    return quoted.substr(1, quoted.size() - 2);
}

// The rows of tests/data/emulator/state-refusals.tsv of one kind, placeholders filled.
std::vector<DataRow> refusals(const std::string& kind) {
    std::vector<DataRow> rows;
    for (DataRow row : dataRows("emulator/state-refusals.tsv")) {
        std::string& request = row.fields[2];
        const size_t nest = request.find("{nested:");
        if (nest != std::string::npos) {
            const size_t end = request.find('}', nest);
            request.replace(nest, end + 1 - nest, nested(std::stoul(request.substr(nest + 8))));
        }
        for (const auto& [key, value] :
             {std::pair<std::string, std::string>{"{user-sdp}", userSdpEscaped()}, {"{sender}", kSender}}) {
            for (size_t at = request.find(key); at != std::string::npos; at = request.find(key)) {
                request.replace(at, key.size(), value);
            }
        }
        if (row.fields[0] == kind) {
            rows.push_back(row);
        }
    }
    return rows;
}

// A device with one of everything the commands touch: a sender (id 1) with gains, a
// receiver of user SDP (id 2), a saved position 1.
class EmulatorStateTest : public ::testing::Test {
protected:
    void SetUp() override {
        options.configDir = tempDir("state");
        emulator = std::make_unique<Emulator>(options);
        ASSERT_EQ(call(2, kSender)["session-id"].asUInt64(), 1u);
        Json::Value receiver;
        receiver["name"] = "two";
        receiver["user-sdp"] = userSdp();
        ASSERT_EQ(call(3, jsonText(receiver))["session-id"].asUInt64(), 2u);
        ASSERT_EQ(
            jsonText(call(
                52, R"({"session-id":1,"channel-list":[{"position":0,"channel-gain":0.5,"mute":false}]})")),
            "{}");
        ASSERT_EQ(jsonText(call(9, R"({"pos":1,"name":"one"})")), "{}");
    }

    Json::Value call(unsigned id, const std::string& json = "") {
        return pimav::detail::call(*emulator, id, json);
    }

    // What a client or a restart sees of the state.
    std::string state() {
        return jsonText(call(10)) + "\n" + fileText(options.configDir + "/running.json") + "\n" +
               jsonText(call(13));
    }

    EmulatorOptions options;
    std::unique_ptr<Emulator> emulator;
};

// Every command of the table has a handler, and a request without its members changes nothing.
TEST_F(EmulatorStateTest, ARequestWithoutItsMembersChangesNothing) {
    const std::regex namesMember(R"(["'][a-z-]+["'])");
    for (const CommandRowText& row : commandRows()) {
        EXPECT_EQ(Emulator::changesState(row.id), row.changesState()) << row.id;
        for (const char* document : {"", "{}"}) {
            SCOPED_TRACE(std::to_string(row.id) + " " + row.method + " with " +
                         (*document ? document : "nothing"));
            const std::string before = state();
            const Json::Value reply = call(row.id, document);
            EXPECT_EQ(jsonText(reply).find("unknown command"), std::string::npos) << jsonText(reply);
            if (Emulator::changesState(row.id) && row.shape != "REPLY") {
                EXPECT_EQ(reply["error"]["code"].asInt(), -13) << jsonText(reply);
                EXPECT_TRUE(std::regex_search(reply["error"]["message"].asString(), namesMember))
                    << jsonText(reply);
            }
            EXPECT_TRUE(state() == before) << "the state changed";
        }
    }
    const auto past = static_cast<unsigned>(commandRows().size());
    EXPECT_EQ(call(past)["error"]["message"].asString(), "unknown command id " + std::to_string(past));
}

TEST_F(EmulatorStateTest, RefusedContentChangesNothing) {
    for (const DataRow& row : refusals("refused")) {
        const std::vector<std::string>& f = row.fields;
        SCOPED_TRACE(row.where + " " + f[1]);
        const std::string before = state();
        const Json::Value reply = call(std::stoul(f[1]), f[2]);
        EXPECT_EQ(reply["error"]["code"].asInt(), std::stoi(f[3])) << jsonText(reply);
        EXPECT_NE(reply["error"]["message"].asString().find(f[4]), std::string::npos) << jsonText(reply);
        EXPECT_TRUE(state() == before) << "the state changed";
    }
    // The limit is the depth, not the form: 64 levels are kept, and written compact.
    ASSERT_EQ(jsonText(call(30, "{\"hdmi\":" + nested(64) + "}")), "{}");
    EXPECT_LT(fileText(options.configDir + "/running.json").find(nested(64)), std::string::npos);
    // What command 10 returns, command 12 takes back unchanged.
    const std::string before = state();
    ASSERT_EQ(jsonText(call(12, jsonText(call(10)))), "{}");
    EXPECT_TRUE(state() == before) << "the state changed";
}

// A write that fails (here: the folder replaced by a file, which holds for root too) fails
// the command with its own code and cause, and the state in memory stays as it was.
TEST_F(EmulatorStateTest, AFailedWriteIsRefusedWithItsCauseAndNothingChanges) {
    const std::string before = state();
    const std::string moved = options.configDir + ".moved";
    ASSERT_EQ(std::rename(options.configDir.c_str(), moved.c_str()), 0);
    std::ofstream(options.configDir) << "not a folder";
    const std::vector<DataRow> cases = refusals("write");
    LogCapture log;
    for (const DataRow& row : cases) {
        SCOPED_TRACE(row.where + " " + row.fields[1]);
        const Json::Value reply = call(std::stoul(row.fields[1]), row.fields[2]);
        EXPECT_EQ(reply["error"]["code"].asInt(), -30) << jsonText(reply);
        EXPECT_NE(reply["error"]["message"].asString().find("Not a directory"), std::string::npos)
            << jsonText(reply);
    }
    EXPECT_EQ(log.count("Not a directory"), cases.size());
    ASSERT_EQ(std::remove(options.configDir.c_str()), 0);
    ASSERT_EQ(std::rename(moved.c_str(), options.configDir.c_str()), 0);
    EXPECT_TRUE(state() == before) << "the state changed";
    emulator = std::make_unique<Emulator>(options);
    EXPECT_TRUE(state() == before) << "the state changed";
}

TEST_F(EmulatorStateTest, LimitsAndLeftovers) {
    // A change that changes nothing is not written again.
    struct stat first {};
    ASSERT_EQ(::stat((options.configDir + "/running.json").c_str(), &first), 0);
    ASSERT_EQ(jsonText(call(28, jsonText(call(27)))), "{}");
    struct stat second {};
    ASSERT_EQ(::stat((options.configDir + "/running.json").c_str(), &second), 0);
    EXPECT_EQ(first.st_ino, second.st_ino);
    // The gain table of a removed session goes with it.
    ASSERT_TRUE(call(10)["running"]["settings"]["source-gains"].isMember("1"));
    ASSERT_EQ(jsonText(call(4, R"({"id":1})")), "{}");
    EXPECT_FALSE(call(10)["running"]["settings"]["source-gains"].isMember("1"));
    // The running state is written as command 10 gives it, compact.
    EXPECT_EQ(fileText(options.configDir + "/running.json"), jsonText(call(10)["running"]));
    // The debug reply names no path of the host.
    EXPECT_EQ(jsonText(call(48)).find(options.configDir), std::string::npos);

    options.maxSessions = 2;
    options.maxStateBytes = 16384;
    emulator = std::make_unique<Emulator>(options);
    ASSERT_EQ(call(2, kSender)["session-id"].asUInt64(), 3u);
    const Json::Value full = call(2, kSender);
    EXPECT_EQ(full["error"]["code"].asInt(), -31) << jsonText(full);
    EXPECT_NE(full["error"]["message"].asString().find("(--max-sessions)"), std::string::npos);
    ASSERT_EQ(jsonText(call(4, R"({"id":3})")), "{}");
    const Json::Value large =
        call(2, R"({"name":")" + std::string(20000, 'n') + R"(","audio-sources":[{}]})");
    EXPECT_EQ(large["error"]["code"].asInt(), -32) << jsonText(large);
    EXPECT_NE(large["error"]["message"].asString().find("(--max-state-bytes)"), std::string::npos);
}

// Start-up reads every file inside the error handling: a file it cannot read is set aside
// as <name>.bad with a log line naming it, and the daemon starts with the rest.
TEST(EmulatorStartup, UnreadableFilesAreSetAsideAndTheRestIsLoaded) {
    EmulatorOptions options = freshOptions("startup-template");
    std::string savedName;
    {
        Emulator emulator(options);
        ASSERT_EQ(renderReply(call(emulator, 9, R"({"pos":1,"name":"kept"})")), "{}");
        for (const std::string& name : filesIn(options.configDir)) {
            savedName = name.find("1.json") != std::string::npos ? name : savedName;
        }
    }
    const std::string prefix = savedName.substr(0, savedName.size() - std::string("1.json").size());
    const std::string saved = fileText(options.configDir + "/" + savedName);
    for (const DataRow& row : refusals("startup")) {
        const std::string& content = row.fields[2];
        SCOPED_TRACE(row.where);
        options.configDir = tempDir("startup");
        const std::string file = row.fields[1];
        const std::string path = options.configDir + "/" + (file[0] == '{' ? prefix + file.substr(10) : file);
        std::ofstream(options.configDir + "/" + savedName) << saved;
        std::ofstream(options.configDir + "/running.json.tmpAb12Cd") << "{";
        if (content == "fifo") {
            ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0);
        } else if (content == "folder") {
            ASSERT_EQ(::mkdir(path.c_str(), 0755), 0);
        } else {
            std::ofstream(path) << content;
        }
        LogCapture log;
        Emulator emulator(options);
        EXPECT_EQ(log.count("emulator: set aside unreadable file " + path + " as " + path + ".bad: "), 1u);
        EXPECT_TRUE(log.contains(row.fields[3]));
        EXPECT_TRUE(log.contains("emulator: removed " + options.configDir + "/running.json.tmpAb12Cd"));
        struct stat st {};
        EXPECT_EQ(::stat((path + ".bad").c_str(), &st), 0);
        EXPECT_NE(::stat(path.c_str(), &st), 0);
        const Json::Value table = call(emulator, 13);
        ASSERT_EQ(table["list"].size(), 1u) << renderReply(table);
        EXPECT_EQ(table["list"][0]["name"].asString(), "kept");
    }
}

}  // namespace
