#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/model/Source.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

const char* kDefaultSource =
    R"({"name":"","transport":"0.0.0.0","source-ip":"0.0.0.0","udp":-1,"dscp":-1,"ttl":64,
    "payload-type":98,"link-offset":0,"media-clk-offset":0,"network-index":-1,"channel-list":[],"id":0,
    "redundant-type":"none","ssrc":{"type":"unspecified","value":0}})";

const char* kFullSource =
    R"({"name":"tx1","transport":"239.1.1.1","source-ip":"10.0.0.2","udp":5004,"dscp":46,
    "ttl":32,"payload-type":97,"link-offset":4000000000,"media-clk-offset":-7,"network-index":1,
    "channel-list":[{"interface":{"type":1,"string":"tdm"},"interface-index":0,"channel":3}],
    "id":18446744073709551615,"redundant-type":"secondary","ssrc":{"type":"manual","value":77}})";

Source filled() {
    Source s;
    readInto(s, kFullSource);
    return s;
}

TEST(Source, DefaultsAndFullRoundTrip) {
    EXPECT_EQ(written(Source()), canon(kDefaultSource));
    EXPECT_EQ(written(filled()), canon(kFullSource));
}

TEST(Source, ReadingTable) {
    struct Row {
        const char* doc;
        const char* expected;  // written after reading into filled()
    };
    const std::vector<Row> rows = {
        // Missing scalars take their defaults; addresses, role and SSRC are kept.
        {"{}", R"({"name":"","transport":"239.1.1.1","source-ip":"10.0.0.2","udp":-1,"dscp":-1,"ttl":64,
            "payload-type":98,"link-offset":0,"media-clk-offset":0,"network-index":-1,"channel-list":[],"id":0,
            "redundant-type":"none","ssrc":{"type":"manual","value":77}})"},
        {R"({"ttl":300,"payload-type":356,"transport":"10.0.0.256","source-ip":"","redundant-type":"Primary","ssrc":12})",
         R"({"name":"","transport":"239.1.1.1","source-ip":"10.0.0.2","udp":-1,"dscp":-1,"ttl":44,
            "payload-type":100,"link-offset":0,"media-clk-offset":0,"network-index":-1,"channel-list":[],"id":0,
            "redundant-type":"secondary","ssrc":{"type":"session-id","value":12}})"},
        {R"({"udp":"x"})", "throws"},
        {R"({"name":{}})", "throws"},
        {R"({"ssrc":"x"})", "throws"},
        {R"({"channel-list":{}})", "throws"},
        {R"({"transport":[]})", "throws"},
        {R"({"link-offset":-1})", "throws"},
    };
    for (const Row& row : rows) {
        Source s = filled();
        EXPECT_EQ(readThenWritten(s, row.doc), canon(row.expected)) << row.doc;
    }
}

TEST(Source, ClearResetsListedMembersOnly) {
    Source s = filled();
    LogCapture capture;
    s.clear();
    EXPECT_EQ(capture.at(5), std::vector<std::string>{"Clearing Source base class"});
    EXPECT_EQ(written(s), canon(R"({"name":"","transport":"0.0.0.0","source-ip":"10.0.0.2","udp":-1,
        "dscp":-1,"ttl":64,"payload-type":98,"link-offset":0,"media-clk-offset":0,"network-index":-1,
        "channel-list":[],"id":0,"redundant-type":"none","ssrc":{"type":"session-id","value":0}})"));
    EXPECT_EQ(s.validate(), 0);
}

TEST(Source, RedundantTypeText) {
    Source s;
    EXPECT_EQ(s.setRedundantType("primary"), 0);
    EXPECT_EQ(s.setRedundantType("backup"), -8);
    EXPECT_EQ(s.getRedundantType(), "primary");
    s.m_redundant_type.set(6);
    EXPECT_EQ(s.getRedundantType(), "none");
}

}  // namespace
