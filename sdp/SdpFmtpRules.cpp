// The media-level rules of the format lines: the ST 2110-30 channel order and the
// ST 2110-20 video format.

#include <cstdint>
#include <string>
#include <string_view>

#include "pimAvMngApi/platform/Logger.h"
#include "sdp/SdpLog.h"
#include "sdp/SdpNumbers.h"
#include "sdp/SdpRules.h"

namespace pimav::detail {

namespace {

constexpr size_t npos = std::string_view::npos;

// Value of an fmtp key: from the end of the key to the next ";" searched from the key,
// or to the end of the line.
enum class FmtpKey { Missing, AtLineEnd, Found };

FmtpKey fmtpValue(std::string_view line, std::string_view key, std::string_view& value) {
    const size_t at = line.find(key);
    if (at == npos) {
        return FmtpKey::Missing;
    }
    const size_t begin = at + key.size();
    if (begin >= line.size()) {
        return FmtpKey::AtLineEnd;
    }
    const size_t end = line.find(';', at);
    value = line.substr(begin, end == npos ? npos : (end > begin ? end - begin : 0));
    return FmtpKey::Found;
}

// The keys of a video format line, in the order they are read and logged.
enum VideoKey { kWidth, kHeight, kDepth, kColorimetry, kPackingMode, kSenderType, kSampling };

struct VideoKeyText {
    std::string_view key;
    const char* missing;
    const char* invalid;
    bool optional;
};

constexpr VideoKeyText kVideoKeys[] = {
    {"width=", "SDP fmtp line: could not find width", "SDP fmtp line: width is invalid", false},
    {"height=", "SDP fmtp line: could not find height", "SDP fmtp line: height is invalid", false},
    {"depth=", "SDP fmtp line: could not find depth", "SDP fmtp line: depth is invalid", false},
    {"colorimetry=", "SDP fmtp line: could not find colorimetry", "SDP fmtp line: colorimetry is invalid",
     false},
    {"PM=", "SDP fmtp line: could not find PM", "SDP fmtp line: PM is invalid", true},
    {"TP=", "SDP fmtp line: could not find TP", "SDP fmtp line: TP is invalid", true},
    {"sampling=", "SDP fmtp line: could not find sampling", "SDP fmtp line: sampling is invalid", false},
};

}  // namespace

// a=fmtp:<format> channel-order=SMPTE2110.(<group>,<group>,...)
// The order is searched after the length of "a=fmtp:" from the start of the line.
int readChannelOrder(const SdpLine& scanned, SdpMedia& media) {
    constexpr std::string_view kOrder = "channel-order=SMPTE2110.(";
    const std::string_view line = scanned.text();
    if (!scanned.has(kFmtpToken)) {
        return 0;
    }
    const size_t at = line.find(kOrder, kTokenText[kFmtpToken].size());
    if (at == npos) {
        return 0;
    }
    SDP_LOG(7, "::channel-order under a=fmtp found::%.*s", SDP_VIEW(line));
    FieldReader groups(line.substr(at + kOrder.size()));
    for (;;) {
        const std::string_view group = groups.next(',');
        if (!groups.separated()) {
            media.m_channel_order.emplace_back(trim(group.substr(0, group.find(')'))));
            break;
        }
        media.m_channel_order.emplace_back(trim(group));
    }
    if (Logger::isEnabled(7)) {
        SDP_LOG(7, "::the following audio groups were found:");
        for (const std::string& group : media.m_channel_order) {
            SDP_LOG(7, "  %s", group.c_str());
        }
    }
    return 1;
}

// a=fmtp:<format> <key>=<value>; ... with width, height, depth, colorimetry, sampling,
// optionally PM, TP, interlace, and exactframerate or framerate.
// a=framerate:<rate> (the rate is taken from the fmtp line)
int readVideoValues(const SdpLine& scanned, SdpMedia& media) {
    const std::string_view line = scanned.text();
    if (!scanned.has(kFmtpToken)) {
        if (scanned.has(kFramerateToken)) {
            // The rate written on this line is not taken over; a later fmtp line sets it.
            media.m_video.setVideoFrameRate(0);
            SDP_LOG(7, "::Frame rate found::%d", 0);
            return 1;
        }
        return 0;
    }

    bool malformed = false;
    int width = 0;
    int height = 0;
    std::string_view value;
    for (int key = kWidth; key <= kSampling; ++key) {
        const VideoKeyText& text = kVideoKeys[key];
        switch (fmtpValue(line, text.key, value)) {
            case FmtpKey::Missing:
                SDP_LOG(text.optional ? 3 : 2, "%s", text.missing);
                malformed = malformed || !text.optional;
                continue;
            case FmtpKey::AtLineEnd:
                SDP_LOG(2, "%s", text.invalid);
                malformed = true;
                continue;
            case FmtpKey::Found:
                break;
        }
        switch (key) {
            case kWidth:
                width = strictInt(value);
                break;
            case kHeight:
                height = strictInt(value);
                break;
            case kDepth:
                media.m_depth = static_cast<uint32_t>(strictInt(value));
                break;
            case kColorimetry:
                media.m_colorimetry.assign(value);
                break;
            case kPackingMode:
                media.m_packing_mode.assign(value);
                break;
            case kSenderType:
                media.m_sender_type.assign(value);
                break;
            default:
                media.m_sampling.assign(value);
                break;
        }
    }

    bool interlaced = line.find("interlace") != npos;
    if (line.find("interlace=") != npos) {
        switch (fmtpValue(line, "interlace=", value)) {
            case FmtpKey::AtLineEnd:
                SDP_LOG(2, "SDP fmtp line: interlace is invalid");
                malformed = true;
                break;
            case FmtpKey::Found:
                interlaced = strictInt(value) != 0;
                break;
            case FmtpKey::Missing:
                break;
        }
    }

    int frameRate = 0;
    if (line.find("exactframerate=") != npos) {
        SDP_LOG(6, "framerate found under a=fmtp as exactframerate");
        if (fmtpValue(line, "exactframerate=", value) == FmtpKey::AtLineEnd) {
            SDP_LOG(2, "SDP fmtp line: exactframerate is invalid");
            value = std::string_view();
        }
        const size_t slash = value.find('/');
        if (slash != npos) {
            const float numerator = strictFloat(value.substr(0, slash));
            const float denominator = strictFloat(value.substr(slash + 1));
            SDP_LOG(7, "framerate found %f/%f", static_cast<double>(numerator),
                    static_cast<double>(denominator));
            frameRate = saturatingInt(numerator / denominator);
        } else {
            frameRate = strictInt(value);
            SDP_LOG(7, "framerate found %d", frameRate);
        }
    } else if (line.find("framerate=") != npos) {
        SDP_LOG(6, "framerate found under a=fmtp as framerate");
        if (fmtpValue(line, "framerate=", value) == FmtpKey::AtLineEnd) {
            SDP_LOG(2, "SDP fmtp line: framerate is invalid");
            malformed = true;
        } else {
            frameRate = strictInt(value);
        }
    }

    if (malformed) {
        SDP_LOG(2, "::Format found but it is malformed: <%.*s>", SDP_VIEW(line));
        return 1;
    }

    media.m_video.setVideoWidth(static_cast<unsigned int>(width));
    media.m_video.setVideoHeight(static_cast<unsigned int>(height));
    media.m_video.setVideoInterlace(interlaced);
    if (Logger::isEnabled(7)) {
        SDP_LOG(7, "::Format found::");
        SDP_LOG(7, "\t width:         %d", width);
        SDP_LOG(7, "\t height:        %d", height);
        SDP_LOG(7, "\t interlace:     %s", interlaced ? "true" : "false");
        SDP_LOG(7, "\t depth:         %d", media.m_depth);
        SDP_LOG(7, "\t colorimetry:   %s", media.m_colorimetry.c_str());
        SDP_LOG(7, "\t sampling:      %s", media.m_sampling.c_str());
        SDP_LOG(7, "\t framerate:     %d", frameRate);
    }
    if (media.m_video.setVideoFrameRate(frameRate) < 0) {
        SDP_LOG(2, "::Format found but framerate is not supported: <%.*s>", SDP_VIEW(line));
        return 0;
    }
    return 1;
}

}  // namespace pimav::detail
