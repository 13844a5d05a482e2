// SAP packets: the header layout from hand-made bytes, round trips through the encoder over
// corpus SDP texts, and the reason of every refusal.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "sap/SapPacket.h"
#include "support/LogCapture.h"

using namespace pimav::detail;

namespace {

const std::string kSdp = "v=0\r\no=- 7 1 IN IP4 10.0.0.5\r\ns=Studio\r\nt=0 0\r\n";
const std::string kType("application/sdp\0", 16);
const std::string kV4Header("\x20\x00\x12\x34\x0a\x00\x00\x05", 8);  // announcement, hash 1234, 10.0.0.5

// kV4Header with other flags and authentication length.
std::string header(unsigned flags, unsigned authWords) {
    return std::string{static_cast<char>(flags), static_cast<char>(authWords)} + kV4Header.substr(2);
}

std::string corpus(const std::string& name) {
    std::ifstream in(std::string(PIMAV_SOURCE_DIR) + "/tests/data/sdp-corpus/" + name, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    EXPECT_FALSE(text.str().empty()) << name;
    return text.str();
}

SapOrigin origin(const char* text) {
    SapOrigin out;
    EXPECT_TRUE(SapOrigin::fromText(text, out)) << text;
    return out;
}

SapPacket packet(const std::string& sdp, bool compressed, bool typed = true) {
    SapPacket p;
    p.origin = origin("10.0.0.5");
    p.hash = 0x1234;
    p.compressed = compressed;
    p.typed = typed;
    p.sdp = sdp;
    return p;
}

}  // namespace

// The bit layout, read from bytes that no encoder of ours wrote.
TEST(SapPacket, DecodesHandMadeHeaders) {
    struct Row {
        const char* what;
        std::string bytes;
        SapMessageType type;
        const char* origin;
        uint16_t hash;
        bool typed;
        size_t authBytes;
        bool reencodes;  // encodeSap gives the same bytes back
    };
    const std::string v6Origin("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x01", 16);
    const Row rows[] = {
        {"IPv4 announcement with a payload type", kV4Header + kType + kSdp, SapMessageType::Announce,
         "10.0.0.5", 0x1234, true, 0, true},
        {"IPv6 deletion, one authentication word, no payload type",
         std::string("\x34\x01\xab\xcd", 4) + v6Origin + "AUTH" + kSdp, SapMessageType::Delete, "2001:db8::1",
         0xabcd, false, 4, true},
        {"reserved bit set and payload type in capitals",
         std::string("\x28\x00\x00\x01\x7f\x00\x00\x01", 8) + std::string("Application/SDP\0", 16) + kSdp,
         SapMessageType::Announce, "127.0.0.1", 1, true, 0, false},
    };
    for (const auto& row : rows) {
        SapPacket p;
        ASSERT_EQ(decodeSap(row.bytes, p), SapError::None) << row.what;
        EXPECT_EQ(p.type, row.type) << row.what;
        EXPECT_EQ(p.origin.toString(), row.origin) << row.what;
        EXPECT_EQ(p.hash, row.hash) << row.what;
        EXPECT_EQ(p.typed, row.typed) << row.what;
        EXPECT_EQ(p.auth.size(), row.authBytes) << row.what;
        EXPECT_FALSE(p.compressed) << row.what;
        EXPECT_EQ(p.sdp, kSdp) << row.what;
        EXPECT_EQ(encodeSap(p) == row.bytes, row.reencodes) << row.what;
    }
}

TEST(SapPacket, RoundTripsThroughTheEncoder) {
    struct Row {
        const char* file;
        const char* origin;
        SapMessageType type;
        bool compressed;
        bool typed;
        std::string auth;
    };
    const Row rows[] = {
        {"st2110-30-l24-48k-8ch-1ms-ttl128-framecount.sdp", "192.168.1.50", SapMessageType::Announce, false,
         true, ""},
        {"st2110-20-1080p50.sdp", "192.168.1.50", SapMessageType::Announce, true, true, ""},
        {"dante-aes67-no-refclk-crlf.sdp", "fe80::1:2ff:fe03:405", SapMessageType::Announce, true, false, ""},
        {"aes67-l16-48k-1ms-sap-remote-source.sdp", "2001:db8::7", SapMessageType::Delete, false, true,
         "12345678"},
        {"rfc4566-all-fields-multiple-t-r-z-k-crlf.sdp", "10.1.2.3", SapMessageType::Delete, true, true,
         std::string(1020, 'k')},
    };
    for (const auto& row : rows) {
        SapPacket p = packet(corpus(row.file), row.compressed, row.typed);
        p.origin = origin(row.origin);
        p.type = row.type;
        p.auth = row.auth;
        SapPacket back;
        ASSERT_EQ(decodeSap(encodeSap(p), back), SapError::None) << row.file;
        EXPECT_TRUE(back == p) << row.file;
    }
    SapPacket badAuth = packet(kSdp, false);
    badAuth.auth = "abc";
    EXPECT_THROW(encodeSap(badAuth), std::invalid_argument);
}

// Each packet's outcome; a refusal also leaves one level-2 line with its reason word.
TEST(SapPacket, RefusesMalformedPacketsWithTheirReason) {
    const std::string compressed = encodeSap(packet(kSdp, true));
    const std::string bomb = encodeSap(packet("v=0\n" + std::string(1 << 20, 'a'), true));
    const std::string exact = "v=0\n" + std::string(996, 'a');  // 1000 bytes
    struct Row {
        const char* what;
        std::string bytes;
        SapError error;
        size_t maxPayload;
    };
    const Row rows[] = {
        {"no bytes", "", SapError::Truncated, kSapMaxPayload},
        {"three bytes", kV4Header.substr(0, 3), SapError::Truncated, kSapMaxPayload},
        {"IPv4 origin cut", kV4Header.substr(0, 7), SapError::Truncated, kSapMaxPayload},
        {"IPv6 origin cut", header(0x30, 0) + std::string(11, 'x'), SapError::Truncated, kSapMaxPayload},
        {"version 0", header(0x00, 0) + kSdp, SapError::WrongVersion, kSapMaxPayload},
        {"version 2", header(0x40, 0) + kSdp, SapError::WrongVersion, kSapMaxPayload},
        {"encrypted", header(0x22, 0) + kSdp, SapError::Encrypted, kSapMaxPayload},
        {"255 authentication words", header(0x20, 255) + kType + kSdp, SapError::AuthBeyondPacket,
         kSapMaxPayload},
        {"one authentication word, three bytes", header(0x20, 1) + "abc", SapError::AuthBeyondPacket,
         kSapMaxPayload},
        {"header and origin only", kV4Header, SapError::EmptyPayload, kSapMaxPayload},
        {"authentication data only", header(0x20, 1) + "abcd", SapError::EmptyPayload, kSapMaxPayload},
        {"payload type only", kV4Header + kType, SapError::EmptyPayload, kSapMaxPayload},
        {"text/plain", kV4Header + std::string("text/plain\0", 11) + kSdp, SapError::WrongPayloadType,
         kSapMaxPayload},
        {"application/sdpx", kV4Header + std::string("application/sdpx\0", 17) + kSdp,
         SapError::WrongPayloadType, kSapMaxPayload},
        {"neither a type nor v=0", kV4Header + "o=- 7 1 IN IP4 10.0.0.5\r\n", SapError::NotSdp,
         kSapMaxPayload},
        {"C bit over plain text", header(0x21, 0) + kType + kSdp, SapError::BadZlib, kSapMaxPayload},
        {"C bit without payload", header(0x21, 0), SapError::BadZlib, kSapMaxPayload},
        {"zlib stream cut", compressed.substr(0, compressed.size() - 4), SapError::BadZlib, kSapMaxPayload},
        {"bytes after the zlib stream", compressed + "x", SapError::BadZlib, kSapMaxPayload},
        {"compressed text/plain", encodeSap(packet(std::string("text/plain\0x", 12), true, false)),
         SapError::WrongPayloadType, kSapMaxPayload},
        {"1 MiB from a small zlib stream", bomb, SapError::PayloadTooLarge, kSapMaxPayload},
        {"plain payload at the bound", encodeSap(packet(exact, false, false)), SapError::None, 1000},
        {"plain payload past the bound", encodeSap(packet(exact, false, false)), SapError::PayloadTooLarge,
         999},
        {"compressed payload at the bound", encodeSap(packet(exact, true, false)), SapError::None, 1000},
        {"compressed payload past the bound", encodeSap(packet(exact, true, false)),
         SapError::PayloadTooLarge, 999},
    };
    ASSERT_LT(bomb.size(), 2000u);
    for (const auto& row : rows) {
        LogCapture log;
        SapPacket p;
        EXPECT_EQ(decodeSap(row.bytes, p, row.maxPayload), row.error) << row.what;
        if (row.error == SapError::None) {
            EXPECT_TRUE(log.at(2).empty()) << row.what;
        } else {
            ASSERT_EQ(log.at(2).size(), 1u) << row.what;
            EXPECT_NE(log.at(2)[0].find(std::string("refused (") + sapErrorWord(row.error) + ")"),
                      std::string::npos)
                << log.at(2)[0];
        }
    }
}

TEST(SapPacket, ReadsTheSdpFieldsItNeeds) {
    struct Row {
        const char* sdp;
        bool found;
        const char* sessionId;
        const char* version;
        const char* name;
    };
    const Row rows[] = {
        {"v=0\r\no=- 1311738121 1311738122 IN IP4 10.0.0.5\r\ns=Mic 1\r\nt=0 0\r\n", true, "1311738121",
         "1311738122", "Mic 1"},
        {"o=jdoe 42 7 IN IP6 ::1", true, "42", "7", ""},
        {"v=0\ns=\no=- 5 6 IN IP4 a\ns=second\n", true, "5", "6", ""},
        {"v=0\no=- 5\ns=x\n", false, "", "", "x"},
        {"v=0\ns=no origin\n", false, "", "", "no origin"},
    };
    for (const auto& row : rows) {
        SapSdpFields fields;
        EXPECT_EQ(readSapSdpFields(row.sdp, fields), row.found) << row.sdp;
        EXPECT_EQ(fields.sessionId, row.sessionId) << row.sdp;
        EXPECT_EQ(fields.version, row.version) << row.sdp;
        EXPECT_EQ(fields.name, row.name) << row.sdp;
    }
}
