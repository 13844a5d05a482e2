#pragma once

#include <cstdint>
#include <optional>
#include <zmq.hpp>

namespace pimav::detail {

// A ZeroMQ socket monitor: the events of a socket, read from a PAIR socket of its own.
class SocketMonitor {
public:
    struct Event {
        uint16_t id;     // ZMQ_EVENT_...
        uint32_t value;  // the event's value: a descriptor, an errno, a status code
    };

    // Starts monitoring `events` (a mask of ZMQ_EVENT_... bits) of `socket`; set it up before
    // the socket binds or connects, so that no event is missed. Throws zmq::error_t when the
    // monitor cannot be set up.
    SocketMonitor(zmq::context_t& context, zmq::socket_t& socket, int events);
    ~SocketMonitor();
    SocketMonitor(const SocketMonitor&) = delete;
    SocketMonitor& operator=(const SocketMonitor&) = delete;

    // Poll entry that becomes readable when events are waiting.
    zmq::pollitem_t pollItem();
    // The next waiting event; none when no event waits.
    std::optional<Event> next();

private:
    zmq::socket_t& m_watched;
    zmq::socket_t m_events;
};

}  // namespace pimav::detail
