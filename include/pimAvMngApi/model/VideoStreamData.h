#pragma once

#include <cstdint>

#include "pimAvMngApi/model/StreamData.h"
#include "pimAvMngApi/model/TributaryType.h"
#include "pimAvMngApi/model/VideoTimingParameters.h"
#include "pimAvMngApi/platform/VideoFormat.h"

/// A video stream as the daemon runs it. Media type 2, UDP ports 20000/20000, DSCP 40,
/// TTL 64, payload size 1376, video format number 1.
///
/// JSON form: the StreamData keys plus "video" (VideoFormat object), "packet-size"
/// (payload size + 66, or + 70 with a VLAN tag), "sync-enable" (bool), "sof-link-offset"
/// (unsigned, ns) and "tributary" {"type", "index"}. Reading sets the media type to 2;
/// "sync-enable" defaults to true and "sof-link-offset" to 0; the payload size is not
/// read. The timing values are not part of this JSON form.
class VideoStreamData : public StreamData {
public:
    VideoStreamData();
    ~VideoStreamData() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;
    void dumpDerivedStreamData() override;

    /// The tributary role and position.
    TributaryType getTributaryType() const { return m_tributary; }
    /// Bytes of one packet: payload plus 66 header bytes, 70 with a VLAN tag.
    uint32_t getPacketSize() const { return packetSize(66); }

    VideoFormat m_video_format;      ///< "video".
    bool m_sync_enable = true;       ///< "sync-enable".
    uint32_t m_sof_link_offset = 0;  ///< Start-of-frame link offset in nanoseconds ("sof-link-offset").
    VideoTimingParameters m_timing;  ///< Buffer pacing; not in this JSON form.
    TributaryType m_tributary;       ///< "tributary".
};
