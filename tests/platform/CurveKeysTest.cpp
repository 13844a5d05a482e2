// CURVE key files: the two forms, written and read back, and every refusal of the readers.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zmq.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/CurveKeys.h"

using namespace pimav::detail;

namespace {

std::string tempDir() {
    std::string pattern = "/tmp/pimav-keys-XXXXXX";
    return ::mkdtemp(pattern.data());
}

std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string writeText(const std::string& path, const std::string& text, mode_t mode = 0600) {
    std::ofstream(path, std::ios::binary) << text;
    ::chmod(path.c_str(), mode);
    return path;
}

mode_t modeOf(const std::string& path) {
    struct stat st {};
    ::stat(path.c_str(), &st);
    return st.st_mode & 07777;
}

class CurveKeys : public ::testing::Test {
protected:
    void SetUp() override {
        if (!curveSupported()) {
            GTEST_SKIP() << "this libzmq has no CURVE support";
        }
        ASSERT_TRUE(generateCurveKeyPair(pair).ok());
        ASSERT_TRUE(generateCurveKeyPair(other).ok());
        dir = tempDir();
    }
    void TearDown() override {
        if (!dir.empty()) {
            std::filesystem::remove_all(dir);
        }
    }
    CurveKeyPair pair;
    CurveKeyPair other;
    std::string dir;
};

TEST_F(CurveKeys, KeygenFilesHaveTheirFormsReadBackAndResolve) {
    const std::string base = dir + "/client";
    ASSERT_TRUE(writeCurveKeyFiles(base, pair).ok());
    EXPECT_EQ(readText(base + ".pub"), pair.publicKey + "\n");
    EXPECT_EQ(readText(base + ".key"),
              "public-key=" + pair.publicKey + "\nsecret-key=" + pair.secretKey + "\n");
    EXPECT_EQ(modeOf(base + ".key"), 0600u);

    CurveKeyPair back;
    const KeyStatus read = readCurveKeyFile(base + ".key", back);
    ASSERT_TRUE(read.ok()) << read.error;
    EXPECT_TRUE(read.warning.empty());
    EXPECT_EQ(back.publicKey, pair.publicKey);
    EXPECT_EQ(back.secretKey, pair.secretKey);
    std::string publicKey;
    ASSERT_TRUE(readCurvePublicKeyFile(base + ".pub", publicKey).ok());
    EXPECT_EQ(publicKey, pair.publicKey);

    // Never over existing keys: with either file present, nothing is written.
    ::unlink((base + ".pub").c_str());
    const KeyStatus again = writeCurveKeyFiles(base, other);
    EXPECT_NE(again.error.find(base + ".key: already exists"), std::string::npos) << again.error;
    EXPECT_NE(::access((base + ".pub").c_str(), F_OK), 0);
    EXPECT_EQ(readCurveKeyFile(base + ".key", back).error, "");
    EXPECT_EQ(back.secretKey, pair.secretKey);
    EXPECT_FALSE(writeCurveKeyFiles(dir + "/no/such/dir/x", pair).ok());

    // A public key setting is the path of a .pub file, or else the Z85 text itself.
    ASSERT_TRUE(
        resolveCurvePublicKey(writeText(dir + "/server.pub", other.publicKey + "\n"), publicKey).ok());
    EXPECT_EQ(publicKey, other.publicKey);
    ASSERT_TRUE(resolveCurvePublicKey(pair.publicKey, publicKey).ok());
    EXPECT_EQ(publicKey, pair.publicKey);
    const KeyStatus typo = resolveCurvePublicKey(dir + "/clent.pub", publicKey);
    EXPECT_NE(typo.error.find("is neither an existing .pub file nor a public key in Z85"), std::string::npos)
        << typo.error;
    // The binary form that ZAP hands over reads back as the same text.
    uint8_t bytes[kCurveKeyBytes];
    ASSERT_NE(zmq_z85_decode(bytes, pair.publicKey.c_str()), nullptr);
    EXPECT_EQ(curveKeyText(bytes, sizeof bytes), pair.publicKey);
    EXPECT_EQ(curveKeyText(bytes, 31), "");
}

TEST_F(CurveKeys, ReadersRefuseAnythingButTheExactForms) {
    const std::string pub = pair.publicKey;
    const std::string sec = pair.secretKey;
    const std::string good = "public-key=" + pub + "\nsecret-key=" + sec + "\n";
    struct Case {
        const char* name;
        bool secretFile;  // a .key file, else a .pub file
        std::string text;
        mode_t mode;
        const char* error;    // nullptr: accepted
        const char* warning;  // on acceptance
    };
    const Case cases[] = {
        {"key file", true, good, 0600, nullptr, nullptr},
        {"key file without the last newline", true, good.substr(0, good.size() - 1), 0400, nullptr, nullptr},
        {"key file readable by the group", true, good, 0640, nullptr,
         "readable by group or others (mode 0640)"},
        {"empty key file", true, "", 0600, "must hold two lines (public-key=, secret-key=), holds 0",
         nullptr},
        {"secret line missing", true, "public-key=" + pub + "\n", 0600, "holds 1", nullptr},
        {"secret line misnamed", true, "public-key=" + pub + "\nsecret=" + sec + "\n", 0600,
         "line 2 must be \"secret-key=<40 Z85 characters>\"", nullptr},
        {"a third line", true, good + "\n", 0600, "holds 3", nullptr},
        {"CRLF line ends", true, "public-key=" + pub + "\r\nsecret-key=" + sec + "\r\n", 0600,
         "line 1 (public-key): has 41 characters, a Z85 key has 40", nullptr},
        {"short secret key", true, "public-key=" + pub + "\nsecret-key=" + sec.substr(1) + "\n", 0600,
         "line 2 (secret-key): has 39 characters", nullptr},
        {"character outside Z85", true,
         "public-key=" + pub.substr(0, 6) + "~" + pub.substr(7) + "\nsecret-key=" + sec, 0600,
         "character '~' at position 7 is not Z85", nullptr},
        {"group beyond 32 bits", true, "public-key=#####" + pub.substr(5) + "\nsecret-key=" + sec + "\n",
         0600, "not a valid Z85 value", nullptr},
        {"keys of two pairs", true, "public-key=" + other.publicKey + "\nsecret-key=" + sec + "\n", 0600,
         "public-key does not belong to secret-key", nullptr},
        {"key file too large", true, good + std::string(2000, '#'), 0600, "too large for a key file",
         nullptr},
        {"public file", false, pub + "\n", 0644, nullptr, nullptr},
        {"public file without newline", false, pub, 0644, nullptr, nullptr},
        {"two public keys", false, pub + "\n" + other.publicKey + "\n", 0644,
         "must hold one line (the public key in Z85), holds 2", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = writeText(dir + (c.secretFile ? "/k.key" : "/k.pub"), c.text, c.mode);
        CurveKeyPair readPair;
        std::string readPublic;
        const KeyStatus status =
            c.secretFile ? readCurveKeyFile(path, readPair) : readCurvePublicKeyFile(path, readPublic);
        if (c.error == nullptr) {
            EXPECT_TRUE(status.ok()) << status.error;
            EXPECT_EQ(c.secretFile ? readPair.secretKey : readPublic, c.secretFile ? sec : pub);
            EXPECT_NE(status.warning.find(c.warning ? c.warning : ""), std::string::npos) << status.warning;
            EXPECT_EQ(status.warning.empty(), c.warning == nullptr) << status.warning;
        } else {
            EXPECT_EQ(status.error.rfind(path + ": ", 0), 0u) << status.error;  // names the file
            EXPECT_NE(status.error.find(c.error), std::string::npos) << status.error;
            EXPECT_TRUE(readPair.secretKey.empty() && readPublic.empty());
        }
        ::unlink(path.c_str());
    }
    CurveKeyPair unused;
    EXPECT_NE(readCurveKeyFile(dir, unused).error.find("not a regular file"), std::string::npos);
    EXPECT_NE(readCurveKeyFile(dir + "/absent.key", unused).error.find("cannot open (No such file"),
              std::string::npos);
}

}  // namespace
