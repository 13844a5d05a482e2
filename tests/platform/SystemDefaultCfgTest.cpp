#include <gtest/gtest.h>

#include <string>

#include "pimAvMngApi/platform/SystemDefaultCfg.h"

namespace {

class SystemDefaultCfgTest : public ::testing::Test {
protected:
    void TearDown() override { cfg->resetToDefaults(); }
    SystemDefaultCfg* cfg = SystemDefaultCfg::getInstance();
};

IpAddress ip(const char* text) {
    IpAddress a;
    EXPECT_TRUE(a.fromString(text));
    return a;
}

TEST_F(SystemDefaultCfgTest, DefaultBoardIsAVideoBoardAndPathsEndWithSeparator) {
    const BoardModel board = cfg->getBoardModel();
    EXPECT_EQ(board.getModel(), MAPLE);
    EXPECT_EQ(board.getModule(), BitstreamType::MODULE_NA);
    EXPECT_EQ(board.getSupportedVideoFormats().size(), 22u);

    std::string path = "old";
    EXPECT_EQ(cfg->getCfgFilePath(&path), 0);
    EXPECT_EQ(path, "/etc/aes67/");
    EXPECT_EQ(cfg->getCfgFilePath(nullptr), -4);
    cfg->setCfgFilePath("/tmp/cfg");
    cfg->getCfgFilePath(&path);
    EXPECT_EQ(path, "/tmp/cfg/");
    cfg->setCfgFilePath("/var/x/");
    cfg->getCfgFilePath(&path);
    EXPECT_EQ(path, "/var/x/");
}

// Loopback is always up; its bytes are not symmetric, so byte order counts.
TEST_F(SystemDefaultCfgTest, LocalAddressesComeFromTheInterfacesOrTheTest) {
    EXPECT_TRUE(cfg->isLocalBoardIpAddr(ip("127.0.0.1")));
    EXPECT_FALSE(cfg->isLocalBoardIpAddr(ip("192.0.2.77")));  // documentation range
    EXPECT_FALSE(cfg->isLocalBoardIpAddr(IpAddress()));

    cfg->addLocalIpAddr(ip("192.0.2.77"));
    EXPECT_TRUE(cfg->isLocalBoardIpAddr(ip("192.0.2.77")));
    EXPECT_TRUE(cfg->isLocalBoardIpAddr(ip("127.0.0.1")));

    cfg->setLocalIpAddrs({ip("198.51.100.1")});
    EXPECT_TRUE(cfg->isLocalBoardIpAddr(ip("198.51.100.1")));
    EXPECT_FALSE(cfg->isLocalBoardIpAddr(ip("192.0.2.77")));
    EXPECT_FALSE(cfg->isLocalBoardIpAddr(ip("127.0.0.1")));

    cfg->resetLocalIpAddrs();
    EXPECT_FALSE(cfg->isLocalBoardIpAddr(ip("198.51.100.1")));
    EXPECT_TRUE(cfg->isLocalBoardIpAddr(ip("127.0.0.1")));
}

}  // namespace
