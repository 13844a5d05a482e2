#pragma once

#include "pimAvMngApi/model/StreamData.h"

/// An ancillary data stream. Media type 3, UDP ports 20000/20000, DSCP 40, TTL 64.
///
/// JSON form: the StreamData keys plus "packet-size" (payload size + 66, or + 70 with a
/// VLAN tag) and "l1-bandwidth". Reading sets the media type to 3 whatever "type" says.
class AncillaryStreamData : public StreamData {
public:
    AncillaryStreamData();
    ~AncillaryStreamData() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;
    void dumpDerivedStreamData() override;

    /// Bytes of one packet: payload plus 66 header bytes, 70 with a VLAN tag.
    uint32_t getPacketSize() const { return packetSize(66); }
};
