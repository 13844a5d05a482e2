#include "common/ConnectionGuard.h"

#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <vector>

#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

namespace {

constexpr uint64_t kShed = std::numeric_limits<uint64_t>::max();
constexpr int kWatchedEvents = ZMQ_EVENT_ACCEPTED | ZMQ_EVENT_ACCEPT_FAILED | ZMQ_EVENT_DISCONNECTED;

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
    : m_monitor(context, socket, kWatchedEvents), m_max_connections(maxConnections) {}

zmq::pollitem_t ConnectionGuard::pollItem() {
    return m_monitor.pollItem();
}

void ConnectionGuard::readEvents() {
    bool acceptFailed = false;
    while (const auto event = m_monitor.next()) {
        const int fd = static_cast<int>(event->value);
        if (event->id == ZMQ_EVENT_ACCEPTED) {
            m_connections[fd] = ++m_clock;  // a new connection counts as just active
        } else if (event->id == ZMQ_EVENT_DISCONNECTED) {
            m_connections.erase(fd);
        } else if (event->id == ZMQ_EVENT_ACCEPT_FAILED) {
            acceptFailed = acceptFailed || event->value == EMFILE || event->value == ENFILE;
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
