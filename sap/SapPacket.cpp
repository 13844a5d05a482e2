#include "sap/SapPacket.h"

#include <arpa/inet.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "pimAvMngApi/platform/Logger.h"
#include "platform/WordTable.h"

namespace pimav::detail {

namespace {

constexpr uint8_t kVersion1 = 1u << 5;
constexpr uint8_t kIpv6Bit = 1u << 4;
constexpr uint8_t kDeleteBit = 1u << 2;
constexpr uint8_t kEncryptedBit = 1u << 1;
constexpr uint8_t kCompressedBit = 1u;
constexpr size_t kHeaderSize = 4;
constexpr size_t kMaxAuthBytes = 255 * 4;
constexpr std::string_view kSdpType = "application/sdp";

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    const auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; };
    for (size_t i = 0; i < a.size(); ++i) {
        if (lower(a[i]) != lower(b[i])) {
            return false;
        }
    }
    return true;
}

// Inflates one complete zlib stream into `out`, stopping as soon as the output would pass
// `limit` so that a small packet cannot expand without bound.
SapError inflateBounded(const uint8_t* data, size_t size, size_t limit, std::string& out) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) {
        return SapError::BadZlib;
    }
    stream.next_in = const_cast<Bytef*>(data);
    stream.avail_in = static_cast<uInt>(size);
    char chunk[16 * 1024];
    int rc = Z_OK;
    SapError error = SapError::None;
    while (rc == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(chunk);
        stream.avail_out = sizeof chunk;
        rc = inflate(&stream, Z_NO_FLUSH);
        const size_t produced = sizeof chunk - stream.avail_out;
        if (out.size() + produced > limit) {
            error = SapError::PayloadTooLarge;
            break;
        }
        out.append(chunk, produced);
        // Z_BUF_ERROR with input left means no progress is possible: a damaged stream.
        if (rc == Z_BUF_ERROR || (rc == Z_OK && stream.avail_in == 0 && produced < sizeof chunk)) {
            rc = Z_DATA_ERROR;
        }
    }
    if (error == SapError::None && (rc != Z_STREAM_END || stream.avail_in != 0)) {
        error = SapError::BadZlib;
    }
    inflateEnd(&stream);
    return error;
}

std::string deflateAll(const std::string& text) {
    uLongf length = compressBound(static_cast<uLong>(text.size()));
    std::string out(length, '\0');
    if (compress2(reinterpret_cast<Bytef*>(&out[0]), &length, reinterpret_cast<const Bytef*>(text.data()),
                  static_cast<uLong>(text.size()), Z_BEST_COMPRESSION) != Z_OK) {
        throw std::runtime_error("zlib compression failed");
    }
    out.resize(length);
    return out;
}

// Splits the payload into its optional type and the SDP text.
SapError readPayload(std::string_view payload, SapPacket& out) {
    if (payload.empty()) {
        return SapError::EmptyPayload;
    }
    // A MIME type never starts with "v=0", so an SDP text without a type is recognised by it.
    if (payload.substr(0, 3) == "v=0") {
        out.typed = false;
        out.sdp.assign(payload.data(), payload.size());
        return SapError::None;
    }
    const size_t nul = payload.find('\0');
    if (nul == std::string_view::npos) {
        return SapError::NotSdp;
    }
    if (!equalsIgnoringCase(payload.substr(0, nul), kSdpType)) {
        return SapError::WrongPayloadType;
    }
    out.typed = true;
    const std::string_view sdp = payload.substr(nul + 1);
    if (sdp.empty()) {
        return SapError::EmptyPayload;
    }
    out.sdp.assign(sdp.data(), sdp.size());
    return SapError::None;
}

SapError decodeFields(const uint8_t* data, size_t size, SapPacket& out, size_t maxPayload, bool& originRead) {
    if (size < kHeaderSize) {
        return SapError::Truncated;
    }
    const uint8_t flags = data[0];
    if ((flags >> 5) != 1) {
        return SapError::WrongVersion;
    }
    if ((flags & kEncryptedBit) != 0) {
        return SapError::Encrypted;
    }
    out.origin.ipv6 = (flags & kIpv6Bit) != 0;
    out.type = (flags & kDeleteBit) != 0 ? SapMessageType::Delete : SapMessageType::Announce;
    out.compressed = (flags & kCompressedBit) != 0;
    out.hash = static_cast<uint16_t>((data[2] << 8) | data[3]);
    const size_t originEnd = kHeaderSize + out.origin.size();
    if (size < originEnd) {
        return SapError::Truncated;
    }
    out.origin.bytes.fill(0);
    std::memcpy(out.origin.bytes.data(), data + kHeaderSize, out.origin.size());
    originRead = true;
    const size_t authBytes = size_t{data[1]} * 4;
    if (size - originEnd < authBytes) {
        return SapError::AuthBeyondPacket;
    }
    out.auth.assign(reinterpret_cast<const char*>(data + originEnd), authBytes);

    const uint8_t* payload = data + originEnd + authBytes;
    const size_t payloadSize = size - originEnd - authBytes;
    if (!out.compressed) {
        if (payloadSize > maxPayload) {
            return SapError::PayloadTooLarge;
        }
        return readPayload(std::string_view(reinterpret_cast<const char*>(payload), payloadSize), out);
    }
    std::string inflated;
    const SapError error = inflateBounded(payload, payloadSize, maxPayload, inflated);
    return error != SapError::None ? error : readPayload(inflated, out);
}

}  // namespace

bool SapOrigin::fromText(const std::string& text, SapOrigin& out) {
    SapOrigin parsed;
    if (inet_pton(AF_INET, text.c_str(), parsed.bytes.data()) == 1) {
        out = parsed;
        return true;
    }
    if (inet_pton(AF_INET6, text.c_str(), parsed.bytes.data()) == 1) {
        parsed.ipv6 = true;
        out = parsed;
        return true;
    }
    return false;
}

SapOrigin SapOrigin::ipv4(IpAddress address) {
    SapOrigin origin;
    const uint32_t network = htonl(address.get());
    std::memcpy(origin.bytes.data(), &network, 4);
    return origin;
}

std::string SapOrigin::toString() const {
    char text[INET6_ADDRSTRLEN];
    if (inet_ntop(ipv6 ? AF_INET6 : AF_INET, bytes.data(), text, sizeof text) == nullptr) {
        return std::string();
    }
    return text;
}

std::string SapOrigin::urlHost() const {
    return ipv6 ? "[" + toString() + "]" : toString();
}

bool SapPacket::operator==(const SapPacket& other) const {
    return type == other.type && origin == other.origin && hash == other.hash &&
           compressed == other.compressed && typed == other.typed && auth == other.auth && sdp == other.sdp;
}

constexpr WordRow<SapError> kSapErrorWords[] = {
    {SapError::None, "none"},
    {SapError::Truncated, "truncated"},
    {SapError::WrongVersion, "wrong-version"},
    {SapError::Encrypted, "encrypted"},
    {SapError::AuthBeyondPacket, "auth-beyond-packet"},
    {SapError::BadZlib, "bad-zlib"},
    {SapError::PayloadTooLarge, "payload-too-large"},
    {SapError::EmptyPayload, "empty-payload"},
    {SapError::WrongPayloadType, "wrong-payload-type"},
    {SapError::NotSdp, "not-sdp"},
};

const char* sapErrorWord(SapError error) { return wordOf(kSapErrorWords, error, "unknown").data(); }

std::string encodeSap(const SapPacket& packet) {
    if (packet.auth.size() % 4 != 0 || packet.auth.size() > kMaxAuthBytes) {
        throw std::invalid_argument("SAP authentication data must be a multiple of 4 bytes, at most 1020");
    }
    std::string payload;
    if (packet.typed) {
        payload.append(kSdpType.data(), kSdpType.size());
        payload.push_back('\0');
    }
    payload += packet.sdp;
    if (packet.compressed) {
        payload = deflateAll(payload);
    }

    std::string out;
    out.reserve(kHeaderSize + packet.origin.size() + packet.auth.size() + payload.size());
    uint8_t flags = kVersion1;
    flags |= packet.origin.ipv6 ? kIpv6Bit : 0;
    flags |= packet.type == SapMessageType::Delete ? kDeleteBit : 0;
    flags |= packet.compressed ? kCompressedBit : 0;
    out.push_back(static_cast<char>(flags));
    out.push_back(static_cast<char>(packet.auth.size() / 4));
    out.push_back(static_cast<char>(packet.hash >> 8));
    out.push_back(static_cast<char>(packet.hash & 0xff));
    out.append(reinterpret_cast<const char*>(packet.origin.bytes.data()), packet.origin.size());
    out += packet.auth;
    out += payload;
    return out;
}

SapError decodeSapQuietly(const uint8_t* data, size_t size, SapPacket& out, size_t maxPayload) {
    bool originRead = false;
    return decodeFields(data, size, out, maxPayload, originRead);
}

SapError decodeSap(const uint8_t* data, size_t size, SapPacket& out, size_t maxPayload) {
    bool originRead = false;
    const SapError error = decodeFields(data, size, out, maxPayload, originRead);
    if (error != SapError::None) {
        Logger::log(2, "SAP: packet of %zu bytes refused (%s)%s%s", size, sapErrorWord(error),
                    originRead ? ", origin " : "", originRead ? out.origin.toString().c_str() : "");
    }
    return error;
}

std::string sapUrl(const SapOrigin& origin, uint16_t port, uint16_t hash) {
    char tail[16];
    std::snprintf(tail, sizeof tail, ":%u/%04x", static_cast<unsigned>(port), static_cast<unsigned>(hash));
    return "sap://" + origin.urlHost() + tail;
}

bool readSapSdpFields(std::string_view sdp, SapSdpFields& out) {
    out = SapSdpFields();
    bool haveOrigin = false;
    bool haveName = false;
    size_t at = 0;
    while (at < sdp.size()) {
        size_t end = sdp.find('\n', at);
        end = end == std::string_view::npos ? sdp.size() : end;
        std::string_view line = sdp.substr(at, end - at);
        at = end + 1;
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (line.substr(0, 2) == "s=" && !haveName) {
            out.name.assign(line.substr(2));
            haveName = true;
        } else if (line.substr(0, 2) == "o=" && !haveOrigin) {
            // o=<username> <sess-id> <sess-version> <nettype> <addrtype> <address>
            std::string_view tokens[3];
            std::string_view rest = line.substr(2);
            size_t count = 0;
            while (count < 3 && !rest.empty()) {
                const size_t space = rest.find(' ');
                tokens[count++] = rest.substr(0, space);
                rest = space == std::string_view::npos ? std::string_view() : rest.substr(space + 1);
            }
            if (count == 3 && !tokens[1].empty() && !tokens[2].empty()) {
                out.sessionId.assign(tokens[1]);
                out.version.assign(tokens[2]);
                haveOrigin = true;
            }
        }
    }
    return haveOrigin;
}

}  // namespace pimav::detail
