#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Settings of the device's video reference output (black burst or tri-level sync): the
/// member "video-ref" of "GET video reference Config" and "SET video reference Config".
///
/// JSON form (an object):
///   {"enable": true,       bool, the reference output is driven
///    "source": "ptp",      text, what the output is locked to: "ptp", "external" or
///                          "free-run" (the daemon's words; not checked here)
///    "format": "",         text, the video format of the reference signal, for example
///                          "1080p50"; empty lets the daemon choose
///    "offset": 0}          int, timing offset of the output against the reference, in
///                          nanoseconds
///
/// Reading: a missing key gives the default shown above. Wrong JSON kinds throw
/// (jsoncpp); null reads as {}. Members the record does not know are kept and written
/// back by Serialize.
class VideoRefOutputCfg : public IJsonSerializable {
public:
    VideoRefOutputCfg() = default;
    ~VideoRefOutputCfg() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    bool m_enable = true;          ///< "enable".
    std::string m_source = "ptp";  ///< "source".
    std::string m_format;          ///< "format".
    int32_t m_offset = 0;          ///< "offset".
    Json::Value m_other_keys;      ///< Members of the last document read that the record does not know.
};
