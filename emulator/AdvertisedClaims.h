#pragma once

// Who advertises each session id of the emulator's advertised-sessions table.
//
// The table keeps one entry per session id (the SDP o= session id), but two advertisers may
// use the same id: two files of the advertise folder, a file and a SAP announcement, two
// devices on the network. The first to advertise an id holds it and its entry; the others
// wait in arrival order, each with its URL and SDP, and when the holder withdraws, the first
// waiting one takes the entry over. Advertisers are told apart by a key: a file's path, or a
// SAP session's origin and o= id.

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <unordered_map>

namespace pimav::detail {

struct AdvertisedSource {
    std::string kind;  // "file" or "sap"
    std::string from;  // the file's path, or the announcing host
    std::string key;   // the advertiser (see above)
};

struct AdvertisedClaim {
    AdvertisedSource source;
    std::string url;
    std::string sdp;
};

class AdvertisedClaims {
public:
    // Records `claim` on `id`; a key that already claims the id keeps its place in the queue.
    // True when the claim holds the id (it did already, or nobody did).
    bool claim(uint64_t id, AdvertisedClaim claim);
    // True when `key` holds `id`.
    bool holds(uint64_t id, const std::string& key) const;
    // Drops the claim of `key` on `id`. When that was the holder and another claim waits,
    // the waiting one now holds the id and is returned, for the caller to store.
    std::optional<AdvertisedClaim> release(uint64_t id, const std::string& key);
    // Drops every claim on `id` (its advertisement was withdrawn by hand).
    void clear(uint64_t id);
    // Forgets `id` once nothing claims it (its entry has left the table).
    void forget(uint64_t id);

    // The source that holds `id`, else the last one that held it (the source of a stale
    // entry); null when there is none.
    const AdvertisedSource* source(uint64_t id) const;
    // Claims that wait for an id held by another advertiser.
    size_t waiting() const { return m_waiting; }

private:
    struct Claims {
        std::deque<AdvertisedClaim> queue;  // the holder first
        AdvertisedSource last;              // the last holder
    };

    std::unordered_map<uint64_t, Claims> m_claims;
    size_t m_waiting = 0;
};

}  // namespace pimav::detail
