// Parsing: SDP text in, session (or result code and user messages) out.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "SdpTestSupport.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

using Messages = std::vector<std::string>;

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string withCrlf(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\n') {
            out += '\r';
        }
        out += c;
    }
    return out;
}

const char* const kNoSource =
    "Source IP address is a mandatory field in the SDP. Check your \"a=source-filter\" or the \"o=\"lines.";
const char* const kNoDestination =
    "Destination IP is a mandatory field in the SDP. Check your \"a=source-filter\" line.";
const char* const kNoPtp = "Reference clock must be PTP. Check your \"a=ts-refclk\" line.";
const char* const kNoChannels =
    "Number of channels is a mandatory field in the SDP. Check your \"a=rtpmap:\" line.";
const char* const kNoMedia = "Unable to find one media session in the SDP. Check your \"m=\" line.";

struct ParseCase {
    const char* name;
    std::string text;
    int code;
    Messages messages;                                  // user messages, in order
    std::vector<std::string> logLines;                  // lines that must appear in the log
    std::function<void(const SdpSession&)> check;       // on success
};

void runCase(const ParseCase& c) {
    SCOPED_TRACE(c.name);
    SdpConverter converter;
    LogCapture log;
    EXPECT_EQ(converter.parseSdp(c.text), c.code);
    EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(), c.messages);
    std::vector<std::string> level2;
    for (const auto& line : log.lines()) {
        if (line.level == 2) {
            level2.push_back(line.text);
        }
    }
    for (const std::string& message : c.messages) {
        EXPECT_NE(std::find(level2.begin(), level2.end(), message), level2.end()) << message;
    }
    for (const std::string& line : c.logLines) {
        EXPECT_TRUE(log.contains(line)) << line;
    }
    if (c.code == 0 && c.check) {
        SdpSession session;
        converter.getSdpConfig(session);
        c.check(session);
    }
}

}  // namespace

TEST(SdpParse, Aes67ExampleFillsEveryField) {
    SdpConverter converter;
    LogCapture log;
    ASSERT_EQ(converter.parseSdp(aes67Text()), 0);
    SdpSession s;
    converter.getSdpConfig(s);
    EXPECT_EQ(s.m_session_id, 123u);
    EXPECT_EQ(s.m_session_version, 456u);
    EXPECT_EQ(s.m_info, "Stage box 1");
    ASSERT_EQ(s.m_media.size(), 1u);
    const SdpMedia& m = s.m_media[0];
    EXPECT_EQ(m.m_type, SdpMedia::AUDIO);
    EXPECT_EQ(m.m_udp_port, 5004u);
    EXPECT_EQ(m.m_payload_types, std::vector<uint8_t>{96});
    ASSERT_EQ(m.m_rtp_maps.size(), 1u);
    EXPECT_EQ(m.m_rtp_maps[0].m_payload_type, 96);
    EXPECT_EQ(m.m_rtp_maps[0].m_codec.toString(), "L24");
    EXPECT_EQ(m.m_rtp_maps[0].m_channel_freq, 48000u);
    EXPECT_EQ(m.m_rtp_maps[0].m_number_channels, 8);
    EXPECT_FLOAT_EQ(m.m_ptime, 1.0f);
    EXPECT_EQ(m.m_transport_ip, 0xEF450101u);
    EXPECT_EQ(m.m_ttl, 32);
    EXPECT_TRUE(m.m_clock_is_ptp);
    EXPECT_EQ(m.m_ptp_gm_id, "00-1d-c1-ff-fe-12-34-56");
    EXPECT_EQ(m.m_ptp_domain, 0);
    EXPECT_EQ(m.m_media_clock, 0u);
    EXPECT_EQ(m.m_local_ip, 0xC0A8010Au) << "inherited from the origin";
    EXPECT_TRUE(log.contains("::[AES67-2013]Ptp domain found::0"));
    EXPECT_EQ(log.count("SDP PARSE returned 0"), 1u);
    std::string stored;
    converter.getSdpString(&stored);
    EXPECT_EQ(stored, aes67Text());
}

TEST(SdpParse, LineEndsAndBlankLinesDoNotMatter) {
    SdpConverter lf;
    SdpConverter crlf;
    SdpConverter blank;
    ASSERT_EQ(lf.parseSdp(aes67Text()), 0);
    ASSERT_EQ(crlf.parseSdp(withCrlf(aes67Text())), 0);
    ASSERT_EQ(blank.parseSdp("\n\n" + replaced(aes67Text(), "t=0 0\n", "t=0 0\n\n\n")), 0);
    SdpSession a, b, c;
    lf.getSdpConfig(a);
    crlf.getSdpConfig(b);
    blank.getSdpConfig(c);
    Json::Value ja, jb, jc;
    a.Serialize(ja);
    b.Serialize(jb);
    c.Serialize(jc);
    EXPECT_EQ(jsonText(ja), jsonText(jb));
    EXPECT_EQ(jsonText(ja), jsonText(jc));
}

TEST(SdpParse, EdgeCases) {
    const std::string base = aes67Text();
    const std::string dupText =
        "v=0\no=- 1 1 IN IP4 192.168.1.10\ns=dup\nt=0 0\na=group:DUP 1 2\n"
        "m=audio 5004 RTP/AVP 96\nc=IN IP4 239.1.1.1/32\na=rtpmap:96 L24/48000/2\na=ptime:1\n"
        "a=ts-refclk:ptp=IEEE1588-2008:00-11-22-ff-fe-33-44-55:0\na=mid:1\n"
        "m=audio 5004 RTP/AVP 96\nc=IN IP4 239.2.1.1/32\na=rtpmap:96 L24/48000/2\na=ptime:1\n"
        "a=ts-refclk:ptp=IEEE1588-2008:00-11-22-ff-fe-33-44-55:0\na=mid:2\n";
    const std::string multiText = replaced(dupText, "a=group:DUP 1 2", "a=group:MULTI-SD 1 2");

    const std::vector<ParseCase> cases = {
        {"session c= before m= belongs to the media without a group",
         replaced(base, "m=audio", "c=IN IP4 239.7.7.7/5\nm=audio"), 0, {}, {},
         [](const SdpSession& s) {
             EXPECT_EQ(s.m_media[0].m_transport_ip, 0xEF450101u) << "the later media c= wins";
             EXPECT_EQ(s.m_media[0].m_ttl, 32);
         }},
        {"session c= alone carries the destination",
         replaced(replaced(base, "c=IN IP4 239.69.1.1/32\n", ""), "m=audio", "c=IN IP4 239.7.7.7/5\nm=audio"), 0,
         {}, {}, [](const SdpSession& s) {
             EXPECT_EQ(s.m_media[0].m_transport_ip, 0xEF070707u);
             EXPECT_EQ(s.m_media[0].m_ttl, 5);
         }},
        {"session c= with a grouping line is ignored",
         replaced(dupText, "a=group:DUP 1 2\n", "a=group:DUP 1 2\nc=IN IP4 239.9.9.9/1\n"), 0, {},
         {"Ignored line:[c=IN IP4 239.9.9.9/1]"},
         [](const SdpSession& s) {
             ASSERT_EQ(s.m_media.size(), 2u);
             EXPECT_EQ(s.m_media[0].m_transport_ip, 0xEF010101u);
             EXPECT_EQ(s.m_media[1].m_transport_ip, 0xEF020101u);
             EXPECT_EQ(s.m_media[1].m_group, "2");
             EXPECT_EQ(s.m_media[1].m_group_type, SdpGroup::GROUP_DUP);
         }},
        {"DUP mids out of order", replaced(replaced(dupText, "a=mid:1", "a=mid:X"), "a=mid:2", "a=mid:1"), -1, {},
         {"::Group (X) delimiting the media type does not match the order set in a=group::DUP (1)"}, nullptr},
        {"DUP accepts any text as mid",
         replaced(replaced(replaced(dupText, "DUP 1 2", "DUP V1 V2"), "a=mid:1", "a=mid:V1"), "a=mid:2", "a=mid: V2 "),
         0, {}, {}, [](const SdpSession& s) { EXPECT_EQ(s.m_media[1].m_group, "V2"); }},
        {"PHASED group refused", replaced(base, "t=0 0\n", "t=0 0\na=group:PHASED 1 2\n"), -7, {},
         {"Group PHASED not supported"}, nullptr},
        {"MULTI-SD with integer mids", multiText, 0, {}, {},
         [](const SdpSession& s) { EXPECT_EQ(s.m_media[0].m_group_type, SdpGroup::GROUP_MULTI_SD); }},
        {"MULTI-SD mid that is no integer", replaced(multiText, "a=mid:1", "a=mid:V1"), -7, {},
         {"Media identification in group is invalid and needs to be an integer: V1"}, nullptr},
        {"MULTI-2SI mid out of int range", replaced(replaced(multiText, "MULTI-SD", "MULTI-2SI"), "a=mid:2",
                                                    "a=mid:99999999999"),
         -7, {}, {"Media identification in group is invalid and needs to be an integer: 99999999999"}, nullptr},
        {"hex version in origin", replaced(base, "o=- 123 456", "o=- 123 0x10"), 0, {}, {},
         [](const SdpSession& s) {
             EXPECT_EQ(s.m_session_id, 123u);
             EXPECT_EQ(s.m_session_version, 16u);
             EXPECT_EQ(s.m_local_ip, 0xC0A8010Au);
         }},
        {"octal version, decimal id", replaced(base, "o=- 123 456", "o=- 0123 010"), 0, {}, {},
         [](const SdpSession& s) {
             EXPECT_EQ(s.m_session_id, 123u);
             EXPECT_EQ(s.m_session_version, 8u);
         }},
        {"id beyond 64 bits saturates, version beyond them is 0",
         replaced(base, "o=- 123 456", "o=- 18446744073709551616 18446744073709551616"), 0, {},
         {"trying to convert to long long out of range: 18446744073709551616"},
         [](const SdpSession& s) {
             EXPECT_EQ(s.m_session_id, 18446744073709551615ULL);
             EXPECT_EQ(s.m_session_version, 0u);
         }},
        {"non-numeric id and version", replaced(base, "o=- 123 456", "o=- x12 y"), 0, {},
         {"trying to convert to long long invalid value: y"},
         [](const SdpSession& s) {
             EXPECT_EQ(s.m_session_id, 0u);
             EXPECT_EQ(s.m_session_version, 0u);
         }},
        {"origin with user name only: no source address",
         replaced(base, "o=- 123 456 IN IP4 192.168.1.10", "o=alice"), -1, {kNoSource}, {},
         nullptr},
        {"invalid origin address", replaced(base, "192.168.1.10", "192.168.1.300"), -1, {kNoSource},
         {"Error parsing IP [192.168.1.300]: invalid IP address", "::Source IP found but it is invalid: [192.168.1.300]"},
         nullptr},
        {"t= with one value", replaced(base, "t=0 0", "t=5"), 0, {}, {},
         [](const SdpSession& s) {
             EXPECT_EQ(s.m_time.m_start, 5u);
             EXPECT_EQ(s.m_time.m_stop, 0u);
         }},
        {"empty s= clears the name", replaced(base, "s=Stage box 1", "s="), 0, {}, {},
         [](const SdpSession& s) { EXPECT_EQ(s.m_info, ""); }},
        {"unknown attribute is ignored", replaced(base, "t=0 0\n", "t=0 0\na=recvonly\n"), 0, {},
         {"Ignored line:[a=recvonly]"}, nullptr},
        {"no m= line", "v=0\no=- 1 1 IN IP4 10.0.0.1\ns=x\nt=0 0\nc=IN IP4 239.1.1.1/32\n", -1, {kNoMedia}, {},
         nullptr},
        {"invalid destination with TTL", replaced(base, "239.69.1.1/32", "239.69.1.300/16"), -1, {kNoDestination},
         {"::TTL found::16", "::Destination IP found but it is invalid: [239.69.1.300]"}, nullptr},
        {"non-numeric ptime aborts", replaced(base, "a=ptime:1", "a=ptime:fast"), -7, {},
         {"SDP PARSE threw exception"}, nullptr},
        {"fractional ptime", replaced(base, "a=ptime:1", "a=ptime:0.125"), 0, {}, {},
         [](const SdpSession& s) { EXPECT_FLOAT_EQ(s.m_media[0].m_ptime, 0.125f); }},
        {"RFC 7273 domain number", replaced(base, "34-56:0", "34-56:domain-nmbr=5"), 0, {},
         {"::[AES67-2015]Ptp domain found::5"},
         [](const SdpSession& s) { EXPECT_EQ(s.m_media[0].m_ptp_domain, 5); }},
        {"clock-domain then ts-refclk: last wins",
         replaced(base, "a=ptime:1\n", "a=ptime:1\na=clock-domain:PTPv2 3\n"), 0, {}, {"::clock-domain found::3"},
         [](const SdpSession& s) { EXPECT_EQ(s.m_media[0].m_ptp_domain, 0); }},
        {"NTP reference clock", replaced(base, "ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0", "ntp=/traceable/"), -1,
         {kNoPtp}, {"::Clock reference is not PTP!! we do not support that yet.::ntp"}, nullptr},
        {"L24 without channel count", replaced(base, "L24/48000/8", "L24/48000"), -1, {kNoChannels},
         {"trying to convert to integer invalid value: a=rtpmap:96 L24/48000"}, nullptr},
        {"unknown codec gets one channel", replaced(base, "L24/48000/8", "opus/48000/2"), 0, {},
         {"::Codec not recognized, using Not-supported as standard::opus"},
         [](const SdpSession& s) { EXPECT_EQ(s.m_media[0].m_rtp_maps[0].m_number_channels, 1); }},
        {"source filter gives both addresses",
         replaced(base, "a=mediaclk", "a=source-filter: incl IN IP4 239.69.1.1 10.1.2.3\na=mediaclk"), 0, {}, {},
         [](const SdpSession& s) { EXPECT_EQ(s.m_media[0].m_local_ip, 0x0A010203u); }},
        {"channel order groups", replaced(base, "a=ptime:1\n", "a=fmtp:96 channel-order=SMPTE2110.(ST, ST ,M)x\na=ptime:1\n"),
         0, {}, {},
         [](const SdpSession& s) {
             EXPECT_EQ(s.m_media[0].m_channel_order, (std::vector<std::string>{"ST", "ST", "M"}));
         }},
        {"every problem reported at once",
         "v=1\no=- 1 1\ns=x\nt=0 0\nm=audio 0 RTP/AVP 0\na=rtpmap:0 L16/0\n", -1,
         {"Version in the SDP should be 0. received 1", kNoSource, kNoDestination, kNoPtp,
          "Packet time is a mandatory field in the SDP. Check your \"a=ptime:\" line.",
          "UDP port is a mandatory field in the SDP. Check your \"m=audio\" line.",
          "Payload type is a mandatory field in the SDP. Check your \"m=audio\" line.",
          "Channels frequency is a mandatory field in the SDP. Check your \"a=rtpmap:\" line.", kNoChannels},
         {}, nullptr},
        {"audio without rtpmap", replaced(base, "a=rtpmap:96 L24/48000/8\n", ""), -1,
         {"Unable to find one rtpmap in the SDP. Check your \"a=rtpmap\" line."}, {}, nullptr},
        {"a token counts anywhere in the line", replaced(base, "a=ptime:1", "xa=ptime:0.5"), 0, {}, {},
         [](const SdpSession& s) { EXPECT_FLOAT_EQ(s.m_media[0].m_ptime, 0.5f); }},
        {"a session token inside another attribute", replaced(base, "t=0 0\n", "t=0 0\na=tool:set=3\n"), 0, {},
         {}, [](const SdpSession& s) { EXPECT_EQ(s.m_time.m_start, 3u); }},
        {"text after a carriage return is dropped",
         replaced(base, "a=ptime:1\n", "a=ptime:1\na=recvonly\ra=ptime:x\n"), 0, {}, {"Ignored line:[a=recvonly]"},
         nullptr},
        {"grouping lines are read before the carriage-return cut",
         replaced(base, "t=0 0\n", "t=0 0\na=recvonly\ra=group:PHASED 1 2\n"), -7, {},
         {"Group PHASED not supported"}, nullptr},
        {"source filter without a source keeps the origin address",
         replaced(base, "a=mediaclk", "a=source-filter: incl IN IP4 239.69.1.1\na=mediaclk"), 0, {},
         {"Error parsing IP []: invalid IP address", "::Source IP found but it is invalid: []"},
         [](const SdpSession& s) { EXPECT_EQ(s.m_media[0].m_local_ip, 0xC0A8010Au); }},
        {"address one character too long", replaced(base, "239.69.1.1/32", "239.255.255.2551/32"), -1,
         {kNoDestination}, {"Error parsing IP [239.255.255.2551]: invalid IP address"}, nullptr},
    };
    for (const ParseCase& c : cases) {
        runCase(c);
    }
}

TEST(SdpParse, VideoCases) {
    const std::string header = sessionHeader();
    const std::vector<ParseCase> cases = {
        {"ST 2110-20 1080i50", header + videoSection(), 0, {}, {"::Video Format found ::1080i50"},
         [](const SdpSession& s) {
             const SdpMedia& m = s.m_media[0];
             EXPECT_EQ(m.m_type, SdpMedia::VIDEO);
             EXPECT_EQ(m.m_video.getVideoFormat(), VideoFormat::VIDEO_FORMAT_1080I50);
             EXPECT_EQ(m.m_depth, 10u);
             EXPECT_EQ(m.m_sampling, "YCbCr-4:2:2");
             EXPECT_EQ(m.m_colorimetry, "BT709");
             EXPECT_EQ(m.m_packing_mode, "2110GPM");
             EXPECT_EQ(m.m_sender_type, "2110TPN");
             EXPECT_EQ(m.m_ptp_domain, 127);
         }},
        {"ST 2022-6 map on a 2110 board", header + videoSection("SMPTE2022-6/27000000"), -1, {},
         {"::Stream is video, but not valid type SMPTE2022-6."}, nullptr},
        {"video without rtpmap", header + replaced(videoSection(), "a=rtpmap:96 raw/90000\n", ""), -1, {},
         {"::Stream is video, but not valid type ."}, nullptr},
        {"fractional exact frame rate",
         header + replaced(replaced(videoSection(), "exactframerate=25", "exactframerate=60000/1001"), "interlace; ",
                           ""),
         0, {}, {"framerate found 60000.000000/1001.000000"},
         [](const SdpSession& s) { EXPECT_EQ(s.m_media[0].m_video.getVideoFrameRate(), 59); }},
        {"plain framerate key", header + replaced(videoSection(), "exactframerate=25", "framerate=25"), 0, {},
         {"framerate found under a=fmtp as framerate"},
         [](const SdpSession& s) { EXPECT_EQ(s.m_media[0].m_video.getVideoFrameRate(), 25); }},
        {"fmtp without PM and TP is well formed",
         header + replaced(replaced(videoSection(), "PM=2110GPM; ", ""), "TP=2110TPN; ", ""), 0, {},
         {"SDP fmtp line: could not find PM", "SDP fmtp line: could not find TP"}, nullptr},
        {"fmtp without depth is malformed", header + replaced(videoSection(), "depth=10; ", ""), -1, {},
         {"SDP fmtp line: could not find depth", "::Format found but it is malformed: <a=fmtp:96",
          "::Stream is video, but no valid video format found."},
         nullptr},
        {"fmtp key at line end", header + replaced(videoSection(), "interlace; ", "interlace="), -1, {},
         {"SDP fmtp line: interlace is invalid", "::Format found but it is malformed"}, nullptr},
        {"non-numeric width aborts", header + replaced(videoSection(), "width=1920", "width=wide"), -7, {},
         {"SDP PARSE threw exception"}, nullptr},
        {"a=framerate line is consumed and clears the rate",
         header + videoSection() + "a=framerate:25\n", -1,
         {}, {"::Frame rate found::0", "::Stream is video, but no valid video format found."}, nullptr},
        {"unsupported rate leaves the fmtp line over",
         header + replaced(videoSection(), "exactframerate=25", "exactframerate=7"), -1, {},
         {"::Format found but framerate is not supported: <a=fmtp:96"}, nullptr},
    };
    for (const ParseCase& c : cases) {
        runCase(c);
    }
    BoardScope damson(DAMSON, BitstreamType::MODULE_SDI_TR04);
    runCase({"ST 2022-6 map on a DAMSON TR04 board", header + videoSection("SMPTE2022-6/27000000"), 0, {}, {},
             nullptr});
    runCase({"raw map on a DAMSON TR04 board", header + videoSection(), -1, {},
             {"::Stream is video, but not valid type raw."}, nullptr});
}

TEST(SdpParse, FailedParseKeepsPreviousResult) {
    SdpConverter converter;
    LogCapture log;
    ASSERT_EQ(converter.parseSdp(aes67Text()), 0);
    EXPECT_EQ(converter.parseSdp("v=0\n"), -1);
    EXPECT_EQ(converter.parseSdp(replaced(aes67Text(), "a=ptime:1", "a=ptime:x")), -7);
    SdpSession s;
    converter.getSdpConfig(s);
    EXPECT_EQ(s.m_session_id, 123u);
    std::string text;
    converter.getSdpString(&text);
    EXPECT_EQ(text, aes67Text());
}

TEST(SdpParse, LenientConversions) {
    struct Case {
        const char* text;
        unsigned int value;
        const char* message;  // nullptr: no level-2 line
    };
    const Case cases[] = {
        {"42", 42, nullptr},
        {" 0x1F", 31, nullptr},
        {"017", 15, nullptr},
        {"12abc", 12, nullptr},
        {"-1", 4294967295u, nullptr},
        {"", 0, "trying to convert to integer a empty string. That is bad."},
        {"abc", 0, "trying to convert to integer invalid value: abc"},
        {"4294967296", 0, "trying to convert to integer out of range: 4294967296"},
    };
    for (const Case& c : cases) {
        LogCapture log;
        EXPECT_EQ(SdpConverter::parseUnsigned(c.text), c.value) << c.text;
        EXPECT_EQ(log.at(2), c.message ? std::vector<std::string>{c.message} : std::vector<std::string>{}) << c.text;
    }
    LogCapture log;
    EXPECT_EQ(SdpConverter::parseUnsigned64("18446744073709551615"), 18446744073709551615ULL);
    EXPECT_EQ(SdpConverter::parseUnsigned64("18446744073709551616"), 0u);
    EXPECT_EQ(SdpConverter::parseUnsigned64(""), 0u);
    EXPECT_EQ(log.at(2), (std::vector<std::string>{"trying to convert to long long out of range: 18446744073709551616",
                                                   "trying to convert to long long with an empty string. That is bad."}));
}

TEST(SdpParse, NullPointersGiveMinusFour) {
    SdpConverter converter;
    LogCapture log;
    std::vector<std::string> lines;
    std::string item;
    SdpMedia media;
    SdpSession session;
    EXPECT_EQ(converter.parseSdpSession(nullptr, &lines, &lines), -4);
    EXPECT_EQ(converter.parseSdpMedia(&media, nullptr, &lines, SdpGroup::GROUP_NONE, item), -4);
    EXPECT_EQ(converter.checkMinimumCfg(nullptr), -4);
    EXPECT_EQ(log.at(2), (std::vector<std::string>{"parseSdpSession:: Parameter is null.",
                                                   "parseSdpMedia:: Parameter is null.",
                                                   "checkMinimumCfg:: Parameter is null."}));
}

TEST(SdpParse, GroupItemsKeepEmptyOnes) {
    SdpConverter converter;
    LogCapture log;
    std::vector<std::string> lines = {"a=group:DUP a  b\r"};
    SdpGroup group;
    EXPECT_EQ(converter.parseGroups(lines, group), 0);
    EXPECT_EQ(group.m_type, SdpGroup::GROUP_DUP);
    EXPECT_EQ(group.m_items, (std::vector<std::string>{"a", "", "b"}));
    EXPECT_TRUE(log.contains("SDP:: parsed last group item b"));
}
