#pragma once

// SDP texts and SAP packets shared by the emulator's SAP tests (in-process and end to end).

#include <cstdint>
#include <string>
#include <vector>

#include "sap/SapPacket.h"

namespace pimav::detail {

// An AES67 audio session the minimum check accepts, with its o= id and version and s= name.
inline std::string audioSdp(uint64_t id, unsigned version, const std::string& name) {
    return "v=0\r\no=- " + std::to_string(id) + " " + std::to_string(version) +
           " IN IP4 192.168.1.52\r\ns=" + name +
           "\r\nt=0 0\r\nm=audio 5006 RTP/AVP 98\r\nc=IN IP4 239.69.3.20/16\r\na=rtpmap:98 L16/48000/1\r\n"
           "a=ptime:1\r\na=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0\r\na=mediaclk:direct=0\r\n";
}

inline std::string sapAnnouncement(const std::string& sdp, const char* origin = "10.0.0.7", bool compressed = false) {
    SapPacket packet;
    SapOrigin::fromText(origin, packet.origin);
    packet.hash = 0x1234;
    packet.compressed = compressed;
    packet.sdp = sdp;
    return encodeSap(packet);
}

// One packet per reason the emulator refuses an announcement for. A refused SDP counts once
// per announced text (the directory reports a session when it changes), the others per packet.
struct RefusedSap {
    const char* reason;
    std::string bytes;
    bool perPacket = true;
};
inline std::vector<RefusedSap> refusedSapPackets() {
    const std::string good = sapAnnouncement(audioSdp(99, 1, "good"));
    const auto withByte = [&](size_t index, char value) {
        std::string bytes = good;
        bytes[index] = value;
        return bytes;
    };
    return {
        {"truncated", good.substr(0, 6)},
        {"wrong-version", withByte(0, '\x40')},
        {"encrypted", withByte(0, '\x22')},
        {"bad-zlib", withByte(0, '\x21')},
        {"auth-beyond-packet", withByte(1, '\xff')},
        {"empty-payload", good.substr(0, 8)},
        {"wrong-payload-type", good.substr(0, 8) + std::string("text/plain\0hello", 16)},
        {"not-sdp", good.substr(0, 8) + "hello"},
        {"no-session-id", sapAnnouncement("v=0\r\ns=no origin line\r\n")},
        {"sdp-refused", sapAnnouncement("v=0\r\no=- 98 1 IN IP4 10.0.0.7\r\ns=no media\r\nt=0 0\r\n"), false},
    };
}

}  // namespace pimav::detail
