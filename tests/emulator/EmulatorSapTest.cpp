// SAP in the emulator, in-process: the sources sharing the advertised-sessions table, and
// what the emulator does with the packets it hears (time passed in, no sockets).

#include <gtest/gtest.h>

#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <map>
#include <optional>

#include "Emulator.h"
#include "EmulatorSap.h"
#include "support/LogCapture.h"
#include "support/SapSamples.h"

using namespace pimav::detail;

namespace {

using Clock = EmulatorSap::Clock;
using Result = Emulator::Advertised;

std::string tempDir(const char* tag) {
    std::string pattern = std::string("/tmp/pimav-emu-") + tag + "-XXXXXX";
    return ::mkdtemp(pattern.data());
}

Json::Value call(Emulator& emulator, unsigned id, const std::string& json = "") {
    Request request = json.empty() ? Request() : decodeRequest({std::string("\0\0\0\0", 4), json});
    request.commandId = id;
    return emulator.handle(request);
}

// "URL STATUS SOURCE" of advertised session `id` as command 7 lists it; "" without one.
std::string entry(Emulator& emulator, uint64_t id) {
    const Json::Value reply = call(emulator, 7);
    for (const auto& e : reply["list"]) {
        if (e["session-id"].asUInt64() == id) {
            return e["url"].asString() + " " + e["status"].asString() + " " +
                   reply["sources"][std::to_string(id)]["from"].asString();
        }
    }
    return "";
}

class EmulatorSapTest : public ::testing::Test {
protected:
    EmulatorSapTest() : m_emulator(options()) {}
    static EmulatorOptions options() {
        EmulatorOptions o;
        o.configDir = tempDir("sap");
        return o;
    }
    Emulator m_emulator;
};

TEST_F(EmulatorSapTest, SourcesOfOneSessionIdTakeTurnsHoldingItsEntry) {
    struct Step {
        const char* what;
        char action;  // a: advertise, w: withdraw, r: a receiver takes the session
        const char* key;
        std::string sdp;
        Result result;   // of an advertisement
        const char* entry;
        size_t waiting;
    };
    const AdvertisedSource file{"file", "/adv/f.sdp", "/adv/f.sdp"};
    const AdvertisedSource a{"sap", "10.0.0.1", "sap 10.0.0.1 7"};
    const AdvertisedSource b{"sap", "10.0.0.2", "sap 10.0.0.2 7"};
    const std::map<std::string, std::pair<AdvertisedSource, std::string>> sources = {
        {file.key, {file, "file:///adv/f.sdp"}},
        {a.key, {a, "sap://10.0.0.1:9875/0001"}},
        {b.key, {b, "sap://10.0.0.2:9875/0002"}},
    };
    const Step steps[] = {
        {"the first holds the id", 'a', "/adv/f.sdp", audioSdp(7, 1, "F"), Result::Stored,
         "file:///adv/f.sdp OK /adv/f.sdp", 0},
        {"a second waits", 'a', "sap 10.0.0.1 7", audioSdp(7, 1, "A"), Result::Waiting,
         "file:///adv/f.sdp OK /adv/f.sdp", 1},
        {"a third waits behind it", 'a', "sap 10.0.0.2 7", audioSdp(7, 1, "B"), Result::Waiting,
         "file:///adv/f.sdp OK /adv/f.sdp", 2},
        {"the holder refreshes", 'a', "/adv/f.sdp", audioSdp(7, 2, "F"), Result::Stored,
         "file:///adv/f.sdp OK /adv/f.sdp", 2},
        {"a refused SDP changes nothing", 'a', "sap 10.0.0.2 7", "v=0\r\n", Result::Refused,
         "file:///adv/f.sdp OK /adv/f.sdp", 2},
        {"the holder leaves: the first waiting takes over", 'w', "/adv/f.sdp", "", Result::Stored,
         "sap://10.0.0.1:9875/0001 OK 10.0.0.1", 1},
        {"a waiting one leaves", 'w', "sap 10.0.0.2 7", "", Result::Stored, "sap://10.0.0.1:9875/0001 OK 10.0.0.1", 0},
        {"a receiver takes it", 'r', "", "", Result::Stored, "sap://10.0.0.1:9875/0001 OK 10.0.0.1", 0},
        {"the last holder leaves: stale while used", 'w', "sap 10.0.0.1 7", "", Result::Stored,
         "sap://10.0.0.1:9875/0001 Stale 10.0.0.1", 0},
        {"advertised again: current", 'a', "sap 10.0.0.2 7", audioSdp(7, 3, "B"), Result::Stored,
         "sap://10.0.0.2:9875/0002 OK 10.0.0.2", 0},
    };
    for (const Step& step : steps) {
        if (step.action == 'a') {
            const auto& [source, url] = sources.at(step.key);
            uint64_t id = 0;
            std::string why;
            EXPECT_EQ(m_emulator.advertise({source, url, step.sdp}, id, why), step.result) << step.what << ": " << why;
            EXPECT_EQ(id, step.result == Result::Refused ? 0u : 7u) << step.what;
        } else if (step.action == 'w') {
            m_emulator.withdrawAdvertised(7, step.key);
        } else {
            ASSERT_FALSE(call(m_emulator, 3, R"({"name":"rx","rem-sid":{"id":7,"media-idx":0}})").isMember("error"));
        }
        EXPECT_EQ(entry(m_emulator, 7), step.entry) << step.what;
        EXPECT_EQ(m_emulator.advertisedClaims().waiting(), step.waiting) << step.what;
    }
    // The receiver goes, then the holder: the entry and its source are gone.
    ASSERT_FALSE(call(m_emulator, 4, R"({"id":1})").isMember("error"));
    m_emulator.withdrawAdvertised(7, b.key);
    EXPECT_EQ(entry(m_emulator, 7), "");
    EXPECT_EQ(m_emulator.advertisedClaims().source(7), nullptr);
}

// Every refused packet is counted under its reason; the log gets the first of each reason,
// then at most one line per reason every kLogEvery, saying how many it did not show.
TEST_F(EmulatorSapTest, RefusedPacketsAreCountedAndTheirLinesRateLimited) {
    EmulatorSap sap(m_emulator, EmulatorSapOptions());
    UdpEndpoint from;
    ASSERT_TRUE(UdpEndpoint::parse("127.0.0.1:40000", from));
    const auto feed = [&](const std::string& bytes, Clock::time_point at) {
        sap.receive(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), kSapPort, from, at);
    };
    const auto start = Clock::now();
    const auto packets = refusedSapPackets();
    LogCapture log;
    for (const auto& at : {start, start + std::chrono::seconds(1), start + EmulatorSap::kLogEvery}) {
        for (const RefusedSap& p : packets) {
            feed(p.bytes, at);
        }
    }
    for (const RefusedSap& p : packets) {
        const std::string reason = std::string("refused (") + p.reason + ")";
        const std::vector<std::string> lines = [&] {
            std::vector<std::string> matching;
            for (const auto& line : log.at(2)) {
                if (line.find(reason) != std::string::npos) {
                    matching.push_back(line);
                }
            }
            return matching;
        }();
        EXPECT_EQ(sap.status()["refused"][p.reason].asUInt64(), p.perPacket ? 3u : 1u) << p.reason;
        ASSERT_EQ(lines.size(), p.perPacket ? 2u : 1u) << p.reason;
        EXPECT_EQ(lines[0].find("more since"), std::string::npos) << lines[0];
        if (p.perPacket) {
            EXPECT_NE(lines[1].find("from 127.0.0.1:40000 " + reason), std::string::npos) << lines[1];
            EXPECT_NE(lines[1].find("; 1 more since the last line"), std::string::npos) << lines[1];
        }
    }
    EXPECT_EQ(sap.status()["packets"].asUInt64(), 3 * packets.size());
    EXPECT_EQ(sap.status()["refused"].size(), packets.size());

    // The refusals leave nothing behind: a good announcement is stored.
    feed(sapAnnouncement(audioSdp(99, 1, "good")), start);
    EXPECT_EQ(entry(m_emulator, 99), "sap://10.0.0.7:9875/1234 OK 10.0.0.7");
}

// Two devices announce one session id: the second waits, counted, and takes the entry over
// when the first deletes it; its later changes replace the entry in place. Two sessions of
// one device are two entries even when their hashes, and so their URLs, collide.
TEST_F(EmulatorSapTest, SessionsAreTheHostAndTheSessionIdNotTheUrl) {
    EmulatorSap sap(m_emulator, EmulatorSapOptions());
    UdpEndpoint from;
    const auto feed = [&](const std::string& bytes) {
        sap.receive(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), kSapPort, from, Clock::now());
    };
    SapPacket deletion;
    SapOrigin::fromText("10.0.0.1", deletion.origin);
    deletion.type = SapMessageType::Delete;
    deletion.hash = 0x1234;
    deletion.sdp = "o=- 5 1 IN IP4 10.0.0.1\r\n";
    SapPacket change;
    SapOrigin::fromText("10.0.0.2", change.origin);
    change.hash = 0x5678;
    change.sdp = audioSdp(5, 2, "B v2");

    feed(sapAnnouncement(audioSdp(5, 1, "A"), "10.0.0.1"));
    feed(sapAnnouncement(audioSdp(5, 1, "B"), "10.0.0.2"));
    EXPECT_EQ(entry(m_emulator, 5), "sap://10.0.0.1:9875/1234 OK 10.0.0.1");
    EXPECT_EQ(sap.status()["refused"]["session-id-taken"].asUInt64(), 1u);
    EXPECT_EQ(sap.status()["waiting"].asUInt64(), 1u);
    feed(encodeSap(deletion));
    EXPECT_EQ(entry(m_emulator, 5), "sap://10.0.0.2:9875/1234 OK 10.0.0.2");
    feed(encodeSap(change));
    EXPECT_EQ(entry(m_emulator, 5), "sap://10.0.0.2:9875/5678 OK 10.0.0.2");
    EXPECT_EQ(sap.status()["heard-sessions"].asUInt64(), 1u);

    // Two sessions of one host whose hashes collide share a URL, yet stay two sessions.
    feed(sapAnnouncement(audioSdp(6, 1, "A2"), "10.0.0.1"));
    feed(sapAnnouncement(audioSdp(8, 1, "A3"), "10.0.0.1"));
    deletion.sdp = "o=- 6 1 IN IP4 10.0.0.1\r\n";
    feed(encodeSap(deletion));
    EXPECT_EQ(entry(m_emulator, 6), "");
    EXPECT_EQ(entry(m_emulator, 8), "sap://10.0.0.1:9875/1234 OK 10.0.0.1");
    sap.tick(Clock::now() + std::chrono::hours(2));
    EXPECT_EQ(call(m_emulator, 7)["list"].size(), 0u);
}

// The loop's extensions: a timer shortens the poll to its due time, and a watched
// descriptor's callback runs as soon as it is readable; neither needs a request.
TEST(RequestServerLoop, TimersAndWatchedDescriptorsRunOnTime) {
    zmq::context_t context(1);
    RequestServer server(context, "tcp://127.0.0.1:*");
    int pipeFds[2];
    ASSERT_EQ(::pipe(pipeFds), 0);
    std::vector<std::string> events;
    server.watch(pipeFds[0], [&] {
        char c = 0;
        events.push_back(::read(pipeFds[0], &c, 1) == 1 ? std::string("read ") + c : "read failed");
    });
    std::optional<Clock::time_point> due = Clock::now() + std::chrono::milliseconds(20);
    server.addTimer([&] { return due; },
                    [&](Clock::time_point now) {
                        events.push_back(now >= *due ? "timer" : "timer early");
                        due.reset();
                        EXPECT_EQ(::write(pipeFds[1], "x", 1), 1);
                    });
    std::atomic<bool> stop{false};
    const auto start = Clock::now();
    const auto pollLimit = std::chrono::seconds(60);
    server.serve(stop, [](const Request&) { return Json::Value(); }, [&] { stop = events.size() == 2; },
                 static_cast<int>(std::chrono::milliseconds(pollLimit).count()));
    EXPECT_EQ(events, (std::vector<std::string>{"timer", "read x"}));
    EXPECT_LT(Clock::now() - start, pollLimit / 2);  // the timer, not the poll limit, ended the wait
    ::close(pipeFds[0]);
    ::close(pipeFds[1]);
}

}  // namespace
