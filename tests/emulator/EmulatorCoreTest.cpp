// The emulator's parts in-process: request decoding, atomic files, and the state it keeps
// across a restart.

#include <gtest/gtest.h>
#include <dirent.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>

#include "Emulator.h"
#include "common/AtomicFile.h"
#include "common/RequestServer.h"
#include "support/CommandRows.h"
#include "support/LogCapture.h"

using namespace pimav::detail;

namespace {

std::string tempDir(const char* tag) {
    std::string pattern = std::string("/tmp/pimav-emu-") + tag + "-XXXXXX";
    return ::mkdtemp(pattern.data());
}

std::vector<std::string> filesIn(const std::string& dir) {
    std::vector<std::string> names;
    DIR* d = ::opendir(dir.c_str());
    while (dirent* e = d != nullptr ? ::readdir(d) : nullptr) {
        if (e->d_name[0] != '.') {
            names.emplace_back(e->d_name);
        }
    }
    if (d != nullptr) {
        ::closedir(d);
    }
    return names;
}

Json::Value call(Emulator& emulator, unsigned id, const std::string& json = "") {
    Request request;
    request.commandId = id;
    if (!json.empty()) {
        request = decodeRequest({std::string("\0\0\0\0", 4), json});
        request.commandId = id;
    }
    try {
        return emulator.handle(request);
    } catch (const CommandError& e) {
        return errorReply(e.code(), e.what(), e.userMessages());
    }
}

TEST(EmulatorRequest, FramesDecodeOrAreRefusedWithTheReason) {
    struct Case {
        std::vector<std::string> frames;
        uint32_t id;         // when accepted
        bool hasDocument;    // when accepted
        const char* refusal; // nullptr when accepted
    };
    const std::string id7("\x07\x00\x00\x00", 4);
    const std::vector<Case> cases = {
        {{id7, R"({"id":3})"}, 7, true, nullptr},
        {{id7, ""}, 7, false, nullptr},
        {{std::string("\x01\x02\x00\x00", 4), "{}"}, 0x201, true, nullptr},
        {{id7}, 0, false, "expected 2 frames (command id, request document), got 1"},
        {{id7, "{}", "{}"}, 0, false, "got 3"},
        {{"\x07", "{}"}, 0, false, "command id frame must hold 4 bytes, got 1"},
        {{id7, "{\"id\":"}, 0, false, "request document is not valid JSON"},
        {{id7, "[1,2]"}, 0, false, "request document must be a JSON object"},
        {{id7, "{} trailing"}, 0, false, "not valid JSON"},
    };
    for (const Case& c : cases) {
        try {
            const Request r = decodeRequest(c.frames);
            EXPECT_EQ(c.refusal, nullptr) << "accepted: " << c.frames.back();
            EXPECT_EQ(r.commandId, c.id);
            EXPECT_EQ(r.hasDocument, c.hasDocument);
        } catch (const CommandError& e) {
            ASSERT_NE(c.refusal, nullptr) << e.what();
            EXPECT_EQ(e.code(), -13);
            EXPECT_NE(std::string(e.what()).find(c.refusal), std::string::npos) << e.what();
        }
    }
    EXPECT_EQ(renderReply(errorReply(-3, "gone")), R"({"error":{"code":-3,"message":"gone"}})");
    EXPECT_EQ(renderReply(errorReply(-1, "refused", {"a", "b"})),
              R"({"error":{"code":-1,"message":"refused","user-messages":["a","b"]}})");
}

TEST(EmulatorRequest, EveryCommandOfTheTableHasAHandler) {
    EmulatorOptions options;
    options.configDir = tempDir("dispatch");
    Emulator emulator(options);
    for (const CommandRowText& row : commandRows()) {
        const std::string message = call(emulator, row.id)["error"]["message"].asString();
        EXPECT_EQ(message.find("unknown command"), std::string::npos) << row.method << ": " << message;
    }
    const auto past = static_cast<unsigned>(commandRows().size());
    EXPECT_EQ(call(emulator, past)["error"]["message"].asString(),
              "unknown command id " + std::to_string(past));
}

TEST(EmulatorFiles, AtomicWriteReplacesWholeAndLeavesNoTemporaryFile) {
    const std::string dir = tempDir("atomic");
    const std::string path = dir + "/state.json";
    std::string error;
    ASSERT_TRUE(writeFileAtomically(path, "first", error)) << error;
    ASSERT_TRUE(writeFileAtomically(path, "second, longer", error)) << error;
    std::string text;
    ASSERT_TRUE(readWholeFile(path, text));
    EXPECT_EQ(text, "second, longer");
    EXPECT_EQ(filesIn(dir), std::vector<std::string>{"state.json"});

    // A target in a missing folder fails with a reason and creates nothing.
    EXPECT_FALSE(writeFileAtomically(dir + "/missing/state.json", "x", error));
    EXPECT_FALSE(error.empty());
    EXPECT_TRUE(makeDirectories(dir + "/a/b/c"));
    EXPECT_TRUE(makeDirectories(dir + "/a/b/c"));
    EXPECT_TRUE(writeFileAtomically(dir + "/a/b/c/f", "", error)) << error;
    EXPECT_FALSE(readWholeFile(dir + "/none", text));
}

TEST(EmulatorState, RunningSessionsAndTheStartupFileSurviveARestart) {
    EmulatorOptions options;
    options.configDir = tempDir("state");
    uint64_t sender = 0;
    {
        Emulator emulator(options);
        sender = call(emulator, 2, R"({"name":"kept","audio-sources":[{"channel-list":[{"channel":0}]}]})")
                     ["session-id"].asUInt64();
        ASSERT_NE(sender, 0u);
        EXPECT_FALSE(call(emulator, 9, R"({"pos":3,"name":"three","startup":true})").isMember("error"));
        call(emulator, 2, R"({"name":"after save","audio-sources":[{"channel-list":[{"channel":1}]}]})");
    }
    {
        // The running state comes back as it was, both sessions.
        Emulator emulator(options);
        EXPECT_EQ(emulator.sessions().size(), 2u);
        const Json::Value table = call(emulator, 13);
        EXPECT_EQ(table["startup"].asUInt(), 3u) << renderReply(table);
        EXPECT_NE(renderReply(table).find("three"), std::string::npos);
    }
    // Without the running state, the start-up file is loaded: only what was saved.
    std::remove((options.configDir + "/running.json").c_str());
    {
        Emulator emulator(options);
        ASSERT_EQ(emulator.sessions().size(), 1u);
        EXPECT_EQ(emulator.sessions().begin()->first, sender);
        // A new session never reuses a saved id.
        EXPECT_GT(call(emulator, 2, R"({"audio-sources":[{"channel-list":[{"channel":2}]}]})")["session-id"].asUInt64(),
                  sender);
    }
    // A torn running file is logged and ignored; the daemon starts all the same.
    std::ofstream(options.configDir + "/running.json") << "{\"sessions\": [";
    LogCapture capture;
    Emulator emulator(options);
    EXPECT_TRUE(capture.contains("emulator: ignoring unreadable file " + options.configDir + "/running.json"));
}

TEST(EmulatorState, AdvertiseFolderRefusalsAreLoggedAndSkipped) {
    EmulatorOptions options;
    options.configDir = tempDir("adv-state");
    options.advertiseDir = tempDir("adv");
    std::ofstream(options.advertiseDir + "/no-origin.sdp") << "v=0\r\ns=x\r\nt=0 0\r\n";
    std::ofstream(options.advertiseDir + "/not-sdp.txt") << "ignored";
    std::ifstream in(PIMAV_SOURCE_DIR "/examples/advertised/commentary.sdp");
    std::ofstream(options.advertiseDir + "/good.sdp") << in.rdbuf();
    LogCapture capture;
    Emulator emulator(options);
    EXPECT_TRUE(capture.contains("emulator: advertisement " + options.advertiseDir + "/no-origin.sdp refused"));
    EXPECT_TRUE(capture.contains("emulator: 1 advertised sessions loaded from " + options.advertiseDir));
    const Json::Value list = call(emulator, 7);
    ASSERT_EQ(list["list"].size(), 1u);
    EXPECT_EQ(list["list"][0]["url"].asString().rfind("file:///", 0), 0u) << list["list"][0]["url"].asString();

    options.advertiseDir = "/nonexistent/folder";
    capture.clear();
    Emulator without(options);
    EXPECT_TRUE(capture.contains("emulator: cannot open the advertise folder /nonexistent/folder"));
    EXPECT_EQ(call(without, 7)["list"].size(), 0u);
}

}  // namespace
