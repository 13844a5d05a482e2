#pragma once

// The listener's side of SAP: the sessions announced on the groups a host listens to.
//
// A session is known by its announcing host (the packet's origin) and the session id of its
// SDP "o=" line; its URL is sap://ORIGIN:PORT/HASH. A re-announcement with the same hash
// refreshes the entry; a new hash for the same session replaces it; a deletion removes it;
// an entry not re-announced in time expires. Every change goes to a sink, which decides
// what to do with it (an entry that a receiver uses may be kept there as stale).
//
// Time is passed in by the caller, so tests drive it without waiting.
// Not thread-safe; the sink must not call back into the directory.

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "sap/SapPacket.h"

namespace pimav::detail {

struct SapChange {
    enum Kind { Added, Replaced, Deleted, Expired };
    Kind kind = Added;
    // The session: its announcing host and o= session id. Unlike the URL, they tell two
    // sessions of one host apart when their hashes collide.
    SapOrigin origin;
    std::string sessionId;
    std::string url;
    // Replaced: the URL the entry had before (the same URL when only the SDP text changed).
    std::string previousUrl;
    // Added, Replaced: the announced SDP text.
    std::string sdp;
};
const char* sapChangeWord(SapChange::Kind kind);  // "add", "replace", "delete", "expire"

class SapDirectory {
public:
    using Clock = std::chrono::steady_clock;
    using Sink = std::function<void(const SapChange&)>;

    // Without a fixed timeout an entry expires after ten of its observed announcement
    // intervals, and never before an hour.
    static constexpr std::chrono::seconds kMinTimeout{3600};
    static constexpr int kTimeoutIntervals = 10;
    // Copies of one announcement heard this close together (through two groups or two
    // interfaces) count once when the interval is measured.
    static constexpr std::chrono::seconds kDuplicateWindow{1};

    // `fixedTimeout` zero: the rule above.
    explicit SapDirectory(Sink sink, Clock::duration fixedTimeout = Clock::duration::zero());

    // A decoded packet heard on UDP `port` (the port goes into the URL of a new entry).
    void feed(const SapPacket& packet, uint16_t port, Clock::time_point now);
    // Removes the entries whose time is up at `now`; returns how many.
    size_t expire(Clock::time_point now);
    // The earliest time at which expire() has work; none while the directory is empty.
    std::optional<Clock::time_point> nextExpiry() const;
    size_t size() const { return m_entries.size(); }

private:
    struct Key {
        SapOrigin origin;
        std::string sessionId;
        bool operator<(const Key& other) const {
            return origin != other.origin ? origin < other.origin : sessionId < other.sessionId;
        }
        bool operator==(const Key& other) const {
            return origin == other.origin && sessionId == other.sessionId;
        }
    };
    struct Entry {
        uint16_t hash = 0;
        std::string url;
        std::string sdp;
        Clock::time_point lastHeard;
        Clock::duration interval = Clock::duration::zero();  // zero until measured
        Clock::time_point deadline;
    };
    using HashKey = std::pair<SapOrigin, uint16_t>;

    void announce(const SapPacket& packet, const std::string& sessionId, uint16_t port,
                  Clock::time_point now);
    void remove(const SapPacket& packet, bool haveSessionId, const std::string& sessionId);
    // Sets the entry's deadline from its last hearing and interval.
    void schedule(const Key& key, Entry& entry);
    void erase(std::map<Key, Entry>::iterator it);
    void unindex(const Key& key, uint16_t hash);
    void emit(SapChange::Kind kind, const Key& key, std::string url, std::string previousUrl = "",
              std::string sdp = "");

    Sink m_sink;
    Clock::duration m_fixed_timeout;
    std::map<Key, Entry> m_entries;
    // Deletions may carry no o= line: they are matched by origin and hash.
    std::map<HashKey, Key> m_by_hash;
    std::set<std::pair<Clock::time_point, Key>> m_deadlines;
};

}  // namespace pimav::detail
