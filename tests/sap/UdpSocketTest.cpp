// UDP endpoints and sockets, on loopback only.

#include <gtest/gtest.h>

#include <string>
#include <system_error>

#include "sap/UdpSocket.h"
#include "support/TestData.h"

using namespace pimav::detail;

TEST(UdpSocket, ParsesEndpoints) {
    for (const DataRow& row : dataRows("sap/endpoints.tsv")) {
        const std::vector<std::string>& f = row.fields;
        UdpEndpoint endpoint;
        ASSERT_EQ(UdpEndpoint::parse(f[0], endpoint), f[1] == "yes") << row.where;
        if (f[1] == "yes") {
            EXPECT_EQ(endpoint.toString(), f[0]);
            EXPECT_EQ(endpoint.isMulticast(), f[2] == "yes") << row.where;
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
