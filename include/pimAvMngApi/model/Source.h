#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/model/IpAddress.h"
#include "pimAvMngApi/model/RedundantType.h"
#include "pimAvMngApi/model/Ssrc.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// One stream that a sending session sends (an ancillary stream as it is, and the
/// base of AudioSource and VideoSource).
///
/// JSON form:
///   {"name": text, "transport": "a.b.c.d", "source-ip": "a.b.c.d", "udp": int, "dscp": int,
///    "ttl": int, "payload-type": int, "link-offset": unsigned, "media-clk-offset": int,
///    "network-index": int, "channel-list": [ChannelId...], "id": unsigned 64-bit,
///    "redundant-type": "none" | "primary" | "secondary",
///    "ssrc": {"type": "session-id" | "asio" | "manual" | "unspecified" | "-", "value": unsigned}}
///
/// Deserialize does not clear first. Missing keys give: "udp", "dscp", "network-index"
/// -1; "ttl" 64; "payload-type" 98; "link-offset", "media-clk-offset", "id" 0; "name" "".
/// The two addresses keep their value for empty, missing or invalid text (invalid text is
/// logged); "redundant-type" keeps the code for an unknown word; "ssrc" follows the Ssrc
/// rule (object, bare number, or absent); "channel-list" replaces the channels.
class Source : public IJsonSerializable {
public:
    Source() = default;
    ~Source() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Logs "Clearing Source base class" at level 5 and resets name, ttl 64, payload type
    /// 98, udp/dscp/network index -1, transport address 0, link and media clock offsets 0,
    /// the channels, redundancy role 0, SSRC to "session-id" 0, and the stream id. The
    /// source address is kept.
    virtual void clear();
    /// Hook for a host-level check before sending; no check here, returns 0.
    virtual int validate();

    /// Accepts "primary", "secondary", "none" (returns 0); any other word returns -8 and
    /// changes nothing.
    int setRedundantType(const std::string& word) { return m_redundant_type.fromString(word); }
    /// "primary", "secondary", or "none" for any other code.
    std::string getRedundantType() const { return m_redundant_type.toString(); }

    std::string m_name;                 ///< "name".
    IpAddress m_transport;              ///< Destination address of the stream ("transport").
    IpAddress m_source_ip;              ///< Source address of the stream ("source-ip").
    int32_t m_udp_port = -1;            ///< Destination UDP port ("udp"); -1 when not chosen.
    int32_t m_dscp = -1;                ///< "dscp"; -1 when not chosen.
    uint8_t m_ttl = 64;                 ///< "ttl".
    uint8_t m_payload_type = 98;        ///< RTP payload type ("payload-type").
    uint32_t m_link_offset = 0;         ///< "link-offset".
    int32_t m_media_clk_offset = 0;     ///< "media-clk-offset".
    int32_t m_network_index = -1;       ///< Network interface ("network-index"); -1 when not chosen.
    ChannelList m_channels;             ///< Local channels sent ("channel-list").
    uint64_t m_id = 0;                  ///< Stream id ("id").
    RedundantType m_redundant_type;     ///< Role in a redundant pair ("redundant-type").
    Ssrc m_ssrc{Ssrc::UNSPECIFIED, 0};  ///< How the SSRC is chosen ("ssrc").
};
