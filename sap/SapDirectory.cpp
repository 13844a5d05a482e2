#include "sap/SapDirectory.h"

#include <algorithm>

#include "pimAvMngApi/platform/Logger.h"
#include "platform/WordTable.h"

namespace pimav::detail {

constexpr WordRow<SapChange::Kind> kSapChangeWords[] = {
    {SapChange::Added, "add"},
    {SapChange::Replaced, "replace"},
    {SapChange::Deleted, "delete"},
    {SapChange::Expired, "expire"},
};

const char* sapChangeWord(SapChange::Kind kind) { return wordOf(kSapChangeWords, kind, "unknown").data(); }

SapDirectory::SapDirectory(Sink sink, Clock::duration fixedTimeout)
    : m_sink(std::move(sink)), m_fixed_timeout(fixedTimeout) {}

void SapDirectory::feed(const SapPacket& packet, uint16_t port, Clock::time_point now) {
    SapSdpFields fields;
    const bool haveSessionId = readSapSdpFields(packet.sdp, fields);
    if (packet.type == SapMessageType::Delete) {
        remove(packet, haveSessionId, fields.sessionId);
    } else if (haveSessionId) {
        announce(packet, fields.sessionId, port, now);
    } else {
        Logger::log(2, "SAP: announcement %s refused: its SDP has no o= line",
                    sapUrl(packet.origin, port, packet.hash).c_str());
    }
}

void SapDirectory::announce(const SapPacket& packet, const std::string& sessionId, uint16_t port,
                            Clock::time_point now) {
    const Key key{packet.origin, sessionId};
    auto it = m_entries.find(key);
    if (it == m_entries.end()) {
        Entry entry;
        entry.hash = packet.hash;
        entry.url = sapUrl(packet.origin, port, packet.hash);
        entry.sdp = packet.sdp;
        entry.lastHeard = now;
        it = m_entries.emplace(key, std::move(entry)).first;
        m_by_hash[{packet.origin, packet.hash}] = key;
        schedule(key, it->second);
        emit(SapChange::Added, key, it->second.url, "", packet.sdp);
        return;
    }
    Entry& entry = it->second;
    if (entry.hash == packet.hash && now - entry.lastHeard >= kDuplicateWindow) {
        entry.interval = now - entry.lastHeard;
    }
    entry.lastHeard = now;
    schedule(key, entry);
    if (entry.hash == packet.hash) {
        // An announcer must change the hash with the SDP; one that does not still gets its
        // new text through.
        if (entry.sdp != packet.sdp) {
            entry.sdp = packet.sdp;
            emit(SapChange::Replaced, key, entry.url, entry.url, entry.sdp);
        }
        return;
    }
    unindex(key, entry.hash);
    std::string previousUrl = std::move(entry.url);
    entry.hash = packet.hash;
    entry.url = sapUrl(packet.origin, port, packet.hash);
    entry.sdp = packet.sdp;
    m_by_hash[{packet.origin, packet.hash}] = key;
    emit(SapChange::Replaced, key, entry.url, std::move(previousUrl), entry.sdp);
}

void SapDirectory::remove(const SapPacket& packet, bool haveSessionId, const std::string& sessionId) {
    auto it = haveSessionId ? m_entries.find(Key{packet.origin, sessionId}) : m_entries.end();
    if (it == m_entries.end()) {
        const auto byHash = m_by_hash.find({packet.origin, packet.hash});
        if (byHash != m_by_hash.end()) {
            it = m_entries.find(byHash->second);
        }
    }
    if (it == m_entries.end()) {
        Logger::log(7, "SAP: deletion of an unknown session from %s, hash %04x",
                    packet.origin.toString().c_str(), static_cast<unsigned>(packet.hash));
        return;
    }
    const Key key = it->first;
    std::string url = it->second.url;
    erase(it);
    emit(SapChange::Deleted, key, std::move(url));
}

size_t SapDirectory::expire(Clock::time_point now) {
    size_t count = 0;
    while (!m_deadlines.empty() && m_deadlines.begin()->first <= now) {
        const auto it = m_entries.find(m_deadlines.begin()->second);
        const Key key = it->first;
        std::string url = it->second.url;
        erase(it);
        emit(SapChange::Expired, key, std::move(url));
        ++count;
    }
    return count;
}

std::optional<SapDirectory::Clock::time_point> SapDirectory::nextExpiry() const {
    if (m_deadlines.empty()) {
        return std::nullopt;
    }
    return m_deadlines.begin()->first;
}

void SapDirectory::schedule(const Key& key, Entry& entry) {
    Clock::duration timeout = m_fixed_timeout;
    if (timeout == Clock::duration::zero()) {
        timeout = std::max<Clock::duration>(kMinTimeout, entry.interval * kTimeoutIntervals);
    }
    m_deadlines.erase({entry.deadline, key});
    entry.deadline = entry.lastHeard + timeout;
    m_deadlines.emplace(entry.deadline, key);
}

void SapDirectory::erase(std::map<Key, Entry>::iterator it) {
    const Key& key = it->first;
    const Entry& entry = it->second;
    m_deadlines.erase({entry.deadline, key});
    unindex(key, entry.hash);
    m_entries.erase(it);
}

void SapDirectory::unindex(const Key& key, uint16_t hash) {
    // After a hash collision the index names the newer session; the older one leaves it alone.
    const auto indexed = m_by_hash.find({key.origin, hash});
    if (indexed != m_by_hash.end() && indexed->second == key) {
        m_by_hash.erase(indexed);
    }
}

void SapDirectory::emit(SapChange::Kind kind, const Key& key, std::string url, std::string previousUrl,
                        std::string sdp) {
    Logger::log(5, "SAP: %s %s", sapChangeWord(kind), url.c_str());
    if (m_sink) {
        SapChange change;
        change.kind = kind;
        change.origin = key.origin;
        change.sessionId = key.sessionId;
        change.url = std::move(url);
        change.previousUrl = std::move(previousUrl);
        change.sdp = std::move(sdp);
        m_sink(change);
    }
}

}  // namespace pimav::detail
