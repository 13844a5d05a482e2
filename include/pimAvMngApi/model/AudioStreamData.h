#pragma once

#include <cstdint>

#include "pimAvMngApi/device/Codec.h"
#include "pimAvMngApi/model/StreamData.h"

/// An audio stream as the daemon runs it. Media type 1.
///
/// JSON form: the StreamData keys plus "ptime", "channel-freq", "link-offset" (unsigned),
/// "codec" (word), "packet-size" (payload size + 54, or + 58 with a VLAN tag),
/// "l1-bandwidth", "samples" and "payload-size". Reading sets the media type to 1 whatever
/// "type" says; "codec" defaults to "AM824"; the other numbers to 0.
class AudioStreamData : public StreamData {
public:
    AudioStreamData();
    ~AudioStreamData() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;
    void dumpDerivedStreamData() override;

    /// Bytes of one packet: payload plus 54 header bytes, 58 with a VLAN tag.
    uint32_t getPacketSize() const { return packetSize(54); }

    uint32_t m_ptime = 0;         ///< Packet time ("ptime").
    uint32_t m_channel_freq = 0;  ///< Sampling frequency of the channels ("channel-freq").
    uint32_t m_link_offset = 0;   ///< Receive delay added to the stream ("link-offset").
    Codec m_codec;                ///< The encoding ("codec").
};
