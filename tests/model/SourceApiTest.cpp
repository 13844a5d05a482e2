#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/model/SourceApi.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

TEST(AudioSource, CodecTimeAndFrequency) {
    struct Row {
        const char* doc;
        const char* codec;
        unsigned ptime;
        unsigned freq;
    };
    const std::vector<Row> rows = {
        {R"({"codec":"L24","ptime":1000,"channel-freq":48000})", "L24", 1000, 48000},
        {R"({"codec":"l16"})", "L16", 0, 0},
        {R"({})", "AM824", 0, 0},
        {R"({"codec":"opus"})", "Not-supported", 0, 0},
    };
    for (const Row& row : rows) {
        AudioSource a;
        a.m_ptime = 5;
        a.m_channel_freq = 5;
        readInto(a, row.doc);
        Json::Value out = writtenDoc(a);
        EXPECT_EQ(out["codec"].asString(), row.codec) << row.doc;
        EXPECT_EQ(out["ptime"].asUInt(), row.ptime) << row.doc;
        EXPECT_EQ(out["channel-freq"].asUInt(), row.freq) << row.doc;
        EXPECT_EQ(out["ssrc"]["type"].asString(), "unspecified");
    }
    AudioSource a;
    EXPECT_ANY_THROW(readInto(a, R"({"ptime":"1"})"));
}

TEST(AudioSource, ClearLogsBothLinesAndKeepsCodec) {
    AudioSource a;
    readInto(a, R"({"codec":"L24","ptime":1000,"channel-freq":48000,"name":"x","source-ip":"10.0.0.1"})");
    LogCapture capture;
    a.clear();
    EXPECT_EQ(capture.at(5),
              (std::vector<std::string>{"Clearing Audio Source", "Clearing Source base class"}));
    Json::Value out = writtenDoc(a);
    EXPECT_EQ(out["codec"].asString(), "L24");
    EXPECT_EQ(out["ptime"].asUInt(), 0u);
    EXPECT_EQ(out["channel-freq"].asUInt(), 0u);
    EXPECT_EQ(out["name"].asString(), "");
    EXPECT_EQ(out["source-ip"].asString(), "10.0.0.1");
    EXPECT_EQ(out["ssrc"]["type"].asString(), "session-id");
}

TEST(VideoSource, VideoObjectRules) {
    struct Row {
        const char* doc;
        bool sof;
        const char* timing;  // the timing keys expected inside "video"
        const char* tributary;
    };
    const std::vector<Row> rows = {
        {R"({})", false, R"({"timing-mode":"unset"})", R"({"type":"none","index":-1})"},
        {R"({"video":{}})", false, R"({"timing-mode":"unset"})", R"({"type":"none","index":-1})"},
        {R"({"video":{"timing-mode":"frame_sync"}})", true, R"({"timing-mode":"frame_sync"})",
         R"({"type":"none","index":-1})"},
        {R"({"video":{"sof-sync-enable":false,"initBufDelay":7},"tributary":{"type":"MULTI-2SI","index":1}})",
         false, R"({"timing-mode":"unset","initBufDelay":7})", R"({"type":"MULTI-2SI","index":1})"},
    };
    for (const Row& row : rows) {
        VideoSource v;
        readInto(v, row.doc);
        EXPECT_EQ(v.m_sof_sync_enable, row.sof) << row.doc;
        Json::Value out = writtenDoc(v);
        Json::Value timing;
        v.m_timing.Serialize(timing);
        EXPECT_EQ(jsonText(timing), canon(row.timing)) << row.doc;
        for (const char* key : {"timing-mode", "initBufDelay"}) {
            EXPECT_EQ(out["video"].get(key, "absent"), timing.get(key, "absent")) << row.doc;
        }
        EXPECT_EQ(out["video"]["sof-sync-enable"].asBool(), row.sof);
        EXPECT_EQ(jsonText(out["tributary"]), canon(row.tributary)) << row.doc;
    }
}

TEST(VideoSource, ClearAndTributaryText) {
    VideoSource v;
    readInto(v, R"({"video":{"sof-sync-enable":false,"rtpPktsPerFrame":9},
                                 "tributary":{"type":"MULTI-SD","index":3}})");
    EXPECT_EQ(v.setTributaryType("MULTI-3SI"), -8);
    EXPECT_EQ(v.m_tributary.get(), 2);
    LogCapture capture;
    v.clear();
    EXPECT_EQ(capture.at(5),
              (std::vector<std::string>{"Clearing Video Source", "Clearing Source base class"}));
    EXPECT_TRUE(v.m_sof_sync_enable);
    EXPECT_EQ(v.m_tributary, TributaryType(0, -1));
    EXPECT_EQ(v.m_timing.m_rtp_pkts_per_frame, 9);
    EXPECT_EQ(v.setTributaryType("MULTI-2SI"), 0);
}

TEST(SourceApi, ListsAndLogs) {
    SourceApi api;
    EXPECT_EQ(written(api), canon(R"({"session-id":0,"name":""})"));

    LogCapture capture;
    Json::Value doc = jsonOf(R"({"session-id":18446744073709551615,"name":"s",
        "ancillary-sources":[{"name":"a"}],
        "audio-sources":[{"source-ip":"10.0.0.1"},{"source-ip":"10.0.0.256"}],
        "video-sources":[{"source-ip":"10.0.0.3"}]})");
    api.Deserialize(doc);
    api.Deserialize(doc);  // clears first: no doubling
    EXPECT_EQ(api.m_ancillary_sources.size(), 1u);
    EXPECT_EQ(api.m_audio_sources.size(), 2u);
    EXPECT_EQ(api.m_video_sources.size(), 1u);
    const std::vector<std::string> once = {"Source IP in Source API: 10.0.0.1",
                                           "Source IP in Source API: 0.0.0.0",
                                           "Source IP in Source API: 10.0.0.3"};
    std::vector<std::string> twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(capture.at(5), twice);
    EXPECT_EQ(capture.count("Error parsing IP [10.0.0.256]: invalid IP address"), 2u);

    Json::Value out = writtenDoc(api);
    EXPECT_EQ(out["session-id"].asUInt64(), 18446744073709551615ull);
    EXPECT_EQ(out["ancillary-sources"][0]["name"].asString(), "a");
    EXPECT_FALSE(out["ancillary-sources"][0].isMember("codec"));
    EXPECT_EQ(out["audio-sources"].size(), 2u);
    EXPECT_EQ(out["audio-sources"][1]["codec"].asString(), "AM824");
    EXPECT_TRUE(out["video-sources"][0].isMember("video"));

    readInto(api, R"({"audio-sources":{"0":{}},"video-sources":"x"})");
    EXPECT_TRUE(api.m_audio_sources.empty());
    EXPECT_TRUE(api.m_ancillary_sources.empty());
    EXPECT_FALSE(writtenDoc(api).isMember("audio-sources"));

    EXPECT_ANY_THROW(readInto(api, R"({"audio-sources":[{},5,{}]})"));
    EXPECT_EQ(api.m_audio_sources.size(), 1u);
}

}  // namespace
