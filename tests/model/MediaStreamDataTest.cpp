#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "pimAvMngApi/model/SessionBasicInfo.h"
#include "pimAvMngApi/model/SessionConfigData.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

TEST(MediaStreamData, PacketSizesWithAndWithoutVlan) {
    AudioStreamData audio, audio2;
    VideoStreamData video, video2;
    AncillaryStreamData anc, anc2;
    audio2.m_payload_size = 288;
    anc2.m_payload_size = 100;
    const std::vector<std::tuple<StreamData*, uint16_t, unsigned>> rows = {
        {&audio, 0, 54},     {&audio2, 10, 346}, {&video, 0, 1442},
        {&video2, 10, 1446}, {&anc, 0, 66},      {&anc2, 4095, 170},
    };
    for (const auto& [stream, vlan, expected] : rows) {
        stream->m_vlan.m_id = vlan;
        EXPECT_EQ(writtenDoc(*stream)["packet-size"].asUInt(), expected) << stream->m_type.toString();
    }
}

TEST(MediaStreamData, ConstructorsAndReadingFixTheMediaType) {
    AudioStreamData audio;
    VideoStreamData video;
    EXPECT_TRUE(audio.isAudio());
    EXPECT_FALSE(video.isAudio());
    EXPECT_EQ(video.m_udp.m_source, 20000);
    EXPECT_EQ(video.m_ipv4.m_dscp, 40);
    EXPECT_EQ(audio.m_udp.m_destination, 5004);
    EXPECT_EQ(audio.m_ipv4.m_dscp, 34);

    readInto(audio, R"({"type":"video","codec":"l24","payload-size":192,"samples":48,
                                     "dst-mac-addr":"01:00:5e:7f:00:01"})");
    EXPECT_EQ(audio.m_type.get(), StreamType::AUDIO);
    Json::Value out = writtenDoc(audio);
    EXPECT_EQ(out["codec"].asString(), "L24");
    EXPECT_EQ(out["samples"].asInt(), 48);
    EXPECT_EQ(out["packet-size"].asUInt(), 246u);
    EXPECT_EQ(out["hw-id"].asUInt(), 0u);
    EXPECT_EQ(out["dst-mac-addr"].asString(), "01-00-5E-7F-00-01");

    video.m_payload_size = 1000;
    readInto(video, R"({"type":"audio","payload-size":10,"sync-enable":false,"sof-link-offset":7,
                        "tributary":{"type":"MULTI-SD","index":1}})");
    EXPECT_EQ(video.m_type.get(), StreamType::VIDEO);
    EXPECT_EQ(video.m_payload_size, 1000u);
    EXPECT_FALSE(video.m_sync_enable);
    EXPECT_EQ(video.getTributaryType(), TributaryType(2, 1));
    out = writtenDoc(video);
    EXPECT_EQ(out["sof-link-offset"].asUInt(), 7u);
    EXPECT_TRUE(out["video"].isObject());
    readInto(video, "{}");
    EXPECT_TRUE(video.m_sync_enable);
}

TEST(MediaStreamData, DerivedDumpLines) {
    AudioStreamData audio;
    audio.m_unicast = true;
    audio.m_dst_mac = {1, 0, 0x5E, 0x7F, 0, 1};
    audio.m_channel_freq = 48000;
    audio.m_link_offset = 3;
    audio.m_ptime = 1000;
    audio.m_samples = PacketTimeOptions::SAMPLES_PER_PKT_48;
    audio.m_l1_bandwidth = 5000000000ull;
    audio.m_payload_size = 288;
    LogCapture capture;
    audio.dumpStreamData();
    const std::vector<std::string> lines = capture.at(6);
    ASSERT_GE(lines.size(), 9u);
    EXPECT_EQ(lines[6], "Class:            sender (Unicast)");
    EXPECT_EQ(lines[7], "VLAN:             Disable");
    EXPECT_EQ(lines[8], "UDP:");
    EXPECT_EQ(capture.count("    DST Mac Addr  01-00-5E-7F-00-01"), 1u);
    EXPECT_EQ(std::vector<std::string>(lines.end() - 8, lines.end()),
              (std::vector<std::string>{"AUDIO STREAM DATA:", "  Channel Freq      48000",
                                        "  Link Offset       3 [us]", "  Packet time       1000 [us]",
                                        "  Num of Samples    48", "  L1 bandwidth      5000000000 bits/s",
                                        "  Payload Size      288 bytes", "  Codec             AM824"}));

    capture.clear();
    VideoStreamData video;
    video.m_sof_link_offset = 12;
    video.m_tributary.set(TributaryType::MULTI_2SI);
    video.dumpStreamData();
    const std::vector<std::string> vlines = capture.at(6);
    EXPECT_EQ(capture.count("DST Mac Addr"), 0u);
    EXPECT_EQ(
        std::vector<std::string>(vlines.end() - 5, vlines.end()),
        (std::vector<std::string>{
            "VIDEO STREAM DATA:", "  Video mode          " + video.m_video_format.toString(),
            "  SOF Sync enable     true", "  SOF link offset     12 ns", "  Tributary type      MULTI-2SI"}));
}

TEST(SessionConfigData, ReadingTable) {
    SessionConfigData s;
    EXPECT_EQ(written(s), canon(R"({"id":0,"version":0,"name":"","nmos-id":"","ptp":{"domain":0,"gmid":""},
        "connection":{"remote":null,"origin":"jsonapi"},"sdp":"","type":"unknown"})"));

    Json::Value doc = jsonOf(R"({"id":1,"version":2,"name":"n","nmos-id":"x","sdp":"v=0",
        "ptp":{"domain":300,"gmid":"00-11"},"connection":{"remote":"ctl","origin":"nmos"},
        "audio-streams":[{},{}],"video-streams":[{}],"type":"destination"})");
    s.Deserialize(doc);
    s.Deserialize(doc);  // the stream lists are replaced, not appended to
    EXPECT_EQ(s.m_ptp_domain, 44);
    EXPECT_EQ(s.m_audio_streams.size(), 2u);
    EXPECT_EQ(s.m_video_streams.size(), 1u);
    EXPECT_EQ(s.m_connection.m_origin, 1);
    Json::Value out = writtenDoc(s);
    EXPECT_EQ(out["audio-streams"].size(), 2u);
    EXPECT_EQ(out["video-streams"][0]["type"].asString(), "video");
    EXPECT_EQ(out["type"].asString(), "destination");

    LogCapture capture;
    readInto(s, R"({"connection":{"remote":{}},"type":"Source"})");
    EXPECT_EQ(s.m_ptp_domain, 44);
    EXPECT_EQ(s.m_ptp_gmid, "00-11");
    EXPECT_EQ(s.m_connection.m_remote, "ctl");
    EXPECT_TRUE(s.m_audio_streams.empty());
    EXPECT_EQ(s.m_type.get(), 0);
    EXPECT_EQ(capture.at(2), std::vector<std::string>{"[SessionConnectionInfo] Error de-serializing json [" +
                                                      jsonOf(R"({"remote":{}})").toStyledString() + "]"});

    EXPECT_ANY_THROW(readInto(s, R"({"audio-streams":[{},{"udp":7}]})"));
    EXPECT_EQ(s.m_audio_streams.size(), 1u);
}

TEST(SessionBasicInfo, StreamKindsDoublingAndWrittenForm) {
    SessionBasicInfo info;
    readInto(info, R"({"id":7})");
    EXPECT_EQ(written(info), canon(R"({"id":7,"version":0,"name":"","remote-sid":0,
        "remote-sid-str":"0","ptp-domain":0,"rtsp-url":"","ptp-gmid":""})"));
    EXPECT_TRUE(info.m_streams.empty());

    Json::Value doc =
        jsonOf(R"({"id":1,"version":3,"name":"s","rtsp-url":"rtsp://x","remote-sid":18446744073709551615,
        "remote-sid-str":"ignored","ptp-domain":127,"ptp-gmid":"g",
        "session-list":[{"type":"audio"},{"type":"video"},{"type":"ancillary"}]})");
    info.Deserialize(doc);
    ASSERT_EQ(info.m_streams.size(), 3u);
    auto it = info.m_streams.begin();
    EXPECT_NE(dynamic_cast<AudioStreamData*>(*it++), nullptr);
    EXPECT_NE(dynamic_cast<VideoStreamData*>(*it++), nullptr);
    EXPECT_NE(dynamic_cast<VideoStreamData*>(*it), nullptr);
    EXPECT_EQ((*it)->m_type.get(), StreamType::VIDEO);
    Json::Value out = writtenDoc(info);
    EXPECT_FALSE(out.isMember("session-list"));
    EXPECT_EQ(out["remote-sid-str"].asString(), "18446744073709551615");
    info.Deserialize(doc);
    EXPECT_EQ(info.m_streams.size(), 6u);

    EXPECT_ANY_THROW(readInto(info, R"({"session-list":[{"type":"audio"},{"type":{}}]})"));
    EXPECT_EQ(info.m_streams.size(), 7u);
}

TEST(SessionBasicInfo, CopiesAreDeepAndKeepTheKind) {
    SessionBasicInfo info;
    readInto(info, R"({"name":"a","session-list":[{"type":"audio","name":"s1"},{"type":"video"}]})");
    info.m_streams.push_back(nullptr);
    SessionBasicInfo copy(info);
    ASSERT_EQ(copy.m_streams.size(), 3u);
    EXPECT_NE(copy.m_streams.front(), info.m_streams.front());
    EXPECT_NE(dynamic_cast<AudioStreamData*>(copy.m_streams.front()), nullptr);
    EXPECT_EQ(copy.m_streams.front()->m_name, "s1");
    EXPECT_EQ(copy.m_streams.back(), nullptr);

    SessionBasicInfo assigned;
    assigned = info;
    assigned = assigned;
    EXPECT_EQ(assigned.m_streams.size(), 3u);
    SessionBasicInfo moved(std::move(copy));
    EXPECT_EQ(moved.m_streams.size(), 3u);
    EXPECT_TRUE(copy.m_streams.empty());  // NOLINT(bugprone-use-after-move): moved-from is empty
    assigned = std::move(moved);
    EXPECT_EQ(assigned.m_streams.size(), 3u);
    EXPECT_EQ(assigned.m_name, "a");
}

}  // namespace
