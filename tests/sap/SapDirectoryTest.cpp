// The listener's directory over the scenarios of tests/data/sap/directory.txt: packets and
// clock readings, each step with the changes it reports to the sink.

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <string>
#include <vector>

#include "sap/SapDirectory.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

std::string sdpOf(const std::string& word) {
    if (word == "origin-only") {
        return "o=- 11 9 IN IP4 10.9.9.9\r\n";
    }
    if (word == "no-origin") {
        return "v=0\r\ns=Stream\r\n";
    }
    const size_t slash = word.find('/');
    return "v=0\r\no=- " + word.substr(0, slash) + " " + word.substr(slash + 1) +
           " IN IP4 10.9.9.9\r\ns=Stream\r\nt=0 0\r\n";
}

std::string describe(const SapChange& change) {
    std::string text = std::string(sapChangeWord(change.kind)) + " ";
    if (change.kind == SapChange::Replaced) {
        text += change.previousUrl + " -> ";
    }
    return text + change.url;
}

TEST(SapDirectory, FollowsAnnouncementsDeletionsAndTimeouts) {
    const std::vector<DataCase> scenarios = dataCases("sap/directory.txt");
    ASSERT_FALSE(scenarios.empty());
    const auto start = SapDirectory::Clock::now();
    const auto at = [&](const std::string& seconds) {
        return start + std::chrono::duration_cast<SapDirectory::Clock::duration>(
                           std::chrono::duration<double>(std::stod(seconds)));
    };
    for (const DataCase& scenario : scenarios) {
        SCOPED_TRACE(scenario.where + " " + scenario.title);
        std::vector<std::string> changes;
        SapDirectory directory([&](const SapChange& change) { changes.push_back(describe(change)); },
                               std::chrono::seconds(std::stoi(scenario.get("timeout", "0"))));
        for (const auto& [action, rest] : scenario.lines) {
            if (action == "timeout") {
                continue;
            }
            SCOPED_TRACE(action + " " + rest);
            const size_t arrow = rest.find("->");
            ASSERT_NE(arrow, std::string::npos);
            std::istringstream words(rest.substr(0, arrow));
            const std::string expected = rest.size() > arrow + 3 ? rest.substr(arrow + 3) : "";
            changes.clear();
            LogCapture log;
            std::string time, origin, hash, sdp;
            words >> time >> origin >> hash >> sdp;
            if (action == "next") {
                const auto next = directory.nextExpiry();
                ASSERT_EQ(next.has_value(), expected != "none");
                if (next) {
                    EXPECT_NEAR(std::chrono::duration<double>(*next - start).count(), std::stod(expected),
                                1e-6);
                }
                continue;
            }
            if (action == "expire") {
                const size_t expired = directory.expire(at(time));
                EXPECT_EQ(expired, changes.size());
            } else {
                SapPacket packet;
                ASSERT_TRUE(SapOrigin::fromText(origin, packet.origin));
                packet.type = action == "delete" ? SapMessageType::Delete : SapMessageType::Announce;
                packet.hash = static_cast<uint16_t>(std::stoul(hash, nullptr, 16));
                packet.sdp = sdpOf(sdp);
                directory.feed(packet, kSapPort, at(time));
            }
            std::string joined;
            for (const auto& change : changes) {
                joined += (joined.empty() ? "" : "; ") + change;
            }
            const bool logs = expected.rfind("log: ", 0) == 0;
            EXPECT_EQ(joined, logs ? "" : expected);
            if (logs) {
                EXPECT_EQ(log.count(expected.substr(5)), 1u);
            }
        }
    }
}

}  // namespace
