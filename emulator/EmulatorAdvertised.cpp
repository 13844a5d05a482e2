// The advertised-sessions table fed by several sources (the advertise folder, SAP): one
// holder per session id, the others waiting for it (AdvertisedClaims).

#include "Emulator.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

namespace pimav::detail {

Emulator::Advertised Emulator::advertise(const AdvertisedClaim& claim, uint64_t& id, std::string& why) {
    // The session id decides which entry the SDP is for, and so whether its source may store it.
    SdpSession session;
    {
        SdpConverter converter;
        const int rc = converter.parseSdp(claim.sdp);
        ErrorAuxMsg::getInstance()->clear();
        if (rc != 0) {
            why = "SDP refused (" + std::to_string(rc) + ")";
            return Advertised::Refused;
        }
        converter.getSdpConfig(session);
    }
    id = session.m_session_id;
    if (!m_claims.claim(id, claim)) {
        return Advertised::Waiting;
    }
    if (!storeAdvertised(claim, why)) {
        withdrawAdvertised(id, claim.source.key);
        return Advertised::Refused;
    }
    return Advertised::Stored;
}

bool Emulator::storeAdvertised(const AdvertisedClaim& claim, std::string& why) {
    session_id_t stored = 0;
    bool updated = false;
    int rc = -7;
    try {
        rc = m_advertised.addAdvertisedSession(claim.url, claim.sdp, stored, updated);
    } catch (const std::exception& e) {
        // The table reads the URL's host and port: a text it cannot read is refused whole.
        why = std::string("URL ") + claim.url + " refused: " + e.what();
        rc = -7;
    }
    ErrorAuxMsg::getInstance()->clear();
    if (rc != 0 && why.empty()) {
        why = "SDP refused (" + std::to_string(rc) + ")";
    }
    if (rc == 0 && !updated && m_advertised.size() > m_options.maxAdvertised) {
        m_advertised.removeAdvertisedSession(stored);
        why = "the table holds at most " + std::to_string(m_options.maxAdvertised) + " entries (--max-advertised)";
        return false;
    }
    return rc == 0;
}

void Emulator::withdrawAdvertised(uint64_t id, const std::string& key) {
    if (!m_claims.holds(id, key)) {
        m_claims.release(id, key);
        return;
    }
    for (auto next = m_claims.release(id, key); next; next = m_claims.release(id, next->source.key)) {
        std::string why;
        if (storeAdvertised(*next, why)) {
            Logger::log(5, "emulator: advertised session %llu taken over by %s",
                        static_cast<unsigned long long>(id), next->source.from.c_str());
            return;
        }
        Logger::log(2, "emulator: advertisement of session %llu by %s refused: %s",
                    static_cast<unsigned long long>(id), next->source.from.c_str(), why.c_str());
    }
    m_advertised.removeAdvertisedSession(id);
    forgetIfGone(id);
}

void Emulator::forgetIfGone(uint64_t id) {
    if (m_advertised.getDb().m_entries.count(id) == 0) {
        m_claims.forget(id);
    }
}

void Emulator::addDebugSection(const std::string& name, std::function<Json::Value()> section) {
    m_debug_sections.emplace_back(name, std::move(section));
}

}  // namespace pimav::detail
