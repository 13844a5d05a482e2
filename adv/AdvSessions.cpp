#include "pimAvMngApi/adv/AdvSessions.h"

#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "platform/ChkLog.h"

namespace {

unsigned long long idArg(session_id_t id) {
    return static_cast<unsigned long long>(id);
}

}  // namespace

void AdvSessions::indexName(const AdvSessionEntry& entry, session_id_t id) {
    m_names[entry.m_session.m_info].insert(id);
}

void AdvSessions::unindexName(const AdvSessionEntry& entry, session_id_t id) {
    auto named = m_names.find(entry.m_session.m_info);
    if (named != m_names.end() && named->second.erase(id) != 0 && named->second.empty()) {
        m_names.erase(named);
    }
}

const std::set<session_id_t>& AdvSessions::idsNamed(const std::string& name) const {
    static const std::set<session_id_t> kNone;
    auto named = m_names.find(name);
    return named == m_names.end() ? kNone : named->second;
}

int AdvSessions::addAdvertisedSession(const std::string& url, const std::string& sdpText, session_id_t& id,
                                      bool& updated) {
    SdpSession parsed;
    {
        SdpConverter converter;
        PIMAV_CHK(converter.parseSdp(sdpText));
        PIMAV_CHK(converter.getSdpConfig(parsed));
    }
    id = parsed.m_session_id;

    // lower_bound: either the entry of `id` or the insertion hint for a new one.
    auto found = m_db.m_entries.lower_bound(id);
    if (found != m_db.m_entries.end() && found->first == id) {
        AdvSessionEntry& entry = found->second;
        Logger::log(5, "Advertised:: Session %llu Updated. status: %s", idArg(id),
                    entry.getStatus().toString().c_str());
        // The name index follows the session at once: a bad port in the URL below
        // throws after the session has been replaced.
        unindexName(entry, id);
        entry.setSession(parsed);
        indexName(entry, id);
        entry.setSdp(sdpText);
        entry.setSourceUrl(url);
        entry.setStatus(AdvertisementState::OK);
        updated = true;
        return 0;
    }

    // The URL goes first: a bad port throws before anything is stored. The session and
    // the text are then set on the stored entry itself, which saves copying the parsed
    // session twice.
    AdvSessionEntry fresh;
    fresh.setSourceUrl(url);
    updated = false;
    bool inUse = false;

    auto pending = m_pending_in_use.find(id);
    if (pending != m_pending_in_use.end()) {
        // One mark is consumed; further marks of the same id stay pending.
        if (--pending->second == 0) {
            m_pending_in_use.erase(pending);
        }
        --m_pending_count;
        Logger::log(5, "Advertised:: Session %llu was already marked as in use. new array size %d.",
                    idArg(id), static_cast<int>(m_pending_count));
        inUse = true;
    }
    fresh.setInUse(inUse);
    AdvSessionEntry& entry = m_db.m_entries.emplace_hint(found, id, std::move(fresh))->second;
    entry.setSession(parsed);
    entry.setSdp(sdpText);
    indexName(entry, id);
    Logger::log(5, "Advertised:: Session %llu stored. Url %s", idArg(id), url.c_str());
    return 0;
}

session_id_t AdvSessions::removeAdvertisedSession(session_id_t id) {
    auto found = m_db.m_entries.find(id);
    if (found == m_db.m_entries.end()) {
        Logger::log(5, "Advertised:: Unable to find session %llu", idArg(id));
        return 0;
    }
    if (found->second.isInUse()) {
        found->second.setStatus(AdvertisementState::STALE);
        Logger::log(5, "Advertised:: Session %llu is now stale.", idArg(id));
        return 0;
    }
    Logger::log(5, "Advertised:: Session %llu removed.", idArg(id));
    unindexName(found->second, id);
    m_db.m_entries.erase(found);
    return id;
}

session_id_t AdvSessions::removeAdvertisedSession(IpAddress ip, std::string name, unsigned short port) {
    for (const session_id_t id : idsNamed(name)) {
        const AdvSessionEntry& entry = m_db.m_entries.at(id);
        if (entry.m_host_ip == ip && entry.m_host_port == port && !entry.m_session.m_media.empty()) {
            Logger::log(5, "Advertised:: Session %llu removed. Host Ip %s port %d and Name [%s]", idArg(id),
                        entry.m_host_ip.toString().c_str(), static_cast<int>(port),
                        entry.m_session.m_info.c_str());
            return removeAdvertisedSession(id);
        }
    }
    Logger::log(5, "Advertised:: Unable to find any session from host ip %s port %d and Name [%s]",
                ip.toString().c_str(), static_cast<int>(port), name.c_str());
    return 0;
}

session_id_t AdvSessions::removeAdvertisedSessionByName(std::string name) {
    if (m_db.m_entries.empty()) {
        Logger::log(5, "Advertised:: Unable to find any session with Name [%s]", name.c_str());
        return 0;
    }
    int count = 0;
    session_id_t candidate = 0;
    for (const session_id_t id : idsNamed(name)) {
        ++count;
        candidate = id;
        if (Logger::isEnabled(5)) {
            Logger::log(5, "Advertised:: Session %llu found. Host Ip %s Name [%s]. Candidate to be removed.",
                        idArg(id), m_db.m_entries.at(id).m_host_ip.toString().c_str(), name.c_str());
        }
    }
    if (count == 1) {
        Logger::log(5,
                    "Advertised:: we found 1 session with name [%s], id %llu so we are going to remove it.",
                    name.c_str(), idArg(candidate));
        return removeAdvertisedSession(candidate);
    }
    if (count == 0) {
        Logger::log(5, "Advertised:: Unable to find any session with Name [%s]", name.c_str());
        return 0;
    }
    Logger::log(
        5,
        "Advertised:: we found %d session with the same name [%s]. We are not going to remove any of them.",
        count, name.c_str());
    return 0;
}

int AdvSessions::setSessionAsUsed(session_id_t id, bool used, bool& removed) {
    auto found = m_db.m_entries.find(id);
    if (found != m_db.m_entries.end()) {
        AdvSessionEntry& entry = found->second;
        entry.setInUse(used);
        Logger::log(5, "Advertised:: Setting session %llu as %s", idArg(id), used ? "used" : "unused");
        if (!used && entry.getStatus() == AdvertisementState::STALE) {
            removeAdvertisedSession(id);
            removed = true;
        }
        return 0;
    }

    if (used) {
        ++m_pending_in_use[id];
        ++m_pending_count;
    } else {
        auto pending = m_pending_in_use.find(id);
        if (pending != m_pending_in_use.end()) {
            m_pending_count -= pending->second;
            m_pending_in_use.erase(pending);
        }
    }
    removed = false;
    Logger::log(5, "Advertised:: Session not found. adding to the pending list %lli - list size %d",
                static_cast<long long>(id), static_cast<int>(m_pending_count));
    return 0;
}

size_t AdvSessions::getPendingCount(session_id_t id) const {
    auto pending = m_pending_in_use.find(id);
    return pending == m_pending_in_use.end() ? 0 : pending->second;
}

int AdvSessions::getSessionStatus(session_id_t id, AdvertisementState& state) const {
    if (id == 0) {
        return -14;
    }
    auto found = m_db.m_entries.find(id);
    if (found == m_db.m_entries.end()) {
        return -16;
    }
    state = found->second.getStatus();
    return 0;
}

int AdvSessions::getAdvertisedSdp(session_id_t id, std::string& sdp, std::string& url) const {
    auto found = m_db.m_entries.find(id);
    if (found == m_db.m_entries.end()) {
        Logger::log(5, "Advertised:: Unable to find session %llu", idArg(id));
        return -3;
    }
    found->second.getSdp(sdp);
    url = found->second.getSourceUrl();
    return 0;
}

int AdvSessions::getAdvertisementSessionEntry(session_id_t id, AdvSessionEntry& entry) const {
    auto found = m_db.m_entries.find(id);
    if (found == m_db.m_entries.end()) {
        Logger::log(5, "Advertised:: Unable to find entry %llu", idArg(id));
        return -3;
    }
    entry = found->second;
    return 0;
}

int AdvSessions::getSdpSession(session_id_t id, SdpSession& session) const {
    auto found = m_db.m_entries.find(id);
    if (found == m_db.m_entries.end()) {
        return -3;
    }
    return found->second.getSession(session);
}

void AdvSessions::getAdvertisedSessionsJson(Json::Value& reply) const {
    m_db.Serialize(reply["list"]);
}

void AdvSessions::dumpTable() const {
    if (!Logger::isEnabled(6)) {
        return;
    }
    Logger::log(6, "Advertised streams: %d", static_cast<int>(m_db.m_entries.size()));
    Logger::log(
        6,
        "|       Session Id       | Media |  Src Ip         | Name                 | pktTime | type  | "
        "Codec  | Ch | PType | UDP     |");
    for (const auto& item : m_db.m_entries) {
        const SdpSession& session = item.second.m_session;
        int m = 0;
        for (const SdpMedia& media : session.m_media) {
            const std::string srcIp = IpAddress(media.m_local_ip).toString();
            const char* type = (media.m_type == SdpMedia::VIDEO) ? "video" : "audio";
            int r = 0;
            for (const SdpMediaRtpMap& map : media.m_rtp_maps) {
                Logger::log(6, "| %22llu | %2d.%2d | %15s | %20s | %0.3f   | %5s | %6s | %02d | %5d | %7d |",
                            idArg(item.first), m, r, srcIp.c_str(), session.m_info.c_str(),
                            static_cast<double>(media.m_ptime), type, map.m_codec.toString().c_str(),
                            static_cast<int>(map.m_number_channels), static_cast<int>(map.m_payload_type),
                            static_cast<int>(media.m_udp_port));
                ++r;
            }
            ++m;
        }
    }
}
