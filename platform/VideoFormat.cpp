#include "pimAvMngApi/platform/VideoFormat.h"

#include <iterator>

namespace {

struct RateInfo {
    int truncated;      // whole frames per second, as SDP parsers pass it
    const char* exact;  // SDP exactframerate text
};

// Indexed by video_field_rate_t.
constexpr RateInfo kRates[] = {
    {0, ""},    {23, "24000/1001"}, {24, "24"},         {25, "25"}, {29, "30000/1001"},
    {30, "30"}, {50, "50"},         {59, "60000/1001"}, {60, "60"},
};

// Frame rate of an interlaced signal whose field rate is `fieldRate`.
constexpr VideoFormat::video_field_rate_t halfRate(VideoFormat::video_field_rate_t fieldRate) {
    switch (fieldRate) {
        case VideoFormat::VIDEO_RATE_50:
            return VideoFormat::VIDEO_RATE_25;
        case VideoFormat::VIDEO_RATE_59_94:
            return VideoFormat::VIDEO_RATE_29_97;
        case VideoFormat::VIDEO_RATE_60:
            return VideoFormat::VIDEO_RATE_30;
        default:
            return VideoFormat::VIDEO_RATE_UNDEFINED;
    }
}

// One format as its name says it: lines, scan and the rate of the name (the field rate
// when interlaced). Every format is 16:9.
struct FormatInfo {
    VideoFormat::video_format_t code;
    const char* name;
    unsigned int height;
    bool interlaced;
    VideoFormat::video_field_rate_t namedRate;

    constexpr unsigned int width() const { return height * 16 / 9; }
    // Frames per second.
    constexpr VideoFormat::video_field_rate_t frameRate() const {
        return interlaced ? halfRate(namedRate) : namedRate;
    }
};

using VF = VideoFormat;
constexpr FormatInfo kFormats[] = {
    {VF::VIDEO_FORMAT_720P50, "720p50", 720, false, VF::VIDEO_RATE_50},
    {VF::VIDEO_FORMAT_720P59_94, "720p59.94", 720, false, VF::VIDEO_RATE_59_94},
    {VF::VIDEO_FORMAT_1080P25, "1080p25", 1080, false, VF::VIDEO_RATE_25},
    {VF::VIDEO_FORMAT_1080I50, "1080i50", 1080, true, VF::VIDEO_RATE_50},
    {VF::VIDEO_FORMAT_1080I59_94, "1080i59.94", 1080, true, VF::VIDEO_RATE_59_94},
    {VF::VIDEO_FORMAT_1080P30, "1080p30", 1080, false, VF::VIDEO_RATE_30},
    {VF::VIDEO_FORMAT_1080P50, "1080p50", 1080, false, VF::VIDEO_RATE_50},
    {VF::VIDEO_FORMAT_1080P23_98, "1080p23.98", 1080, false, VF::VIDEO_RATE_23_98},
    {VF::VIDEO_FORMAT_1080P24, "1080p24", 1080, false, VF::VIDEO_RATE_24},
    {VF::VIDEO_FORMAT_720P60, "720p60", 720, false, VF::VIDEO_RATE_60},
    {VF::VIDEO_FORMAT_1080I60, "1080i60", 1080, true, VF::VIDEO_RATE_60},
    {VF::VIDEO_FORMAT_720P23_98, "720p23.98", 720, false, VF::VIDEO_RATE_23_98},
    {VF::VIDEO_FORMAT_720P24, "720p24", 720, false, VF::VIDEO_RATE_24},
    {VF::VIDEO_FORMAT_1080P59_94, "1080p59.94", 1080, false, VF::VIDEO_RATE_59_94},
    {VF::VIDEO_FORMAT_1080P60, "1080p60", 1080, false, VF::VIDEO_RATE_60},
    {VF::VIDEO_FORMAT_720P25, "720p25", 720, false, VF::VIDEO_RATE_25},
    {VF::VIDEO_FORMAT_720P29_97, "720p29.97", 720, false, VF::VIDEO_RATE_29_97},
    {VF::VIDEO_FORMAT_720P30, "720p30", 720, false, VF::VIDEO_RATE_30},
    {VF::VIDEO_FORMAT_2160P23_98, "2160p23.98", 2160, false, VF::VIDEO_RATE_23_98},
    {VF::VIDEO_FORMAT_2160P24, "2160p24", 2160, false, VF::VIDEO_RATE_24},
    {VF::VIDEO_FORMAT_1080P29_97, "1080p29.97", 1080, false, VF::VIDEO_RATE_29_97},
    {VF::VIDEO_FORMAT_2160P50, "2160p50", 2160, false, VF::VIDEO_RATE_50},
    {VF::VIDEO_FORMAT_2160P25, "2160p25", 2160, false, VF::VIDEO_RATE_25},
    {VF::VIDEO_FORMAT_2160P60, "2160p60", 2160, false, VF::VIDEO_RATE_60},
    {VF::VIDEO_FORMAT_2160P59_94, "2160p59.94", 2160, false, VF::VIDEO_RATE_59_94},
    {VF::VIDEO_FORMAT_2160P29_97, "2160p29.97", 2160, false, VF::VIDEO_RATE_29_97},
    {VF::VIDEO_FORMAT_2160P30, "2160p30", 2160, false, VF::VIDEO_RATE_30},
};

const FormatInfo* findCode(int32_t code) {
    for (const auto& f : kFormats) {
        if (f.code == code) {
            return &f;
        }
    }
    return nullptr;
}

const FormatInfo* findDetails(unsigned int width, unsigned int height, bool interlaced,
                              VideoFormat::video_field_rate_t frameRate) {
    if (frameRate == VideoFormat::VIDEO_RATE_UNDEFINED) {
        return nullptr;
    }
    for (const auto& f : kFormats) {
        if (f.width() == width && f.height == height && f.interlaced == interlaced &&
            f.frameRate() == frameRate) {
            return &f;
        }
    }
    return nullptr;
}

VideoFormat::video_field_rate_t rateOfTruncated(int framesPerSecond) {
    for (size_t i = 1; i < std::size(kRates); ++i) {
        if (kRates[i].truncated == framesPerSecond) {
            return static_cast<VideoFormat::video_field_rate_t>(i);
        }
    }
    return VideoFormat::VIDEO_RATE_UNDEFINED;
}

VideoFormat::video_field_rate_t rateOfExact(const std::string& text) {
    for (size_t i = 1; i < std::size(kRates); ++i) {
        if (text == kRates[i].exact) {
            return static_cast<VideoFormat::video_field_rate_t>(i);
        }
    }
    return VideoFormat::VIDEO_RATE_UNDEFINED;
}

}  // namespace

VideoFormat::VideoFormat(video_format_t format) {
    setVideoFormat(format);
}

int VideoFormat::setVideoFormat(video_format_t format) {
    if (format == VIDEO_FORMAT_UNDEFINED) {
        *this = VideoFormat();
        return 0;
    }
    const FormatInfo* info = findCode(format);
    if (info == nullptr) {
        return -8;
    }
    m_format = info->code;
    m_width = info->width();
    m_height = info->height;
    m_interlaced = info->interlaced;
    m_frame_rate = info->frameRate();
    return 0;
}

void VideoFormat::settle() {
    const FormatInfo* info = findDetails(m_width, m_height, m_interlaced, m_frame_rate);
    m_format = info ? info->code : VIDEO_FORMAT_UNDEFINED;
}

int VideoFormat::setVideoWidth(unsigned int width) {
    m_width = width;
    settle();
    return 0;
}

int VideoFormat::setVideoHeight(unsigned int height) {
    m_height = height;
    settle();
    return 0;
}

int VideoFormat::setVideoInterlace(bool interlaced) {
    m_interlaced = interlaced;
    settle();
    return 0;
}

int VideoFormat::setVideoFrameRate(int framesPerSecond) {
    m_frame_rate = rateOfTruncated(framesPerSecond);
    settle();
    return m_frame_rate == VIDEO_RATE_UNDEFINED ? -8 : 0;
}

int VideoFormat::getVideoFrameRate() const {
    return kRates[m_frame_rate].truncated;
}

int VideoFormat::checkVideoDetailConsistency() {
    settle();
    if (m_format == VIDEO_FORMAT_UNDEFINED && m_interlaced) {
        // The sender stated the field rate of an interlaced signal.
        const FormatInfo* info = findDetails(m_width, m_height, true, halfRate(m_frame_rate));
        if (info != nullptr) {
            m_format = info->code;
            m_frame_rate = info->frameRate();
        }
    }
    return m_format == VIDEO_FORMAT_UNDEFINED ? -1 : 0;
}

std::string VideoFormat::toString() const {
    const FormatInfo* info = findCode(m_format);
    return info ? info->name : "undefined";
}

VideoFormat::video_format_t VideoFormat::fromString(const std::string& name) {
    for (const auto& f : kFormats) {
        if (name == f.name) {
            return f.code;
        }
    }
    return VIDEO_FORMAT_UNDEFINED;
}

bool VideoFormat::isValidFormat(int32_t format) {
    return findCode(format) != nullptr;
}

int VideoFormat::getVideoDetails(video_field_rate_t& rate, unsigned int& width, unsigned int& height,
                                 bool& interlaced) const {
    const FormatInfo* info = findCode(m_format);
    if (info == nullptr) {
        return -1;
    }
    rate = info->namedRate;
    width = info->width();
    height = info->height;
    interlaced = info->interlaced;
    return 0;
}

int VideoFormat::getExactFramerateString(std::string& text) const {
    const FormatInfo* info = findCode(m_format);
    if (info == nullptr) {
        return -1;
    }
    text = kRates[info->frameRate()].exact;
    return 0;
}

void VideoFormat::Serialize(Json::Value& out) const {
    out["format"] = static_cast<int>(m_format);
    out["name"] = toString();
    out["width"] = m_width;
    out["height"] = m_height;
    out["interlaced"] = m_interlaced;
    out["frame-rate"] = kRates[m_frame_rate].exact;
}

void VideoFormat::Deserialize(Json::Value& in) {
    if (!in.isObject() && !in.isNull()) {
        return;  // a number, text or array where the object belongs: keep the record
    }
    const Json::Value& doc = in;  // const access never inserts members; null reads as {}
    VideoFormat read;
    const Json::Value& format = doc["format"];
    if (format.isInt()) {
        read.setVideoFormat(static_cast<video_format_t>(format.asInt()));
    } else if (doc["name"].isString()) {
        read.setVideoFormat(fromString(doc["name"].asString()));
    }
    if (doc["width"].isUInt()) {
        read.m_width = doc["width"].asUInt();
    }
    if (doc["height"].isUInt()) {
        read.m_height = doc["height"].asUInt();
    }
    if (doc["interlaced"].isBool()) {
        read.m_interlaced = doc["interlaced"].asBool();
    }
    const Json::Value& rate = doc["frame-rate"];
    if (rate.isString()) {
        read.m_frame_rate = rateOfExact(rate.asString());
    } else if (rate.isInt()) {
        read.m_frame_rate = rateOfTruncated(rate.asInt());
    }
    read.settle();
    *this = read;
}
