// The parser over SDP texts published by real devices and projects. Each file's
// outcome follows from the parsing rules: accepted, refused by a media section (no
// user message), or refused by the minimum check with its user messages.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "SdpTestSupport.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

const char* const kPtime = "Packet time is a mandatory field in the SDP. Check your \"a=ptime:\" line.";
const char* const kPtp = "Reference clock must be PTP. Check your \"a=ts-refclk\" line.";
const char* const kDestination =
    "Destination IP is a mandatory field in the SDP. Check your \"a=source-filter\" line.";
const char* const kPayloadType = "Payload type is a mandatory field in the SDP. Check your \"m=audio\" line.";
const char* const kNoMedia = "Unable to find one media session in the SDP. Check your \"m=\" line.";
const char* const kNotRaw = "::Stream is video, but not valid type Not-supported.";
const char* const kNoMap = "::Stream is video, but not valid type .";
const char* const kNoFormat = "::Stream is video, but no valid video format found.";

struct Expectation {
    int code;
    std::vector<std::string> messages;  // user messages, in order
    std::string logLine;                // a line that must be logged (empty: none)
    size_t media;                       // media descriptions when accepted
    std::string firstVideo;             // video format name of the first media when accepted
};

const std::map<std::string, Expectation>& expectations() {
    static const std::map<std::string, Expectation> table = {
        // Accepted.
        {"aes67-l16-44k1-ptime-1.088-refclk-traceable.sdp", {0, {}, "Ignored line:[a=recvonly]", 1, ""}},
        {"aes67-l16-48k-1ms-sap-remote-source.sdp", {0, {}, "::GM ID found::00-10-4b-ff-fe-7a-87-fc", 1, ""}},
        {"aes67-l24-48k-4ch-session-level-recvonly-no-eol.sdp",
         {0, {}, "Ignored line:[i=4 channels: c1, c2, c3, c4]", 1, ""}},
        {"aes67-l24-48k-8ch-session-level-c-no-media-c.sdp", {0, {}, "::TTL found::32", 1, ""}},
        {"dup-2022-7-audio-l24-8ch-mids-s1-s2.sdp", {0, {}, "::Group found::S2", 2, ""}},
        {"dup-2022-7-video-1080i2997-refclk-traceable-extmap.sdp",
         {0, {}, "::GM ID found::traceable", 2, "1080i59.94"}},
        {"dup-2022-7-video-1080p50.sdp", {0, {}, "::Group found::SECONDARY", 2, "1080p50"}},
        {"ravenna-l24-48k-1ms-session-media-refclk-midi-pre2.sdp",
         {0, {}, "Ignored line:[a=midi-pre2:50040 4,0;4,0]", 1, ""}},
        {"st2110-20-1080i25-trailing-semicolon.sdp", {0, {}, "::Video Format found ::1080i50", 1, "1080i50"}},
        {"st2110-20-1080p50.sdp", {0, {}, "::Video Format found ::1080p50", 1, "1080p50"}},
        {"st2110-30-l24-48k-2ch-ttl64-mediaclk-rate-domain127.sdp",
         {0, {}, "::[AES67-2013]Ptp domain found::127", 1, ""}},
        {"st2110-30-l24-48k-8ch-1ms-ttl128-framecount.sdp", {0, {}, "::clock-domain found::42", 1, ""}},
        // Refused by the minimum check.
        {"aes67-l24-44k1-mediaclk-rate-c-before-s-empty-s.sdp", {-1, {kPtime}, "", 0, ""}},
        {"aes67-mediaclk-ieee1722-stream-id.sdp", {-1, {kPtime}, "::Media clock found::38", 0, ""}},
        {"dante-aes67-no-refclk-crlf.sdp", {-1, {kPtp}, "", 0, ""}},
        {"malformed-ip7-unknown-f-line-crlf.sdp",
         {-1, {kDestination, kPtp, kPtime, kPayloadType}, "Ignored line:[f=invalid:yes]", 0, ""}},
        {"rfc4566-repeat-times-compact-units.sdp", {-1, {kNoMedia}, "", 0, ""}},
        {"sip-webrtc-jssip-audio-crlf.sdp", {-1, {kPtp, kPtime, kPayloadType}, "", 0, ""}},
        // Refused by a media section.
        {"dup-2022-7-anc-same-group-no-eol.sdp", {-1, {}, kNotRaw, 0, ""}},
        {"dup-2022-7-st2110-20-720i-mid-trailing-semicolon.sdp", {-1, {}, kNoFormat, 0, ""}},
        {"dup-rfc7104-group-mp2t-mids-s1a-s1b.sdp", {-1, {}, kNotRaw, 0, ""}},
        {"dup-temporal-duplication-delay.sdp", {-1, {}, kNotRaw, 0, ""}},
        {"h264-nmos-extmap-refclk-no-domain.sdp", {-1, {}, kNotRaw, 0, ""}},
        {"malformed-dup-three-media-duplicate-mid.sdp",
         {-1, {}, "::Group (prim) delimiting the media type does not match the order set in a=group::DUP (sec)", 0,
          ""}},
        {"malformed-fmtp-empty-no-eol.sdp", {-1, {}, kNoMap, 0, ""}},
        {"malformed-leading-zeros.sdp", {-1, {}, kNoMap, 0, ""}},
        {"media-lines-out-of-order-fields.sdp", {-1, {}, kNoMap, 0, ""}},
        {"raw-video-rtcp-attribute.sdp", {-1, {}, kNoFormat, 0, ""}},
        {"rfc4566-all-fields-multiple-t-r-z-k-crlf.sdp", {-1, {}, kNotRaw, 0, ""}},
        {"rfc4566-session-level-c-ttl127-timed.sdp", {-1, {}, kNotRaw, 0, ""}},
        {"rfc7273-ts-refclk-ntp-traceable-session.sdp", {-1, {}, kNotRaw, 0, ""}},
        {"st2110-40-anc-recvonly.sdp", {-1, {}, kNotRaw, 0, ""}},
        {"unknown-attributes-session-and-media.sdp", {-1, {}, kNoFormat, 0, ""}},
        {"webrtc-offer-session-c-empty-s-crlf.sdp", {-1, {}, kNotRaw, 0, ""}},
    };
    return table;
}

}  // namespace

TEST(SdpCorpus, EveryFileHasItsExpectedOutcome) {
    const std::vector<std::string> files = corpusFiles();
    ASSERT_FALSE(files.empty()) << "SDP corpus missing or empty: " << kCorpusDir;
    BoardScope board(MAPLE, BitstreamType::MODULE_SDI_ST2110);
    for (const std::string& name : files) {
        SCOPED_TRACE(name);
        const auto expected = expectations().find(name);
        ASSERT_NE(expected, expectations().end()) << "no expectation for a new corpus file";
        const Expectation& e = expected->second;
        SdpConverter converter;
        LogCapture log;
        EXPECT_EQ(converter.parseSdp(readText(kCorpusDir + name)), e.code);
        EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(), e.messages);
        if (!e.logLine.empty()) {
            EXPECT_TRUE(log.contains(e.logLine)) << e.logLine;
        }
        EXPECT_FALSE(log.contains("SDP PARSE threw exception"));
        if (e.code != 0) {
            continue;
        }
        SdpSession session;
        converter.getSdpConfig(session);
        ASSERT_EQ(session.m_media.size(), e.media);
        if (!e.firstVideo.empty()) {
            EXPECT_EQ(session.m_media[0].m_video.toString(), e.firstVideo);
        }
        // What was accepted can be written again and read back.
        SdpConverter again;
        ASSERT_EQ(again.setSdpConfig(session), 0);
        std::string text;
        again.getSdpString(&text);
        EXPECT_EQ(again.parseSdp(text), 0) << text;
    }
    EXPECT_EQ(files.size(), expectations().size()) << "an expected corpus file is missing";
}
