// The emulator's parts in-process: request decoding, atomic files, and the state it keeps
// across a restart.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "EmulatorHarness.h"
#include "common/AtomicFile.h"
#include "common/RequestServer.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

// The frames a row of tests/data/emulator/frames.tsv writes.
std::vector<std::string> framesOf(const std::string& text) {
    std::vector<std::string> frames;
    for (size_t start = 0, end = 0; end != std::string::npos; start = end + 3) {
        end = text.find(" | ", start);
        frames.push_back(text.substr(start, end == std::string::npos ? end : end - start));
        if (frames.back()[0] == '@') {
            const size_t slash = frames.back().find('/');
            const unsigned long value = std::stoul(frames.back().substr(1, slash - 1), nullptr, 0);
            const unsigned long bytes = std::stoul(frames.back().substr(slash + 1));
            frames.back().clear();
            for (unsigned long k = 0; k < bytes; ++k) {
                frames.back() += static_cast<char>((value >> (8 * k)) & 0xff);
            }
        }
    }
    return frames;
}

TEST(EmulatorRequest, FramesDecodeOrAreRefusedWithTheReason) {
    const std::vector<DataRow> rows = dataRows("emulator/frames.tsv");
    ASSERT_FALSE(rows.empty());
    for (const DataRow& row : rows) {
        const std::vector<std::string>& f = row.fields;
        SCOPED_TRACE(row.where);
        try {
            const Request r = decodeRequest(framesOf(f[0]));
            EXPECT_EQ(f[3], "-") << "accepted";
            EXPECT_EQ(std::to_string(r.commandId), f[1]);
            EXPECT_EQ(r.hasDocument, f[2] == "yes");
        } catch (const CommandError& e) {
            ASSERT_NE(f[3], "-") << e.what();
            EXPECT_EQ(e.code(), -13);
            EXPECT_NE(std::string(e.what()).find(f[3]), std::string::npos) << e.what();
        }
    }
    EXPECT_EQ(renderReply(errorReply(-3, "gone")), R"({"error":{"code":-3,"message":"gone"}})");
    EXPECT_EQ(renderReply(errorReply(-1, "refused", {"a", "b"})),
              R"({"error":{"code":-1,"message":"refused","user-messages":["a","b"]}})");
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
    EmulatorOptions options = freshOptions("state");
    uint64_t sender = 0;
    {
        Emulator emulator(options);
        sender = call(emulator, 2,
                      R"({"name":"kept","audio-sources":[{"channel-list":[{"channel":0}]}]})")["session-id"]
                     .asUInt64();
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
        EXPECT_GT(call(emulator, 2, R"({"audio-sources":[{"channel-list":[{"channel":2}]}]})")["session-id"]
                      .asUInt64(),
                  sender);
    }
}

// The advertise folder gives regular .sdp files of bounded size, up to the table's limit;
// a FIFO or a link to a device is skipped unread, so the daemon never blocks on one.
TEST(EmulatorState, AdvertiseFolderRefusalsAreLoggedAndSkipped) {
    EmulatorOptions options = freshOptions("adv-state", tempDir("adv"));
    options.maxAdvertised = 2;
    const std::string dir = options.advertiseDir;
    std::ofstream(dir + "/no-origin.sdp") << "v=0\r\ns=x\r\nt=0 0\r\n";
    std::ofstream(dir + "/not-sdp.txt") << "ignored";
    const char* const good[] = {"commentary.sdp", "rtsp:%2F%2F192.168.1.51:554%2Fcontrol-room.sdp",
                                "sap:%2F%2F192.168.1.50:9875%2Fstudio-a.sdp"};
    for (const char* name : good) {
        std::ofstream(dir + "/" + name)
            << fileText(PIMAV_SOURCE_DIR "/examples/advertised/" + std::string(name));
    }
    ASSERT_EQ(::mkfifo((dir + "/fifo.sdp").c_str(), 0644), 0);
    ASSERT_EQ(::symlink("/dev/zero", (dir + "/zero.sdp").c_str()), 0);
    std::ofstream(dir + "/big.sdp") << std::string(100000, 'v');
    LogCapture capture;
    Emulator emulator(options);
    const std::vector<std::pair<std::string, std::string>> refusals = {
        {"no-origin.sdp", " refused: SDP refused (-1)"},
        {"fifo.sdp", ": not a regular file"},
        {"zero.sdp", ": not a regular file"},
        {"big.sdp", ": larger than 65536 bytes"},
        {good[2], " refused: the table holds at most 2 entries (--max-advertised)"},
    };
    for (const auto& [file, reason] : refusals) {
        EXPECT_EQ(capture.count(dir + "/" + file + reason), 1u) << file;
    }
    EXPECT_TRUE(capture.contains("emulator: 2 advertised sessions loaded from " + dir));
    // A file's entry is named by a file URL without an authority, which holds no host text.
    EXPECT_EQ(capture.count("Error parsing IP"), 0u);
    const Json::Value list = call(emulator, 7);
    ASSERT_EQ(list["list"].size(), 2u);
    char* real = ::realpath(dir.c_str(), nullptr);
    const std::string fileUrl = "file:" + std::string(real) + "/commentary.sdp";
    std::free(real);
    EXPECT_TRUE(list["list"][0]["url"] == fileUrl || list["list"][1]["url"] == fileUrl) << renderReply(list);

    options.advertiseDir = "/nonexistent/folder";
    capture.clear();
    Emulator without(options);
    EXPECT_TRUE(capture.contains("emulator: cannot open the advertise folder /nonexistent/folder"));
    EXPECT_EQ(call(without, 7)["list"].size(), 0u);
}

}  // namespace
