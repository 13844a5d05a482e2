#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// One video format: raster (width x height), scan (interlaced or progressive) and rate.
///
/// Format codes (video_format_t). The name is what toString() gives; the rate in the
/// name is the field rate for interlaced formats (1080i59.94 carries 29.97 frames per
/// second) and the frame rate for progressive ones. "exact" is the frame rate text of
/// getExactFramerateString(), the value of the SDP exactframerate parameter, which is
/// always frames per second.
///
/// | code | name       | width x height | scan | frames/s | exact      |
/// |------|------------|----------------|------|----------|------------|
/// |    0 | undefined  | -              | -    | -        | -          |
/// |    1 | 720p50     | 1280 x 720     | p    | 50       | 50         |
/// |    2 | 720p59.94  | 1280 x 720     | p    | 59.94    | 60000/1001 |
/// |    3 | 1080p25    | 1920 x 1080    | p    | 25       | 25         |
/// |    4 | 1080i50    | 1920 x 1080    | i    | 25       | 25         |
/// |    5 | 1080i59.94 | 1920 x 1080    | i    | 29.97    | 30000/1001 |
/// |    6 | 1080p30    | 1920 x 1080    | p    | 30       | 30         |
/// |    7 | 1080p50    | 1920 x 1080    | p    | 50       | 50         |
/// |    8 | 1080p23.98 | 1920 x 1080    | p    | 23.98    | 24000/1001 |
/// |    9 | 1080p24    | 1920 x 1080    | p    | 24       | 24         |
/// |   10 | 720p60     | 1280 x 720     | p    | 60       | 60         |
/// |   11 | 1080i60    | 1920 x 1080    | i    | 30       | 30         |
/// |   12 | 720p23.98  | 1280 x 720     | p    | 23.98    | 24000/1001 |
/// |   13 | 720p24     | 1280 x 720     | p    | 24       | 24         |
/// |   14 | 1080p59.94 | 1920 x 1080    | p    | 59.94    | 60000/1001 |
/// |   15 | 1080p60    | 1920 x 1080    | p    | 60       | 60         |
/// |   16 | 720p25     | 1280 x 720     | p    | 25       | 25         |
/// |   17 | 720p29.97  | 1280 x 720     | p    | 29.97    | 30000/1001 |
/// |   18 | 720p30     | 1280 x 720     | p    | 30       | 30         |
/// |   19 | 2160p23.98 | 3840 x 2160    | p    | 23.98    | 24000/1001 |
/// |   20 | 2160p24    | 3840 x 2160    | p    | 24       | 24         |
/// |   21 | 1080p29.97 | 1920 x 1080    | p    | 29.97    | 30000/1001 |
/// |   24 | 2160p50    | 3840 x 2160    | p    | 50       | 50         |
/// |   25 | 2160p25    | 3840 x 2160    | p    | 25       | 25         |
/// |   26 | 2160p60    | 3840 x 2160    | p    | 60       | 60         |
/// |   27 | 2160p59.94 | 3840 x 2160    | p    | 59.94    | 60000/1001 |
/// |   28 | 2160p29.97 | 3840 x 2160    | p    | 29.97    | 30000/1001 |
/// |   29 | 2160p30    | 3840 x 2160    | p    | 30       | 30         |
///
/// Codes 22 and 23 are reserved (no format). The HD boards carry codes 1 to 11 and
/// 14 to 17 plus 21; the 4K modules add 24 to 29. The codes 12, 13 and 18 to 20 are
/// formats no board lists but that an SDP text may describe.
///
/// The detail setters store what they are given and settle the code when the details
/// name a format exactly; checkVideoDetailConsistency() then decides. Frame rates are
/// taken as whole numbers the way an SDP parser truncates them: 23 means 23.98, 29 means
/// 29.97 and 59 means 59.94.
///
/// JSON form (written into the object handed to Serialize, so the holder can add keys):
///   "format"     (int)      the code
///   "name"       (string)   toString(), written for readers only
///   "width"      (unsigned) "height" (unsigned) "interlaced" (bool)
///   "frame-rate" (string)   the exact frame rate text, "" when no rate is set
/// Deserialize starts from the format of "format" (0 when missing; when "format" is
/// missing or not a number, "name" is looked up instead), then overrides each detail
/// that is present, then settles the code from the details. A member of the wrong JSON
/// kind counts as missing, an unknown code or rate text gives no format, null (an absent
/// nested object) reads like {}, and any other input that is not an object leaves the
/// record unchanged: reading never throws.
class VideoFormat : public IJsonSerializable {
public:
    /// The video formats, by code.
    enum video_format_t : int32_t {
        VIDEO_FORMAT_UNDEFINED = 0,
        VIDEO_FORMAT_720P50 = 1,
        VIDEO_FORMAT_720P59_94 = 2,
        VIDEO_FORMAT_1080P25 = 3,
        VIDEO_FORMAT_1080I50 = 4,
        VIDEO_FORMAT_1080I59_94 = 5,
        VIDEO_FORMAT_1080P30 = 6,
        VIDEO_FORMAT_1080P50 = 7,
        VIDEO_FORMAT_1080P23_98 = 8,
        VIDEO_FORMAT_1080P24 = 9,
        VIDEO_FORMAT_720P60 = 10,
        VIDEO_FORMAT_1080I60 = 11,
        VIDEO_FORMAT_720P23_98 = 12,
        VIDEO_FORMAT_720P24 = 13,
        VIDEO_FORMAT_1080P59_94 = 14,
        VIDEO_FORMAT_1080P60 = 15,
        VIDEO_FORMAT_720P25 = 16,
        VIDEO_FORMAT_720P29_97 = 17,
        VIDEO_FORMAT_720P30 = 18,
        VIDEO_FORMAT_2160P23_98 = 19,
        VIDEO_FORMAT_2160P24 = 20,
        VIDEO_FORMAT_1080P29_97 = 21,
        VIDEO_FORMAT_2160P50 = 24,
        VIDEO_FORMAT_2160P25 = 25,
        VIDEO_FORMAT_2160P60 = 26,
        VIDEO_FORMAT_2160P59_94 = 27,
        VIDEO_FORMAT_2160P29_97 = 28,
        VIDEO_FORMAT_2160P30 = 29,
        VIDEO_FORMAT_MAX = 30,  ///< one past the highest code
    };

    /// A rate, named like the formats: frames per second for progressive scan, fields
    /// per second for interlaced scan.
    enum video_field_rate_t : int32_t {
        VIDEO_RATE_UNDEFINED = 0,
        VIDEO_RATE_23_98 = 1,
        VIDEO_RATE_24 = 2,
        VIDEO_RATE_25 = 3,
        VIDEO_RATE_29_97 = 4,
        VIDEO_RATE_30 = 5,
        VIDEO_RATE_50 = 6,
        VIDEO_RATE_59_94 = 7,
        VIDEO_RATE_60 = 8,
    };

    VideoFormat() = default;
    /// An unknown code gives the undefined format.
    explicit VideoFormat(video_format_t format);
    ~VideoFormat() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Replaces every detail with those of the code. 0 on success; an unknown code
    /// returns -8 and changes nothing. VIDEO_FORMAT_UNDEFINED clears the record.
    int setVideoFormat(video_format_t format);
    /// The format code; VIDEO_FORMAT_UNDEFINED when the details name none.
    video_format_t getVideoFormat() const { return m_format; }
    /// True when a format is settled.
    bool isDefined() const { return m_format != VIDEO_FORMAT_UNDEFINED; }

    ///@{
    /// Detail setters. Each stores its value and re-settles the code (undefined unless
    /// the details now name a format exactly). They return 0.
    int setVideoWidth(unsigned int width);
    int setVideoHeight(unsigned int height);
    int setVideoInterlace(bool interlaced);
    ///@}
    /// Frames per second, truncated: 23 (23.98), 24, 25, 29 (29.97), 30, 50, 59 (59.94),
    /// 60. Any other value (0 included) clears the rate and returns -8.
    int setVideoFrameRate(int framesPerSecond);

    /// The raster width in pixels.
    unsigned int getVideoWidth() const { return m_width; }
    /// The raster height in lines.
    unsigned int getVideoHeight() const { return m_height; }
    /// True for interlaced scan.
    bool getVideoInterlace() const { return m_interlaced; }
    /// The frame rate as setVideoFrameRate takes it (59 for 59.94), 0 when none is set.
    int getVideoFrameRate() const;

    /// 0 when width, height, scan and rate name a format, which then becomes the code;
    /// -1 otherwise (the code becomes undefined). For interlaced scan a field rate
    /// (50, 59, 60) is accepted in place of the frame rate, as some senders state it.
    int checkVideoDetailConsistency();

    /// The name of the code ("1080i59.94"), "undefined" for no format.
    std::string toString() const;
    /// The code of a name as toString() writes it; VIDEO_FORMAT_UNDEFINED when unknown.
    static video_format_t fromString(const std::string& name);
    /// True for the codes of the table (VIDEO_FORMAT_UNDEFINED excluded).
    static bool isValidFormat(int32_t format);

    /// The rate named by the format (field rate when interlaced), the raster and the
    /// scan. -1 and nothing written when no format is settled.
    int getVideoDetails(video_field_rate_t& rate, unsigned int& width, unsigned int& height,
                        bool& interlaced) const;
    /// The frame rate as an SDP exactframerate value ("60000/1001", "50"). -1 and the
    /// text unchanged when no format is settled.
    int getExactFramerateString(std::string& text) const;

    ///@{
    /// Formats are equal when code and every detail are.
    bool operator==(const VideoFormat& o) const {
        return m_format == o.m_format && m_width == o.m_width && m_height == o.m_height &&
               m_interlaced == o.m_interlaced && m_frame_rate == o.m_frame_rate;
    }
    bool operator!=(const VideoFormat& o) const { return !(*this == o); }
    ///@}

private:
    void settle();

    video_format_t m_format = VIDEO_FORMAT_UNDEFINED;
    unsigned int m_width = 0;
    unsigned int m_height = 0;
    bool m_interlaced = false;
    /// Frames per second (never a field rate), VIDEO_RATE_UNDEFINED when not set.
    video_field_rate_t m_frame_rate = VIDEO_RATE_UNDEFINED;
};
