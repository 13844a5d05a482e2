#pragma once

#include <cstdint>

#include "pimAvMngApi/device/Codec.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// One "a=rtpmap:" line of a media description.
///
/// JSON form: {"payload-type": int, "codec": text, "number-channels": int,
/// "channel-freq": unsigned}. The codec is written with its name ("L24", "raw",
/// "Not-supported", ...) and read case-insensitively; a missing "codec" reads as
/// "AM824", a missing "number-channels" as 1, other missing numbers as 0.
class SdpMediaRtpMap : public IJsonSerializable {
public:
    SdpMediaRtpMap() = default;
    ~SdpMediaRtpMap() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Writes the map to the log at level 6, one line per field.
    void dump() const;

    uint8_t m_payload_type = 0;      ///< "payload-type".
    Codec m_codec;                   ///< "codec".
    uint16_t m_number_channels = 1;  ///< "number-channels".
    uint32_t m_channel_freq = 0;     ///< Clock rate ("channel-freq").
};
