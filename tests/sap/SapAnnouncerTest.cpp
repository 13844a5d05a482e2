// The announcer's schedule with a clock and random numbers driven by the test.

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <set>
#include <string>
#include <vector>

#include "sap/SapAnnouncer.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

using Clock = SapAnnouncer::Clock;
using Seconds = std::chrono::duration<double>;

std::string sdp(int id, int version) {
    return "v=0\r\no=- " + std::to_string(id) + " " + std::to_string(version) + " IN IP4 10.0.0.5\r\ns=S\r\n";
}

Clock::duration seconds(double s) {
    return std::chrono::duration_cast<Clock::duration>(Seconds(s));
}

// Every packet sent, decoded.
struct Sent {
    uint64_t key;
    SapPacket packet;
};

}  // namespace

TEST(SapAnnouncer, IntervalSharesTheGroupBandwidth) {
    for (const DataRow& row : dataRows("sap/intervals.tsv")) {
        const std::vector<std::string>& f = row.fields;
        SapAnnouncer::Options options;
        options.interval = seconds(std::stod(f[3]));
        SapAnnouncer announcer(options, [](uint64_t, SapMessageType, const std::string&) {});
        for (int i = 0; i < std::stoi(f[1]); ++i) {
            announcer.announce(i, sdp(i, 1), Clock::now());
        }
        announcer.setHeardSessions(std::stoul(f[0]));
        EXPECT_NEAR(Seconds(announcer.baseInterval(std::stoul(f[2]))).count(), std::stod(f[4]), 1e-6)
            << row.where;
    }
}

TEST(SapAnnouncer, AnnouncesAtOnceThenWithJitterAndDeletesOnRemoval) {
    std::vector<Sent> sent;
    std::deque<double> random = {0.0, 0.5, 0.999999, 0.25};
    SapAnnouncer::Options options;
    ASSERT_TRUE(SapOrigin::fromText("192.168.1.20", options.origin));
    options.interval = seconds(3);
    options.compress = true;
    SapAnnouncer announcer(
        options,
        [&](uint64_t key, SapMessageType type, const std::string& bytes) {
            Sent s{key, {}};
            ASSERT_EQ(decodeSap(bytes, s.packet), SapError::None);
            EXPECT_EQ(s.packet.type, type);
            sent.push_back(s);
        },
        [&] {
            const double r = random.front();
            random.pop_front();
            return r;
        });
    const auto t0 = Clock::now();
    const auto sinceStart = [&](Clock::time_point t) { return Seconds(t - t0).count(); };

    announcer.announce(1, sdp(1, 1), t0);
    ASSERT_EQ(sent.size(), 1u);
    const SapPacket first = sent[0].packet;
    EXPECT_EQ(first.origin.toString(), "192.168.1.20");
    EXPECT_TRUE(first.compressed);
    EXPECT_EQ(first.sdp, sdp(1, 1));
    EXPECT_NE(first.hash, 0);
    EXPECT_NEAR(sinceStart(*announcer.nextDue()), 2.0, 1e-6);  // 3 s * 2/3

    announcer.announce(1, sdp(1, 1), t0 + seconds(0.5));  // unchanged: nothing to send
    announcer.poll(t0 + seconds(1.9));
    EXPECT_EQ(sent.size(), 1u);
    announcer.poll(t0 + seconds(2));
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_TRUE(sent[1].packet == first);
    EXPECT_NEAR(sinceStart(*announcer.nextDue()), 5.0, 1e-6);  // 2 s + 3 s * 1

    announcer.announce(1, sdp(1, 2), t0 + seconds(2.5));  // changed: a new hash, at once
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_NE(sent[2].packet.hash, first.hash);
    EXPECT_EQ(sent[2].packet.sdp, sdp(1, 2));
    EXPECT_NEAR(sinceStart(*announcer.nextDue()), 6.5, 1e-5);  // 2.5 s + 3 s * 4/3

    announcer.announce(2, sdp(2, 1), t0 + seconds(3));
    ASSERT_EQ(sent.size(), 4u);
    EXPECT_NEAR(sinceStart(*announcer.nextDue()), 5.5, 1e-6);  // 3 s + 3 s * 5/6, before key 1

    EXPECT_TRUE(announcer.withdraw(1));
    EXPECT_FALSE(announcer.withdraw(1));
    ASSERT_EQ(sent.size(), 5u);
    EXPECT_EQ(sent[4].key, 1u);
    EXPECT_EQ(sent[4].packet.type, SapMessageType::Delete);
    EXPECT_EQ(sent[4].packet.hash, sent[2].packet.hash);
    EXPECT_EQ(sent[4].packet.sdp, sdp(1, 2));
    EXPECT_NEAR(sinceStart(*announcer.nextDue()), 5.5, 1e-6);

    announcer.withdrawAll();  // shutdown
    ASSERT_EQ(sent.size(), 6u);
    EXPECT_EQ(sent[5].key, 2u);
    EXPECT_EQ(sent[5].packet.type, SapMessageType::Delete);
    EXPECT_EQ(announcer.size(), 0u);
    EXPECT_FALSE(announcer.nextDue().has_value());
}

// Sessions of one host need distinct hashes, whatever their SDP; an adopted session
// (announced by an earlier run) keeps the hash it was announced with.
TEST(SapAnnouncer, HashesAreDistinctAndStable) {
    size_t packets = 0;
    SapAnnouncer announcer({}, [&](uint64_t, SapMessageType, const std::string&) { ++packets; });
    SapAnnouncer restarted({}, [&](uint64_t, SapMessageType, const std::string&) { ++packets; });
    std::set<uint16_t> hashes;
    const auto now = Clock::now();
    for (uint64_t key = 0; key < 2000; ++key) {
        // Every fourth session repeats the text of the one before it: equal texts, equal checksums.
        const std::string text = sdp(static_cast<int>(key - (key % 4 == 3 ? 1 : 0)), 1);
        announcer.announce(key, text, now);
        restarted.adopt(key, text, now);
        EXPECT_EQ(restarted.hashOf(key), announcer.hashOf(key));
        hashes.insert(announcer.hashOf(key));
    }
    EXPECT_EQ(hashes.size(), 2000u);
    EXPECT_EQ(hashes.count(0), 0u);
    EXPECT_EQ(packets, 2000u);  // adopting sends nothing
    EXPECT_EQ(restarted.hashOf(9999), 0);
}
