#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

TEST(StreamData, MacParsing) {
    struct Row {
        const char* text;
        const char* expected;
    };
    const std::vector<Row> rows = {
        {"01:00:5e:7f:00:01", "01-00-5E-7F-00-01"},
        {"0a-0B-0c-0D-0e-0F", "0A-0B-0C-0D-0E-0F"},
        {"", "AA-BB-CC-DD-EE-FF"},
        {"zz-1-2-3-4-5", "00-01-02-03-04-05"},
        {"1-2-3", "01-02-CC-DD-EE-FF"},  // octets of an incomplete pass stay
        {"1:2:3:4", "01-02-03-DD-EE-FF"},
        {"12-34:56:78:9a:bc", "12-56-78-9A-EE-FF"},  // mixed separators: neither pass completes
        {"12:34:56:78:9a-bc", "12-34-56-78-EE-FF"},  // five separators are needed
        {"1-2-3-4-5-6-7", "01-02-03-04-05-06"},
        {"1ff-2-3-4-5-", "FF-02-03-04-05-00"},
        {"------", "00-00-00-00-00-00"},
    };
    for (const Row& row : rows) {
        StreamData::MacAddress mac{0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
        StreamData::parseMac(row.text, mac);
        EXPECT_EQ(StreamData::macToString(mac), row.expected) << row.text;
    }
}

TEST(StreamData, DefaultsDifferFromReadingDefaults) {
    AncillaryStreamData a;
    EXPECT_EQ(written(a), canon(R"({"type":"ancillary","class":"sender","state":"Disabled",
        "redundant-type":"none","vlan":{"id":0,"priority":0,"tpid":33024},"udp":{"source":20000,"destination":20000},
        "ipv4":{"local":"0.0.0.0","transport":"0.0.0.0","source-ip":"0.0.0.0","dscp":40,"ttl":64},
        "rtp":{"payload-type":98,"sscr":{"type":"unspecified","value":0}},"name":"","channel-list":[],
        "media-clk-offset":0,"network-interface-index":-1,"samples":0,"l1-bandwidth":0,"id":0,
        "hw-id":4294967295,"unicast":false,"dst-mac-addr":"00-00-00-00-00-00","packet-size":66})"));
    a.m_state.set(State::ENABLED);
    readInto(a, "{}");
    EXPECT_EQ(a.m_hw_id, 0u);
    EXPECT_EQ(a.m_state.get(), 0);
    EXPECT_EQ(a.m_type.get(), StreamType::ANCILLARY);
    EXPECT_EQ(a.m_udp.m_source, 0);
    EXPECT_EQ(a.m_ipv4.m_dscp, 34);
}

TEST(StreamData, FullDocumentRoundTripsAndWrongKindsThrow) {
    const char* full = R"({"type":"ancillary","class":"receiver","state":"Paused","redundant-type":"primary",
        "vlan":{"id":10,"priority":3,"tpid":34984},"udp":{"source":1,"destination":2},
        "ipv4":{"local":"10.0.0.1","transport":"239.0.0.9","source-ip":"10.0.0.7","dscp":46,"ttl":5},
        "rtp":{"payload-type":100,"sscr":{"type":"asio","value":9}},"name":"anc","channel-list":[],
        "media-clk-offset":-3,"network-interface-index":2,"samples":48,"l1-bandwidth":18446744073709551615,
        "id":77,"hw-id":4294967295,"unicast":true,"dst-mac-addr":"01-00-5E-7F-00-01","packet-size":74})";
    AncillaryStreamData a;
    a.m_payload_size = 4;
    readInto(a, full);
    EXPECT_EQ(written(a), canon(full));

    for (const char* bad :
         {R"({"vlan":[]})", R"({"udp":{"source":"x"}})", R"({"hw-id":-1})", R"({"samples":-1})",
          R"({"dst-mac-addr":{}})", R"({"unicast":"yes"})", R"({"rtp":{"sscr":"x"}})"}) {
        AncillaryStreamData s;
        EXPECT_ANY_THROW(readInto(s, bad)) << bad;
    }
    readInto(a, R"({"samples":50})");
    EXPECT_EQ(a.m_samples, PacketTimeOptions::SAMPLES_PER_PKT_UNSUPPORTED);
}

TEST(StreamData, AncillaryDumpLines) {
    AncillaryStreamData a;
    a.m_id = 5;
    a.m_name = "anc";
    a.m_hw_id = 0x1F;
    a.m_vlan.m_id = 10;
    a.m_vlan.m_priority = 3;
    a.m_ipv4.m_local.set(0x0A000001);
    a.m_ipv4.m_transport.set(0xEF000009);
    a.m_src_mac = {1, 2, 3, 4, 5, 0xAB};
    a.m_channels.addChannelEntry(ChannelId(DaifType(1, "tdm"), 0, 3));
    LogCapture capture;
    a.dumpStreamData();
    EXPECT_EQ(capture.at(6), (std::vector<std::string>{"DUMPING BASE STREAM DATA",
                                                       "ID:               5",
                                                       "Name:             anc",
                                                       "Type:             ancillary",
                                                       "State:            Disabled",
                                                       "HwIndex:          0x1F",
                                                       "Class:            sender (Multicast)",
                                                       "VLAN:             Enable",
                                                       "  ID              10 ",
                                                       "  Priority        3",
                                                       "  TPID            0x8100",
                                                       "UDP:",
                                                       "  Source          20000",
                                                       "  Destination     20000 ",
                                                       "IP: ",
                                                       "  Source          10.0.0.1",
                                                       "  Destination     239.0.0.9",
                                                       "    SRC Mac Addr  01-02-03-04-05-AB",
                                                       "  DSCP            40",
                                                       "Payload Type      98",
                                                       "Media CLK Offset  0",
                                                       "Interface index   -1",
                                                       "L1 Bandwidth      0",
                                                       "Num Samples       0",
                                                       "Payload Size      0",
                                                       "Redundant Type    none",
                                                       "Num Channel       1",
                                                       "Channel[0] tdm(1)/0:3",
                                                       "(No AncillaryStreamData members to log)"}));
    EXPECT_EQ(capture.lines().size(), capture.at(6).size());
}

}  // namespace
