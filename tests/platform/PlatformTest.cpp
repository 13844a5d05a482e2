// The platform records and helpers: JSON forms from tests/data/records/platform, the video
// format table from tests/data/platform/video-formats.tsv, then logging and the defaults.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "pimAvMngApi/platform/Alarm.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/PacketTimeOptions.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "pimAvMngApi/platform/VideoFormat.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"
#include "support/RecordScript.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

using VF = VideoFormat;
using Lines = std::vector<std::string>;

TEST(Platform, RecordScripts) {
    const RecordKinds kinds = {
        {"VideoFormat", recordKind<VF, VF::video_format_t>()},
        {"Alarm", recordKind<Alarm>()},
        {"ChannelList", recordKind<ChannelList>(
                            {{"dump", recordAction<ChannelList>([](ChannelList& list, std::istream& args) {
                                  std::string prefix;
                                  args >> prefix;
                                  list.dump(prefix);
                              })}})},
    };
    runRecordScripts("records/platform", kinds);
}

// Each code gives its name, rates and details; setting the details settles on the code again.
TEST(VideoFormat, EveryCodeBothWays) {
    const std::map<std::string, VF::video_field_rate_t> rates = {
        {"23.98", VF::VIDEO_RATE_23_98}, {"24", VF::VIDEO_RATE_24}, {"25", VF::VIDEO_RATE_25},
        {"29.97", VF::VIDEO_RATE_29_97}, {"30", VF::VIDEO_RATE_30}, {"50", VF::VIDEO_RATE_50},
        {"59.94", VF::VIDEO_RATE_59_94}, {"60", VF::VIDEO_RATE_60}};
    const std::vector<DataRow> table = dataRows("platform/video-formats.tsv");
    std::vector<int> valid;
    for (int c = -2; c < 40; ++c) {
        if (VF::isValidFormat(c)) {
            valid.push_back(c);
        }
    }
    ASSERT_EQ(valid.size(), table.size());
    for (size_t i = 0; i < table.size(); ++i) {
        const std::vector<std::string>& row = table[i].fields;
        SCOPED_TRACE(table[i].where);
        const int code = std::stoi(row[0]);
        const unsigned width = std::stoul(row[2]), height = std::stoul(row[3]);
        const bool interlaced = row[4] == "1";
        const int setRate = std::stoi(row[5]);
        EXPECT_EQ(valid[i], code);
        const VF f(static_cast<VF::video_format_t>(code));
        EXPECT_EQ(f.getVideoFormat(), code);
        EXPECT_EQ(f.toString(), row[1]);
        EXPECT_EQ(VF::fromString(row[1]), code);
        std::string exact;
        EXPECT_EQ(f.getExactFramerateString(exact), 0);
        EXPECT_EQ(exact, row[6]);
        VF::video_field_rate_t rate = VF::VIDEO_RATE_UNDEFINED;
        unsigned w = 0, h = 0;
        bool il = !interlaced;
        EXPECT_EQ(f.getVideoDetails(rate, w, h, il), 0);
        EXPECT_EQ(std::make_tuple(rate, w, h, il),
                  std::make_tuple(rates.at(row[7]), width, height, interlaced));
        EXPECT_EQ(f.getVideoFrameRate(), setRate);

        VF set;
        EXPECT_EQ(set.setVideoWidth(width) | set.setVideoHeight(height) | set.setVideoInterlace(interlaced) |
                      set.setVideoFrameRate(setRate),
                  0);
        EXPECT_EQ(set.checkVideoDetailConsistency(), 0);
        EXPECT_EQ(set, f);

        // Every state survives its JSON form.
        Json::Value doc;
        f.Serialize(doc);
        VF back(VF::VIDEO_FORMAT_2160P60);
        back.Deserialize(doc);
        EXPECT_EQ(back, f);
    }
    // Details that name no format survive the JSON form too.
    VF partial;
    partial.setVideoWidth(1000);
    partial.setVideoInterlace(true);
    partial.setVideoFrameRate(59);
    Json::Value doc;
    partial.Serialize(doc);
    VF back;
    back.Deserialize(doc);
    EXPECT_EQ(back, partial);
}

// tests/data/platform/video-details.tsv: details set one by one, the rate first.
TEST(VideoFormat, DetailsSettleOnAFormat) {
    for (const DataRow& row : dataRows("platform/video-details.tsv")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::string>& f = row.fields;
        VF format;
        EXPECT_EQ(format.setVideoFrameRate(std::stoi(f[3])), std::stoi(f[4]));
        format.setVideoHeight(std::stoul(f[1]));
        format.setVideoWidth(std::stoul(f[0]));
        format.setVideoInterlace(f[2] == "1");
        EXPECT_EQ(format.checkVideoDetailConsistency(), std::stoi(f[5]));
        EXPECT_EQ(format.toString(), f[6]);
        if (f[6] != "undefined") {
            EXPECT_EQ(format, VF(VF::fromString(f[6])));  // as the frame rate
        } else if (f[4] != "0") {
            EXPECT_EQ(format.getVideoFrameRate(), 0);
        }
    }
}

TEST(VideoFormat, UnknownCodesAreRefusedAndSettersSettleAgain) {
    // Each setter settles the code again: a changed detail moves to another format or to none.
    VF f(VF::VIDEO_FORMAT_1080I59_94);
    f.setVideoInterlace(false);
    EXPECT_EQ(f.toString(), "1080p29.97");
    f.setVideoHeight(1088);
    EXPECT_EQ(f.getVideoFormat(), VF::VIDEO_FORMAT_UNDEFINED);

    for (int c : {0, 22, 23, 30, -1, 1000}) {
        VF none(static_cast<VF::video_format_t>(c));
        EXPECT_EQ(none, VF()) << c;
        std::string text = "kept";
        EXPECT_LT(none.getExactFramerateString(text), 0);
        EXPECT_EQ(text, "kept");
        VF::video_field_rate_t rate = VF::VIDEO_RATE_50;
        unsigned w = 7, h = 8;
        bool il = true;
        EXPECT_LT(none.getVideoDetails(rate, w, h, il), 0);
        EXPECT_EQ(w, 7u);
        EXPECT_EQ(rate, VF::VIDEO_RATE_50);
    }
    VF kept(VF::VIDEO_FORMAT_720P50);
    EXPECT_EQ(kept.setVideoFormat(static_cast<VF::video_format_t>(22)), -8);
    EXPECT_EQ(kept.getVideoFormat(), VF::VIDEO_FORMAT_720P50);
    EXPECT_EQ(VF::fromString("1080I50"), VF::VIDEO_FORMAT_UNDEFINED);
}

TEST(ChannelList, ElementAccess) {
    ChannelList list;
    list.addChannelEntry(ChannelId(DaifType(3, "sdi"), 1, 5));
    list.addChannelEntry(ChannelId(DaifType(), 0, 7));
    EXPECT_EQ(list.getChannelEntry(2), nullptr);
    EXPECT_EQ(list.getChannelEntry(-1), nullptr);
    const ChannelList& constList = list;
    EXPECT_EQ(constList.getChannelEntry(2), nullptr);
    EXPECT_EQ(constList.getChannelEntry(-1), nullptr);
    EXPECT_EQ(list.setChannelEntry(2, ChannelId()), -16);
    EXPECT_EQ(list.setChannelEntry(1, ChannelId(DaifType(1, "tdm"), 2, 9)), 0);
    EXPECT_EQ(list.getChannelEntry(1)->m_channel, 9u);
    EXPECT_EQ(list.removeChannelEntry(0), 0);
    EXPECT_EQ(list.removeChannelEntry(1), -16);
    EXPECT_EQ(list.removeChannelEntry(-1), -16);
    EXPECT_EQ(list.numChannelEntries(), 1);
    EXPECT_EQ(list[0], ChannelId(DaifType(1, "tdm"), 2, 9));
    list.clearChannelList();
    EXPECT_EQ(list.numChannelEntries(), 0);
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

TEST(Logger, FiltersBeforeFormattingAndKeepsLongLines) {
    {
        LogCapture capture(4);
        Logger::log(2, "error %d", 1);
        Logger::log(5, "state %d", 2);
        Logger::getInstance()->logMessage(4, "notice %s", "x");
        Logger::getInstance()->logMessage(7, "trace %s", "y");
        EXPECT_EQ(capture.texts(), (Lines{"error 1", "notice x"}));
    }
    LogCapture capture;
    const std::string big(100000, 'x');
    Logger::log(7, "AVMANAGER JSON API %s:%d:IN\n%s", "f", 12, big.c_str());
    ASSERT_EQ(capture.texts(), Lines{"AVMANAGER JSON API f:12:IN\n" + big});
}

TEST(Logger, SinkMayLogFromInsideItself) {
    LogCapture capture;  // puts the default sink back afterwards
    Lines seen;
    Logger::getInstance()->setSink([&seen](int, const std::string& line) {
        seen.push_back(line);
        if (seen.size() == 1) {
            Logger::log(2, "nested");
        }
    });
    Logger::log(2, "outer");
    EXPECT_EQ(seen, (Lines{"outer", "nested"}));
}

TEST(ErrorAuxMsg, CollectsFormattedMessagesInOrder) {
    ErrorAuxMsg::getInstance()->clear();
    ErrorAuxMsg::getInstance()->addMessage("Media %d: %s", 0, "no rtpmap");
    ErrorAuxMsg::getInstance()->addMessage("plain");
    EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(), (Lines{"Media 0: no rtpmap", "plain"}));
    ErrorAuxMsg::getInstance()->clear();
    EXPECT_TRUE(ErrorAuxMsg::getInstance()->getMessages().empty());
}

TEST(ConvertJsonToString, RendersSingleLineSortedCompact) {
    Json::Value value = jsonOf(R"({"b": {"x": "y"}, "a": [1, 2], "c": {}})");
    std::string text = "previous contents";
    IJsonSerializable::convertJsonToString(value, text);
    EXPECT_EQ(text, R"({"a":[1,2],"b":{"x":"y"},"c":{}})");
}

// Loopback is always up; its bytes are not symmetric, so byte order counts.
TEST(SystemDefaultCfg, CfgFilePathAndLocalAddresses) {
    SystemDefaultCfg* cfg = SystemDefaultCfg::getInstance();
    EXPECT_EQ(cfg->getCfgFilePath(nullptr), -4);
    std::string path;
    cfg->setCfgFilePath("/var/x/");  // a separator is added only when missing
    EXPECT_EQ(cfg->getCfgFilePath(&path), 0);
    EXPECT_EQ(path, "/var/x/");
    const auto local = [cfg](const char* text) {
        IpAddress a;
        a.fromString(text);
        return cfg->isLocalBoardIpAddr(a);
    };
    EXPECT_TRUE(local("127.0.0.1"));
    EXPECT_FALSE(local("192.0.2.77"));  // documentation range
    EXPECT_FALSE(cfg->isLocalBoardIpAddr(IpAddress()));
    IpAddress added, only;
    added.fromString("192.0.2.77");
    only.fromString("198.51.100.1");
    cfg->addLocalIpAddr(added);
    EXPECT_TRUE(local("192.0.2.77"));
    EXPECT_TRUE(local("127.0.0.1"));
    cfg->setLocalIpAddrs({only});
    EXPECT_TRUE(local("198.51.100.1"));
    EXPECT_FALSE(local("127.0.0.1"));
    cfg->resetToDefaults();
    EXPECT_FALSE(local("198.51.100.1"));
    EXPECT_TRUE(local("127.0.0.1"));
}

}  // namespace
