#pragma once

#include <cstdint>

#include "pimAvMngApi/model/IpAddress.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// The address block of a stream.
///
/// JSON form: {"local": "a.b.c.d", "transport": "a.b.c.d", "source-ip": "a.b.c.d",
///             "dscp": 34, "ttl": 64}
/// Reading: each address follows the address rule (empty or missing text keeps it,
/// invalid text is logged and keeps it); "dscp" defaults to 34 and "ttl" to 64, both
/// truncated to 8 bits.
class IpAddrCfg : public IJsonSerializable {
public:
    IpAddrCfg() = default;
    ~IpAddrCfg() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    IpAddress m_local;      ///< The device's own address ("local").
    IpAddress m_transport;  ///< Destination address of the stream ("transport").
    IpAddress m_source;     ///< Source address of the stream ("source-ip").
    uint8_t m_dscp = 34;    ///< "dscp".
    uint8_t m_ttl = 64;     ///< "ttl".
};
