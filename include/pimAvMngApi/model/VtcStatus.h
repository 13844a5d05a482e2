#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Status of the device's video timing generator as it follows SMPTE ST 2059: the
/// member "smpte-2059" of the reply to "CLK GET Info: config status and counters".
///
/// JSON form (an object):
///   {"locked": false,               bool, the timing generator is locked to PTP time
///    "domain": 127,                 unsigned, PTP domain it follows (ST 2059-2 default 127)
///    "master-locking-status": 0,    unsigned, ST 2059-2 synchronization metadata of the
///                                   grandmaster: 0 not in use, 1 free run, 2 cold locked,
///                                   3 warm locked
///    "current-local-offset": 0}     int, local time offset from PTP time, in seconds
///
/// Reading: a missing key gives the default shown above; "domain" is truncated to 8
/// bits. Wrong JSON kinds throw (jsoncpp); null reads as {}. Members the record does not
/// know are kept and written back by Serialize.
class VtcStatus : public IJsonSerializable {
public:
    /// The grandmaster's locking states, by code.
    enum master_locking_status_en : uint32_t {
        NOT_IN_USE = 0,
        FREE_RUN = 1,
        COLD_LOCKED = 2,
        WARM_LOCKED = 3,
    };

    VtcStatus() = default;
    ~VtcStatus() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    bool m_locked = false;                          ///< "locked".
    uint8_t m_domain = 127;                         ///< "domain".
    uint32_t m_master_locking_status = NOT_IN_USE;  ///< "master-locking-status".
    int32_t m_current_local_offset = 0;             ///< "current-local-offset".
    Json::Value m_other_keys;  ///< Members of the last document read that the record does not know.
};
