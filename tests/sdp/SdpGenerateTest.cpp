// Generation: byte-exact texts and the round trip generate -> parse.

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "SdpTestSupport.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

SdpMediaRtpMap rtpMap(uint8_t payloadType, const char* codec, uint32_t rate, uint16_t channels) {
    SdpMediaRtpMap map;
    map.m_payload_type = payloadType;
    map.m_codec.setCodec(codec);
    map.m_channel_freq = rate;
    map.m_number_channels = channels;
    return map;
}

SdpMedia audioMedia(uint16_t channels, float ptime, uint32_t transport = 0xEF450101) {
    SdpMedia media;
    media.m_type = SdpMedia::AUDIO;
    media.m_udp_port = 5004;
    media.m_ttl = 32;
    media.m_ptime = ptime;
    media.m_number_samples = 48;
    media.m_clock_is_ptp = true;
    media.m_ptp_gm_id = "00-1d-c1-ff-fe-12-34-56";
    media.m_transport_ip = transport;
    media.m_local_ip = 0xC0A8010A;
    media.m_rtp_maps.push_back(rtpMap(96, "L24", 48000, channels));
    media.m_payload_types = {96};
    return media;
}

SdpMedia videoMedia(VideoFormat::video_format_t format, const char* codec, uint32_t rate) {
    SdpMedia media;
    media.m_type = SdpMedia::VIDEO;
    media.m_udp_port = 5000;
    media.m_ttl = 64;
    media.m_clock_is_ptp = true;
    media.m_ptp_gm_id = "08-00-11-ff-fe-22-39-e4";
    media.m_ptp_domain = 127;
    media.m_media_clock = 12345;
    media.m_transport_ip = 0xEF640101;
    media.m_local_ip = 0xC0A80114;
    media.m_rtp_maps.push_back(rtpMap(98, codec, rate, 1));
    media.m_payload_types = {98};
    media.m_video = VideoFormat(format);
    media.m_depth = 10;
    media.m_sampling = "YCbCr-4:2:2";
    media.m_colorimetry = "BT709";
    media.m_packing_mode = "2110GPM";
    media.m_sender_type = "2110TPN";
    return media;
}

SdpSession sessionOf(std::vector<SdpMedia> media) {
    SdpSession session;
    session.m_local_ip = 0xC0A8010A;
    session.m_info = "Stream one";
    session.m_session_id = 9876543210ULL;
    session.m_session_version = 3;
    session.m_media = std::move(media);
    return session;
}

std::string generated(SdpSession session) {
    SdpConverter converter;
    EXPECT_EQ(converter.setSdpConfig(session), 0);
    std::string text;
    EXPECT_EQ(converter.getSdpString(&text), 0);
    return text;
}

}  // namespace

TEST(SdpGenerate, Aes67AudioText) {
    BoardScope board(BIRCH_AES67, BitstreamType::MODULE_NA);
    SdpSession session = sessionOf({audioMedia(8, 1.0f)});
    session.m_session_id = 0;
    session.m_session_version = 0;
    session.m_info = "";
    session.m_media[0].m_group = "primary";  // single description: no a=mid line
    EXPECT_EQ(generated(session),
              "v=0\n"
              "o=- 0 0 IN IP4 192.168.1.10\n"
              "s=\n"
              "t=0 0\n"
              "m=audio 5004 RTP/AVP 96\n"
              "c=IN IP4 239.69.1.1/32\n"
              "a=clock-domain:PTPv2 0\n"
              "a=ts-refclk:ptp=IEEE1588-2008:00-1d-c1-ff-fe-12-34-56:0\n"
              "a=mediaclk:direct=0\n"
              "a=source-filter: incl IN IP4 239.69.1.1 192.168.1.10\n"
              "a=rtpmap:96 L24/48000/8\n"
              "a=framecount:48\n"
              "a=ptime:1\n");
}

TEST(SdpGenerate, DupVideoTextWithGroupAndMids) {
    BoardScope board(MAPLE, BitstreamType::MODULE_SDI_ST2110);
    SdpMedia primary = videoMedia(VideoFormat::VIDEO_FORMAT_1080I59_94, "raw", 90000);
    primary.m_group = "primary";
    primary.m_info = "leg A";
    SdpMedia secondary = primary;
    secondary.m_group = "secondary";
    secondary.m_info = "";
    secondary.m_type = SdpMedia::NOT_RECOGNIZED;
    const std::string text = generated(sessionOf({primary, secondary}));
    const std::string videoLines =
        "c=IN IP4 239.100.1.1/64\n"
        "a=clock-domain:PTPv2 127\n"
        "a=ts-refclk:ptp=IEEE1588-2008:08-00-11-ff-fe-22-39-e4:127\n"
        "a=mediaclk:direct=12345\n"
        "a=source-filter: incl IN IP4 239.100.1.1 192.168.1.20\n";
    EXPECT_EQ(text,
              "v=0\n"
              "o=- 9876543210 3 IN IP4 192.168.1.10\n"
              "s=Stream one\n"
              "t=0 0\n"
              "a=group:DUP primary secondary\n"
              "m=video 5000 RTP/AVP 98\n"
              "i=leg A\n" +
                  videoLines +
                  "a=rtpmap:98 raw/90000\n"
                  "a=fmtp:98 sampling=YCbCr-4:2:2; width=1920; height=1080; exactframerate=30000/1001; depth=10; "
                  "colorimetry=BT709; PM=2110GPM; TP=2110TPN; SSN=ST2110-20:2017; interlace=1; \n"
                  "a=mid:primary\n" +
                  videoLines + "a=mid:secondary\n");
}

TEST(SdpGenerate, PtimeAndChannelOrderFormats) {
    struct Case {
        float ptime;
        uint16_t channels;
        const char* ptimeLine;
        const char* orderLine;
    };
    const Case cases[] = {
        {1.0f, 2, "a=ptime:1\n", "a=fmtp:96 channel-order=SMPTE2110.(U02)\n"},
        {4.0f, 16, "a=ptime:4\n", "a=fmtp:96 channel-order=SMPTE2110.(U16)\n"},
        {0.125f, 8, "a=ptime:0.125\n", "a=fmtp:96 channel-order=SMPTE2110.(SGRP,SGRP)\n"},
        {0.333333f, 1, "a=ptime:0.333\n", "a=fmtp:96 channel-order=SMPTE2110.(U01)\n"},
    };
    struct Board {
        BoardModelType model;
        BitstreamType::module_t module;
        bool writesOrder;
    };
    const Board boards[] = {
        {DAMSON, BitstreamType::MODULE_SDI_TR04, true},     {DAMSON, BitstreamType::MODULE_SDI_BIDIR_ST2110, true},
        {DAMSON, BitstreamType::MODULE_HDMI_ST2110, false}, {JUNIPER, BitstreamType::MODULE_HDMI_ST2110, true},
        {JUNIPER_QH, BitstreamType::MODULE_SDI_ST2110, true}, {MAPLE, BitstreamType::MODULE_NA, false},
        {MAPLE, BitstreamType::MODULE_SDI_BIDIR_ST2110, true}, {JUNIPER, BitstreamType::MODULE_SDI_TR04, false},
        {BIRCH_AES67, BitstreamType::MODULE_SDI_ST2110, false},
    };
    for (const Board& b : boards) {
        BoardScope board(b.model, b.module);
        for (const Case& c : cases) {
            const std::string text = generated(sessionOf({audioMedia(c.channels, c.ptime)}));
            SCOPED_TRACE(text);
            EXPECT_NE(text.find(std::string("a=framecount:48\n") + c.ptimeLine), std::string::npos);
            const size_t order = text.find(c.orderLine);
            if (b.writesOrder) {
                EXPECT_EQ(order + strlen(c.orderLine), text.size()) << "last line";
            } else {
                EXPECT_EQ(text.find("channel-order"), std::string::npos);
            }
        }
    }
}

TEST(SdpGenerate, DanteText) {
    SdpSession session = sessionOf({audioMedia(2, 1.0f)});
    session.m_media[0].m_rtp_maps.push_back(rtpMap(97, "L16", 44100, 4));
    SdpConverter converter;
    LogCapture log;
    ASSERT_EQ(converter.setSdpConfig(session), 0);
    std::string standard;
    converter.getSdpString(&standard);
    std::string dante = "old";
    ASSERT_EQ(converter.generateDanteSdp(dante), 0);
    EXPECT_EQ(dante,
              "v=0\r\n"
              "o=- 9876543210 3 IN IP4 192.168.1.10\r\n"
              "s=Stream one\r\n"
              "c=IN IP4 239.69.1.1/32\r\n"
              "t=0 0\r\n"
              "m=audio 5004 RTP/AVP 96\r\n"
              "i=channel_0,channel_1\r\n"
              "a=clock-domain:PTPv2 0\r\n"
              "a=ts-refclk:ptp=IEEE1588-2008:00-1d-c1-ff-fe-12-34-56:0\r\n"
              "a=mediaclk:direct=0\r\n"
              "a=source-filter: incl IN IP4 239.69.1.1 192.168.1.10\r\n"
              "a=rtpmap:96 L24/48000/2\r\n"
              "a=framecount:48\r\n"
              "a=ptime:1.0000\r\n");
    std::string after;
    converter.getSdpString(&after);
    EXPECT_EQ(after, standard) << "the Dante text does not replace the stored text";

    SdpConverter empty;
    dante = "old";
    EXPECT_LT(empty.generateDanteSdp(dante), 0);
    EXPECT_EQ(dante, "");
    SdpSession noMap = sessionOf({audioMedia(2, 1.0f)});
    noMap.m_media[0].m_rtp_maps.clear();
    ASSERT_EQ(empty.setSdpConfig(noMap), 0);
    EXPECT_LT(empty.generateDanteSdp(dante), 0);
    EXPECT_EQ(dante, "");
}

TEST(SdpGenerate, UndefinedVideoFormatFailsButOtherMediaAreWritten) {
    SdpMedia bad = videoMedia(VideoFormat::VIDEO_FORMAT_1080P50, "raw", 90000);
    bad.m_video = VideoFormat();
    bad.m_group = "a";
    SdpMedia good = audioMedia(2, 1.0f);
    good.m_group = "b";
    SdpConverter converter;
    LogCapture log;
    SdpSession session = sessionOf({bad, good});
    EXPECT_LT(converter.setSdpConfig(session), 0);
    EXPECT_EQ(log.count("CHK("), 2u) << "generateSessionMedia and setSdpConfig";
    std::string text;
    converter.getSdpString(&text);
    EXPECT_NE(text.find("a=source-filter: incl IN IP4 239.100.1.1 192.168.1.20\nm=audio"), std::string::npos);
    EXPECT_NE(text.find("a=mid:b\n"), std::string::npos);
    EXPECT_EQ(text.find("a=mid:a"), std::string::npos);
}

// A field written with a CR, LF or NUL would end its line and stand as a line of its own:
// such a session gets no text in either form, and the log names the field. A field that
// is not written (the group of a lone description) does not matter.
TEST(SdpGenerate, FieldsWithLineBreaksAreRefused) {
    struct Case {
        std::string field;  // as the log line names it
        std::function<void(SdpSession&)> poison;
        bool danteRefused;
    };
    const std::vector<Case> cases = {
        {"session name", [](SdpSession& s) { s.m_info = "x\r\nm=video 9 RTP/AVP 96"; }, true},
        {"session user name", [](SdpSession& s) { s.m_user_name = std::string("a\0b", 3); }, true},
        {"media 0 protocol", [](SdpSession& s) { s.m_media[0].m_protocol = "RTP/AVP\r"; }, true},
        {"media 0 PTP grandmaster", [](SdpSession& s) { s.m_media[0].m_ptp_gm_id += "\n"; }, true},
        {"media 0 title", [](SdpSession& s) { s.m_media[0].m_info = "evil\na=injected:1"; }, false},
        {"media 1 group", [](SdpSession& s) { s.m_media[1].m_group = "b\n"; }, false},
        {"media 1 sampling", [](SdpSession& s) { s.m_media[1].m_sampling += "\r"; }, false},
        {"media 1 colorimetry", [](SdpSession& s) { s.m_media[1].m_colorimetry += std::string(1, '\0'); }, false},
        {"media 1 packing mode", [](SdpSession& s) { s.m_media[1].m_packing_mode += "\n"; }, false},
        {"media 1 sender type", [](SdpSession& s) { s.m_media[1].m_sender_type += "\n"; }, false},
    };
    SdpMedia audio = audioMedia(2, 1.0f);
    audio.m_group = "a";
    SdpMedia video = videoMedia(VideoFormat::VIDEO_FORMAT_1080P50, "raw", 90000);
    video.m_group = "b";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.field);
        SdpSession session = sessionOf({audio, video});
        c.poison(session);
        SdpConverter converter;
        LogCapture log;
        EXPECT_EQ(converter.setSdpConfig(session), -1);
        std::string text = "old";
        converter.getSdpString(&text);
        EXPECT_EQ(text, "");
        EXPECT_TRUE(log.contains("SDP:: " + c.field + " holds a CR, LF or NUL character; no SDP generated"));
        std::string dante = "old";
        EXPECT_EQ(converter.generateDanteSdp(dante), c.danteRefused ? -1 : 0);
        EXPECT_EQ(dante.empty(), c.danteRefused);
    }
    SdpMedia lone = audioMedia(2, 1.0f);
    lone.m_group = "unused\n";
    EXPECT_EQ(generated(sessionOf({lone})).find("unused"), std::string::npos);
}

TEST(SdpGenerate, AccessorsAndManualText) {
    SdpConverter converter;
    LogCapture log;
    EXPECT_EQ(converter.getSdpString(nullptr), -4);
    EXPECT_EQ(converter.generateSdp(nullptr), -4);
    EXPECT_EQ(log.at(2), (std::vector<std::string>{"getSdpString:: Parameter is null.",
                                                   "generateSdp:: Parameter is null."}));
    EXPECT_TRUE(log.contains("SDP:: generating SDP from media session internal configuration"));
    std::string manual("v=0\ns=hand\n\0tail", 16);
    EXPECT_EQ(converter.generateManualSessionSdp(manual), 0);
    std::string text;
    converter.getSdpString(&text);
    EXPECT_EQ(text, "v=0\ns=hand\n");
}

// Every session the generator writes reads back into the same session.
TEST(SdpGenerate, RoundTrip) {
    struct Case {
        const char* name;
        BoardModelType model;
        BitstreamType::module_t module;
        std::vector<SdpMedia> media;
    };
    SdpMedia dupA = audioMedia(8, 1.0f);
    dupA.m_group = "primary";
    SdpMedia dupB = audioMedia(8, 1.0f, 0xEF450202);
    dupB.m_group = "secondary";
    dupB.m_info = "backup leg";
    SdpMedia l16 = audioMedia(2, 0.125f);
    l16.m_rtp_maps[0] = rtpMap(97, "L16", 44100, 2);
    l16.m_rtp_maps.push_back(rtpMap(98, "AM824", 48000, 6));
    l16.m_payload_types = {97, 98};
    l16.m_ptp_domain = 42;
    l16.m_media_clock = 4000000000u;
    SdpMedia v1 = videoMedia(VideoFormat::VIDEO_FORMAT_1080P59_94, "raw", 90000);
    v1.m_group = "1";
    SdpMedia v2 = videoMedia(VideoFormat::VIDEO_FORMAT_1080P59_94, "raw", 90000);
    v2.m_group = "2";
    v2.m_transport_ip = 0xEF640102;
    const std::vector<Case> cases = {
        {"AES67 audio", BIRCH_AES67, BitstreamType::MODULE_NA, {audioMedia(8, 1.0f)}},
        {"two RTP maps, 125 us, channel orders", MAPLE, BitstreamType::MODULE_SDI_ST2110, {l16}},
        {"DUP audio pair", DAMSON, BitstreamType::MODULE_SDI_TR04, {dupA, dupB}},
        {"ST 2110-20 interlaced", MAPLE, BitstreamType::MODULE_HDMI_ST2110,
         {videoMedia(VideoFormat::VIDEO_FORMAT_1080I50, "raw", 90000)}},
        {"ST 2110-20 on a plain board", BIRCH_AES67, BitstreamType::MODULE_NA,
         {videoMedia(VideoFormat::VIDEO_FORMAT_720P59_94, "raw", 90000)}},
        {"ST 2022-6 on DAMSON TR04", DAMSON, BitstreamType::MODULE_SDI_TR04,
         {videoMedia(VideoFormat::VIDEO_FORMAT_1080I59_94, "SMPTE2022-6", 27000000)}},
        {"DUP video pair", JUNIPER, BitstreamType::MODULE_SDI_ST2110, {v1, v2}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        BoardScope board(c.model, c.module);
        SdpSession session = sessionOf(c.media);
        const std::string text = generated(session);
        SdpConverter parser;
        LogCapture log;
        ASSERT_EQ(parser.parseSdp(text), 0) << text;
        SdpSession back;
        parser.getSdpConfig(back);
        Json::Value expected, actual;
        session.Serialize(expected);
        back.Serialize(actual);
        EXPECT_EQ(jsonText(actual), jsonText(expected)) << text;
        for (size_t i = 0; i < back.m_media.size(); ++i) {
            EXPECT_EQ(back.m_media[i].m_video, session.m_media[i].m_video);
            EXPECT_EQ(back.m_media[i].m_packing_mode, session.m_media[i].m_packing_mode);
            EXPECT_EQ(back.m_media[i].m_sender_type, session.m_media[i].m_sender_type);
        }
        EXPECT_TRUE(log.at(2).empty()) << log.at(2).front();
    }
}
