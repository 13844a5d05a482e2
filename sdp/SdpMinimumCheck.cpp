// The check of the minimum configuration: whether a parsed session carries everything
// a stream needs. Each problem is reported to the user.

#include "pimAvMngApi/sdp/SdpConverter.h"
#include "sdp/SdpLog.h"

int SdpConverter::checkMinimumCfg(SdpSession* session) {
    if (session == nullptr) {
        SDP_LOG(2, "%s:: Parameter is null.", "checkMinimumCfg");
        return -4;
    }
    bool failed = false;
    if (session->m_protocol_version != 0) {
        SDP_USER_MESSAGE("Version in the SDP should be 0. received %d", session->m_protocol_version);
        failed = true;
    }
    if (session->m_media.empty()) {
        SDP_USER_MESSAGE("Unable to find one media session in the SDP. Check your \"m=\" line.");
        failed = true;
    }
    for (SdpMedia& media : session->m_media) {
        if (media.m_local_ip == 0) {
            media.m_local_ip = session->m_local_ip;
            if (media.m_local_ip == 0) {
                SDP_USER_MESSAGE(
                    "Source IP address is a mandatory field in the SDP. Check your \"a=source-filter\" or "
                    "the "
                    "\"o=\"lines.");
                failed = true;
            }
        }
        if (checkMinimumCfgMedia(media) != 0) {
            failed = true;
        }
    }
    return failed ? -1 : 0;
}

int SdpConverter::checkMinimumCfgMedia(SdpMedia& media) {
    bool failed = false;
    if (media.m_transport_ip == 0) {
        SDP_USER_MESSAGE(
            "Destination IP is a mandatory field in the SDP. Check your \"a=source-filter\" line.");
        failed = true;
    }
    if (!media.m_clock_is_ptp) {
        SDP_USER_MESSAGE("Reference clock must be PTP. Check your \"a=ts-refclk\" line.");
        failed = true;
    }
    if (media.m_ptime == 0 && media.m_type == SdpMedia::AUDIO) {
        SDP_USER_MESSAGE("Packet time is a mandatory field in the SDP. Check your \"a=ptime:\" line.");
        failed = true;
    }
    if (media.m_udp_port == 0) {
        SDP_USER_MESSAGE("UDP port is a mandatory field in the SDP. Check your \"m=audio\" line.");
        failed = true;
    }
    if (media.m_rtp_maps.empty() && media.m_type == SdpMedia::AUDIO) {
        SDP_USER_MESSAGE("Unable to find one rtpmap in the SDP. Check your \"a=rtpmap\" line.");
        failed = true;
    }
    for (const SdpMediaRtpMap& map : media.m_rtp_maps) {
        if (map.m_payload_type == 0) {
            SDP_USER_MESSAGE("Payload type is a mandatory field in the SDP. Check your \"m=audio\" line.");
            failed = true;
        }
        if (map.m_channel_freq == 0) {
            SDP_USER_MESSAGE(
                "Channels frequency is a mandatory field in the SDP. Check your \"a=rtpmap:\" line.");
            failed = true;
        }
        if (map.m_number_channels == 0) {
            SDP_USER_MESSAGE(
                "Number of channels is a mandatory field in the SDP. Check your \"a=rtpmap:\" line.");
            failed = true;
        }
    }
    return failed ? -7 : 0;
}
