#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <zmq.hpp>

#include "platform/SocketMonitor.h"

namespace pimav::detail {

// Raises the process's soft limit of open descriptors to its hard limit; returns the
// soft limit now in force.
size_t raiseDescriptorLimit();

// Keeps the TCP connections of the daemon's socket below the descriptor limit.
//
// libzmq accepts every connection it is offered. Once the process is out of descriptors,
// its accept fails, the listening socket stays readable, and the I/O thread retries at
// once, forever: a busy loop that also starves new clients. The guard follows the
// socket's connection events (a socket monitor, set up before the socket binds) and the
// connections that requests arrive on. When the connections pass `maxConnections`, or an
// accept fails, it shuts down the connections whose last request (or connection, when
// they sent none) is the oldest; libzmq then closes them.
class ConnectionGuard {
public:
    // Connections beyond this number are shed even when descriptors are left.
    static constexpr size_t kMaxConnections = 4096;
    // Descriptors kept for everything else: files, the context's own, other sockets.
    static constexpr size_t kReservedDescriptors = 64;

    // The connection limit for the process's current descriptor limit.
    static size_t connectionLimit();

    // Set it up before the socket binds. Throws zmq::error_t when the monitor cannot be set up.
    ConnectionGuard(zmq::context_t& context, zmq::socket_t& socket, size_t maxConnections);

    zmq::pollitem_t pollItem();
    // Reads the waiting events and sheds connections when needed.
    void readEvents();
    // A request arrived on the connection with descriptor `fd`.
    void noteActivity(int fd) {
        if (auto it = m_connections.find(fd); it != m_connections.end()) {
            it->second = ++m_clock;
        }
    }
    size_t connections() const { return m_connections.size(); }

private:
    // Shuts down the longest idle connections until `target` remain (shed ones included
    // until libzmq reports them closed).
    void shed(size_t target);

    SocketMonitor m_monitor;
    size_t m_max_connections;
    // Open connections by descriptor: the tick of their last request (or of their
    // connection), or the mark of a connection shut down and not yet closed.
    std::unordered_map<int, uint64_t> m_connections;
    uint64_t m_clock = 0;
};

}  // namespace pimav::detail
