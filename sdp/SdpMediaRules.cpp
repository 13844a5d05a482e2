// The media-level rules: one media section, line by line.

#include <cctype>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "pimAvMngApi/platform/Logger.h"
#include "sdp/SdpBoard.h"
#include "sdp/SdpLog.h"
#include "sdp/SdpNumbers.h"
#include "sdp/SdpRules.h"

namespace pimav::detail {

namespace {

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// m=<media> <port> <proto> <fmt> ...
void readMediaLine(SdpMedia& media, std::string_view value) {
    FieldReader fields(value);
    const std::string_view type = fields.next(' ');
    media.m_type = SdpMedia::NOT_RECOGNIZED;
    if (contains(type, "audio")) {
        media.m_type = SdpMedia::AUDIO;
    }
    if (contains(type, "video")) {
        media.m_type = SdpMedia::VIDEO;
    }
    SDP_LOG(7, "::Media Type found::%d", static_cast<int>(media.m_type));
    if (!fields.separated()) {
        return;
    }
    media.m_udp_port = lenientUnsigned<unsigned int>(fields.next(' '));
    SDP_LOG(7, "::UDP port found::%d", media.m_udp_port);
    if (!fields.separated()) {
        return;
    }
    const std::string_view protocol = fields.next(' ');
    if (!fields.separated()) {
        return;  // no payload type: the protocol is not taken either
    }
    media.m_protocol.assign(protocol);
    SDP_LOG(7, "::Protocol found::%s", media.m_protocol.c_str());
    media.m_payload_types.clear();
    do {
        const uint8_t payloadType = static_cast<uint8_t>(lenientUnsigned<unsigned int>(fields.next(' ')));
        media.m_payload_types.push_back(payloadType);
        SDP_LOG(7, "::[Media] Found payload type [%d]", payloadType);
    } while (fields.separated());
    SDP_LOG(7, "::%d RTP map(s) expected::", static_cast<int>(media.m_payload_types.size()));
}

// a=rtpmap:<payload type> <encoding name>/<clock rate>[/<channels>]
void readRtpMap(SdpMedia& media, const SdpLine& line) {
    SdpMediaRtpMap map;
    FieldReader fields(line.valueAt(kRtpmapToken));
    map.m_payload_type = static_cast<uint8_t>(lenientUnsigned<unsigned int>(fields.next(' ')));
    SDP_LOG(7, "::[RTP map] Payload type found::%d", map.m_payload_type);
    const std::string name(fields.next('/'));
    SDP_LOG(7, "::Codec found::%s", name.c_str());
    if (map.m_codec.setCodec(name) < 0) {
        SDP_LOG(5, "::Codec not recognized, using %s as standard::%s", map.m_codec.toString().c_str(),
                name.c_str());
    }
    map.m_channel_freq = lenientUnsigned<unsigned int>(fields.next('/'));
    SDP_LOG(7, "::Sampling frequency found::%d", map.m_channel_freq);
    if (isAudioCodec(map.m_codec)) {
        if (!fields.separated()) {
            // No channel field: the whole line is no number.
            SDP_LOG(2, "trying to convert to integer invalid value: %.*s", SDP_VIEW(line.text()));
            map.m_number_channels = 0;
        } else {
            map.m_number_channels = static_cast<uint16_t>(lenientUnsigned<unsigned int>(fields.rest()));
        }
    } else {
        map.m_number_channels = 1;
    }
    SDP_LOG(7, "::Number of channels found::%d", map.m_number_channels);
    media.m_rtp_maps.push_back(std::move(map));
}

// a=ts-refclk:ptp=<version>:<grandmaster id>[:<domain> | :domain-nmbr=<domain>]
void readReferenceClock(SdpMedia& media, std::string_view value) {
    FieldReader fields(value);
    const std::string_view source = fields.next('=');
    if (!contains(source, "ptp")) {
        SDP_LOG(2, "::Clock reference is not PTP!! we do not support that yet.::%.*s", SDP_VIEW(source));
        return;
    }
    media.m_clock_is_ptp = true;
    if (!fields.separated()) {
        return;
    }
    fields.next(':');  // the version
    if (!fields.separated()) {
        return;
    }
    media.m_ptp_gm_id.assign(fields.next(':'));
    for (char& c : media.m_ptp_gm_id) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    SDP_LOG(7, "::GM ID found::%s", media.m_ptp_gm_id.c_str());
    if (!fields.separated()) {
        return;
    }
    const std::string_view domain = fields.rest();
    if (contains(domain, "domain-nmbr")) {
        FieldReader named(domain);
        named.next('=');
        media.m_ptp_domain = static_cast<uint8_t>(lenientUnsigned<unsigned int>(named.rest()));
        SDP_LOG(7, "::[AES67-2015]Ptp domain found::%d", media.m_ptp_domain);
    } else {
        media.m_ptp_domain = static_cast<uint8_t>(lenientUnsigned<unsigned int>(domain));
        SDP_LOG(7, "::[AES67-2013]Ptp domain found::%d", media.m_ptp_domain);
    }
}

// c=IN IP4 <connection-address>[/<ttl>]
void readConnection(SdpMedia& media, std::string_view value) {
    FieldReader fields(value);
    const std::string_view address = fields.next('/');
    SDP_LOG(7, "::Destination IP found::%.*s", SDP_VIEW(address));
    if (!parseIp(address, media.m_transport_ip)) {
        SDP_LOG(2, "Error parsing IP [%.*s]: invalid IP address", SDP_VIEW(address));
        SDP_LOG(5, "::Destination IP found but it is invalid: [%.*s]", SDP_VIEW(address));
    }
    if (fields.separated()) {
        media.m_ttl = static_cast<uint8_t>(lenientUnsigned<unsigned int>(fields.rest()));
        SDP_LOG(7, "::TTL found::%d", media.m_ttl);
    }
}

// a=source-filter: <mode> IN IP4 <destination-address> <source-address>
// The addresses follow the first "IP4 " of the line.
void readSourceFilter(SdpMedia& media, std::string_view line) {
    std::string_view addresses;
    if (!textAfter(line, "IP4 ", addresses)) {
        return;
    }
    FieldReader fields(addresses);
    const std::string_view destination = fields.next(' ');
    const std::string_view source = fields.rest();
    if (parseIp(destination, media.m_transport_ip)) {
        SDP_LOG(7, "::Destination IP found::%s", IpText(media.m_transport_ip).c_str());
    } else {
        SDP_LOG(2, "Error parsing IP [%.*s]: invalid IP address", SDP_VIEW(destination));
        SDP_LOG(5, "::Destination IP found but it is invalid: [%.*s]", SDP_VIEW(destination));
    }
    if (parseIp(source, media.m_local_ip)) {
        SDP_LOG(7, "::Source IP found::%s", IpText(media.m_local_ip).c_str());
    } else {
        SDP_LOG(2, "Error parsing IP [%.*s]: invalid IP address", SDP_VIEW(source));
        SDP_LOG(5, "::Source IP found but it is invalid: [%.*s]", SDP_VIEW(source));
    }
}

// a=mid:<identification-tag>; in a MULTI group the tag must be an integer.
int readMid(SdpMedia& media, std::string_view value, SdpGroup::Type groupType) {
    media.m_group.assign(trim(value));
    if (groupType == SdpGroup::GROUP_MULTI_2SI || groupType == SdpGroup::GROUP_MULTI_SD) {
        bool integer = true;
        try {
            (void)strictInt(media.m_group);
        } catch (const std::exception&) {
            integer = false;
        }
        if (!integer) {
            SDP_LOG(2, "Media identification in group is invalid and needs to be an integer: %s",
                    media.m_group.c_str());
            return -7;
        }
    }
    media.m_group_type = groupType;
    SDP_LOG(7, "::Group found::%s", media.m_group.c_str());
    return 0;
}

// The checks of a whole section: a video stream needs the board's video codec and a
// consistent format; the section's identification must match its place in the group.
int checkSection(SdpMedia& media, std::string_view groupItem) {
    if (media.m_type == SdpMedia::VIDEO) {
        const char* wanted = isDamsonTr04() ? "SMPTE2022-6" : "raw";
        const std::string codec =
            media.m_rtp_maps.empty() ? std::string() : media.m_rtp_maps[0].m_codec.toString();
        if (media.m_rtp_maps.empty() || codec != wanted) {
            SDP_LOG(2, "::Stream is video, but not valid type %s.", codec.c_str());
            return -1;
        }
        if (media.m_video.checkVideoDetailConsistency() < 0) {
            SDP_LOG(2, "::Stream is video, but no valid video format found.");
            return -1;
        }
        SDP_LOG(7, "::Video Format found ::%s", media.m_video.toString().c_str());
    }
    if (!groupItem.empty() && groupItem != media.m_group) {
        SDP_LOG(2,
                "::Group (%s) delimiting the media type does not match the order set in a=group::DUP (%.*s)",
                media.m_group.c_str(), SDP_VIEW(groupItem));
        return -1;
    }
    return 0;
}

}  // namespace

bool hasMediaToken(const SdpLine& line) {
    return line.has(kConnectionToken) || line.has(kClockDomainToken) || line.has(kRefclkToken) ||
           line.has(kSourceFilterToken);
}

int readMediaSection(SdpMedia& media, const SdpLine* const* first, const SdpLine* const* last,
                     LineList& leftovers, SdpGroup::Type groupType, std::string_view groupItem) {
    for (const SdpLine* const* next = first; next != last; ++next) {
        const SdpLine& line = **next;

        // First stage: four independent tests.
        bool consumed = false;
        if (line.has(kMediaToken)) {
            consumed = true;
            readMediaLine(media, line.valueAt(kMediaToken));
        }
        if (line.has(kRtpmapToken)) {
            consumed = true;
            readRtpMap(media, line);
        }
        if (line.has(kFramecountToken)) {
            // a=framecount:<samples per packet>
            consumed = true;
            media.m_number_samples =
                static_cast<uint8_t>(lenientUnsigned<unsigned int>(line.valueAt(kFramecountToken)));
            SDP_LOG(7, "::Number of samples found::%d", media.m_number_samples);
        }
        if (line.has(kPtimeToken)) {
            // a=ptime:<packet time in milliseconds>
            consumed = true;
            media.m_ptime = strictFloat(line.valueAt(kPtimeToken));
            SDP_LOG(7, "::Packet time found::%4.3f", static_cast<double>(media.m_ptime));
        }

        // Second stage: the first token found decides.
        if (line.has(kInfoToken)) {
            // i=<media title>
            media.m_info.assign(line.valueAt(kInfoToken));
            SDP_LOG(7, "::Description found::%s", media.m_info.c_str());
        } else if (line.has(kMidToken)) {
            if (readMid(media, line.valueAt(kMidToken), groupType) < 0) {
                return -7;
            }
        } else if (line.has(kRefclkToken)) {
            readReferenceClock(media, line.valueAt(kRefclkToken));
        } else if (line.has(kConnectionToken)) {
            readConnection(media, line.valueAt(kConnectionToken));
        } else if (line.has(kSourceFilterToken)) {
            readSourceFilter(media, line.text());
        } else if (line.has(kMediaclkToken)) {
            // a=mediaclk:direct=<offset>
            FieldReader fields(line.valueAt(kMediaclkToken));
            fields.next('=');
            media.m_media_clock = lenientUnsigned<unsigned int>(fields.rest());
            SDP_LOG(7, "::Media clock found::%d", media.m_media_clock);
        } else if (line.has(kClockDomainToken)) {
            // a=clock-domain:<clock type> <domain>
            FieldReader fields(line.valueAt(kClockDomainToken));
            fields.next(' ');
            if (fields.separated()) {
                media.m_ptp_domain = static_cast<uint8_t>(lenientUnsigned<unsigned int>(fields.rest()));
                SDP_LOG(7, "::clock-domain found::%d", media.m_ptp_domain);
            }
        } else if (readChannelOrder(line, media) == 0 && readVideoValues(line, media) == 0 && !consumed) {
            leftovers.push_back(&line);
        }
    }
    return checkSection(media, groupItem);
}

}  // namespace pimav::detail
