#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pimav::detail {

// One request as it came off the daemon's socket, waiting to be handled.
struct PendingRequest {
    std::string peer;                   // the ROUTER's routing id of the connection
    std::vector<std::string> envelope;  // routing frames and delimiter, sent back with the reply
    std::vector<std::string> frames;    // the request's frames
    size_t bytes = 0;                   // size of the request's frames
    std::string clientKey;              // CURVE: the client's public key in Z85; empty on a plain link
};

// Requests waiting to be handled, taken in turn by the handling time that each client
// (connection) has used, so that a client whose requests are expensive (large documents)
// cannot take the daemon's time from the others.
//
// Start-time fair queuing: each client's next request may start at the virtual time where
// its previous one ended; the request with the earliest start goes first, and the virtual
// time is the start of the request taken last (a client that was idle starts there:
// idling earns no credit). A REQ client has one request in flight and is often on its way
// back when the choice is made, so a client whose turn lies more than kSlack ahead waits
// while other clients that are behind it have sent a request within kActiveWindow; while
// it waits with nothing else to do, the virtual time runs with the clock.
//
// The queue is bounded: at most `maxPerClient` requests of one client and `maxBytes` of
// requests in all; push refuses beyond that.
class FairQueue {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds kSlack{2};
    static constexpr std::chrono::milliseconds kActiveWindow{20};

    enum class Admission { Queued, ClientFull, QueueFull };

    FairQueue(size_t maxPerClient, size_t maxBytes) : m_max_per_client(maxPerClient), m_max_bytes(maxBytes) {}

    // Takes the request when it is admitted, and leaves it untouched otherwise.
    Admission push(PendingRequest&& request, Clock::time_point now);
    bool empty() const { return m_ready.empty(); }
    size_t bytes() const { return m_bytes; }

    // The next request in turn, or none while the client in turn waits for others; then
    // `retryAt` tells when to ask again at the latest (a new request may change the turn
    // sooner). The queue must not be empty.
    std::optional<PendingRequest> take(Clock::time_point now, Clock::time_point& retryAt);
    // Charges the handling time of the request taken last for `peer` to its client.
    void charge(const std::string& peer, Clock::duration used);

private:
    struct Client {
        std::deque<PendingRequest> waiting;
        std::deque<uint64_t> arrivals;  // arrival numbers of `waiting`, the tie-breaker
        Clock::time_point lastArrival;
        double start = 0;   // virtual start of the request taken last
        double finish = 0;  // virtual end of the request taken last
    };
    using Clients = std::map<std::string, Client>;

    // When the client in turn (starting at `start`) waits for a client behind it that is
    // active, the time to ask again at the latest.
    std::optional<Clock::time_point> waitForOthers(const Client& next, double start, Clock::time_point now) const;
    // Forgets the clients that wait for nothing, owe no time and are not active.
    void forgetSettledClients();

    size_t m_max_per_client;
    size_t m_max_bytes;
    Clients m_clients;
    std::vector<Clients::iterator> m_ready;  // the clients with waiting requests
    double m_virtual = 0;                    // seconds
    std::optional<Clock::time_point> m_waiting_since;
    uint64_t m_arrivals = 0;
    size_t m_bytes = 0;
};

}  // namespace pimav::detail
