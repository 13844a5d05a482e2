#pragma once

// IPv4 UDP sockets for SAP: a listener bound to ADDR:PORT (joining ADDR when it is a
// multicast group) and a sender connected to its destination.

#include <cstdint>
#include <string>

#include "pimAvMngApi/model/IpAddress.h"

namespace pimav::detail {

struct UdpEndpoint {
    IpAddress address;
    uint16_t port = 0;

    // "A.B.C.D:PORT"; false (and `out` unchanged) for anything else.
    static bool parse(const std::string& text, UdpEndpoint& out);
    std::string toString() const;
    bool isMulticast() const { return (address.get() >> 28) == 0xe; }
    bool operator==(const UdpEndpoint& other) const { return address == other.address && port == other.port; }
};

// Owns one socket descriptor; move-only. Setup failures throw std::system_error with a
// message naming the address.
class UdpSocket {
public:
    static constexpr int kDefaultTtl = 15;

    // Receives datagrams sent to `local`. A unicast or loopback address is bound as it is (port
    // 0 picks a free one). A multicast group is bound with address reuse, so that several
    // listeners share it, and joined on the interface with address `interfaceAddress`
    // (unset: the one the routing table picks).
    static UdpSocket listen(const UdpEndpoint& local, IpAddress interfaceAddress = IpAddress());
    // Sends to `destination` from a free port. A multicast destination is reached through
    // the interface with address `interfaceAddress` (unset: the routing table's choice) with
    // `ttl` hops.
    static UdpSocket connect(const UdpEndpoint& destination, int ttl = kDefaultTtl,
                             IpAddress interfaceAddress = IpAddress());

    UdpSocket(UdpSocket&& other) noexcept;
    UdpSocket& operator=(UdpSocket&& other) noexcept;
    UdpSocket(const UdpSocket&) = delete;
    UdpSocket& operator=(const UdpSocket&) = delete;
    ~UdpSocket();

    // For poll loops.
    int fd() const { return m_fd; }
    // The bound address and port (for a sender: the source address the route chose).
    UdpEndpoint localEndpoint() const;

    // Sends one datagram on a connected socket; false (with errno set) when the kernel refuses it.
    bool send(const std::string& bytes);
    // Waits up to `timeoutMs` (negative: without limit) for one datagram. False on timeout
    // or when interrupted by a signal.
    bool receive(std::string& bytes, UdpEndpoint& from, int timeoutMs);
    // Reads one datagram that is already waiting into `buffer` (a longer one is cut to
    // `capacity`): its size, or -1 when none is waiting. Never blocks, so a poll loop drains
    // a socket with it.
    long tryReceive(uint8_t* buffer, size_t capacity, UdpEndpoint& from);
    // Asks for a receive buffer of `bytes`, so that bursts wait in the kernel rather than
    // being dropped; the kernel caps it (net.core.rmem_max). Returns the size granted.
    int setReceiveBuffer(int bytes);

private:
    explicit UdpSocket(int fd) : m_fd(fd) {}
    void close();

    int m_fd = -1;
};

}  // namespace pimav::detail
