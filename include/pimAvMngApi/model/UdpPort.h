#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// UDP ports of a stream.
///
/// JSON form: {"source": 0, "destination": 0}; missing keys read as 0, values are
/// truncated to 16 bits.
class UdpPort : public IJsonSerializable {
public:
    UdpPort() = default;
    /// The ports `source` and `destination`.
    UdpPort(uint16_t source, uint16_t destination) : m_source(source), m_destination(destination) {}
    ~UdpPort() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint16_t m_source = 0;       ///< "source".
    uint16_t m_destination = 0;  ///< "destination".
};
