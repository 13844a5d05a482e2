// The listener's directory: scenarios of packets and clock readings, each step with the
// changes it must report to the sink.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "sap/SapDirectory.h"
#include "support/LogCapture.h"

using namespace pimav::detail;

namespace {

using Clock = SapDirectory::Clock;

enum class Action { Announce, Delete, Expire, NextExpiry };

struct Step {
    Action action;
    double at;  // seconds from the scenario's start
    const char* origin;
    uint16_t hash;
    std::string sdp;
    // The changes, "; "-separated, or "log:" and a line that the step logs instead; for
    // NextExpiry the seconds or "none".
    std::string expect;
};

Step announce(double at, const char* origin, uint16_t hash, std::string sdp, std::string expect) {
    return {Action::Announce, at, origin, hash, std::move(sdp), std::move(expect)};
}
Step remove(double at, const char* origin, uint16_t hash, std::string sdp, std::string expect) {
    return {Action::Delete, at, origin, hash, std::move(sdp), std::move(expect)};
}
Step expire(double at, std::string expect) {
    return {Action::Expire, at, "", 0, "", std::move(expect)};
}
Step nextExpiry(std::string expect) {
    return {Action::NextExpiry, 0, "", 0, "", std::move(expect)};
}

std::string sdp(const char* sessionId, int version) {
    return "v=0\r\no=- " + std::string(sessionId) + " " + std::to_string(version) +
           " IN IP4 10.9.9.9\r\ns=Stream\r\nt=0 0\r\n";
}
const std::string kOriginLineOnly = "o=- 11 9 IN IP4 10.9.9.9\r\n";
const std::string kNoOriginLine = "v=0\r\ns=Stream\r\n";

const char* const kA = "10.0.0.1";
const char* const kB = "10.0.0.2";

struct Scenario {
    const char* what;
    Clock::duration fixedTimeout;
    std::vector<Step> steps;
};

std::string describe(const SapChange& change) {
    std::string text = std::string(sapChangeWord(change.kind)) + " ";
    if (change.kind == SapChange::Replaced) {
        text += change.previousUrl + " -> ";
    }
    return text + change.url;
}

}  // namespace

TEST(SapDirectory, FollowsAnnouncementsDeletionsAndTimeouts) {
    const Scenario scenarios[] = {
        {"life of a session",
         {},
         {
             announce(0, kA, 1, sdp("11", 1), "add sap://10.0.0.1:9875/0001"),
             announce(10, kA, 1, sdp("11", 1), ""),
             announce(20, kA, 2, sdp("11", 2),
                      "replace sap://10.0.0.1:9875/0001 -> sap://10.0.0.1:9875/0002"),
             announce(30, kA, 2, sdp("11", 3),
                      "replace sap://10.0.0.1:9875/0002 -> sap://10.0.0.1:9875/0002"),
             announce(40, kB, 2, sdp("11", 1), "add sap://10.0.0.2:9875/0002"),
             announce(41, kA, 3, sdp("12", 1), "add sap://10.0.0.1:9875/0003"),
             remove(50, kA, 2, sdp("11", 3), "delete sap://10.0.0.1:9875/0002"),
             remove(51, kA, 2, sdp("11", 3), ""),
             remove(60, kB, 7, kOriginLineOnly, "delete sap://10.0.0.2:9875/0002"),
             remove(61, kA, 3, kNoOriginLine, "delete sap://10.0.0.1:9875/0003"),
             announce(70, kA, 4, kNoOriginLine,
                      "log:SAP: announcement sap://10.0.0.1:9875/0004 refused: its SDP has no o= line"),
             announce(80, "2001:db8::1", 0xbeef, sdp("5", 1), "add sap://[2001:db8::1]:9875/beef"),
         }},
        {"RFC 2974 timeout: an hour, or ten observed intervals",
         {},
         {
             nextExpiry("none"),
             announce(0, kA, 1, sdp("1", 1), "add sap://10.0.0.1:9875/0001"),
             nextExpiry("3600"),
             expire(3599.9, ""),
             expire(3600, "expire sap://10.0.0.1:9875/0001"),
             announce(4000, kA, 2, sdp("2", 1), "add sap://10.0.0.1:9875/0002"),
             announce(5000, kA, 2, sdp("2", 1), ""),
             // The same announcement again through a second group does not shorten the interval.
             announce(5000.2, kA, 2, sdp("2", 1), ""),
             nextExpiry("15000.2"),
             expire(15000.1, ""),
             expire(15000.2, "expire sap://10.0.0.1:9875/0002"),
             nextExpiry("none"),
         }},
        {"fixed timeout",
         std::chrono::seconds(5),
         {
             announce(0, kA, 1, sdp("1", 1), "add sap://10.0.0.1:9875/0001"),
             announce(1, kB, 1, sdp("1", 1), "add sap://10.0.0.2:9875/0001"),
             announce(4, kA, 1, sdp("1", 1), ""),
             expire(8.9, "expire sap://10.0.0.2:9875/0001"),
             expire(9, "expire sap://10.0.0.1:9875/0001"),
         }},
    };
    const auto start = Clock::now();
    const auto at = [&](double seconds) {
        return start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    };
    for (const auto& scenario : scenarios) {
        std::vector<std::string> changes;
        SapDirectory directory([&](const SapChange& change) { changes.push_back(describe(change)); },
                               scenario.fixedTimeout);
        for (const auto& step : scenario.steps) {
            changes.clear();
            LogCapture log;
            SapPacket packet;
            if (step.action == Action::Announce || step.action == Action::Delete) {
                ASSERT_TRUE(SapOrigin::fromText(step.origin, packet.origin));
                packet.type =
                    step.action == Action::Delete ? SapMessageType::Delete : SapMessageType::Announce;
                packet.hash = step.hash;
                packet.sdp = step.sdp;
                directory.feed(packet, kSapPort, at(step.at));
            } else if (step.action == Action::Expire) {
                const size_t expired = directory.expire(at(step.at));
                EXPECT_EQ(expired, changes.size());
            } else {
                const auto next = directory.nextExpiry();
                ASSERT_EQ(next.has_value(), step.expect != "none") << scenario.what;
                if (next) {
                    EXPECT_NEAR(std::chrono::duration<double>(*next - start).count(), std::stod(step.expect),
                                1e-6);
                }
                continue;
            }
            std::string joined;
            for (const auto& change : changes) {
                joined += (joined.empty() ? "" : "; ") + change;
            }
            if (step.expect.rfind("log:", 0) == 0) {
                EXPECT_EQ(joined, "") << scenario.what << ", step at " << step.at;
                EXPECT_EQ(log.count(step.expect.substr(4)), 1u) << scenario.what << ", step at " << step.at;
            } else {
                EXPECT_EQ(joined, step.expect) << scenario.what << ", step at " << step.at;
            }
        }
    }
}
