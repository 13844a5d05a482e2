#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/platform/VideoFormat.h"

/// Settings of one SDI port and its video pattern generator.
///
/// JSON form: {"sdi-port": int, "vpg": {"patctrl": int, "video-format": VideoFormat text,
///             "enable": bool, "sync-enable": bool}}
/// Clients only write it. Deserialize reads the same form back for the side that receives
/// the request: "sdi-port" and the "vpg" members with 0 / false when missing; the video
/// format is kept (its text form is not parsed).
class SdiData : public IJsonSerializable {
public:
    SdiData() = default;
    ~SdiData() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    int32_t m_pattern_control = 0;  ///< Pattern control of the generator ("vpg"/"patctrl").
    bool m_enable = false;          ///< The generator drives the port ("vpg"/"enable").
    VideoFormat m_video_format;     ///< Format the generator produces ("vpg"/"video-format").
    bool m_sync_enable = false;     ///< The generator follows the reference ("vpg"/"sync-enable").
    uint8_t m_sdi_port = 0;         ///< "sdi-port".
};
