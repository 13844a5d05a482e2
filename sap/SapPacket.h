#pragma once

// Session Announcement Protocol packets (RFC 2974): the header, the originating source,
// the skipped authentication data, the optional payload type and the SDP payload, plain or
// zlib-compressed.
//
//   byte 0   V(3)=1 A(1) R(1) T(1) E(1) C(1)   A: IPv6 origin, T: deletion, E: encrypted,
//                                              C: compressed
//   byte 1   authentication length, in 32-bit words
//   byte 2-3 message id hash (network order)
//   origin   4 or 16 bytes, then the authentication data
//   payload  ["application/sdp" NUL] SDP text; with C set, all of it is one zlib stream

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "pimAvMngApi/model/IpAddress.h"

namespace pimav::detail {

// The announcing host of a packet, IPv4 or IPv6, in network byte order.
struct SapOrigin {
    bool ipv6 = false;
    std::array<uint8_t, 16> bytes{};  // IPv4 uses the first 4

    // Dotted-quad or IPv6 text; false (and `out` unchanged) for anything else.
    static bool fromText(const std::string& text, SapOrigin& out);
    static SapOrigin ipv4(IpAddress address);
    std::string toString() const;
    // The host part of a URL: IPv6 text is put in brackets.
    std::string urlHost() const;
    size_t size() const { return ipv6 ? 16 : 4; }

    bool operator==(const SapOrigin& other) const { return ipv6 == other.ipv6 && bytes == other.bytes; }
    bool operator!=(const SapOrigin& other) const { return !(*this == other); }
    bool operator<(const SapOrigin& other) const {
        return ipv6 != other.ipv6 ? ipv6 < other.ipv6 : bytes < other.bytes;
    }
};

enum class SapMessageType { Announce, Delete };

struct SapPacket {
    SapMessageType type = SapMessageType::Announce;
    SapOrigin origin;
    uint16_t hash = 0;
    // Decoding: the C bit. Encoding: compress the payload type and the SDP with zlib.
    bool compressed = false;
    // Whether the payload type "application/sdp" precedes the SDP.
    bool typed = true;
    // Authentication data, a multiple of 4 bytes (at most 1020); it is carried, not verified.
    std::string auth;
    std::string sdp;

    bool operator==(const SapPacket& other) const;
};

// Why a packet is refused. The words of sapErrorWord are what logs and tools print.
enum class SapError {
    None,
    Truncated,         // "truncated": shorter than its header, origin and authentication data say
    WrongVersion,      // "wrong-version": version field other than 1
    Encrypted,         // "encrypted": the E bit is set
    AuthBeyondPacket,  // "auth-beyond-packet": the authentication data runs past the end
    BadZlib,           // "bad-zlib": the C bit is set and the payload is no complete zlib stream
    PayloadTooLarge,   // "payload-too-large": the (decompressed) payload exceeds the bound
    EmptyPayload,      // "empty-payload": no SDP text
    WrongPayloadType,  // "wrong-payload-type": a payload type other than application/sdp
    NotSdp,            // "not-sdp": no payload type, and the payload does not start with "v=0"
};
const char* sapErrorWord(SapError error);

// The largest payload accepted, after decompression: it bounds what a small compressed
// packet may expand to.
constexpr size_t kSapMaxPayload = 64 * 1024;
// The port of the SAP groups.
constexpr uint16_t kSapPort = 9875;

// Builds the packet's bytes. Throws std::invalid_argument when `auth` is not a multiple
// of 4 bytes or longer than 1020.
std::string encodeSap(const SapPacket& packet);

// Reads a packet. A refused packet is logged at level 2 with its reason word, and `out` is
// then unspecified. Never throws for any input.
SapError decodeSap(const uint8_t* data, size_t size, SapPacket& out, size_t maxPayload = kSapMaxPayload);
inline SapError decodeSap(const std::string& bytes, SapPacket& out, size_t maxPayload = kSapMaxPayload) {
    return decodeSap(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), out, maxPayload);
}
// The same without the log line, for a caller that counts refusals and logs them itself.
SapError decodeSapQuietly(const uint8_t* data, size_t size, SapPacket& out, size_t maxPayload = kSapMaxPayload);

// `sap://HOST:PORT/HASH` with the hash as four lowercase hex digits: the name under which a
// listener knows an announced session.
std::string sapUrl(const SapOrigin& origin, uint16_t port, uint16_t hash);

// The SDP fields SAP handling needs, read without the SDP parser: a deletion may carry no
// more than the o= line.
struct SapSdpFields {
    std::string sessionId;  // o= session id
    std::string version;    // o= session version
    std::string name;       // s= text (empty when there is no s= line)
};
// False when there is no o= line with a session id and a version.
bool readSapSdpFields(std::string_view sdp, SapSdpFields& out);

}  // namespace pimav::detail
