#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <unordered_map>

#include <json/json.h>

#include "pimAvMngApi/adv/AdvSessionEntry.h"
#include "pimAvMngApi/adv/AdvSessionsDb.h"
#include "pimAvMngApi/adv/AdvertisementState.h"
#include "pimAvMngApi/model/IpAddress.h"
#include "pimAvMngApi/sdp/SdpSession.h"

/// The table of sessions that other devices advertise, one entry per session id.
///
/// Life of an id:
///  - advertised for the first time: stored OK, not in use unless a receiver marked
///    it as used before (one pending mark is consumed);
///  - advertised again: session, SDP text and URL replaced, state back to OK, the
///    in-use mark kept;
///  - withdrawn (any removal): erased when not in use, otherwise marked STALE and
///    kept until the receiver lets it go (setSessionAsUsed(id, false, ...)).
///
/// A session's name is the "s=" text of its SDP. The removals by name walk the
/// sessions of one name in ascending id order through a name index, so their cost
/// does not grow with the size of the table.
///
/// Not thread-safe: callers sharing one table serialise their calls.
class AdvSessions {
public:
    AdvSessions() = default;
    ~AdvSessions() = default;

    /// Parses `sdpText` and stores or refreshes its entry. `id` receives the session id
    /// and `updated` whether the id was already known. A parse failure returns its
    /// negative code (after a CHK line) and changes nothing. A URL whose port text holds
    /// no number throws (see AdvSessionEntry::setSourceUrl).
    int addAdvertisedSession(const std::string& url, const std::string& sdpText, session_id_t& id,
                             bool& updated);

    /// Withdraws an advertisement. Returns the id when the entry was erased, 0 when it
    /// was unknown or is in use (it is then marked STALE).
    session_id_t removeAdvertisedSession(session_id_t id);
    /// The first entry in id order from host `ip` and `port` with at least one media
    /// description and the session name `name` is withdrawn as above.
    session_id_t removeAdvertisedSession(IpAddress ip, std::string name, unsigned short port);
    /// Withdraws the one entry named `name`; nothing when no entry or several have it.
    session_id_t removeAdvertisedSessionByName(std::string name);

    /// A receiver starts (`used` true) or stops using a session. For an unknown id the
    /// mark is remembered (true) or forgotten (false) until it is advertised.
    /// `removed` is set when a STALE entry is let go and erased, and cleared for an
    /// unknown id; otherwise it is left as it was. Returns 0.
    int setSessionAsUsed(session_id_t id, bool used, bool& removed);

    /// 0, -14 for id 0, -16 for an unknown id.
    int getSessionStatus(session_id_t id, AdvertisementState& state) const;
    /// 0 or -3 for an unknown id.
    int getAdvertisedSdp(session_id_t id, std::string& sdp, std::string& url) const;
    /// Copies the entry of `id` into `entry`: 0, or -3 for an unknown id.
    int getAdvertisementSessionEntry(session_id_t id, AdvSessionEntry& entry) const;
    /// Copies the parsed session of `id` into `session`: 0, or -3 for an unknown id.
    int getSdpSession(session_id_t id, SdpSession& session) const;

    /// Writes the entries as an array into reply["list"] (null when there is none).
    void getAdvertisedSessionsJson(Json::Value& reply) const;

    /// Logs the count, a header and one row per RTP map of every media description.
    void dumpTable() const;

    /// The number of entries.
    size_t size() const { return m_db.m_entries.size(); }
    ///@{
    /// Marks of not yet advertised ids, in total and for one id.
    size_t getPendingCount() const { return m_pending_count; }
    size_t getPendingCount(session_id_t id) const;
    ///@}
    /// The entries, keyed by session id.
    const AdvSessionsDb& getDb() const { return m_db; }

private:
    /// Lets unit tests build table states that the public operations cannot reach.
    friend class AdvSessionsTestAccess;

    void indexName(const AdvSessionEntry& entry, session_id_t id);
    void unindexName(const AdvSessionEntry& entry, session_id_t id);
    /// The ids of the sessions named `name`, ascending (empty when there is none).
    const std::set<session_id_t>& idsNamed(const std::string& name) const;

    AdvSessionsDb m_db;
    /// Ids marked as used while no entry had them. Only the number of marks per id and
    /// their total are ever looked at, so the list is held as counts.
    std::unordered_map<session_id_t, size_t> m_pending_in_use;
    size_t m_pending_count = 0;
    /// The ids of every session name, ascending, so that the sessions of one name are
    /// found in id order without walking the whole table.
    std::unordered_map<std::string, std::set<session_id_t>> m_names;
};
