#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "pimAvMngApi/model/IpAddrCfg.h"
#include "pimAvMngApi/model/RedundantType.h"
#include "pimAvMngApi/model/Rtp.h"
#include "pimAvMngApi/model/State.h"
#include "pimAvMngApi/model/StreamClass.h"
#include "pimAvMngApi/model/StreamType.h"
#include "pimAvMngApi/model/UdpPort.h"
#include "pimAvMngApi/model/Vlan.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/platform/PacketTimeOptions.h"

/// A stream as the daemon runs it: the network parameters common to every medium.
/// AudioStreamData, VideoStreamData and AncillaryStreamData refine it.
///
/// JSON form:
///   {"type": StreamType word, "class": StreamClass word, "state": State word,
///    "redundant-type": word, "vlan": {"id","priority","tpid"}, "udp": {"source","destination"},
///    "ipv4": {"local","transport","source-ip","dscp","ttl"},
///    "rtp": {"payload-type", "sscr": {"type","value"}}, "name": text,
///    "channel-list": [...], "media-clk-offset": int, "network-interface-index": int,
///    "samples": int, "l1-bandwidth": unsigned 64-bit, "id": unsigned 64-bit,
///    "hw-id": unsigned, "unicast": bool, "dst-mac-addr": "XX-XX-XX-XX-XX-XX"}
///
/// Reading: "type" and "class" keep their code for a missing or unknown word, "state"
/// becomes 0; "hw-id" defaults to 0 (the constructor sets all bits); "network-interface-index"
/// -1; other numbers 0 or the defaults of the embedded records. "samples" is mapped through
/// PacketTimeOptions::toSamplesPerPacketEnum (an unsupported count stores 0).
/// "dst-mac-addr" is parsed with "-" separators, then, when that does not give six octets,
/// with ":" separators; octets of an incomplete pass stay stored, empty text changes nothing.
class StreamData : public IJsonSerializable {
public:
    /// A MAC address, most significant octet first.
    using MacAddress = std::array<uint8_t, 6>;

    StreamData() = default;
    ~StreamData() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;
    /// Logs the members of the derived record at level 6; nothing here.
    virtual void dumpDerivedStreamData() {}

    /// True for an audio stream.
    bool isAudio() const { return m_type.get() == StreamType::AUDIO; }
    /// "primary", "secondary", or "none" for any other code.
    std::string getRedundantType() const { return m_redundant_type.toString(); }

    /// Logs the stream at level 6, one line per call, then dumpDerivedStreamData().
    void dumpStreamData();

    /// "%02X-%02X-%02X-%02X-%02X-%02X".
    static std::string macToString(const MacAddress& mac);
    /// The in-place parse of "dst-mac-addr" described above.
    static void parseMac(const std::string& text, MacAddress& mac);

    uint32_t m_hw_id = 0xFFFFFFFFu;            ///< Hardware resource of the stream ("hw-id").
    Vlan m_vlan;                               ///< "vlan".
    UdpPort m_udp{5004, 5004};                 ///< "udp".
    IpAddrCfg m_ipv4;                          ///< "ipv4".
    Rtp m_rtp;                                 ///< "rtp".
    StreamClass m_class{StreamClass::SENDER};  ///< "class".
    std::string m_name;                        ///< "name".
    State m_state{State::DISABLED};            ///< "state".
    ChannelList m_channels;                    ///< "channel-list".
    StreamType m_type{StreamType::AUDIO};      ///< "type".
    int32_t m_media_clk_offset = 0;            ///< "media-clk-offset".
    int32_t m_network_interface_index = -1;    ///< "network-interface-index".
    uint64_t m_l1_bandwidth = 0;               ///< Bandwidth on the wire ("l1-bandwidth").
    /// Samples per packet ("samples").
    PacketTimeOptions::samplesPerPkt_e m_samples = PacketTimeOptions::SAMPLES_PER_PKT_UNSUPPORTED;
    /// Bytes of RTP payload per packet ("payload-size", audio and video streams).
    uint32_t m_payload_size = 0;
    bool m_unicast = false;          ///< Sent to one receiver rather than a group ("unicast").
    MacAddress m_dst_mac{};          ///< Destination MAC address ("dst-mac-addr").
    MacAddress m_src_mac{};          ///< Source MAC address; logged, not in the JSON form.
    uint64_t m_id = 0;               ///< Stream id ("id").
    RedundantType m_redundant_type;  ///< "redundant-type".

protected:
    /// Reads "samples" (default 0) into m_samples.
    void readSamples(Json::Value& in);
    /// Payload size plus the Ethernet/IPv4/UDP/RTP header bytes, 4 more when tagged.
    uint32_t packetSize(uint32_t headerBytes) const;
};
