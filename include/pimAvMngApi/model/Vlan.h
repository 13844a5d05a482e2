#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// IEEE 802.1Q tag of a stream; id 0 means untagged.
///
/// JSON form: {"id": 0, "priority": 0, "tpid": 33024}
/// Reading: missing keys give 0, 0 and 33024 (0x8100); values are truncated to the
/// member width (16, 8 and 16 bits).
class Vlan : public IJsonSerializable {
public:
    static constexpr uint16_t kDefaultTpid = 0x8100;  ///< The tag protocol identifier of 802.1Q, 0x8100.

    Vlan() = default;
    ~Vlan() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// True when the stream carries a tag (id not 0).
    bool isTagged() const { return m_id != 0; }

    uint16_t m_id = 0;               ///< VLAN id ("id"); 0 for untagged.
    uint8_t m_priority = 0;          ///< "priority".
    uint16_t m_tpid = kDefaultTpid;  ///< "tpid".
};
