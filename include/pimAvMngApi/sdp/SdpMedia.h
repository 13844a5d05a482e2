#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/platform/VideoFormat.h"
#include "pimAvMngApi/sdp/SdpGroup.h"
#include "pimAvMngApi/sdp/SdpMediaRtpMap.h"

/// One media description ("m=" section) of an SDP session: transport, PTP reference
/// clock, RTP maps and, for video, the SMPTE ST 2110-20 format parameters.
///
/// Addresses are IPv4 in host byte order, 0 meaning not set, and travel as dotted-quad
/// text. JSON keys: "type", "udp", "protocol", "ptime", "number-samples", "ttl",
/// "info", "group", "payload_types" (array), "rtpmap" (array), "mediaclk",
/// "clock-is-ptp", "ptp" {"gmid", "domain"}, "local-ip", "transport-ip" and "video"
/// (the VideoFormat object plus "depth", "sampling", "colorimetry"). The group type,
/// packing mode, sender type and channel order are not part of the JSON form.
///
/// Deserialize resets every scalar to its reading default when its key is missing, but
/// keeps an address when its text is empty or invalid (the latter logged), reads the
/// "video" keys only when "video" is an object, and appends to the two lists.
class SdpMedia : public IJsonSerializable {
public:
    /// The media kinds, by code.
    enum Type : int {
        AUDIO = 0,
        VIDEO = 1,
        NOT_RECOGNIZED = 2,
    };

    SdpMedia() = default;
    // The declared destructor would suppress the implicit moves; a parse hands its
    // result over by moving it.
    ///@{
    /// Copied and moved member by member.
    SdpMedia(const SdpMedia&) = default;
    SdpMedia(SdpMedia&&) = default;
    SdpMedia& operator=(const SdpMedia&) = default;
    SdpMedia& operator=(SdpMedia&&) = default;
    ///@}
    ~SdpMedia() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// "AUDIO", "VIDEO" or "NOT_RECOGNIZED" (also for any out-of-range value).
    std::string getTypeStr() const;
    /// "AUDIO" -> AUDIO, "VIDEO" -> VIDEO, any other text (case-sensitive) -> NOT_RECOGNIZED.
    static Type getTypeEnum(std::string text);

    /// Writes the description and its RTP maps to the log at level 6.
    void dump() const;

    Type m_type = NOT_RECOGNIZED;        ///< "type".
    uint32_t m_udp_port = 0;             ///< "udp".
    std::string m_protocol = "RTP/AVP";  ///< "protocol".
    float m_ptime = 0.0f;                ///< milliseconds
    uint8_t m_number_samples = 0;        ///< "number-samples".
    uint8_t m_ttl = 64;                  ///< "ttl".
    std::string m_info;                  ///< Media title, the "i=" line ("info").
    std::string m_group;                 ///< Media identification in a group ("group").
    /// The grouping the section belongs to; not in the JSON form.
    SdpGroup::Type m_group_type = SdpGroup::GROUP_NONE;
    std::vector<uint8_t> m_payload_types;      ///< Payload types of the "m=" line ("payload_types").
    std::vector<SdpMediaRtpMap> m_rtp_maps;    ///< "rtpmap".
    uint32_t m_media_clock = 0;                ///< Media clock offset ("mediaclk").
    bool m_clock_is_ptp = false;               ///< The reference clock is PTP ("clock-is-ptp").
    std::string m_ptp_gm_id;                   ///< PTP grandmaster id ("ptp"/"gmid").
    uint8_t m_ptp_domain = 0;                  ///< PTP domain ("ptp"/"domain").
    uint32_t m_local_ip = 0;                   ///< Source address of the source filter ("local-ip").
    uint32_t m_transport_ip = 0;               ///< Destination address ("transport-ip").
    VideoFormat m_video;                       ///< Video format ("video").
    uint32_t m_depth = 0;                      ///< Bit depth ("video"/"depth").
    std::string m_sampling;                    ///< Sampling structure ("video"/"sampling").
    std::string m_colorimetry;                 ///< "video"/"colorimetry".
    std::string m_packing_mode;                ///< Packing mode; not in the JSON form.
    std::string m_sender_type;                 ///< Sender type; not in the JSON form.
    std::vector<std::string> m_channel_order;  ///< Audio channel order; not in the JSON form.
};
