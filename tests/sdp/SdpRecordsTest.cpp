// JSON forms and dumps of the SDP records.

#include <gtest/gtest.h>

#include "pimAvMngApi/sdp/SdpGroup.h"
#include "pimAvMngApi/sdp/SdpMedia.h"
#include "pimAvMngApi/sdp/SdpMediaRtpMap.h"
#include "pimAvMngApi/sdp/SdpSession.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

TEST(SdpRecords, FreshMediaSerializesDefaultsWithoutLists) {
    SdpMedia media;
    Json::Value out;
    media.Serialize(out);
    EXPECT_EQ(out["type"].asString(), "NOT_RECOGNIZED");
    EXPECT_EQ(out["protocol"].asString(), "RTP/AVP");
    EXPECT_EQ(out["ttl"].asInt(), 64);
    EXPECT_TRUE(out["ptime"].isDouble());
    EXPECT_EQ(out["ptime"].asDouble(), 0.0);
    EXPECT_TRUE(out["clock-is-ptp"].isBool());
    EXPECT_FALSE(out["clock-is-ptp"].asBool());
    EXPECT_EQ(out["local-ip"].asString(), "0.0.0.0");
    EXPECT_EQ(out["transport-ip"].asString(), "0.0.0.0");
    EXPECT_FALSE(out.isMember("rtpmap"));
    EXPECT_FALSE(out.isMember("payload_types"));
    EXPECT_FALSE(out.isMember("m_group_type"));
    EXPECT_TRUE(out["ptp"].isMember("gmid"));
    EXPECT_TRUE(out["ptp"].isMember("domain"));
    for (const char* key : {"depth", "sampling", "colorimetry"}) {
        EXPECT_TRUE(out["video"].isMember(key)) << key;
    }
}

TEST(SdpRecords, FreshSessionHasDashUserAndNoMedia) {
    SdpSession session;
    EXPECT_EQ(session.m_user_name, "-");
    Json::Value out;
    session.Serialize(out);
    EXPECT_EQ(out["local-ip"].asString(), "0.0.0.0");
    EXPECT_FALSE(out.isMember("media"));
    EXPECT_TRUE(out["id"].isUInt64());
    EXPECT_EQ(out["time"]["start"].asUInt(), 0u);
}

TEST(SdpRecords, SignednessOfNumbers) {
    SdpSession session;
    session.m_session_id = 18446744073709551615ULL;
    session.m_media.emplace_back();
    SdpMedia& media = session.m_media.back();
    media.m_udp_port = 4000000000u;
    media.m_number_samples = 200;
    media.m_payload_types = {96, 250};
    SdpMediaRtpMap map;
    map.m_payload_type = 200;
    map.m_number_channels = 40000;
    map.m_channel_freq = 3000000000u;
    media.m_rtp_maps.push_back(map);
    Json::Value out;
    session.Serialize(out);
    EXPECT_EQ(out["id"].asUInt64(), 18446744073709551615ULL);
    const Json::Value& m = out["media"][0];
    EXPECT_EQ(m["udp"].asUInt(), 4000000000u);
    EXPECT_EQ(m["number-samples"].type(), Json::intValue);
    EXPECT_EQ(m["udp"].type(), Json::uintValue);
    EXPECT_EQ(m["payload_types"][1].type(), Json::intValue);
    EXPECT_EQ(m["payload_types"][1].asInt(), 250);
    EXPECT_EQ(m["rtpmap"][0]["payload-type"].type(), Json::intValue);
    EXPECT_EQ(m["rtpmap"][0]["number-channels"].asInt(), 40000);
    EXPECT_EQ(m["rtpmap"][0]["channel-freq"].type(), Json::uintValue);
    EXPECT_EQ(m["rtpmap"][0]["codec"].asString(), "AM824");
}

TEST(SdpRecords, RtpMapCodecTextAndDefaults) {
    struct Case {
        const char* json;
        const char* codecOut;
        int channels;
    };
    const Case cases[] = {
        {R"({"codec": "l24", "number-channels": 2})", "L24", 2},
        {R"({"codec": "rAw"})", "raw", 1},
        {R"({"codec": "opus"})", "Not-supported", 1},
        {R"({})", "AM824", 1},
        {R"({"codec": "smpte2022-6", "number-channels": 65537})", "SMPTE2022-6", 1},
    };
    for (const Case& c : cases) {
        SdpMediaRtpMap map;
        Json::Value in = jsonOf(c.json);
        map.Deserialize(in);
        Json::Value out;
        map.Serialize(out);
        EXPECT_EQ(out["codec"].asString(), c.codecOut) << c.json;
        EXPECT_EQ(map.m_number_channels, c.channels) << c.json;
    }
}

TEST(SdpRecords, MediaDeserializeAppendsListsAndKeepsBadAddresses) {
    const char* text = R"({"type": "AUDIO", "udp": 5004, "ptime": 0.125, "ttl": 300,
        "local-ip": "300.1.1.1", "transport-ip": "239.1.2.3",
        "payload_types": [96, 353], "rtpmap": [{"payload-type": 96, "codec": "L24"}],
        "ptp": {"gmid": "00-11", "domain": 257}})";
    LogCapture log;
    SdpMedia media;
    media.m_local_ip = 0x0A000001;
    Json::Value in = jsonOf(text);
    media.Deserialize(in);
    EXPECT_EQ(media.m_type, SdpMedia::AUDIO);
    EXPECT_FLOAT_EQ(media.m_ptime, 0.125f);
    EXPECT_EQ(media.m_ttl, 44);
    EXPECT_EQ(media.m_ptp_domain, 1);
    EXPECT_EQ(media.m_local_ip, 0x0A000001u);
    EXPECT_EQ(media.m_transport_ip, 0xEF010203u);
    EXPECT_EQ(media.m_payload_types, (std::vector<uint8_t>{96, 97}));
    EXPECT_EQ(log.at(2), std::vector<std::string>{"Error parsing IP [300.1.1.1]: invalid IP address"});
    EXPECT_EQ(media.m_protocol, "");

    Json::Value again = jsonOf(text);
    media.Deserialize(again);
    EXPECT_EQ(media.m_rtp_maps.size(), 2u);
    EXPECT_EQ(media.m_payload_types.size(), 4u);
}

TEST(SdpRecords, MissingKeysResetScalarsButVideoOnlyReadFromObject) {
    SdpMedia media;
    media.m_depth = 10;
    media.m_sampling = "YCbCr-4:2:2";
    media.m_protocol = "UDP";
    media.m_local_ip = 5;
    Json::Value in = jsonOf(R"({"local-ip": "", "video": 7})");
    media.Deserialize(in);
    EXPECT_EQ(in, jsonOf(R"({"local-ip": "", "video": 7})"));  // members are read, never added
    EXPECT_EQ(media.m_protocol, "");
    EXPECT_EQ(media.m_ttl, 0);
    EXPECT_EQ(media.m_type, SdpMedia::NOT_RECOGNIZED);
    EXPECT_EQ(media.m_local_ip, 5u);
    EXPECT_EQ(media.m_depth, 10u);
    EXPECT_EQ(media.m_sampling, "YCbCr-4:2:2");
}

TEST(SdpRecords, SessionJsonRoundTrip) {
    SdpSession session;
    session.m_protocol_version = 0;
    session.m_user_name = "dev";
    session.m_session_id = 1234567890123ULL;
    session.m_session_version = 7;
    session.m_time.m_start = 5;
    session.m_time.m_stop = 6;
    session.m_info = "name";
    session.m_local_ip = 0xC0A80101;
    for (int i = 0; i < 2; ++i) {
        SdpMedia media;
        media.m_type = i == 0 ? SdpMedia::AUDIO : SdpMedia::VIDEO;
        media.m_group = i == 0 ? "primary" : "secondary";
        media.m_clock_is_ptp = true;
        media.m_ptp_gm_id = "00-1d-c1-ff-fe-12-34-56";
        media.m_video = VideoFormat(VideoFormat::VIDEO_FORMAT_1080I50);
        media.m_depth = 10;
        media.m_colorimetry = "BT709";
        session.m_media.push_back(media);
    }
    Json::Value out;
    session.Serialize(out);
    SdpSession back;
    back.Deserialize(out);
    Json::Value again;
    back.Serialize(again);
    EXPECT_EQ(jsonText(again), jsonText(out));
    EXPECT_EQ(back.m_media[1].m_video, session.m_media[1].m_video);

    Json::Value bare = jsonOf(R"({"id": 5})");
    back.Deserialize(bare);
    EXPECT_EQ(bare, jsonOf(R"({"id": 5})"));  // no "time" or "media" added
}

TEST(SdpRecords, TypeTextBothWays) {
    SdpMedia media;
    media.m_type = static_cast<SdpMedia::Type>(9);
    EXPECT_EQ(media.getTypeStr(), "NOT_RECOGNIZED");
    EXPECT_EQ(SdpMedia::getTypeEnum("AUDIO"), SdpMedia::AUDIO);
    EXPECT_EQ(SdpMedia::getTypeEnum("VIDEO"), SdpMedia::VIDEO);
    EXPECT_EQ(SdpMedia::getTypeEnum("audio"), SdpMedia::NOT_RECOGNIZED);
    SdpGroup group;
    EXPECT_EQ(group.m_type, SdpGroup::GROUP_NONE);
}

TEST(SdpRecords, DumpLines) {
    SdpSession session;
    session.m_session_id = 42;
    SdpMedia media;
    media.m_type = SdpMedia::NOT_RECOGNIZED;
    media.m_ptime = 1.0f;
    media.m_rtp_maps.emplace_back();
    session.m_media.push_back(media);
    LogCapture log;
    session.dump();
    const std::vector<std::string> lines = log.at(6);
    ASSERT_EQ(lines.size(), 10u + 16u + 6u);
    EXPECT_EQ(lines[0], "-------------------------");
    EXPECT_EQ(lines[3], "Id                     42");
    EXPECT_EQ(lines[8], "Media:: Total of       1");
    EXPECT_EQ(lines[9], ">------------------------");
    EXPECT_EQ(lines[10], " Type                  Video");
    EXPECT_EQ(lines[13], " Ptime                 1.000000");
    EXPECT_EQ(lines[16], " Local Ip              0.0.0.0");
    EXPECT_EQ(lines[19], " Sync with PTP         false");
    EXPECT_EQ(lines[23], " RtpMap:: total of     1");
    EXPECT_EQ(lines[24], ">>-----------------------");
    EXPECT_EQ(lines[26], "  Codec                AM824");
    EXPECT_EQ(lines[27], "  Number Channels      1");
    EXPECT_EQ(lines.back(), "-------------------------");
    EXPECT_EQ(log.lines().size(), lines.size());
}
