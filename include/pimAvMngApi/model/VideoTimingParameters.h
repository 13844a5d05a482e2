#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// How a video receiver or sender paces its buffer.
///
/// JSON form: {"timing-mode": word, "initBufDelay": n, "minWrRdPtrThresh": n,
///             "maxWrRdPtrThresh": n, "rtpPktsPerFrame": n}
/// "timing-mode" is always written; each number only when it is not -1 (not set).
/// Timing modes: 0 "unset", 1 "frame_sync", 2 "low_latency", 3 "2059", others "ERROR".
///
/// Reading: each key is read only when present. "timing-mode" maps "frame_sync" 1,
/// "low_latency" and the empty text (also a null value) 2, "2059" 3; any other word keeps
/// the mode. The numbers are read as signed integers.
class VideoTimingParameters : public IJsonSerializable {
public:
    /// The timing modes, by code.
    enum timing_mode_en : int32_t { UNSET = 0, FRAME_SYNC = 1, LOW_LATENCY = 2, ST2059 = 3 };

    VideoTimingParameters() = default;
    ~VideoTimingParameters() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The word of the timing mode ("ERROR" for a code outside the four).
    std::string timingModeToString() const;

    /// Values are equal when every member is.
    bool operator==(const VideoTimingParameters& o) const {
        return m_timing_mode == o.m_timing_mode && m_init_buf_delay == o.m_init_buf_delay &&
               m_min_wr_rd_ptr_thresh == o.m_min_wr_rd_ptr_thresh &&
               m_max_wr_rd_ptr_thresh == o.m_max_wr_rd_ptr_thresh &&
               m_rtp_pkts_per_frame == o.m_rtp_pkts_per_frame;
    }

    int32_t m_timing_mode = UNSET;        ///< "timing-mode".
    int32_t m_init_buf_delay = -1;        ///< "initBufDelay"; -1 when not set.
    int32_t m_min_wr_rd_ptr_thresh = -1;  ///< "minWrRdPtrThresh"; -1 when not set.
    int32_t m_max_wr_rd_ptr_thresh = -1;  ///< "maxWrRdPtrThresh"; -1 when not set.
    int32_t m_rtp_pkts_per_frame = -1;    ///< "rtpPktsPerFrame"; -1 when not set.
};
