#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/platform/Alarm.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/PacketTimeOptions.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

ChannelList twoChannels() {
    ChannelList list;
    list.addChannelEntry(ChannelId(DaifType(3, "sdi"), 1, 5));
    list.addChannelEntry(ChannelId(DaifType(), 0, 7));
    return list;
}

TEST(ChannelList, WritesArrayAndReadsItBack) {
    EXPECT_EQ(written(ChannelList()), "[]");
    Json::Value out;
    twoChannels().Serialize(out);
    EXPECT_JSON_EQ(out, R"([{"interface":{"type":3,"string":"sdi"},"interface-index":1,"channel":5},
                             {"interface":{"type":12,"string":"auto"},"interface-index":0,"channel":7}])");
    ChannelList back = twoChannels();
    back.addChannelEntry(ChannelId());
    back.Deserialize(out);
    EXPECT_EQ(back, twoChannels());
}

TEST(ChannelList, ReadingRules) {
    struct Row {
        const char* doc;
        bool throws;
        int entries;
    };
    const std::vector<Row> rows = {
        {"null", false, 0},
        {"[]", false, 0},
        {"[{}]", false, 1},
        {R"([{"channel":2},{"channel":3},{}])", false, 3},
        {R"({"channel":2})", true, 0},
        {"5", true, 0},
        {R"([{"channel":1},{"channel":"x"}])", true, 1},
        {R"([{"channel":1},7])", true, 1},
        {R"([{"interface":[]}])", true, 0},
    };
    for (const auto& row : rows) {
        ChannelList list = twoChannels();
        EXPECT_EQ(readThenWritten(list, row.doc) == "throws", row.throws) << row.doc;
        EXPECT_EQ(list.numChannelEntries(), row.entries) << row.doc;
    }
    ChannelList list;
    readInto(list, "[{}]");
    EXPECT_EQ(list[0], ChannelId(DaifType(12, "auto"), 0, 0));
}

TEST(ChannelList, ElementAccessAndDump) {
    ChannelList list = twoChannels();
    EXPECT_EQ(list.getChannelEntry(2), nullptr);
    EXPECT_EQ(list.getChannelEntry(-1), nullptr);
    EXPECT_EQ(list.setChannelEntry(2, ChannelId()), -16);
    EXPECT_EQ(list.setChannelEntry(1, ChannelId(DaifType(1, "tdm"), 2, 9)), 0);
    EXPECT_EQ(list.getChannelEntry(1)->m_channel, 9u);

    LogCapture capture;
    list.dump("  ");
    EXPECT_EQ(capture.at(6),
              (std::vector<std::string>{"  Channel[0] sdi(3)/1:5", "  Channel[1] tdm(1)/2:9"}));

    EXPECT_EQ(list.removeChannelEntry(0), 0);
    EXPECT_EQ(list.removeChannelEntry(1), -16);
    EXPECT_EQ(list.numChannelEntries(), 1);
    list.clearChannelList();
    EXPECT_EQ(list.numChannelEntries(), 0);
}

TEST(Alarm, JsonFormAndReadingDefaults) {
    Json::Value out;
    Alarm().Serialize(out);
    EXPECT_JSON_EQ(out, R"({"code":0,"severity":"indeterminate","text":"","time":0})");

    Alarm a(17, AlarmSeverity(AlarmSeverity::MAJOR), "PTP lost", 18446744073709551615ull);
    a.Serialize(out);
    Alarm back;
    back.Deserialize(out);
    EXPECT_EQ(back, a);

    struct Row {
        const char* doc;
        int32_t severity;
    };
    for (const Row& row : std::vector<Row>{{R"({})", 1},
                                           {R"({"severity":"cleared"})", 0},
                                           {R"({"severity":"warning"})", 2},
                                           {R"({"severity":"minor"})", 3},
                                           {R"({"severity":"critical"})", 5},
                                           {R"({"severity":"Critical"})", 1}}) {
        Alarm r(3, AlarmSeverity(AlarmSeverity::MAJOR), "x", 9);
        readInto(r, row.doc);
        EXPECT_EQ(r.m_severity.get(), row.severity) << row.doc;
        EXPECT_EQ(r.m_code, 0u);
        EXPECT_EQ(r.m_text, "");
        EXPECT_EQ(r.m_time, 0u);
    }
    for (const char* bad :
         {R"({"code":-1})", R"({"text":{}})", R"({"time":"now"})", R"({"severity":[]})", "[]"}) {
        EXPECT_ANY_THROW(readInto(back, bad)) << bad;
    }
}

TEST(PacketTimeOptions, SupportedCountsMapToThemselves) {
    for (unsigned count : {6u, 12u, 16u, 24u, 32u, 48u, 96u, 192u, 384u}) {
        PacketTimeOptions::samplesPerPkt_e e = PacketTimeOptions::SAMPLES_PER_PKT_48;
        EXPECT_EQ(PacketTimeOptions::toSamplesPerPacketEnum(count, e), 0) << count;
        EXPECT_EQ(static_cast<unsigned>(e), count);
    }
    for (unsigned count : {0u, 1u, 7u, 47u, 49u, 100u, 4294967295u}) {
        PacketTimeOptions::samplesPerPkt_e e = PacketTimeOptions::SAMPLES_PER_PKT_48;
        EXPECT_EQ(PacketTimeOptions::toSamplesPerPacketEnum(count, e), -8) << count;
        EXPECT_EQ(e, PacketTimeOptions::SAMPLES_PER_PKT_UNSUPPORTED);
    }
}

}  // namespace
