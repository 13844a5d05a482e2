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
    static constexpr uint16_t kDefaultTpid = 0x8100;

    Vlan() = default;
    ~Vlan() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    bool isTagged() const { return m_id != 0; }

    uint16_t m_id = 0;
    uint8_t m_priority = 0;
    uint16_t m_tpid = kDefaultTpid;
};
