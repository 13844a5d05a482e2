#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Global settings of the device, as the daemon reports them in the member "global" of
/// the reply to "GET Global config" and takes them in the same member of "CFG Global
/// config".
///
/// JSON form (an object):
///   {"device-name": "",      text, the name the device announces itself with
///    "mdns": true,           bool, announce the device and its senders over mDNS/DNS-SD
///    "ptp-domain": 0,        unsigned, PTP domain the device's clock follows (0..255)
///    "dscp-audio": 34,       int, DSCP of new audio streams (AF41)
///    "dscp-video": 40,       int, DSCP of new video streams (CS5)
///    "dscp-ancillary": 40,   int, DSCP of new ancillary streams
///    "dscp-ptp": 46}         int, DSCP of PTP event messages (EF)
///
/// Reading: a missing key gives the default shown above; "ptp-domain" is truncated to
/// 8 bits. A value of the wrong JSON kind makes jsoncpp throw; a document that is not an
/// object (other than null, which reads as {}) throws too. Members the record does not
/// know are kept and written back by Serialize.
class AvGlobalCfg : public IJsonSerializable {
public:
    AvGlobalCfg() = default;
    ~AvGlobalCfg() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    std::string m_device_name;      ///< "device-name".
    bool m_mdns = true;             ///< "mdns".
    uint8_t m_ptp_domain = 0;       ///< "ptp-domain".
    int32_t m_dscp_audio = 34;      ///< "dscp-audio".
    int32_t m_dscp_video = 40;      ///< "dscp-video".
    int32_t m_dscp_ancillary = 40;  ///< "dscp-ancillary".
    int32_t m_dscp_ptp = 46;        ///< "dscp-ptp".
    /// Members of the last document read that the record does not know.
    Json::Value m_other_keys;
};
