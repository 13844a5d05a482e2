#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/platform/VideoFormat.h"
#include "support/JsonText.h"

namespace {

using VF = VideoFormat;

struct Row {
    int code;
    const char* name;
    unsigned width;
    unsigned height;
    bool interlaced;
    int setRate;  // truncated frames per second, as the SDP parser passes it
    const char* exact;
    VF::video_field_rate_t namedRate;
};

// Every code of the table in the header, written out independently of the source.
const std::vector<Row> kTable = {
    {1, "720p50", 1280, 720, false, 50, "50", VF::VIDEO_RATE_50},
    {2, "720p59.94", 1280, 720, false, 59, "60000/1001", VF::VIDEO_RATE_59_94},
    {3, "1080p25", 1920, 1080, false, 25, "25", VF::VIDEO_RATE_25},
    {4, "1080i50", 1920, 1080, true, 25, "25", VF::VIDEO_RATE_50},
    {5, "1080i59.94", 1920, 1080, true, 29, "30000/1001", VF::VIDEO_RATE_59_94},
    {6, "1080p30", 1920, 1080, false, 30, "30", VF::VIDEO_RATE_30},
    {7, "1080p50", 1920, 1080, false, 50, "50", VF::VIDEO_RATE_50},
    {8, "1080p23.98", 1920, 1080, false, 23, "24000/1001", VF::VIDEO_RATE_23_98},
    {9, "1080p24", 1920, 1080, false, 24, "24", VF::VIDEO_RATE_24},
    {10, "720p60", 1280, 720, false, 60, "60", VF::VIDEO_RATE_60},
    {11, "1080i60", 1920, 1080, true, 30, "30", VF::VIDEO_RATE_60},
    {12, "720p23.98", 1280, 720, false, 23, "24000/1001", VF::VIDEO_RATE_23_98},
    {13, "720p24", 1280, 720, false, 24, "24", VF::VIDEO_RATE_24},
    {14, "1080p59.94", 1920, 1080, false, 59, "60000/1001", VF::VIDEO_RATE_59_94},
    {15, "1080p60", 1920, 1080, false, 60, "60", VF::VIDEO_RATE_60},
    {16, "720p25", 1280, 720, false, 25, "25", VF::VIDEO_RATE_25},
    {17, "720p29.97", 1280, 720, false, 29, "30000/1001", VF::VIDEO_RATE_29_97},
    {18, "720p30", 1280, 720, false, 30, "30", VF::VIDEO_RATE_30},
    {19, "2160p23.98", 3840, 2160, false, 23, "24000/1001", VF::VIDEO_RATE_23_98},
    {20, "2160p24", 3840, 2160, false, 24, "24", VF::VIDEO_RATE_24},
    {21, "1080p29.97", 1920, 1080, false, 29, "30000/1001", VF::VIDEO_RATE_29_97},
    {24, "2160p50", 3840, 2160, false, 50, "50", VF::VIDEO_RATE_50},
    {25, "2160p25", 3840, 2160, false, 25, "25", VF::VIDEO_RATE_25},
    {26, "2160p60", 3840, 2160, false, 60, "60", VF::VIDEO_RATE_60},
    {27, "2160p59.94", 3840, 2160, false, 59, "60000/1001", VF::VIDEO_RATE_59_94},
    {28, "2160p29.97", 3840, 2160, false, 29, "30000/1001", VF::VIDEO_RATE_29_97},
    {29, "2160p30", 3840, 2160, false, 30, "30", VF::VIDEO_RATE_30},
};

VF::video_format_t code(int c) {
    return static_cast<VF::video_format_t>(c);
}

// Each code gives its name, rates and details; setting the details settles on the code again.
TEST(VideoFormat, EveryCodeBothWays) {
    std::vector<int> valid;
    for (int c = -2; c < 40; ++c) {
        if (VF::isValidFormat(c)) {
            valid.push_back(c);
        }
    }
    ASSERT_EQ(valid.size(), kTable.size());
    for (size_t i = 0; i < kTable.size(); ++i) {
        const Row& row = kTable[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(valid[i], row.code);
        const VF f(code(row.code));
        EXPECT_EQ(f.getVideoFormat(), row.code);
        EXPECT_EQ(f.toString(), row.name);
        EXPECT_EQ(VF::fromString(row.name), row.code);
        std::string exact;
        EXPECT_EQ(f.getExactFramerateString(exact), 0);
        EXPECT_EQ(exact, row.exact);
        VF::video_field_rate_t rate = VF::VIDEO_RATE_UNDEFINED;
        unsigned w = 0, h = 0;
        bool il = !row.interlaced;
        EXPECT_EQ(f.getVideoDetails(rate, w, h, il), 0);
        EXPECT_EQ(rate, row.namedRate);
        EXPECT_EQ(w, row.width);
        EXPECT_EQ(h, row.height);
        EXPECT_EQ(il, row.interlaced);
        EXPECT_EQ(f.getVideoFrameRate(), row.setRate);

        VF set;
        EXPECT_EQ(set.setVideoWidth(row.width), 0);
        EXPECT_EQ(set.setVideoHeight(row.height), 0);
        EXPECT_EQ(set.setVideoInterlace(row.interlaced), 0);
        EXPECT_EQ(set.setVideoFrameRate(row.setRate), 0);
        EXPECT_EQ(set.checkVideoDetailConsistency(), 0);
        EXPECT_EQ(set.getVideoFormat(), row.code);
        EXPECT_EQ(set, f);
    }
    // Rate first, scan last: the order of the setters does not matter.
    VF g;
    g.setVideoFrameRate(29);
    g.setVideoHeight(1080);
    g.setVideoWidth(1920);
    g.setVideoInterlace(true);
    EXPECT_EQ(g.checkVideoDetailConsistency(), 0);
    EXPECT_EQ(g.toString(), "1080i59.94");
}

TEST(VideoFormat, InterlacedAcceptsTheFieldRateInPlaceOfTheFrameRate) {
    const std::vector<std::pair<int, int>> cases = {{50, 4}, {59, 5}, {60, 11}};
    for (const auto& [rate, expected] : cases) {
        VF f;
        f.setVideoWidth(1920);
        f.setVideoHeight(1080);
        f.setVideoInterlace(true);
        ASSERT_EQ(f.setVideoFrameRate(rate), 0);
        EXPECT_EQ(f.checkVideoDetailConsistency(), 0) << rate;
        EXPECT_EQ(f.getVideoFormat(), expected);
        EXPECT_EQ(f, VF(code(expected)));  // stored as the frame rate afterwards
    }
}

TEST(VideoFormat, UnknownDetailsAndRatesAreRefused) {
    for (int rate : {0, -1, 1, 48, 59'940, 120, 29'970}) {
        VF f(VF::VIDEO_FORMAT_1080P50);
        EXPECT_LT(f.setVideoFrameRate(rate), 0) << rate;
        EXPECT_EQ(f.getVideoFrameRate(), 0);
        EXPECT_LT(f.checkVideoDetailConsistency(), 0);
        EXPECT_EQ(f.toString(), "undefined");
    }
    struct Bad {
        unsigned w, h;
        bool il;
        int rate;
    };
    const std::vector<Bad> bad = {
        {1920, 1080, true, 24},  // no 1080i at 24 frames
        {1280, 720, true, 25},   // no interlaced 720
        {3840, 2160, true, 25},  // no interlaced 2160
        {1920, 1088, false, 25}, {0, 0, false, 50}, {720, 576, true, 25},
    };
    for (const Bad& b : bad) {
        VF f;
        f.setVideoWidth(b.w);
        f.setVideoHeight(b.h);
        f.setVideoInterlace(b.il);
        f.setVideoFrameRate(b.rate);
        EXPECT_EQ(f.checkVideoDetailConsistency(), -1) << b.w << "x" << b.h;
        EXPECT_EQ(f.getVideoFormat(), VF::VIDEO_FORMAT_UNDEFINED);
    }
    // Each setter re-settles the code: a changed detail moves to another format or to none.
    VF f(VF::VIDEO_FORMAT_1080I59_94);
    f.setVideoInterlace(false);
    EXPECT_EQ(f.toString(), "1080p29.97");
    f.setVideoHeight(1088);
    EXPECT_EQ(f.getVideoFormat(), VF::VIDEO_FORMAT_UNDEFINED);
    std::string exact;
    EXPECT_LT(f.getExactFramerateString(exact), 0);
}

TEST(VideoFormat, QueriesFailWithoutAFormat) {
    for (int c : {0, 22, 23, 30, -1, 1000}) {
        VF f(code(c));
        EXPECT_EQ(f, VF()) << c;
        EXPECT_EQ(f.toString(), "undefined");
        std::string text = "kept";
        EXPECT_LT(f.getExactFramerateString(text), 0);
        EXPECT_EQ(text, "kept");
        VF::video_field_rate_t rate = VF::VIDEO_RATE_50;
        unsigned w = 7, h = 8;
        bool il = true;
        EXPECT_LT(f.getVideoDetails(rate, w, h, il), 0);
        EXPECT_EQ(w, 7u);
        EXPECT_EQ(rate, VF::VIDEO_RATE_50);
    }
    VF f(VF::VIDEO_FORMAT_720P50);
    EXPECT_EQ(f.setVideoFormat(code(22)), -8);
    EXPECT_EQ(f.getVideoFormat(), VF::VIDEO_FORMAT_720P50);
    EXPECT_EQ(VF::fromString("1080I50"), VF::VIDEO_FORMAT_UNDEFINED);
}

TEST(VideoFormat, JsonFormRoundTripsEveryState) {
    Json::Value out;
    VF(VF::VIDEO_FORMAT_1080I59_94).Serialize(out);
    EXPECT_JSON_EQ(out, R"({"format":5,"name":"1080i59.94","width":1920,"height":1080,
                             "interlaced":true,"frame-rate":"30000/1001"})");

    std::vector<VF> states = {VF()};
    for (const Row& row : kTable) {
        states.emplace_back(code(row.code));
    }
    VF partial;  // details that name no format survive the trip too
    partial.setVideoWidth(1000);
    partial.setVideoInterlace(true);
    partial.setVideoFrameRate(59);
    states.push_back(partial);
    for (const VF& f : states) {
        Json::Value doc(Json::objectValue);
        doc["depth"] = 10;  // keys of the holder stay
        f.Serialize(doc);
        EXPECT_EQ(doc["depth"].asInt(), 10);
        VF back(VF::VIDEO_FORMAT_2160P60);
        back.Deserialize(doc);
        EXPECT_EQ(back, f) << f.toString();
    }
}

TEST(VideoFormat, ReadingOddDocumentsNeverThrows) {
    struct Case {
        const char* doc;
        int format;
        unsigned width;
    };
    const std::vector<Case> cases = {
        {"{}", 0, 0},
        {R"({"format":7})", 7, 1920},
        {R"({"name":"2160p30"})", 29, 3840},
        {R"({"format":"7","name":"720p60"})", 10, 1280},
        {R"({"format":22})", 0, 0},
        {R"({"format":7,"width":1280})", 0, 1280},
        {R"({"format":7,"width":1280,"height":720})", 1, 1280},
        {R"({"format":7,"frame-rate":"60000/1001"})", 14, 1920},
        {R"({"format":7,"frame-rate":59})", 14, 1920},
        {R"({"format":7,"frame-rate":"59.94"})", 0, 1920},
        {R"({"format":[1],"width":{},"height":-5,"interlaced":"yes","frame-rate":[]})", 0, 0},
        {R"({"format":4,"interlaced":false})", 3, 1920},
    };
    for (const Case& c : cases) {
        VF f(VF::VIDEO_FORMAT_720P50);
        EXPECT_NO_THROW(readInto(f, c.doc)) << c.doc;
        EXPECT_EQ(f.getVideoFormat(), c.format) << c.doc;
        EXPECT_EQ(f.getVideoWidth(), c.width) << c.doc;
    }
    VF cleared(VF::VIDEO_FORMAT_720P50);
    Json::Value absent;
    cleared.Deserialize(absent);
    EXPECT_EQ(cleared, VF());
    for (const char* notObject : {"[1,2]", "5", "\"1080p50\""}) {
        VF f(VF::VIDEO_FORMAT_720P50);
        EXPECT_NO_THROW(readInto(f, notObject));
        EXPECT_EQ(f, VF(VF::VIDEO_FORMAT_720P50)) << notObject;
    }
}

}  // namespace
