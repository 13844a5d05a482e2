#pragma once

#include <cstdint>
#include <string>

// Builds the SDP text of a single-stream AES67 audio session (L24, 48 kHz, 1 ms,
// PTP reference clock), as another device would advertise it.
struct Aes67Sdp {
    uint64_t id = 1;
    std::string name = "Stream";
    std::string source = "192.168.1.20";
    std::string group = "239.10.0.1";
    unsigned port = 5004;
    unsigned payloadType = 97;
    unsigned channels = 2;
    uint64_t version = 1;

    std::string text() const {
        return "v=0\n"
               "o=- " +
               std::to_string(id) + " " + std::to_string(version) + " IN IP4 " + source +
               "\n"
               "s=" +
               name +
               "\n"
               "t=0 0\n"
               "m=audio " +
               std::to_string(port) + " RTP/AVP " + std::to_string(payloadType) +
               "\n"
               "c=IN IP4 " +
               group +
               "/32\n"
               "a=rtpmap:" +
               std::to_string(payloadType) + " L24/48000/" + std::to_string(channels) +
               "\n"
               "a=ptime:1\n"
               "a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0\n"
               "a=mediaclk:direct=0\n";
    }
};
