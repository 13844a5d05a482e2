#include "common/ConnectionGuard.h"

#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

namespace {

constexpr uint64_t kShed = std::numeric_limits<uint64_t>::max();
constexpr int kWatchedEvents = ZMQ_EVENT_ACCEPTED | ZMQ_EVENT_ACCEPT_FAILED | ZMQ_EVENT_DISCONNECTED;

std::string monitorEndpoint() {
    static std::atomic<uint64_t> next{0};
    return "inproc://pimav-connection-guard-" + std::to_string(next.fetch_add(1));
}

}  // namespace

size_t raiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return 0;
    }
    if (limit.rlim_cur != limit.rlim_max) {
        const rlim_t before = limit.rlim_cur;
        limit.rlim_cur = limit.rlim_max;
        if (::setrlimit(RLIMIT_NOFILE, &limit) == 0) {
            Logger::log(5, "emulator: descriptor limit raised from %llu to %llu", static_cast<unsigned long long>(before),
                        static_cast<unsigned long long>(limit.rlim_max));
        } else {
            limit.rlim_cur = before;
        }
    }
    return limit.rlim_cur == RLIM_INFINITY ? std::numeric_limits<size_t>::max() : static_cast<size_t>(limit.rlim_cur);
}

size_t ConnectionGuard::connectionLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return kMaxConnections;
    }
    const auto descriptors = static_cast<size_t>(limit.rlim_cur);
    const size_t usable = descriptors > 2 * kReservedDescriptors ? descriptors - kReservedDescriptors : descriptors / 2;
    return std::min(kMaxConnections, std::max<size_t>(usable, 1));
}

ConnectionGuard::ConnectionGuard(zmq::context_t& context, zmq::socket_t& socket, size_t maxConnections)
    : m_watched(socket), m_events(context, zmq::socket_type::pair), m_max_connections(maxConnections) {
    const std::string endpoint = monitorEndpoint();
    if (zmq_socket_monitor(m_watched.handle(), endpoint.c_str(), kWatchedEvents) != 0) {
        throw zmq::error_t();
    }
    m_events.set(zmq::sockopt::linger, 0);
    m_events.connect(endpoint);
}

ConnectionGuard::~ConnectionGuard() {
    zmq_socket_monitor(m_watched.handle(), nullptr, 0);
}

zmq::pollitem_t ConnectionGuard::pollItem() {
    return zmq::pollitem_t{m_events.handle(), 0, ZMQ_POLLIN, 0};
}

void ConnectionGuard::readEvents() {
    // Each event is two frames: 2 bytes event id and 4 bytes value, then the endpoint.
    zmq::message_t head;
    zmq::message_t endpoint;
    bool acceptFailed = false;
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
        const int fd = static_cast<int>(value);
        if (event == ZMQ_EVENT_ACCEPTED) {
            m_connections[fd] = ++m_clock;  // a new connection counts as just active
        } else if (event == ZMQ_EVENT_DISCONNECTED) {
            m_connections.erase(fd);
        } else if (event == ZMQ_EVENT_ACCEPT_FAILED) {
            acceptFailed = acceptFailed || value == EMFILE || value == ENFILE;
        }
    }
    const size_t open = m_connections.size();
    // Shed a sixteenth at a time, so that a stream of new connections is not shed one by one.
    const size_t step = std::max<size_t>(m_max_connections / 16, 1);
    if (acceptFailed) {
        Logger::log(2, "emulator: out of descriptors with %zu connections open: the idlest are closed", open);
        shed(open > step ? open - step : 0);
    } else if (open > m_max_connections) {
        Logger::log(4, "emulator: %zu connections, more than %zu: the idlest are closed", open, m_max_connections);
        shed(m_max_connections - std::min(step, m_max_connections));
    }
}

void ConnectionGuard::shed(size_t target) {
    std::vector<std::pair<uint64_t, int>> idlest;
    for (const auto& [fd, tick] : m_connections) {
        if (tick != kShed) {
            idlest.emplace_back(tick, fd);
        }
    }
    if (idlest.size() <= target) {
        return;
    }
    const size_t count = idlest.size() - target;
    std::partial_sort(idlest.begin(), idlest.begin() + static_cast<std::ptrdiff_t>(count), idlest.end());
    for (size_t i = 0; i < count; ++i) {
        // libzmq owns the descriptor: shutting it down (never closing it) makes libzmq read
        // the end of the stream and close the connection itself. The events were read just
        // before, so the descriptor still belongs to the connection they announced.
        ::shutdown(idlest[i].second, SHUT_RDWR);
        m_connections[idlest[i].second] = kShed;
    }
}

}  // namespace pimav::detail
