// UDP endpoints and sockets, on loopback only.

#include <gtest/gtest.h>

#include <string>
#include <system_error>

#include "sap/UdpSocket.h"

using namespace pimav::detail;

TEST(UdpSocket, ParsesEndpoints) {
    struct Row {
        const char* text;
        bool valid;
        bool multicast;
    };
    const Row rows[] = {
        {"127.0.0.1:9875", true, false},   {"239.255.255.255:9875", true, true},
        {"224.2.127.254:0", true, true},   {"240.0.0.1:9875", true, false},
        {"127.0.0.1:65536", false, false}, {"127.0.0.1:", false, false},
        {"127.0.0.1", false, false},       {":9875", false, false},
        {"127.0.0.1:98a", false, false},   {"localhost:9875", false, false},
        {"[::1]:9875", false, false},      {"127.0.0.1:1234567", false, false},
    };
    for (const auto& row : rows) {
        UdpEndpoint endpoint;
        ASSERT_EQ(UdpEndpoint::parse(row.text, endpoint), row.valid) << row.text;
        if (row.valid) {
            EXPECT_EQ(endpoint.toString(), row.text);
            EXPECT_EQ(endpoint.isMulticast(), row.multicast) << row.text;
        }
    }
}

TEST(UdpSocket, SendsAndReceivesOnLoopback) {
    UdpEndpoint any;
    ASSERT_TRUE(UdpEndpoint::parse("127.0.0.1:0", any));
    UdpSocket listener = UdpSocket::listen(any);
    const UdpEndpoint bound = listener.localEndpoint();
    ASSERT_NE(bound.port, 0);
    UdpSocket sender = UdpSocket::connect(bound);
    EXPECT_EQ(sender.localEndpoint().address.toString(), "127.0.0.1");

    ASSERT_TRUE(sender.send(std::string("sap\0packet", 10)));
    std::string bytes;
    UdpEndpoint from;
    ASSERT_TRUE(listener.receive(bytes, from, 5000));
    EXPECT_EQ(bytes, std::string("sap\0packet", 10));
    EXPECT_EQ(from, sender.localEndpoint());
    EXPECT_FALSE(listener.receive(bytes, from, 0));

    // A unicast address belongs to one listener.
    try {
        UdpSocket::listen(bound);
        ADD_FAILURE() << "a second listener bound " << bound.toString();
    } catch (const std::system_error& e) {
        EXPECT_NE(std::string(e.what()).find("cannot bind " + bound.toString()), std::string::npos)
            << e.what();
    }
}
