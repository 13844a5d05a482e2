#include "platform/LinkMonitor.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>

namespace pimav::detail {

namespace {

constexpr int kWatchedEvents = ZMQ_EVENT_HANDSHAKE_SUCCEEDED | ZMQ_EVENT_HANDSHAKE_FAILED_NO_DETAIL |
                               ZMQ_EVENT_HANDSHAKE_FAILED_PROTOCOL | ZMQ_EVENT_HANDSHAKE_FAILED_AUTH |
                               ZMQ_EVENT_DISCONNECTED | ZMQ_EVENT_CONNECT_RETRIED;

// inproc names are per context; a process-wide counter keeps them apart.
std::string monitorEndpoint() {
    static std::atomic<uint64_t> next{0};
    return "inproc://pimav-client-monitor-" + std::to_string(next.fetch_add(1));
}

}  // namespace

LinkMonitor::LinkMonitor(zmq::context_t& context, zmq::socket_t& socket)
    : m_watched(socket), m_events(context, zmq::socket_type::pair) {
    const std::string endpoint = monitorEndpoint();
    if (zmq_socket_monitor(m_watched.handle(), endpoint.c_str(), kWatchedEvents) != 0) {
        throw zmq::error_t();
    }
    m_events.set(zmq::sockopt::linger, 0);
    m_events.connect(endpoint);
}

LinkMonitor::~LinkMonitor() {
    zmq_socket_monitor(m_watched.handle(), nullptr, 0);
}

zmq::pollitem_t LinkMonitor::pollItem() {
    return zmq::pollitem_t{m_events.handle(), 0, ZMQ_POLLIN, 0};
}

void LinkMonitor::readEvents() {
    // Each event is two frames: 2 bytes event id and 4 bytes value, then the endpoint.
    zmq::message_t head;
    zmq::message_t endpoint;
    while (m_events.recv(head, zmq::recv_flags::dontwait)) {
        if (head.more()) {
            (void)m_events.recv(endpoint, zmq::recv_flags::dontwait);
        }
        uint16_t event = 0;
        uint32_t value = 0;
        if (head.size() < sizeof event + sizeof value) {
            continue;
        }
        std::memcpy(&event, head.data(), sizeof event);
        std::memcpy(&value, static_cast<const char*>(head.data()) + sizeof event, sizeof value);
        switch (event) {
            case ZMQ_EVENT_HANDSHAKE_SUCCEEDED:
                m_established = true;
                m_key_refusal = 0;
                break;
            case ZMQ_EVENT_HANDSHAKE_FAILED_AUTH:
                m_key_refusal = static_cast<int>(value);
                ++m_handshake_failures;
                break;
            case ZMQ_EVENT_HANDSHAKE_FAILED_NO_DETAIL:
            case ZMQ_EVENT_HANDSHAKE_FAILED_PROTOCOL:
                ++m_handshake_failures;
                break;
            case ZMQ_EVENT_DISCONNECTED:
                if (m_established) {
                    m_dropped_at = std::chrono::steady_clock::now();
                }
                m_established = false;
                break;
            case ZMQ_EVENT_CONNECT_RETRIED:
                m_dropped_at.reset();
                break;
            default:
                break;
        }
    }
}

void LinkMonitor::beginExchange() {
    readEvents();
    m_dropped_at.reset();
    m_handshake_failures = 0;
}

std::optional<std::chrono::steady_clock::time_point> LinkMonitor::droppedByClientAt() const {
    if (!m_dropped_at) {
        return std::nullopt;
    }
    return *m_dropped_at + kReconnectGrace;
}

}  // namespace pimav::detail
