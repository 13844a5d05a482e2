#pragma once

#include <chrono>
#include <optional>
#include <zmq.hpp>

#include "platform/SocketMonitor.h"

namespace pimav::detail {

// Follows the connection events of a client's REQ socket (a ZeroMQ socket monitor) to
// tell why a reply is not coming.
//
// When a reply frame exceeds ZMQ_MAXMSGSIZE (or breaks the ZeroMQ framing), libzmq drops
// the connection on the client's side and does not reconnect: the socket reports
// "disconnected" and nothing more, and the reply never becomes readable. When the peer
// goes away instead, libzmq schedules a reconnect at once ("connect retried"). So an
// established link that is dropped without a reconnect within kReconnectGrace was
// dropped by this client. A daemon whose authentication refuses the client's CURVE key
// answers the handshake with an error carrying the ZAP status code, which libzmq reports
// as a failed authentication with that code.
class LinkMonitor {
public:
    // Generous against a busy machine: libzmq reports the reconnect within microseconds.
    static constexpr std::chrono::milliseconds kReconnectGrace{250};

    // Starts monitoring `socket` (before it connects, so that no event is missed).
    // Throws zmq::error_t when the monitor cannot be set up.
    LinkMonitor(zmq::context_t& context, zmq::socket_t& socket);
    LinkMonitor(const LinkMonitor&) = delete;
    LinkMonitor& operator=(const LinkMonitor&) = delete;

    // Poll entry that becomes readable when events are waiting.
    zmq::pollitem_t pollItem();
    // Reads every waiting event.
    void readEvents();
    // Reads the waiting events and forgets what happened before this exchange.
    void beginExchange();

    // The moment from which the link counts as dropped by this client, once an
    // established link was dropped during this exchange and no reconnect followed.
    std::optional<std::chrono::steady_clock::time_point> droppedByClientAt() const;
    // Failed handshakes during this exchange (a wrong CURVE server key, a refused key).
    int handshakeFailures() const { return m_handshake_failures; }
    // The status code (300, 400, 500) of the daemon's authentication (ZAP) when it refused
    // the last handshake, 0 when none was refused since the last one that succeeded.
    int keyRefusal() const { return m_key_refusal; }

private:
    SocketMonitor m_monitor;
    bool m_established = false;
    std::optional<std::chrono::steady_clock::time_point> m_dropped_at;
    int m_handshake_failures = 0;
    int m_key_refusal = 0;
};

}  // namespace pimav::detail
