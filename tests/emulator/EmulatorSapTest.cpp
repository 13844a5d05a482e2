// SAP in the emulator, in-process: the sources sharing the advertised-sessions table, and
// what the emulator does with the packets it hears (time passed in, no sockets).

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <optional>

#include "EmulatorHarness.h"
#include "EmulatorSap.h"
#include "support/LogCapture.h"
#include "support/SapSamples.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

using Clock = EmulatorSap::Clock;

// "URL STATUS SOURCE" of advertised session `id` as command 7 lists it; "-" without one.
std::string entry(Emulator& emulator, uint64_t id) {
    const Json::Value reply = call(emulator, 7);
    for (const auto& e : reply["list"]) {
        if (e["session-id"].asUInt64() == id) {
            return e["url"].asString() + " " + e["status"].asString() + " " +
                   reply["sources"][std::to_string(id)]["from"].asString();
        }
    }
    return "-";
}

class EmulatorSapTest : public ::testing::Test {
protected:
    EmulatorSapTest() : m_emulator(freshOptions("sap")) {}
    Emulator m_emulator;
};

TEST_F(EmulatorSapTest, SourcesOfOneSessionIdTakeTurnsHoldingItsEntry) {
    const char* const results[] = {"stored", "waiting", "refused"};
    const std::vector<DataRow> rows = dataRows("emulator/sap-claims.tsv");
    ASSERT_FALSE(rows.empty());
    for (const DataRow& row : rows) {
        const std::vector<std::string>& f = row.fields;
        SCOPED_TRACE(row.where);
        const bool file = f[1][0] == '/';
        const AdvertisedSource source{file ? "file" : "sap", f[1], file ? f[1] : "sap " + f[1] + " 7"};
        if (f[0] == "advertise") {
            const size_t slash = f[3].find('/');
            const std::string sdp =
                f[3] == "bad" ? "v=0\r\n"
                              : audioSdp(7, std::stoul(f[3].substr(slash + 1)), f[3].substr(0, slash));
            uint64_t id = 0;
            std::string why;
            EXPECT_EQ(results[static_cast<int>(m_emulator.advertise({source, f[2], sdp}, id, why))], f[4])
                << why;
            EXPECT_EQ(id, f[4] == "refused" ? 0u : 7u);
        } else if (f[0] == "withdraw") {
            m_emulator.withdrawAdvertised(7, source.key);
        } else {
            ASSERT_FALSE(
                call(m_emulator, f[0] == "receive" ? 3 : 4,
                     f[0] == "receive" ? R"({"name":"rx","rem-sid":{"id":7,"media-idx":0}})" : R"({"id":1})")
                    .isMember("error"));
        }
        EXPECT_EQ(entry(m_emulator, 7), f[5]);
        EXPECT_EQ(m_emulator.advertisedClaims().waiting(), std::stoul(f[6]));
    }
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
        sap.receive(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), kSapPort, from,
                    Clock::now());
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
    EXPECT_EQ(entry(m_emulator, 6), "-");
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
    server.serve(
        stop, [](const Request&) { return Json::Value(); }, [&] { stop = events.size() == 2; },
        static_cast<int>(std::chrono::milliseconds(pollLimit).count()));
    EXPECT_EQ(events, (std::vector<std::string>{"timer", "read x"}));
    EXPECT_LT(Clock::now() - start, pollLimit / 2);  // the timer, not the poll limit, ended the wait
    ::close(pipeFds[0]);
    ::close(pipeFds[1]);
}

}  // namespace
