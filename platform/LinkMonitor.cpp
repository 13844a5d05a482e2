#include "platform/LinkMonitor.h"

namespace pimav::detail {

namespace {

constexpr int kWatchedEvents = ZMQ_EVENT_HANDSHAKE_SUCCEEDED | ZMQ_EVENT_HANDSHAKE_FAILED_NO_DETAIL |
                               ZMQ_EVENT_HANDSHAKE_FAILED_PROTOCOL | ZMQ_EVENT_HANDSHAKE_FAILED_AUTH |
                               ZMQ_EVENT_DISCONNECTED | ZMQ_EVENT_CONNECT_RETRIED;

}  // namespace

LinkMonitor::LinkMonitor(zmq::context_t& context, zmq::socket_t& socket) : m_monitor(context, socket, kWatchedEvents) {}

zmq::pollitem_t LinkMonitor::pollItem() {
    return m_monitor.pollItem();
}

void LinkMonitor::readEvents() {
    while (const auto event = m_monitor.next()) {
        switch (event->id) {
            case ZMQ_EVENT_HANDSHAKE_SUCCEEDED:
                m_established = true;
                m_key_refusal = 0;
                break;
            case ZMQ_EVENT_HANDSHAKE_FAILED_AUTH:
                m_key_refusal = static_cast<int>(event->value);
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
