#include "platform/SocketMonitor.h"

#include <atomic>
#include <cstring>
#include <string>

namespace pimav::detail {

namespace {

// inproc names are per context; a process-wide counter keeps them apart.
std::string monitorEndpoint() {
    static std::atomic<uint64_t> next{0};
    return "inproc://pimav-socket-monitor-" + std::to_string(next.fetch_add(1));
}

}  // namespace

SocketMonitor::SocketMonitor(zmq::context_t& context, zmq::socket_t& socket, int events)
    : m_watched(socket), m_events(context, zmq::socket_type::pair) {
    const std::string endpoint = monitorEndpoint();
    if (zmq_socket_monitor(m_watched.handle(), endpoint.c_str(), events) != 0) {
        throw zmq::error_t();
    }
    m_events.set(zmq::sockopt::linger, 0);
    m_events.connect(endpoint);
}

SocketMonitor::~SocketMonitor() {
    zmq_socket_monitor(m_watched.handle(), nullptr, 0);
}

zmq::pollitem_t SocketMonitor::pollItem() {
    return zmq::pollitem_t{m_events.handle(), 0, ZMQ_POLLIN, 0};
}

std::optional<SocketMonitor::Event> SocketMonitor::next() {
    // Each event is two frames: 2 bytes event id and 4 bytes value, then the endpoint.
    zmq::message_t head;
    zmq::message_t endpoint;
    while (m_events.recv(head, zmq::recv_flags::dontwait)) {
        if (head.more()) {
            (void)m_events.recv(endpoint, zmq::recv_flags::dontwait);
        }
        Event event{};
        if (head.size() >= sizeof event.id + sizeof event.value) {
            std::memcpy(&event.id, head.data(), sizeof event.id);
            std::memcpy(&event.value, static_cast<const char*>(head.data()) + sizeof event.id, sizeof event.value);
            return event;
        }
    }
    return std::nullopt;
}

}  // namespace pimav::detail
