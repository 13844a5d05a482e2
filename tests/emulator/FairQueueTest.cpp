// The daemon's queue of waiting requests: its bounds, and whose turn it is after a client
// used a lot of handling time.

#include <gtest/gtest.h>

#include "common/FairQueue.h"

using namespace pimav::detail;
using namespace std::chrono_literals;

namespace {

PendingRequest from(const std::string& peer, size_t bytes = 1) {
    PendingRequest request;
    request.peer = peer;
    request.bytes = bytes;
    return request;
}

}  // namespace

TEST(FairQueue, RefusesBeyondTheClientsShareAndTheByteBound) {
    FairQueue queue(2, 100);
    const auto now = FairQueue::Clock::now();
    struct Push {
        const char* peer;
        size_t bytes;
        FairQueue::Admission admission;
    };
    const Push pushes[] = {
        {"a", 10, FairQueue::Admission::Queued},     {"a", 10, FairQueue::Admission::Queued},
        {"a", 10, FairQueue::Admission::ClientFull}, {"b", 81, FairQueue::Admission::QueueFull},
        {"b", 80, FairQueue::Admission::Queued},
    };
    for (const Push& p : pushes) {
        PendingRequest request = from(p.peer, p.bytes);
        EXPECT_EQ(queue.push(std::move(request), now), p.admission) << p.peer << " " << p.bytes;
        if (p.admission != FairQueue::Admission::Queued) {
            EXPECT_EQ(request.peer, p.peer);  // a refused request is left to its caller, to be answered
        }
    }
    EXPECT_EQ(queue.bytes(), 100u);
}

TEST(FairQueue, AClientThatUsedMuchTimeWaitsForActiveOthersOnly) {
    FairQueue queue(8, 1000);
    auto now = FairQueue::Clock::now();
    FairQueue::Clock::time_point retryAt;
    auto take = [&]() -> std::string {
        const auto request = queue.take(now, retryAt);
        return request ? request->peer : "-";
    };
    // "big" takes 100 ms; "small" sends meanwhile.
    queue.push(from("big"), now);
    ASSERT_EQ(take(), "big");
    queue.charge("big", 100ms);
    queue.push(from("big"), now);
    queue.push(from("small"), now);
    EXPECT_EQ(take(), "small");  // behind "big": first
    queue.charge("small", 1ms);
    // Only "big" waits, but "small" was active just now: "big" waits for it ...
    now += 1ms;
    EXPECT_EQ(take(), "-");
    EXPECT_LE(retryAt, now + FairQueue::kActiveWindow);
    queue.push(from("small"), now);
    EXPECT_EQ(take(), "small");
    queue.charge("small", 1ms);
    // ... until "small" has been quiet for the active window: then "big" goes.
    now += FairQueue::kActiveWindow;
    EXPECT_EQ(take(), "big");
    queue.charge("big", 100ms);
    // A client alone never waits, however much time it takes.
    now += 1s;
    queue.push(from("big"), now);
    EXPECT_EQ(take(), "big");
    EXPECT_TRUE(queue.empty());
}
