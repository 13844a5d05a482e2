#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pimAvMngApi/model/HdmiAudioOffset.h"
#include "pimAvMngApi/model/InterfaceLoopBack.h"
#include "pimAvMngApi/model/SdiOffsetList.h"
#include "pimAvMngApi/model/SessionStatus.h"
#include "pimAvMngApi/model/TpcStatistics.h"
#include "pimAvMngApi/model/UserNotifications.h"
#include "pimAvMngApi/model/VideoTimingParameters.h"
#include "support/JsonText.h"

namespace {

// One row: a record prepared by `make`, the document read into it and the JSON it then
// writes (nullptr: reading throws).
struct Row {
    std::string name;
    std::function<std::unique_ptr<IJsonSerializable>()> make;
    const char* doc;
    const char* expected;
};

template <typename T>
std::function<std::unique_ptr<IJsonSerializable>()> fresh(std::function<void(T&)> prep = {}) {
    return [prep] {
        auto r = std::make_unique<T>();
        if (prep) {
            prep(*r);
        }
        return std::unique_ptr<IJsonSerializable>(std::move(r));
    };
}

void setTiming(VideoTimingParameters& t) {
    t.m_timing_mode = 3;
    t.m_init_buf_delay = 1;
    t.m_min_wr_rd_ptr_thresh = 2;
    t.m_max_wr_rd_ptr_thresh = 3;
    t.m_rtp_pkts_per_frame = 4;
}

TEST(StatusTypes, ReadThenWriteTable) {
    const char* kFullTiming =
        R"({"timing-mode":"2059","initBufDelay":1,"minWrRdPtrThresh":2,"maxWrRdPtrThresh":3,"rtpPktsPerFrame":4})";
    const std::vector<Row> rows = {
        {"timing default", fresh<VideoTimingParameters>(), "{}", R"({"timing-mode":"unset"})"},
        {"timing keeps on {}", fresh<VideoTimingParameters>(setTiming), "{}", kFullTiming},
        {"timing empty word", fresh<VideoTimingParameters>(), R"({"timing-mode":""})",
         R"({"timing-mode":"low_latency"})"},
        {"timing null word", fresh<VideoTimingParameters>(setTiming), R"({"timing-mode":null})",
         R"({"timing-mode":"low_latency","initBufDelay":1,"minWrRdPtrThresh":2,"maxWrRdPtrThresh":3,"rtpPktsPerFrame":4})"},
        {"timing one value", fresh<VideoTimingParameters>(), R"({"initBufDelay":5})",
         R"({"timing-mode":"unset","initBufDelay":5})"},
        {"timing unknown word", fresh<VideoTimingParameters>(setTiming),
         R"({"timing-mode":"FRAME_SYNC","initBufDelay":-1})",
         R"({"timing-mode":"2059","minWrRdPtrThresh":2,"maxWrRdPtrThresh":3,"rtpPktsPerFrame":4})"},
        {"timing frame_sync", fresh<VideoTimingParameters>(),
         R"({"timing-mode":"frame_sync","rtpPktsPerFrame":8})",
         R"({"timing-mode":"frame_sync","rtpPktsPerFrame":8})"},
        {"timing wrong kind", fresh<VideoTimingParameters>(), R"({"initBufDelay":"5"})", nullptr},
        {"timing mode object", fresh<VideoTimingParameters>(), R"({"timing-mode":{}})", nullptr},
        {"tpc full", fresh<TpcStatistics>(),
         R"({"session-id":18446744073709551615,"stream-id":7,"error-detected":true,"data-detected":true})",
         R"({"session-id":18446744073709551615,"stream-id":7,"error-detected":true,"data-detected":true})"},
        {"tpc empty",
         fresh<TpcStatistics>([](TpcStatistics& t) { t.m_stream_id = 3, t.m_data_detected = true; }), "{}",
         R"({"session-id":0,"stream-id":0,"error-detected":false,"data-detected":false})"},
        {"tpc wrong", fresh<TpcStatistics>(), R"({"stream-id":-3})", nullptr},
        {"notifications", fresh<UserNotifications>(), R"({"running-is-not-saved":true})",
         R"({"running-is-not-saved":true,"startup-applied":false})"},
        {"notifications wrong", fresh<UserNotifications>(), R"({"startup-applied":"yes"})", nullptr},
        {"hdmi keeps", fresh<HdmiAudioOffset>([](HdmiAudioOffset& h) { h.m_offset = 4000000000u; }), "{}",
         R"({"hdmi-audio-offset":4000000000})"},
        {"hdmi reads", fresh<HdmiAudioOffset>(), R"({"hdmi-audio-offset":2147483647})",
         R"({"hdmi-audio-offset":2147483647})"},
        {"hdmi too big", fresh<HdmiAudioOffset>(), R"({"hdmi-audio-offset":4000000000})", nullptr},
        {"loopback", fresh<InterfaceLoopBack>(), R"({"enable":true,"interface":{"type":4,"string":"sdi"}})",
         R"({"enable":true,"interface":{"type":4,"string":"sdi"}})"},
        {"loopback defaults", fresh<InterfaceLoopBack>(), "{}",
         R"({"enable":false,"interface":{"type":12,"string":"auto"}})"},
        {"stream status", fresh<StreamStatus>(), R"({"id":5,"alarms":[{"code":1,"severity":"major"}]})",
         R"({"id":5,"alarms":[{"code":1,"severity":"major","text":"","time":0}]})"},
        {"stream status no alarms", fresh<StreamStatus>([](StreamStatus& s) { s.m_alarms.emplace_back(); }),
         R"({"id":2})", R"({"id":2})"},
        {"stream status bad alarm", fresh<StreamStatus>(), R"({"alarms":[{"code":"x"}]})", nullptr},
    };
    for (const Row& row : rows) {
        auto r = row.make();
        Json::Value doc = jsonOf(row.doc);
        if (row.expected == nullptr) {
            EXPECT_ANY_THROW(r->Deserialize(doc)) << row.name;
            continue;
        }
        r->Deserialize(doc);
        Json::Value out;
        r->Serialize(out);
        EXPECT_EQ(jsonText(out), jsonText(jsonOf(row.expected))) << row.name;
    }
}

TEST(StatusTypes, TimingModeOutOfTableIsWrittenAsError) {
    VideoTimingParameters t;
    t.m_timing_mode = 9;
    Json::Value out;
    t.Serialize(out);
    EXPECT_EQ(out["timing-mode"].asString(), "ERROR");
}

TEST(StatusTypes, SessionStatusReplacesBothLists) {
    SessionStatus s;
    s.m_id = 1;
    s.m_alarms.emplace_back();
    s.m_streams.emplace_back();
    s.m_streams.emplace_back();
    s.m_streams.emplace_back();
    Json::Value doc = jsonOf(R"({"id":9,"streams":[{"id":1,"alarms":[{"code":11}]},
                                                   {"id":2,"alarms":[{"code":12,"text":"t"}]}]})");
    s.Deserialize(doc);
    EXPECT_EQ(s.m_id, 9u);
    EXPECT_TRUE(s.m_alarms.empty());
    ASSERT_EQ(s.m_streams.size(), 2u);
    EXPECT_EQ(s.m_streams.front().m_alarms.size(), 1u);
    EXPECT_EQ(s.m_streams.back().m_alarms.front().m_code, 12u);
    Json::Value out;
    s.Serialize(out);
    EXPECT_JSON_EQ(
        out,
        R"({"id":9,"streams":[{"id":1,"alarms":[{"code":11,"severity":"indeterminate","text":"","time":0}]},
                                              {"id":2,"alarms":[{"code":12,"severity":"indeterminate","text":"t","time":0}]}]})");
    Json::Value empty = jsonOf("{}");
    s.Deserialize(empty);
    EXPECT_TRUE(s.m_streams.empty());
    Json::Value emptyOut;
    s.Serialize(emptyOut);
    EXPECT_JSON_EQ(emptyOut, R"({"id":0})");
}

TEST(StatusTypes, SdiOffsetListAppendsAndKeepsMissingKeys) {
    SdiOffsetList list;
    Json::Value out;
    list.Serialize(out);
    EXPECT_JSON_EQ(out, "[]");
    Json::Value doc = jsonOf(R"([{"sdi-port":258,"video-offset":7},{"audio-offset":2147483647}])");
    list.Deserialize(doc);
    list.Deserialize(doc);
    ASSERT_EQ(list.m_offsets.size(), 4u);
    list.Serialize(out);
    EXPECT_JSON_EQ(out, R"([{"sdi-port":2,"video-offset":7,"audio-offset":0},
                            {"sdi-port":0,"video-offset":0,"audio-offset":2147483647},
                            {"sdi-port":2,"video-offset":7,"audio-offset":0},
                            {"sdi-port":0,"video-offset":0,"audio-offset":2147483647}])");

    SdiOffset one(3, 4, 5);
    Json::Value partial = jsonOf(R"({"audio-offset":6})");
    one.Deserialize(partial);
    EXPECT_EQ(one, SdiOffset(3, 4, 6));
    SdiOffset big(0, 3000000000u, 0);
    Json::Value bigOut;
    big.Serialize(bigOut);
    EXPECT_EQ(bigOut["video-offset"].asUInt(), 3000000000u);
    EXPECT_ANY_THROW(one.Deserialize(bigOut));
    Json::Value notArray = jsonOf(R"({"a":1})");
    EXPECT_ANY_THROW(list.Deserialize(notArray));
}

}  // namespace

#include "pimAvMngApi/model/SdiData.h"

namespace {

TEST(StatusTypes, SdiDataWritesPortAndGenerator) {
    SdiData d;
    d.m_sdi_port = 2;
    d.m_pattern_control = -3;
    d.m_enable = true;
    d.m_video_format = VideoFormat(VideoFormat::VIDEO_FORMAT_1080I59_94);
    Json::Value out;
    d.Serialize(out);
    EXPECT_JSON_EQ(
        out,
        R"({"sdi-port":2,"vpg":{"patctrl":-3,"video-format":"1080i59.94","enable":true,"sync-enable":false}})");
    SdiData back;
    back.Deserialize(out);
    EXPECT_EQ(back.m_pattern_control, -3);
    EXPECT_TRUE(back.m_enable);
    EXPECT_EQ(back.m_sdi_port, 2);
}

}  // namespace
