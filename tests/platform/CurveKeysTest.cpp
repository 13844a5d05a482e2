// CURVE key files: the two forms, written and read back, and every refusal of the readers.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zmq.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/CurveKeys.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

std::string writeText(const std::string& path, const std::string& text, mode_t mode = 0600) {
    std::ofstream(path, std::ios::binary) << text;
    ::chmod(path.c_str(), mode);
    return path;
}

class CurveKeys : public ::testing::Test {
protected:
    void SetUp() override {
        if (!curveSupported()) {
            GTEST_SKIP() << "this libzmq has no CURVE support";
        }
        ASSERT_TRUE(generateCurveKeyPair(pair).ok());
        ASSERT_TRUE(generateCurveKeyPair(other).ok());
        dir = "/tmp/pimav-keys-XXXXXX";
        ASSERT_NE(::mkdtemp(dir.data()), nullptr);
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
    EXPECT_EQ(std::filesystem::status(base + ".key").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

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

// tests/data/platform/curve-key-files.tsv
TEST_F(CurveKeys, ReadersRefuseAnythingButTheExactForms) {
    for (const DataRow& row : dataRows("platform/curve-key-files.tsv")) {
        SCOPED_TRACE(row.where + " " + row.fields[0]);
        const bool secretFile = row.fields[1] == "key";
        const std::string text = unescaped(row.fields[3]);
        const std::string path =
            writeText(dir + "/k." + row.fields[1], text, std::stoul(row.fields[2], nullptr, 8));
        const std::string& error = row.fields[4];
        const std::string& warning = row.fields[5];
        CurveKeyPair readPair;
        std::string readPublic;
        const KeyStatus status =
            secretFile ? readCurveKeyFile(path, readPair) : readCurvePublicKeyFile(path, readPublic);
        if (error == "-") {
            EXPECT_TRUE(status.ok()) << status.error;
            EXPECT_EQ(secretFile ? "public-key=" + readPair.publicKey + "\nsecret-key=" + readPair.secretKey
                                 : readPublic,
                      text.substr(0, text.find_last_not_of('\n') + 1));
            EXPECT_EQ(status.warning, warning == "-" ? "" : path + ": " + warning);
        } else {
            EXPECT_EQ(status.error.rfind(path + ": ", 0), 0u) << status.error;  // names the file
            EXPECT_NE(status.error.find(error), std::string::npos) << status.error;
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
