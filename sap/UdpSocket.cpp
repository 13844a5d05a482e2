#include "sap/UdpSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace pimav::detail {

namespace {

sockaddr_in socketAddress(const UdpEndpoint& endpoint) {
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(endpoint.address.get());
    addr.sin_port = htons(endpoint.port);
    return addr;
}

UdpEndpoint endpointOf(const sockaddr_in& addr) {
    UdpEndpoint endpoint;
    endpoint.address.set(ntohl(addr.sin_addr.s_addr));
    endpoint.port = ntohs(addr.sin_port);
    return endpoint;
}

[[noreturn]] void fail(const std::string& what, const UdpEndpoint& endpoint) {
    throw std::system_error(errno, std::generic_category(), what + " " + endpoint.toString());
}

template <typename T>
void setOption(int fd, int level, int name, const T& value, const char* what, const UdpEndpoint& endpoint) {
    if (::setsockopt(fd, level, name, &value, sizeof value) != 0) {
        fail(what, endpoint);
    }
}

}  // namespace

bool UdpEndpoint::parse(const std::string& text, UdpEndpoint& out) {
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon + 1 == text.size() || text.size() - colon > 6) {
        return false;
    }
    UdpEndpoint parsed;
    if (!parsed.address.fromString(text.substr(0, colon))) {
        return false;
    }
    unsigned long port = 0;
    for (size_t i = colon + 1; i < text.size(); ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return false;
        }
        port = port * 10 + static_cast<unsigned long>(text[i] - '0');
    }
    if (port > 65535) {
        return false;
    }
    parsed.port = static_cast<uint16_t>(port);
    out = parsed;
    return true;
}

std::string UdpEndpoint::toString() const {
    return address.toString() + ":" + std::to_string(port);
}

UdpSocket UdpSocket::listen(const UdpEndpoint& local, IpAddress interfaceAddress) {
    UdpSocket socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (socket.m_fd < 0) {
        fail("cannot open a UDP socket for", local);
    }
    if (local.isMulticast()) {
        setOption(socket.m_fd, SOL_SOCKET, SO_REUSEADDR, 1, "cannot share", local);
    }
    const sockaddr_in addr = socketAddress(local);
    if (::bind(socket.m_fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) != 0) {
        fail("cannot bind", local);
    }
    if (local.isMulticast()) {
        ip_mreq membership{};
        membership.imr_multiaddr.s_addr = htonl(local.address.get());
        membership.imr_interface.s_addr = htonl(interfaceAddress.get());
        setOption(socket.m_fd, IPPROTO_IP, IP_ADD_MEMBERSHIP, membership, "cannot join", local);
    }
    return socket;
}

UdpSocket UdpSocket::connect(const UdpEndpoint& destination, int ttl, IpAddress interfaceAddress) {
    UdpSocket socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (socket.m_fd < 0) {
        fail("cannot open a UDP socket for", destination);
    }
    setOption(socket.m_fd, IPPROTO_IP, IP_MULTICAST_TTL, ttl, "cannot set the TTL for", destination);
    if (interfaceAddress.isSet()) {
        in_addr outgoing{};
        outgoing.s_addr = htonl(interfaceAddress.get());
        setOption(socket.m_fd, IPPROTO_IP, IP_MULTICAST_IF, outgoing, "cannot choose the interface for",
                  destination);
    }
    const sockaddr_in addr = socketAddress(destination);
    if (::connect(socket.m_fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) != 0) {
        fail("cannot reach", destination);
    }
    return socket;
}

UdpSocket::UdpSocket(UdpSocket&& other) noexcept : m_fd(other.m_fd) {
    other.m_fd = -1;
}

UdpSocket& UdpSocket::operator=(UdpSocket&& other) noexcept {
    if (this != &other) {
        close();
        m_fd = other.m_fd;
        other.m_fd = -1;
    }
    return *this;
}

UdpSocket::~UdpSocket() {
    close();
}

void UdpSocket::close() {
    if (m_fd >= 0) {
        ::close(m_fd);
        m_fd = -1;
    }
}

UdpEndpoint UdpSocket::localEndpoint() const {
    sockaddr_in addr{};
    socklen_t length = sizeof addr;
    if (::getsockname(m_fd, reinterpret_cast<sockaddr*>(&addr), &length) != 0) {
        return UdpEndpoint();
    }
    return endpointOf(addr);
}

bool UdpSocket::send(const std::string& bytes) {
    return ::send(m_fd, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size());
}

bool UdpSocket::receive(std::string& bytes, UdpEndpoint& from, int timeoutMs) {
    pollfd ready{m_fd, POLLIN, 0};
    if (::poll(&ready, 1, timeoutMs) <= 0) {
        return false;
    }
    // The largest UDP payload over IPv4.
    bytes.resize(65507);
    const long n = tryReceive(reinterpret_cast<uint8_t*>(&bytes[0]), bytes.size(), from);
    bytes.resize(n < 0 ? 0 : static_cast<size_t>(n));
    return n >= 0;
}

long UdpSocket::tryReceive(uint8_t* buffer, size_t capacity, UdpEndpoint& from) {
    sockaddr_in addr{};
    socklen_t length = sizeof addr;
    const ssize_t n =
        ::recvfrom(m_fd, buffer, capacity, MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&addr), &length);
    if (n < 0) {
        return -1;
    }
    from = endpointOf(addr);
    return static_cast<long>(n);
}

int UdpSocket::setReceiveBuffer(int bytes) {
    ::setsockopt(m_fd, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
    int granted = 0;
    socklen_t length = sizeof granted;
    ::getsockopt(m_fd, SOL_SOCKET, SO_RCVBUF, &granted, &length);
    return granted;
}

}  // namespace pimav::detail
