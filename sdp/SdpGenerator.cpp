// SdpSession -> SDP text (standard and Dante-compatible forms) and the converter's
// accessors.

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "platform/ChkLog.h"
#include "sdp/SdpBoard.h"
#include "sdp/SdpText.h"

using namespace pimav::detail;

namespace {

// The v=, o= and s= lines, which both forms begin with.
void appendSessionHead(std::string& out, const SdpSession& session, const char* eol) {
    appendFormat(out, "v=%d%s", session.m_protocol_version, eol);
    appendFormat(out, "o=%s %llu %llu IN IP4 %s%s", session.m_user_name.c_str(),
                 static_cast<unsigned long long>(session.m_session_id),
                 static_cast<unsigned long long>(session.m_session_version),
                 IpText(session.m_local_ip).c_str(), eol);
    out += "s=";
    out += session.m_info;
    out += eol;
}

// The clock and source-filter lines of a media description, in the order both forms
// write them.
void appendClockAndSource(std::string& out, const SdpMedia& media, const IpText& transport, const char* eol) {
    appendFormat(out, "a=clock-domain:PTPv2 %d%s", media.m_ptp_domain, eol);
    appendFormat(out, "a=ts-refclk:ptp=IEEE1588-2008:%s:%d%s", media.m_ptp_gm_id.c_str(), media.m_ptp_domain,
                 eol);
    appendFormat(out, "a=mediaclk:direct=%u%s", media.m_media_clock, eol);
    appendFormat(out, "a=source-filter: incl IN IP4 %s %s%s", transport.c_str(),
                 IpText(media.m_local_ip).c_str(), eol);
}

// A CR, LF or NUL in a field would end the field's line early and let the rest of the
// field stand as a line of its own (a text field could add "m=" or "a=" lines).
bool breaksLine(const std::string& text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos;
}

// A text field and whether the generator writes it.
struct TextField {
    bool written;
    const char* name;
    const std::string& text;
};

const char* firstBroken(std::initializer_list<TextField> fields) {
    for (const TextField& field : fields) {
        if (field.written && breaksLine(field.text)) {
            return field.name;
        }
    }
    return nullptr;
}

// The first text field of the session lines that would break its line, or nullptr.
const char* brokenHeaderField(const SdpSession& session) {
    if (const char* field = firstBroken(
            {{true, "session user name", session.m_user_name}, {true, "session name", session.m_info}})) {
        return field;
    }
    if (session.m_media.size() >= 2) {
        for (const SdpMedia& media : session.m_media) {
            if (breaksLine(media.m_group)) {
                return "media group";
            }
        }
    }
    return nullptr;
}

// The same for the lines of one media description, as generateSessionMedia writes them.
const char* brokenMediaField(const SdpMedia& media, bool isDup) {
    const bool video = media.m_type == SdpMedia::VIDEO;
    return firstBroken({{media.m_type == SdpMedia::AUDIO, "protocol", media.m_protocol},
                        {true, "title", media.m_info},
                        {true, "PTP grandmaster", media.m_ptp_gm_id},
                        {video, "sampling", media.m_sampling},
                        {video, "colorimetry", media.m_colorimetry},
                        {video, "packing mode", media.m_packing_mode},
                        {video, "sender type", media.m_sender_type},
                        {isDup, "group", media.m_group}});
}

int refuseBrokenField(const std::string& field) {
    Logger::log(2, "SDP:: %s holds a CR, LF or NUL character; no SDP generated", field.c_str());
    return -1;
}

// Float to unsigned as the device's Arm core converts: truncation toward zero,
// saturating at the limits, NaN giving 0.
unsigned int saturatingUnsigned(float value) {
    if (!(value > 0.0f)) {
        return 0;
    }
    if (value >= 4294967296.0f) {
        return 0xFFFFFFFFu;
    }
    return static_cast<unsigned int>(value);
}

}  // namespace

int SdpConverter::getSdpString(std::string* out) const {
    PIMAV_CHK_NULL(out, "getSdpString");
    *out = m_sdp;
    return 0;
}

int SdpConverter::getSdpConfig(SdpSession& out) const {
    out = m_session;
    return 0;
}

int SdpConverter::setSdpConfig(SdpSession& session) {
    m_session = session;
    PIMAV_CHK(generateSdp(&session));
    return 0;
}

int SdpConverter::generateSdp(SdpSession* session) {
    Logger::log(5, "SDP:: generating SDP from media session internal configuration");
    PIMAV_CHK_NULL(session, "generateSdp");
    m_session = *session;
    return generateSdpString();
}

int SdpConverter::generateSdpString() {
    // A session that would write a line break inside a field gets no text at all.
    const bool isDup = m_session.m_media.size() >= 2;
    for (size_t i = 0; i < m_session.m_media.size(); ++i) {
        if (const char* field = brokenMediaField(m_session.m_media[i], isDup)) {
            m_sdp.clear();
            return refuseBrokenField("media " + std::to_string(i) + " " + field);
        }
    }
    if (const char* field = brokenHeaderField(m_session)) {
        m_sdp.clear();
        return refuseBrokenField(field);
    }
    std::string text;
    text.reserve(512 + 512 * m_session.m_media.size());
    generateSdpHeader(text);
    int result = 0;
    for (SdpMedia& media : m_session.m_media) {
        const int mediaResult = generateSessionMedia(text, media, isDup);
        if (mediaResult < 0 && result == 0) {
            result = mediaResult;
        }
    }
    m_sdp = std::move(text);
    return result;
}

int SdpConverter::generateSdpHeader(std::string& out) {
    if (const char* field = brokenHeaderField(m_session)) {
        return refuseBrokenField(field);
    }
    appendSessionHead(out, m_session, "\n");
    appendFormat(out, "t=%u %u\n", m_session.m_time.m_start, m_session.m_time.m_stop);
    if (m_session.m_media.size() >= 2) {
        out += "a=group:DUP";
        for (const SdpMedia& media : m_session.m_media) {
            out += ' ';
            out += media.m_group;
        }
        out += '\n';
    }
    return 0;
}

int SdpConverter::generateSessionMedia(std::string& out, SdpMedia& media, bool isDup) {
    if (const char* field = brokenMediaField(media, isDup)) {
        return refuseBrokenField(std::string("media ") + field);
    }
    const int firstPayloadType = media.m_rtp_maps.empty() ? 0 : media.m_rtp_maps[0].m_payload_type;
    if (media.m_type == SdpMedia::AUDIO) {
        appendFormat(out, "m=audio %u %s", media.m_udp_port, media.m_protocol.c_str());
        for (const SdpMediaRtpMap& map : media.m_rtp_maps) {
            appendFormat(out, " %d", map.m_payload_type);
        }
        out += '\n';
    } else if (media.m_type == SdpMedia::VIDEO) {
        appendFormat(out, "m=video %u RTP/AVP %d\n", media.m_udp_port, firstPayloadType);
    }
    if (!media.m_info.empty()) {
        out += "i=";
        out += media.m_info;
        out += '\n';
    }
    const IpText transport(media.m_transport_ip);
    appendFormat(out, "c=IN IP4 %s/%d\n", transport.c_str(), media.m_ttl);
    appendClockAndSource(out, media, transport, "\n");

    if (media.m_type == SdpMedia::VIDEO) {
        VideoFormat::video_field_rate_t fieldRate{};
        unsigned int width = 0;
        unsigned int height = 0;
        bool interlaced = false;
        PIMAV_CHK(media.m_video.getVideoDetails(fieldRate, width, height, interlaced));
        if (isDamsonTr04()) {
            appendFormat(out, "a=rtpmap:%d SMPTE2022-6/27000000\n", firstPayloadType);
        } else {
            appendFormat(out, "a=rtpmap:%d raw/90000\n", firstPayloadType);
        }
        std::string frameRate;
        PIMAV_CHK(media.m_video.getExactFramerateString(frameRate));
        appendFormat(out, "a=fmtp:%d sampling=%s; width=%u; height=%u; exactframerate=%s; depth=%u; colorimetry=%s",
                     firstPayloadType, media.m_sampling.c_str(), width, height, frameRate.c_str(), media.m_depth,
                     media.m_colorimetry.c_str());
        out += "; PM=";
        out += media.m_packing_mode;
        out += "; TP=";
        out += media.m_sender_type;
        out += "; SSN=ST2110-20:2017";
        if (interlaced) {
            out += "; interlace=1";
        }
        out += "; \n";
    } else if (media.m_type == SdpMedia::AUDIO) {
        for (SdpMediaRtpMap& map : media.m_rtp_maps) {
            generateSessionMediaRtpMap(out, map);
        }
        appendFormat(out, "a=framecount:%d\n", media.m_number_samples);
        const unsigned int micros = saturatingUnsigned(media.m_ptime * 1000.0f);
        char ptime[64];
        std::snprintf(ptime, sizeof(ptime), (micros % 1000 == 0) ? "%.0f" : "%.3f",
                      static_cast<double>(media.m_ptime));
        Logger::log(7, "SDP: ptime=%f => %s", static_cast<double>(media.m_ptime), ptime);
        out += "a=ptime:";
        out += ptime;
        out += '\n';
        if (writesChannelOrder()) {
            for (const SdpMediaRtpMap& map : media.m_rtp_maps) {
                if (map.m_number_channels == 8) {
                    appendFormat(out, "a=fmtp:%d channel-order=SMPTE2110.(SGRP,SGRP)\n", map.m_payload_type);
                } else {
                    appendFormat(out, "a=fmtp:%d channel-order=SMPTE2110.(U%02d)\n", map.m_payload_type,
                                 map.m_number_channels);
                }
            }
        }
    }
    if (isDup && !media.m_group.empty()) {
        out += "a=mid:";
        out += media.m_group;
        out += '\n';
    }
    return 0;
}

int SdpConverter::generateSessionMediaRtpMap(std::string& out, SdpMediaRtpMap& map) {
    char line[1000];
    std::snprintf(line, sizeof(line), "a=rtpmap:%d %s/%d/%d\n", map.m_payload_type, map.m_codec.toString().c_str(),
                  static_cast<int>(map.m_channel_freq), map.m_number_channels);
    out += line;
    return 0;
}

int SdpConverter::generateDanteSdp(std::string& out) {
    out.clear();
    if (m_session.m_media.empty() || m_session.m_media[0].m_rtp_maps.empty()) {
        Logger::log(2, "SDP:: Dante SDP needs one media description with one rtpmap");
        return -1;
    }
    const SdpMedia& media = m_session.m_media[0];
    const SdpMediaRtpMap& map = media.m_rtp_maps[0];
    if (const char* field = firstBroken({{true, "session user name", m_session.m_user_name},
                                         {true, "session name", m_session.m_info},
                                         {true, "media 0 protocol", media.m_protocol},
                                         {true, "media 0 PTP grandmaster", media.m_ptp_gm_id}})) {
        return refuseBrokenField(field);
    }
    const IpText transport(media.m_transport_ip);
    appendSessionHead(out, m_session, "\r\n");
    appendFormat(out, "c=IN IP4 %s/%d\r\n", transport.c_str(), media.m_ttl);
    appendFormat(out, "t=%u %u\r\n", m_session.m_time.m_start, m_session.m_time.m_stop);
    appendFormat(out, "m=audio %u %s %d\r\n", media.m_udp_port, media.m_protocol.c_str(), map.m_payload_type);
    out += "i=";
    for (unsigned int channel = 0; channel < map.m_number_channels; ++channel) {
        appendFormat(out, channel == 0 ? "channel_%u" : ",channel_%u", channel);
    }
    out += "\r\n";
    appendClockAndSource(out, media, transport, "\r\n");
    appendFormat(out, "a=rtpmap:%d %s/%u/%d\r\n", map.m_payload_type, map.m_codec.toString().c_str(),
                 map.m_channel_freq, map.m_number_channels);
    appendFormat(out, "a=framecount:%d\r\n", media.m_number_samples);
    appendFormat(out, "a=ptime:%.4f\r\n", static_cast<double>(media.m_ptime));
    return 0;
}

int SdpConverter::generateManualSessionSdp(std::string& text) {
    m_sdp.assign(text.c_str());
    return 0;
}
