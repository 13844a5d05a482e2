// SAP between the emulator and sdptool, as processes on loopback: sessions announced to the
// emulator become advertised sessions, change, go and expire; the emulator's senders are
// announced and deleted.

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <thread>

#include "EmulatorProcess.h"
#include "support/SapSamples.h"

using namespace pimav::detail;

namespace {

using namespace std::chrono_literals;

// An announced session is in the emulator's list this soon.
constexpr auto kVisibleWithin = 1000ms;
// The longest wait for anything else.
constexpr auto kPatience = 10000ms;

std::string sdptool() { return binaryPath("tools/sdptool"); }

bool pollUntil(const std::function<bool()>& done, std::chrono::milliseconds within) {
    const auto deadline = std::chrono::steady_clock::now() + within;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

// The SAP address the emulator listens on (it was given port 0).
std::string listeningOn(const EmulatorProcess& emulator) {
    return emulator.call(48)["sap"]["listening"][0].asString();
}

// Session `id` of the advertised list as "NAME vVERSION URL SOURCE" (the URL without its
// hash); "" when the list does not have it.
std::string advertised(const Json::Value& reply, uint64_t id) {
    for (const auto& entry : reply["list"]) {
        if (entry["session-id"].asUInt64() == id) {
            const std::string url = entry["url"].asString();
            return entry["session"]["info"].asString() + " v" + entry["session"]["version"].asString() + " " +
                   url.substr(0, url.rfind('/') + 1) + " " + reply["sources"][std::to_string(id)]["from"].asString();
        }
    }
    return "";
}

std::string writeSdp(const std::string& dir, const std::string& text) {
    static int count = 0;
    const std::string path = dir + "/" + std::to_string(++count) + ".sdp";
    std::ofstream(path) << text;
    return path;
}

TEST(SapEmulator, AnnouncedSessionsAppearChangeAndGo) {
    EmulatorProcess emulator("", {"--sap-listen", "127.0.0.1:0"});
    const std::string on = listeningOn(emulator);
    const std::string dir = makeTempDir("sap-announce");
    const std::string v4 = "sap://" + on + "/ 127.0.0.1";
    const std::string v6 = "sap:[2001:db8::1]:" + on.substr(on.find(':') + 1) + "/ 2001:db8::1";
    struct Step {
        const char* what;
        std::string sdp;
        std::vector<std::string> flags;
        uint64_t id;
        std::string expect;
        size_t entries;
    };
    const Step steps[] = {
        {"announced", audioSdp(4711, 1, "Studio A"), {}, 4711, "Studio A v1 " + v4, 1},
        {"compressed, IPv6 origin", audioSdp(4713, 1, "Far away"), {"--compress", "--origin", "2001:db8::1"}, 4713,
         "Far away v1 " + v6, 2},
        {"deleted", audioSdp(4711, 1, "Studio A"), {"--delete"}, 4711, "", 1},
    };
    for (const Step& step : steps) {
        std::vector<std::string> argv = {sdptool(), "announce", writeSdp(dir, step.sdp), "--to", on, "--count", "1"};
        argv.insert(argv.end(), step.flags.begin(), step.flags.end());
        ASSERT_EQ(run(argv).status, 0) << step.what;
        Json::Value reply;
        pollUntil(
            [&] {
                reply = emulator.call(7);
                return advertised(reply, step.id) == step.expect && reply["list"].size() == step.entries;
            },
            kVisibleWithin);
        EXPECT_EQ(advertised(reply, step.id), step.expect) << step.what;
        EXPECT_EQ(reply["list"].size(), step.entries) << step.what << ": " << compact(reply);
    }
}

TEST(SapEmulator, ASilentSessionExpiresAfterTheTimeout) {
    EmulatorProcess emulator("", {"--sap-listen", "127.0.0.1:0", "--sap-timeout", "0.3"});
    const std::string sdp = writeSdp(makeTempDir("sap-expire"), audioSdp(4714, 1, "Short-lived"));
    ASSERT_EQ(run({sdptool(), "announce", sdp, "--to", listeningOn(emulator), "--count", "1"}).status, 0);
    EXPECT_TRUE(pollUntil([&] { return !advertised(emulator.call(7), 4714).empty(); }, kPatience));
    EXPECT_TRUE(pollUntil([&] { return advertised(emulator.call(7), 4714).empty(); }, kPatience));
}

TEST(SapEmulator, SendersAreAnnouncedAndDeleted) {
    Background listen({sdptool(), "listen", "--on", "127.0.0.1:0", "--json"});
    ASSERT_TRUE(listen.waitForLines(1, 1, static_cast<int>(kPatience.count()))) << listen.text(1);
    const std::string ready = listen.text(1);  // "sdptool: listening on ADDR:PORT\n"
    const std::string on = ready.substr(ready.rfind(' ') + 1, ready.size() - ready.rfind(' ') - 2);
    EmulatorProcess emulator("", {"--sap-announce", on});
    const std::string audio = R"("audio-sources":[{"codec":"L24"}]})";
    struct Step {
        const char* what;
        unsigned command;  // 0: the emulator stops
        std::string request;
        const char* type;
        const char* name;
        const char* version;
    };
    const Step steps[] = {
        {"added", 2, R"({"name":"talker",)" + audio, "announce", "talker", "1"},
        {"updated", 8, R"({"session-id":1,"name":"talker 2",)" + audio, "announce", "talker 2", "2"},
        {"another added", 2, R"({"name":"second",)" + audio, "announce", "second", "1"},
        {"removed", 4, R"({"id":1})", "delete", "talker 2", "2"},
        {"the emulator stops", 0, "", "delete", "second", "1"},
    };
    std::vector<Json::Value> heard;
    for (const Step& step : steps) {
        if (step.command == 0) {
            ASSERT_EQ(emulator.stop(), 0);
        } else {
            ASSERT_FALSE(emulator.call(step.command, parse(step.request)).isMember("error")) << step.what;
        }
        ASSERT_TRUE(listen.waitForLines(0, heard.size() + 1, static_cast<int>(kPatience.count())))
            << step.what << ": " << listen.text(0);
        std::string text = listen.text(0);
        text.pop_back();
        heard.push_back(parse(text.substr(text.rfind('\n') + 1)));
        const Json::Value& line = heard.back();
        EXPECT_EQ(line["type"].asString(), step.type) << step.what;
        EXPECT_EQ(line["name"].asString(), step.name) << step.what;
        EXPECT_EQ(line["version"].asString(), step.version) << step.what;
        EXPECT_TRUE(line["sdp-ok"].asBool()) << step.what << ": " << compact(line);
    }
    // A change gets a new hash; a deletion names the hash last announced.
    EXPECT_NE(heard[1]["hash"], heard[0]["hash"]);
    EXPECT_EQ(heard[3]["hash"], heard[1]["hash"]);
    EXPECT_EQ(heard[4]["hash"], heard[2]["hash"]);
    EXPECT_EQ(heard[0]["session-id"].asString(), "1");
}

}  // namespace
