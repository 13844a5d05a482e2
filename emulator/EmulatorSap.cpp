#include "EmulatorSap.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

namespace {

using Seconds = std::chrono::duration<double>;

UdpEndpoint endpointOf(const std::string& text) {
    UdpEndpoint endpoint;
    if (!UdpEndpoint::parse(text, endpoint)) {
        throw std::invalid_argument("not an IPv4 ADDR:PORT: " + text);
    }
    return endpoint;
}

// The URL under which the table keeps a session. The table reads the host of a URL as an
// IPv4 address and the text after the next ':' as the port, which an IPv6 host breaks: such
// a URL is given without the "//", which the table stores without reading it.
std::string tableUrl(const std::string& url) {
    const std::string scheme = "sap://";
    return url.compare(0, scheme.size() + 1, scheme + "[") == 0 ? "sap:" + url.substr(scheme.size()) : url;
}

}  // namespace

EmulatorSap::EmulatorSap(Emulator& emulator, const EmulatorSapOptions& options)
    : m_emulator(emulator),
      m_directory([this](const SapChange& change) { onChange(change); },
                  std::chrono::duration_cast<Clock::duration>(Seconds(options.timeout))) {
    IpAddress interfaceAddress;
    if (!options.interfaceAddress.empty() && !interfaceAddress.fromString(options.interfaceAddress)) {
        throw std::invalid_argument("not an IPv4 interface address: " + options.interfaceAddress);
    }
    for (const auto& text : options.listen) {
        const UdpEndpoint local = endpointOf(text);
        UdpSocket socket = UdpSocket::listen(local, interfaceAddress);
        m_receive_buffer = socket.setReceiveBuffer(kReceiveBuffer);
        const UdpEndpoint bound = local.isMulticast() ? local : socket.localEndpoint();
        m_listeners.push_back({std::move(socket), bound.toString(), bound.port});
        Logger::log(4, "avmng-emulator: listening for SAP on %s", bound.toString().c_str());
    }
    for (const auto& text : options.announce) {
        m_destinations.push_back(UdpSocket::connect(endpointOf(text), options.ttl, interfaceAddress));
        m_destination_names.push_back(text);
    }
    if (!m_destinations.empty()) {
        SapAnnouncer::Options announcing;
        // The address the route to the first destination leaves from.
        announcing.origin = SapOrigin::ipv4(m_destinations.front().localEndpoint().address);
        announcing.interval = std::chrono::duration_cast<Clock::duration>(Seconds(options.interval));
        m_announcer.emplace(announcing, [this](uint64_t, SapMessageType type, const std::string& packet) {
            sendAnnouncement(type, packet);
        });
        Logger::log(4, "avmng-emulator: announcing senders over SAP to %zu destination(s) as %s",
                    m_destinations.size(), announcing.origin.toString().c_str());
    }
    if (options.enabled()) {
        m_buffer.resize(64 * 1024);
        m_emulator.addDebugSection("sap", [this] { return status(); });
    }
}

void EmulatorSap::attach(RequestServer& server) {
    for (Listener& listener : m_listeners) {
        server.watch(listener.socket.fd(), [this, &listener] { drain(listener); });
    }
    server.addTimer([this] { return nextDue(); }, [this](Clock::time_point now) { tick(now); });
}

void EmulatorSap::drain(Listener& listener) {
    UdpEndpoint from;
    for (int i = 0; i < kDrainLimit; ++i) {
        const long size = listener.socket.tryReceive(m_buffer.data(), m_buffer.size(), from);
        if (size < 0) {
            return;
        }
        receive(m_buffer.data(), static_cast<size_t>(size), listener.port, from, Clock::now());
    }
}

void EmulatorSap::receive(const uint8_t* data, size_t size, uint16_t port, const UdpEndpoint& from,
                          Clock::time_point now) {
    ++m_packets;
    const auto what = [&] { return "packet of " + std::to_string(size) + " bytes from " + from.toString(); };
    SapPacket packet;
    const SapError error = decodeSapQuietly(data, size, packet);
    if (error != SapError::None) {
        refuse(sapErrorWord(error), what(), "", now);
        return;
    }
    SapSdpFields fields;
    if (packet.type == SapMessageType::Announce && !readSapSdpFields(packet.sdp, fields)) {
        refuse("no-session-id", what(), "its SDP has no o= line", now);
        return;
    }
    ++(packet.type == SapMessageType::Announce ? m_announcements : m_deletions);
    m_now = now;
    m_directory.feed(packet, port, now);
}

void EmulatorSap::onChange(const SapChange& change) {
    // The directory's session (origin and o= id) is the source's key: unlike the URL, it
    // tells two sessions of one host apart when their hashes collide.
    const std::string origin = change.origin.toString();
    const std::string key = "sap " + origin + " " + change.sessionId;
    const auto heard = m_heard.find(key);
    const bool known = heard != m_heard.end();
    const uint64_t previousId = known ? heard->second : 0;
    if (change.kind == SapChange::Deleted || change.kind == SapChange::Expired) {
        if (known) {
            m_emulator.withdrawAdvertised(previousId, key);
            m_heard.erase(heard);
        }
        return;
    }
    uint64_t id = 0;
    std::string why;
    const auto result = m_emulator.advertise({{"sap", origin, key}, tableUrl(change.url), change.sdp}, id, why);
    if (result == Emulator::Advertised::Refused) {
        // A session whose new SDP is refused is no longer advertised.
        if (known) {
            m_emulator.withdrawAdvertised(previousId, key);
            m_heard.erase(heard);
        }
        refuse("sdp-refused", "announcement " + change.url, why, m_now);
        return;
    }
    if (known && previousId != id) {
        // The parser may read another o= line than the directory: the old id goes.
        m_emulator.withdrawAdvertised(previousId, key);
    }
    m_heard[key] = id;
    if (result == Emulator::Advertised::Waiting) {
        const AdvertisedSource* holder = m_emulator.advertisedClaims().source(id);
        refuse("session-id-taken", "announcement " + change.url,
               "session id " + std::to_string(id) + " is advertised by " +
                   (holder != nullptr ? holder->from : std::string("another source")) + "; it waits",
               m_now);
    }
    Logger::log(6, "SAP: session %llu of %s %s", static_cast<unsigned long long>(id), change.url.c_str(),
                result == Emulator::Advertised::Stored ? "stored" : "waiting");
}

void EmulatorSap::syncSenders(Clock::time_point now) {
    if (!m_announcer) {
        return;
    }
    const auto& sessions = m_emulator.sessions();
    const auto announced = [](const EmulatedSession& s) {
        return s.kind == EmulatedSession::SENDER && !s.sdp.empty();
    };
    for (auto it = m_announced.begin(); it != m_announced.end();) {
        const auto session = sessions.find(*it);
        if (session == sessions.end() || !announced(session->second)) {
            m_announcer->withdraw(*it);
            it = m_announced.erase(it);
        } else {
            ++it;
        }
    }
    for (const auto& [id, session] : sessions) {
        if (announced(session)) {
            m_announcer->announce(id, session.sdp, now);
            m_announced.insert(id);
        }
    }
}

void EmulatorSap::tick(Clock::time_point now) {
    m_now = now;
    m_directory.expire(now);
    if (m_announcer) {
        m_announcer->setHeardSessions(m_directory.size());
        m_announcer->poll(now);
    }
}

std::optional<EmulatorSap::Clock::time_point> EmulatorSap::nextDue() const {
    std::optional<Clock::time_point> due = m_directory.nextExpiry();
    if (m_announcer) {
        const auto announce = m_announcer->nextDue();
        if (announce && (!due || *announce < *due)) {
            due = announce;
        }
    }
    return due;
}

void EmulatorSap::withdrawAll() {
    if (m_announcer) {
        m_announcer->withdrawAll();
        m_announced.clear();
    }
}

void EmulatorSap::sendAnnouncement(SapMessageType type, const std::string& packet) {
    for (size_t i = 0; i < m_destinations.size(); ++i) {
        if (m_destinations[i].send(packet)) {
            ++m_sent;
            continue;
        }
        ++m_send_failures;
        Logger::log(m_send_failures == 1 ? 2 : 6, "SAP: %s to %s failed: %s",
                    type == SapMessageType::Delete ? "deletion" : "announcement", m_destination_names[i].c_str(),
                    std::strerror(errno));
    }
}

void EmulatorSap::refuse(const std::string& reason, const std::string& subject, const std::string& detail,
                         Clock::time_point now) {
    Refusals& r = m_refused[reason];
    ++r.count;
    if (r.count > 1 && now - r.lastLogged < kLogEvery) {
        ++r.unlogged;
        return;
    }
    const std::string more =
        r.unlogged == 0 ? std::string() : "; " + std::to_string(r.unlogged) + " more since the last line";
    Logger::log(2, "SAP: %s refused (%s)%s%s%s", subject.c_str(), reason.c_str(), detail.empty() ? "" : ": ",
                detail.c_str(), more.c_str());
    r.unlogged = 0;
    r.lastLogged = now;
}

Json::Value EmulatorSap::status() const {
    Json::Value s(Json::objectValue);
    s["packets"] = Json::UInt64(m_packets);
    s["announcements"] = Json::UInt64(m_announcements);
    s["deletions"] = Json::UInt64(m_deletions);
    s["refused"] = Json::Value(Json::objectValue);
    for (const auto& [reason, r] : m_refused) {
        s["refused"][reason] = Json::UInt64(r.count);
    }
    s["heard-sessions"] = Json::UInt64(m_directory.size());
    s["waiting"] = Json::UInt64(m_emulator.advertisedClaims().waiting());
    s["listening"] = Json::Value(Json::arrayValue);
    for (const Listener& listener : m_listeners) {
        s["listening"].append(listener.address);
    }
    s["receive-buffer"] = m_receive_buffer;
    s["announcing"] = Json::Value(Json::arrayValue);
    for (const auto& name : m_destination_names) {
        s["announcing"].append(name);
    }
    s["announced-sessions"] = Json::UInt64(m_announcer ? m_announcer->size() : 0);
    s["sent"] = Json::UInt64(m_sent);
    s["send-failures"] = Json::UInt64(m_send_failures);
    return s;
}

}  // namespace pimav::detail
