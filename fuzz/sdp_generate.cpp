// Builds an arbitrary SdpSession from the fuzzer's bytes (every text field may hold any
// byte, CR, LF and NUL included), generates its text in both forms and parses the standard
// text back. A crash, leak or undefined behaviour is a finding, and so is a broken
// invariant (the harness aborts):
//  - an accepted session's text has only lines of the form "x=...", no CR and no NUL, one
//    "m=" line per audio or video description, and exactly the lines its descriptions
//    imply; whatever the result, the text is made of whole "x=" lines;
//  - a text the parser accepts holds one media description per line that contains "m="
//    (the parser finds the token anywhere in a line, so a field holding "m=" counts too);
//  - the Dante text, when written, has 14 lines, each ended by CRLF, one of them "m=".

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "sdp/SdpBoard.h"

namespace {

void require(bool holds, const char* invariant, const std::string& text) {
    if (!holds) {
        std::fprintf(stderr, "invariant broken: %s\n--- text ---\n%s\n---\n", invariant, text.c_str());
        std::abort();
    }
}

std::string text(FuzzedDataProvider& in) {
    return in.ConsumeRandomLengthString(24);
}

SdpMedia mediaFrom(FuzzedDataProvider& in) {
    SdpMedia media;
    media.m_type = in.PickValueInArray({SdpMedia::AUDIO, SdpMedia::VIDEO, SdpMedia::NOT_RECOGNIZED});
    media.m_udp_port = in.ConsumeIntegral<uint32_t>();
    if (in.ConsumeBool()) {
        media.m_protocol = text(in);
    }
    media.m_ptime = in.ConsumeFloatingPoint<float>();
    media.m_number_samples = in.ConsumeIntegral<uint8_t>();
    media.m_ttl = in.ConsumeIntegral<uint8_t>();
    media.m_info = text(in);
    media.m_group = text(in);
    media.m_media_clock = in.ConsumeIntegral<uint32_t>();
    media.m_clock_is_ptp = in.ConsumeBool();
    media.m_ptp_gm_id = text(in);
    media.m_ptp_domain = in.ConsumeIntegral<uint8_t>();
    media.m_local_ip = in.ConsumeIntegral<uint32_t>();
    media.m_transport_ip = in.ConsumeIntegral<uint32_t>();
    const auto maps = in.ConsumeIntegralInRange<unsigned>(0, 3);
    for (unsigned i = 0; i < maps; ++i) {
        SdpMediaRtpMap map;
        map.m_payload_type = in.ConsumeIntegral<uint8_t>();
        map.m_codec = Codec(in.ConsumeIntegralInRange<uint32_t>(0, 8));
        map.m_number_channels = in.ConsumeIntegralInRange<uint16_t>(0, 256);
        map.m_channel_freq = in.ConsumeIntegral<uint32_t>();
        media.m_rtp_maps.push_back(map);
        media.m_payload_types.push_back(map.m_payload_type);
    }
    media.m_video.setVideoFormat(static_cast<VideoFormat::video_format_t>(
        in.ConsumeIntegralInRange<int32_t>(0, VideoFormat::VIDEO_FORMAT_MAX - 1)));
    media.m_depth = in.ConsumeIntegral<uint32_t>();
    media.m_sampling = text(in);
    media.m_colorimetry = text(in);
    media.m_packing_mode = text(in);
    media.m_sender_type = text(in);
    return media;
}

// The number of lines that generateSdpString writes for `session`.
size_t impliedLines(const SdpSession& session) {
    const bool isDup = session.m_media.size() >= 2;
    size_t lines = 4 + (isDup ? 1 : 0);
    for (const SdpMedia& media : session.m_media) {
        const bool audio = media.m_type == SdpMedia::AUDIO;
        const bool video = media.m_type == SdpMedia::VIDEO;
        lines += (audio || video ? 1 : 0) + (media.m_info.empty() ? 0 : 1) + 5;
        if (video) {
            lines += 2;
        } else if (audio) {
            lines += media.m_rtp_maps.size() * (pimav::detail::writesChannelOrder() ? 2 : 1) + 2;
        }
        lines += isDup && !media.m_group.empty() ? 1 : 0;
    }
    return lines;
}

size_t count(const std::string& text, const std::string& needle) {
    size_t n = 0;
    for (size_t at = text.find(needle); at != std::string::npos; at = text.find(needle, at + needle.size())) {
        ++n;
    }
    return n;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    pimav::detail::formatAndDropLogLines();

    FuzzedDataProvider in(data, size);
    pimav::detail::selectBoard(in.ConsumeIntegral<uint8_t>());
    SdpSession session;
    session.m_protocol_version = in.ConsumeIntegral<uint8_t>();
    if (in.ConsumeBool()) {
        session.m_user_name = text(in);
    }
    session.m_session_id = in.ConsumeIntegral<uint64_t>();
    session.m_session_version = in.ConsumeIntegral<uint64_t>();
    session.m_time.m_start = in.ConsumeIntegral<uint32_t>();
    session.m_time.m_stop = in.ConsumeIntegral<uint32_t>();
    session.m_info = text(in);
    session.m_local_ip = in.ConsumeIntegral<uint32_t>();
    const auto mediaCount = in.ConsumeIntegralInRange<unsigned>(0, 4);
    for (unsigned i = 0; i < mediaCount; ++i) {
        session.m_media.push_back(mediaFrom(in));
    }

    SdpConverter writer;
    const int rc = writer.setSdpConfig(session);
    std::string generated;
    writer.getSdpString(&generated);
    // Whatever the result (a video format query may fail and leave the other descriptions
    // written), the text is made of whole "x=" lines.
    require(generated.find_first_of(std::string("\r\0", 2)) == std::string::npos, "no CR or NUL", generated);
    size_t lines = 0;
    size_t mediaLines = 0;
    size_t holdingM = 0;  // lines that hold "m=" anywhere
    size_t start = 0;
    for (size_t end = generated.find('\n'); end != std::string::npos; end = generated.find('\n', start)) {
        const std::string line = generated.substr(start, end - start);
        require(line.size() >= 2 && line[0] >= 'a' && line[0] <= 'z' && line[1] == '=', "lines are x=...",
                line);
        mediaLines += line.compare(0, 2, "m=") == 0 ? 1 : 0;
        holdingM += line.find("m=") != std::string::npos ? 1 : 0;
        ++lines;
        start = end + 1;
    }
    require(start == generated.size(), "the text ends with its last line", generated);
    if (rc == 0) {
        require(lines == impliedLines(session), "the line count is what the descriptions imply", generated);
        size_t written = 0;
        for (const SdpMedia& media : session.m_media) {
            written += media.m_type == SdpMedia::AUDIO || media.m_type == SdpMedia::VIDEO ? 1 : 0;
        }
        require(mediaLines == written, "one m= line per audio or video description", generated);

        SdpConverter reader;
        if (reader.parseSdp(generated) == 0) {
            SdpSession back;
            reader.getSdpConfig(back);
            require(back.m_media.size() == holdingM, "one media per line holding m=", generated);
        }
    }
    std::string dante;
    if (writer.generateDanteSdp(dante) == 0) {
        require(count(dante, "\r\n") == 14 && count(dante, "\n") == 14 && count(dante, "\r") == 14,
                "14 CRLF lines", dante);
        require(dante.find(std::string(1, '\0')) == std::string::npos, "no NUL", dante);
        require(count(dante, "\r\nm=") == 1, "one m= line", dante);
    } else {
        require(dante.empty(), "a refused Dante text is empty", dante);
    }
    ErrorAuxMsg::getInstance()->clear();
    return 0;
}
