// SAP packets over tests/data/sap/packets.tsv: the header layout from hand-made bytes, round
// trips through the encoder over corpus SDP texts, the reason of every refusal, and the SDP
// fields read. Below, the refusals whose bytes only the encoder can make.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "sap/SapPacket.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

const std::string kSdp = "v=0\r\no=- 7 1 IN IP4 10.0.0.5\r\ns=Studio\r\nt=0 0\r\n";

// The bytes a data field writes: \xHH, \r, \n and \\ resolved, {sdp} replaced by kSdp.
std::string bytesOf(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 5, "{sdp}") == 0) {
            out += kSdp;
            i += 4;
        } else if (text.compare(i, 2, "\\x") == 0) {
            out += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            out += unescaped(text.substr(i, text[i] == '\\' ? 2 : 1));
            i += text[i] == '\\' ? 1 : 0;
        }
    }
    return out;
}

std::string orEmpty(const std::string& field) {
    return field == "-" ? "" : field;
}

SapPacket packet(const std::string& sdp, bool compressed, bool typed = true,
                 const char* origin = "10.0.0.5") {
    SapPacket p;
    EXPECT_TRUE(SapOrigin::fromText(origin, p.origin)) << origin;
    p.hash = 0x1234;
    p.compressed = compressed;
    p.typed = typed;
    p.sdp = sdp;
    return p;
}

// The outcome of decoding `bytes`; a refusal also leaves one level-2 line with its reason word.
void expectOutcome(const std::string& what, const std::string& bytes, const std::string& word,
                   size_t maxPayload = kSapMaxPayload) {
    LogCapture log;
    SapPacket p;
    const std::string outcome = sapErrorWord(decodeSap(bytes, p, maxPayload));
    EXPECT_EQ(outcome, word) << what;
    const std::vector<std::string> lines = log.at(2);
    ASSERT_EQ(lines.size(), word == "none" ? 0u : 1u) << what;
    if (word != "none") {
        EXPECT_NE(lines[0].find("refused (" + word + ")"), std::string::npos) << lines[0];
    }
}

}  // namespace

TEST(SapPacket, DataRows) {
    size_t count = 0;
    for (const DataRow& row : dataRows("sap/packets.tsv")) {
        const std::vector<std::string>& f = row.fields;
        SCOPED_TRACE(row.where + " " + f[1]);
        ++count;
        SapPacket p;
        if (f[0] == "decode") {
            const std::string bytes = bytesOf(f[2]);
            ASSERT_EQ(decodeSap(bytes, p), SapError::None);
            EXPECT_EQ(p.type, f[3] == "delete" ? SapMessageType::Delete : SapMessageType::Announce);
            EXPECT_EQ(p.origin.toString(), f[4]);
            EXPECT_EQ(p.hash, std::stoul(f[5], nullptr, 16));
            EXPECT_EQ(p.typed, f[6] == "yes");
            EXPECT_EQ(p.auth.size(), std::stoul(f[7]));
            EXPECT_FALSE(p.compressed);
            EXPECT_EQ(p.sdp, kSdp);
            EXPECT_EQ(encodeSap(p) == bytes, f[8] == "yes");
        } else if (f[0] == "refuse") {
            expectOutcome(f[1], bytesOf(f[2]), f[3]);
        } else if (f[0] == "roundtrip") {
            p = packet(readText(kCorpusDir + f[1]), f[4] == "yes", f[5] == "yes", f[2].c_str());
            ASSERT_FALSE(p.sdp.empty());
            p.type = f[3] == "delete" ? SapMessageType::Delete : SapMessageType::Announce;
            p.auth = std::string(std::stoul(f[6]), 'k');
            SapPacket back;
            ASSERT_EQ(decodeSap(encodeSap(p), back), SapError::None);
            EXPECT_TRUE(back == p);
        } else {
            SapSdpFields fields;
            EXPECT_EQ(readSapSdpFields(bytesOf(f[1]), fields), f[2] == "yes");
            EXPECT_EQ(fields.sessionId, orEmpty(f[3]));
            EXPECT_EQ(fields.version, orEmpty(f[4]));
            EXPECT_EQ(fields.name, orEmpty(f[5]));
        }
    }
    EXPECT_GT(count, 20u);
    SapPacket badAuth = packet(kSdp, false);
    badAuth.auth = "abc";
    EXPECT_THROW(encodeSap(badAuth), std::invalid_argument);
}

TEST(SapPacket, RefusesWhatOnlyTheEncoderMakes) {
    const std::string compressed = encodeSap(packet(kSdp, true));
    const std::string bomb = encodeSap(packet("v=0\n" + std::string(1 << 20, 'a'), true));
    ASSERT_LT(bomb.size(), 2000u);
    expectOutcome("zlib stream cut", compressed.substr(0, compressed.size() - 4), "bad-zlib");
    expectOutcome("bytes after the zlib stream", compressed + "x", "bad-zlib");
    expectOutcome("compressed text/plain", encodeSap(packet(std::string("text/plain\0x", 12), true, false)),
                  "wrong-payload-type");
    expectOutcome("1 MiB from a small zlib stream", bomb, "payload-too-large");
    const std::string exact = "v=0\n" + std::string(996, 'a');  // 1000 bytes
    for (const bool zlib : {false, true}) {
        expectOutcome("payload at the bound", encodeSap(packet(exact, zlib, false)), "none", 1000);
        expectOutcome("payload past the bound", encodeSap(packet(exact, zlib, false)), "payload-too-large",
                      999);
    }
}
