#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pimAvMngApi/model/HdmiAudioOffset.h"
#include "pimAvMngApi/model/InterfaceLoopBack.h"
#include "pimAvMngApi/model/SdiData.h"
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
        {"timing out of table",
         fresh<VideoTimingParameters>([](VideoTimingParameters& t) { t.m_timing_mode = 9; }), "{}",
         R"({"timing-mode":"ERROR"})"},
        {"timing wrong kind", fresh<VideoTimingParameters>(), R"({"initBufDelay":"5"})", "throws"},
        {"timing mode object", fresh<VideoTimingParameters>(), R"({"timing-mode":{}})", "throws"},
        {"tpc full", fresh<TpcStatistics>(),
         R"({"session-id":18446744073709551615,"stream-id":7,"error-detected":true,"data-detected":true})",
         R"({"session-id":18446744073709551615,"stream-id":7,"error-detected":true,"data-detected":true})"},
        {"tpc empty",
         fresh<TpcStatistics>([](TpcStatistics& t) { t.m_stream_id = 3, t.m_data_detected = true; }), "{}",
         R"({"session-id":0,"stream-id":0,"error-detected":false,"data-detected":false})"},
        {"tpc wrong", fresh<TpcStatistics>(), R"({"stream-id":-3})", "throws"},
        {"notifications", fresh<UserNotifications>(), R"({"running-is-not-saved":true})",
         R"({"running-is-not-saved":true,"startup-applied":false})"},
        {"notifications wrong", fresh<UserNotifications>(), R"({"startup-applied":"yes"})", "throws"},
        {"hdmi keeps", fresh<HdmiAudioOffset>([](HdmiAudioOffset& h) { h.m_offset = 4000000000u; }), "{}",
         R"({"hdmi-audio-offset":4000000000})"},
        {"hdmi reads", fresh<HdmiAudioOffset>(), R"({"hdmi-audio-offset":2147483647})",
         R"({"hdmi-audio-offset":2147483647})"},
        {"hdmi too big", fresh<HdmiAudioOffset>(), R"({"hdmi-audio-offset":4000000000})", "throws"},
        {"loopback", fresh<InterfaceLoopBack>(), R"({"enable":true,"interface":{"type":4,"string":"sdi"}})",
         R"({"enable":true,"interface":{"type":4,"string":"sdi"}})"},
        {"loopback defaults", fresh<InterfaceLoopBack>(), "{}",
         R"({"enable":false,"interface":{"type":12,"string":"auto"}})"},
        {"stream status", fresh<StreamStatus>(), R"({"id":5,"alarms":[{"code":1,"severity":"major"}]})",
         R"({"id":5,"alarms":[{"code":1,"severity":"major","text":"","time":0}]})"},
        {"stream status no alarms", fresh<StreamStatus>([](StreamStatus& s) { s.m_alarms.emplace_back(); }),
         R"({"id":2})", R"({"id":2})"},
        {"stream status bad alarm", fresh<StreamStatus>(), R"({"alarms":[{"code":"x"}]})", "throws"},
    };
    for (const Row& row : rows) {
        auto r = row.make();
        EXPECT_EQ(readThenWritten(*r, row.doc), canon(row.expected)) << row.name;
    }
}

TEST(StatusTypes, SessionStatusReplacesBothLists) {
    SessionStatus s;
    s.m_id = 1;
    s.m_alarms.emplace_back();
    s.m_streams.resize(3);
    EXPECT_EQ(
        readThenWritten(s, R"({"id":9,"streams":[{"id":1,"alarms":[{"code":11}]},
                                                       {"id":2,"alarms":[{"code":12,"text":"t"}]}]})"),
        canon(
            R"({"id":9,"streams":[{"id":1,"alarms":[{"code":11,"severity":"indeterminate","text":"","time":0}]},
                        {"id":2,"alarms":[{"code":12,"severity":"indeterminate","text":"t","time":0}]}]})"));
    EXPECT_TRUE(s.m_alarms.empty());
    EXPECT_EQ(readThenWritten(s, "{}"), canon(R"({"id":0})"));
}

TEST(StatusTypes, SdiOffsetListAppendsAndKeepsMissingKeys) {
    SdiOffsetList list;
    EXPECT_EQ(written(list), "[]");
    const char* doc = R"([{"sdi-port":258,"video-offset":7},{"audio-offset":2147483647}])";
    readThenWritten(list, doc);  // reading appends: the second read doubles the list
    EXPECT_EQ(readThenWritten(list, doc), canon(R"([{"sdi-port":2,"video-offset":7,"audio-offset":0},
                            {"sdi-port":0,"video-offset":0,"audio-offset":2147483647},
                            {"sdi-port":2,"video-offset":7,"audio-offset":0},
                            {"sdi-port":0,"video-offset":0,"audio-offset":2147483647}])"));
    EXPECT_EQ(readThenWritten(list, R"({"a":1})"), "throws");

    SdiOffset one(3, 4, 5);
    EXPECT_EQ(readThenWritten(one, R"({"audio-offset":6})"),
              canon(R"({"sdi-port":3,"video-offset":4,"audio-offset":6})"));
    SdiOffset big(0, 3000000000u, 0);
    EXPECT_EQ(writtenDoc(big)["video-offset"].asUInt(), 3000000000u);
    EXPECT_EQ(readThenWritten(one, written(big)), "throws");
}

TEST(StatusTypes, SdiDataWritesPortAndGenerator) {
    const char* full =
        R"({"sdi-port":2,"vpg":{"patctrl":-3,"video-format":"1080i59.94","enable":true,"sync-enable":false}})";
    SdiData d;
    d.m_sdi_port = 2;
    d.m_pattern_control = -3;
    d.m_enable = true;
    d.m_video_format = VideoFormat(VideoFormat::VIDEO_FORMAT_1080I59_94);
    EXPECT_EQ(written(d), canon(full));
    SdiData back;
    readInto(back, full);
    EXPECT_EQ(back.m_pattern_control, -3);
    EXPECT_TRUE(back.m_enable);
    EXPECT_EQ(back.m_sdi_port, 2);
}

}  // namespace
