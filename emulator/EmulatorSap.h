#pragma once

// SAP (RFC 2974) in the emulator: it learns the sessions announced on the addresses it
// listens to (the advertised-sessions table holds them as sap://ORIGIN:PORT/HASH beside the
// advertise folder's files), and announces the SDP of every sender session.
//
// Everything runs on the request loop's thread: the listening sockets and the timers of
// expiry and announcement are polled by RequestServer; syncSenders() runs after every request.
// Refused packets are counted per reason and logged at most once per reason every
// kLogEvery, so a busy network cannot flood the log; command 48 shows the counters.

#include <json/json.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "Emulator.h"
#include "sap/SapAnnouncer.h"
#include "sap/SapDirectory.h"
#include "sap/UdpSocket.h"

namespace CLI {
class App;
}

namespace pimav::detail {

struct EmulatorSapOptions {
    std::vector<std::string> listen;    // ADDR:PORT; a group is joined on `interfaceAddress`
    std::vector<std::string> announce;  // ADDR:PORT
    std::string interfaceAddress;       // IPv4 address of the interface multicast uses
    double timeout = 0;                 // seconds; 0: RFC 2974's rule
    double interval = 0;                // seconds; 0: RFC 2974's bandwidth rule
    int ttl = UdpSocket::kDefaultTtl;

    bool enabled() const { return !listen.empty() || !announce.empty(); }
};

// The --sap-* options of avmng-emulator.
void addSapOptions(CLI::App& app, EmulatorSapOptions& options);

class EmulatorSap {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kLogEvery{10};
    // Asked of the kernel for each listening socket: a burst waits there while a long
    // request is answered.
    static constexpr int kReceiveBuffer = 4 * 1024 * 1024;
    // Datagrams read per wakeup at most, so that a flood cannot hold requests back.
    static constexpr int kDrainLimit = 1024;

    // Opens the sockets; throws std::system_error when one cannot be set up, and
    // std::invalid_argument for an address that cannot be read. Adds the "sap" section of
    // command 48 when SAP is in use: the emulator must not outlive this object then.
    EmulatorSap(Emulator& emulator, const EmulatorSapOptions& options);
    EmulatorSap(const EmulatorSap&) = delete;
    EmulatorSap& operator=(const EmulatorSap&) = delete;

    // Has the loop poll the listening sockets and wake for expiries and announcements.
    void attach(RequestServer& server);

    // One datagram heard on UDP `port` from `from`.
    void receive(const uint8_t* data, size_t size, uint16_t port, const UdpEndpoint& from, Clock::time_point now);
    // Announces what changed among the emulator's sender sessions: a new or changed SDP at
    // once, a deletion for a sender that is gone.
    void syncSenders(Clock::time_point now);
    // Removes the sessions whose time is up, sends the announcements that are due.
    void tick(Clock::time_point now);
    std::optional<Clock::time_point> nextDue() const;
    // A deletion for every sender (clean shutdown).
    void withdrawAll();

    // Counters, sockets and sessions (the "sap" section of command 48).
    Json::Value status() const;

private:
    struct Listener {
        UdpSocket socket;
        std::string address;  // as bound (a group as given)
        uint16_t port;
    };

    void drain(Listener& listener);
    void onChange(const SapChange& change);
    void sendAnnouncement(SapMessageType type, const std::string& packet);
    // Counts a refusal of `reason` and logs it ("SAP: SUBJECT refused (REASON): DETAIL"), at
    // most once per reason every kLogEvery; the line then tells how many went unlogged.
    void refuse(const std::string& reason, const std::string& subject, const std::string& detail,
                Clock::time_point now);

    Emulator& m_emulator;
    std::vector<Listener> m_listeners;
    std::vector<UdpSocket> m_destinations;
    std::vector<std::string> m_destination_names;
    std::vector<uint8_t> m_buffer;
    SapDirectory m_directory;
    std::optional<SapAnnouncer> m_announcer;
    std::set<uint64_t> m_announced;
    // The session id of every session heard, by its key as a source.
    std::unordered_map<std::string, uint64_t> m_heard;
    // The time of the packet being fed, or of the expiry, while the directory reports a change.
    Clock::time_point m_now;

    uint64_t m_packets = 0;
    uint64_t m_announcements = 0;
    uint64_t m_deletions = 0;
    uint64_t m_sent = 0;
    uint64_t m_send_failures = 0;
    int m_receive_buffer = 0;
    struct Refusals {
        uint64_t count = 0;
        uint64_t unlogged = 0;
        Clock::time_point lastLogged;
    };
    std::map<std::string, Refusals> m_refused;
};

}  // namespace pimav::detail
