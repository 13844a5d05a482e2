#pragma once

// The announcer's side of SAP: when each session's announcement goes out.
//
// A session is announced at once when it is added or its SDP changes (with a new hash),
// and then again after its interval: RFC 2974's bandwidth rule (all announcements of the
// group, heard and sent, share 4000 bit/s; at least 300 s) or a fixed interval, multiplied
// by a random factor in [2/3, 4/3] so that announcers do not fall into step. A removed
// session gets a deletion, and so does every session on shutdown (withdrawAll).
//
// The caller owns the clock (every call takes the time) and the socket (packets go to the
// send function). Bumping the o= version of a changed SDP is the caller's part.
// Not thread-safe.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "sap/SapPacket.h"

namespace pimav::detail {

class SapAnnouncer {
public:
    using Clock = std::chrono::steady_clock;
    // Receives the caller's key of the session, the kind of packet and its bytes.
    using Send = std::function<void(uint64_t key, SapMessageType type, const std::string& packet)>;
    // Uniform in [0, 1).
    using Random = std::function<double()>;

    static constexpr double kBandwidthLimit = 4000;  // bit/s for the whole group
    static constexpr std::chrono::seconds kMinInterval{300};

    struct Options {
        SapOrigin origin;
        // Zero: the bandwidth rule.
        Clock::duration interval = Clock::duration::zero();
        bool compress = false;
    };

    // Without `random`, a generator seeded from std::random_device.
    SapAnnouncer(Options options, Send send, Random random = {});

    // Adds the session `key` or changes its SDP: a new hash, sent at once. The SDP it
    // already has changes nothing.
    void announce(uint64_t key, const std::string& sdp, Clock::time_point now);
    // Takes over a session that was announced before (by an earlier run) without sending it
    // now: it gets the hash announce() would give it, and its next announcement is planned
    // one interval ahead.
    void adopt(uint64_t key, const std::string& sdp, Clock::time_point now);
    // Sends the session's deletion and forgets it; false for an unknown key.
    bool withdraw(uint64_t key);
    // withdraw() for every session (clean shutdown).
    void withdrawAll();
    // Sends the announcements due at `now` and plans their next time.
    void poll(Clock::time_point now);
    // When poll() next has work; none without sessions.
    std::optional<Clock::time_point> nextDue() const;

    // The number of other sessions heard on the group, which shares its bandwidth with ours.
    void setHeardSessions(size_t count) { m_heard = count; }
    // The interval before the random factor, for an announcement of `bytes` bytes.
    Clock::duration baseInterval(size_t bytes) const;

    size_t size() const { return m_sessions.size(); }
    // The hash the session is announced with; 0 for an unknown key.
    uint16_t hashOf(uint64_t key) const;

private:
    struct Session {
        std::string sdp;
        uint16_t hash = 0;
        std::string packet;
        Clock::time_point due;
    };

    // A nonzero hash that no other session of ours uses and that differs from `previous`,
    // derived from the SDP text so that an unchanged session keeps it across restarts.
    uint16_t pickHash(const std::string& sdp, uint16_t previous) const;
    std::string encode(const Session& session, SapMessageType type) const;
    // Stores the session's SDP with a new hash; null when it already has this SDP.
    Session* store(uint64_t key, const std::string& sdp);
    // Plans the next announcement one jittered interval after `now`.
    void plan(uint64_t key, Session& session, Clock::time_point now);
    // Sends now and plans the next announcement.
    void send(uint64_t key, Session& session, Clock::time_point now);

    Options m_options;
    Send m_send;
    Random m_random;
    size_t m_heard = 0;
    std::map<uint64_t, Session> m_sessions;
    std::set<uint16_t> m_hashes;
    std::set<std::pair<Clock::time_point, uint64_t>> m_queue;
};

}  // namespace pimav::detail
