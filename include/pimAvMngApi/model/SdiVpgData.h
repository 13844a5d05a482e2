#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// What one SDI port's video pattern generator is doing: one element of the array
/// "sdi-vpg-info" in the reply to "GET SDI VPG information".
///
/// JSON form (an object):
///   {"port": 0,              unsigned, the SDI port
///    "enable": false,        bool, the generator drives the port
///    "pattern": "",          text, the pattern shown, for example "colorbars"
///    "video_mode": "NA"}     text, the video format generated ("NA" when none)
///
/// Reading: a missing key gives the default shown above; "port" is truncated to 8 bits.
/// Wrong JSON kinds throw (jsoncpp); null reads as {}. Members the record does not know
/// are kept and written back by Serialize.
class SdiVpgData : public IJsonSerializable {
public:
    SdiVpgData() = default;
    ~SdiVpgData() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint8_t m_port = 0;               ///< "port".
    bool m_enable = false;            ///< "enable".
    std::string m_pattern;            ///< "pattern".
    std::string m_video_mode = "NA";  ///< "video_mode".
    Json::Value m_other_keys;         ///< Members of the last document read that the record does not know.
};
