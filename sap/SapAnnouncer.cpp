#include "sap/SapAnnouncer.h"

#include <zlib.h>

#include <algorithm>
#include <random>

#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

SapAnnouncer::SapAnnouncer(Options options, Send send, Random random)
    : m_options(std::move(options)), m_send(std::move(send)), m_random(std::move(random)) {
    if (!m_random) {
        m_random = [engine = std::mt19937(std::random_device{}())]() mutable {
            return std::uniform_real_distribution<double>(0.0, 1.0)(engine);
        };
    }
}

void SapAnnouncer::announce(uint64_t key, const std::string& sdp, Clock::time_point now) {
    if (Session* session = store(key, sdp)) {
        Logger::log(5, "SAP: announcing session %llu with hash %04x", static_cast<unsigned long long>(key),
                    static_cast<unsigned>(session->hash));
        send(key, *session, now);
    }
}

void SapAnnouncer::adopt(uint64_t key, const std::string& sdp, Clock::time_point now) {
    if (Session* session = store(key, sdp)) {
        plan(key, *session, now);
    }
}

SapAnnouncer::Session* SapAnnouncer::store(uint64_t key, const std::string& sdp) {
    auto it = m_sessions.find(key);
    if (it == m_sessions.end()) {
        it = m_sessions.emplace(key, Session()).first;
    } else if (it->second.sdp == sdp) {
        return nullptr;
    }
    Session& session = it->second;
    const uint16_t hash = pickHash(sdp, session.hash);
    m_hashes.erase(session.hash);
    m_hashes.insert(hash);
    session.hash = hash;
    session.sdp = sdp;
    session.packet = encode(session, SapMessageType::Announce);
    return &session;
}

bool SapAnnouncer::withdraw(uint64_t key) {
    const auto it = m_sessions.find(key);
    if (it == m_sessions.end()) {
        return false;
    }
    const Session& session = it->second;
    Logger::log(5, "SAP: deleting session %llu with hash %04x", static_cast<unsigned long long>(key),
                static_cast<unsigned>(session.hash));
    m_send(key, SapMessageType::Delete, encode(session, SapMessageType::Delete));
    m_queue.erase({session.due, key});
    m_hashes.erase(session.hash);
    m_sessions.erase(it);
    return true;
}

void SapAnnouncer::withdrawAll() {
    while (!m_sessions.empty()) {
        withdraw(m_sessions.begin()->first);
    }
}

void SapAnnouncer::poll(Clock::time_point now) {
    while (!m_queue.empty() && m_queue.begin()->first <= now) {
        const uint64_t key = m_queue.begin()->second;
        send(key, m_sessions.at(key), now);
    }
}

std::optional<SapAnnouncer::Clock::time_point> SapAnnouncer::nextDue() const {
    if (m_queue.empty()) {
        return std::nullopt;
    }
    return m_queue.begin()->first;
}

SapAnnouncer::Clock::duration SapAnnouncer::baseInterval(size_t bytes) const {
    if (m_options.interval != Clock::duration::zero()) {
        return m_options.interval;
    }
    const double announcements = static_cast<double>(m_heard + std::max<size_t>(m_sessions.size(), 1));
    const std::chrono::duration<double> shared(8.0 * announcements * static_cast<double>(bytes) /
                                               kBandwidthLimit);
    return std::max<Clock::duration>(kMinInterval, std::chrono::duration_cast<Clock::duration>(shared));
}

uint16_t SapAnnouncer::hashOf(uint64_t key) const {
    const auto it = m_sessions.find(key);
    return it == m_sessions.end() ? 0 : it->second.hash;
}

uint16_t SapAnnouncer::pickHash(const std::string& sdp, uint16_t previous) const {
    const uLong crc = crc32(0L, reinterpret_cast<const Bytef*>(sdp.data()), static_cast<uInt>(sdp.size()));
    auto hash = static_cast<uint16_t>((crc >> 16) ^ (crc & 0xffff));
    // 65535 nonzero hashes: with more sessions than that one has to be shared.
    for (unsigned tries = 0; tries < 0x10000; ++tries, ++hash) {
        if (hash != 0 && hash != previous && m_hashes.count(hash) == 0) {
            return hash;
        }
    }
    return hash == 0 ? 1 : hash;
}

std::string SapAnnouncer::encode(const Session& session, SapMessageType type) const {
    SapPacket packet;
    packet.type = type;
    packet.origin = m_options.origin;
    packet.hash = session.hash;
    packet.compressed = m_options.compress;
    packet.sdp = session.sdp;
    return encodeSap(packet);
}

void SapAnnouncer::plan(uint64_t key, Session& session, Clock::time_point now) {
    const double factor = 2.0 / 3.0 + m_random() * 2.0 / 3.0;
    const auto interval =
        std::chrono::duration_cast<Clock::duration>(baseInterval(session.packet.size()) * factor);
    m_queue.erase({session.due, key});
    session.due = now + interval;
    m_queue.emplace(session.due, key);
}

void SapAnnouncer::send(uint64_t key, Session& session, Clock::time_point now) {
    m_send(key, SapMessageType::Announce, session.packet);
    plan(key, session, now);
}

}  // namespace pimav::detail
