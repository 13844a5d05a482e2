#pragma once

#include <string>

#include "pimAvMngApi/model/Source.h"
#include "pimAvMngApi/model/TributaryType.h"
#include "pimAvMngApi/model/VideoTimingParameters.h"
#include "pimAvMngApi/platform/VideoFormat.h"

/// A video stream of a sending session.
///
/// JSON form: the Source keys plus
///   "video": {VideoFormat members, "sof-sync-enable": bool, "timing-mode": word,
///             and "initBufDelay", "minWrRdPtrThresh", "maxWrRdPtrThresh", "rtpPktsPerFrame"
///             when set}
///   "tributary": {"type": word, "index": int}
/// Reading: the video format and the timing values come from "video" (timing keys only
/// when present); start-of-frame synchronisation becomes false when "video" is absent,
/// null or {}, else it is read with default true; the tributary follows its own rule.
class VideoSource : public Source {
public:
    VideoSource() = default;
    ~VideoSource() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;
    /// Logs "Clearing Video Source" at level 5, clears the Source members, then sets
    /// start-of-frame synchronisation true and the tributary to "none", index -1. The
    /// video format and timing values are kept.
    void clear() override;

    /// Accepts "MULTI-2SI", "MULTI-SD", "none" (returns 0); any other word returns -8 and
    /// changes nothing.
    int setTributaryType(const std::string& word) { return m_tributary.fromString(word); }

    VideoFormat m_video_format;      ///< The video format ("video").
    VideoTimingParameters m_timing;  ///< Buffer pacing ("video" timing keys).
    bool m_sof_sync_enable = true;   ///< Start-of-frame synchronisation ("video"/"sof-sync-enable").
    TributaryType m_tributary;       ///< "tributary".
};
