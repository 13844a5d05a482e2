#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/device/CfgFileTable.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

using Lines = std::vector<std::string>;
const char* const kEmptyStartup = "It is not possible to select an empty config file as startup config.";

class CfgFileTableTest : public ::testing::Test {
protected:
    void TearDown() override { SystemDefaultCfg::getInstance()->resetToDefaults(); }
};

TEST_F(CfgFileTableTest, FilePathsPerBoard) {
    struct Row {
        BoardModelType model;
        BitstreamType::module_t module;
        const char* prefix;
    };
    const std::vector<Row> rows = {
        {JUNIPER, BitstreamType::MODULE_HDMI_ST2110, "hdmiConfig"},
        {JUNIPER, BitstreamType::MODULE_SDI_BIDIR_ST2110, "sdiBiDirConfig"},
        {JUNIPER, BitstreamType::MODULE_SDI_ST2110, "config"},
        {JUNIPER_QH, BitstreamType::MODULE_HDMI_ST2110, "hdmiConfig"},
        {JUNIPER_QH, BitstreamType::MODULE_SDI_BIDIR_ST2110, "config"},
        {DAMSON, BitstreamType::MODULE_SDI_TR04, "tr04Config"},
        {DAMSON, BitstreamType::MODULE_HDMI_ST2110, "config"},
        {MAPLE, BitstreamType::MODULE_HDMI_ST2110, "config"},
        {BIRCH_AES67, BitstreamType::MODULE_SDI_TR04, "config"},
    };
    SystemDefaultCfg::getInstance()->setCfgFilePath("/data/cfg");
    for (const Row& row : rows) {
        SystemDefaultCfg::getInstance()->setBoardModel(BoardModel(row.model, row.module));
        const CfgFileTable table;
        ASSERT_EQ(table.m_files.size(), 11u);
        for (unsigned i = 0; i < 10; ++i) {
            EXPECT_EQ(table.m_files[i].m_path,
                      "/data/cfg/" + std::string(row.prefix) + std::to_string(i) + ".json");
        }
        EXPECT_EQ(table.m_files[10].m_path, "/etc/aes67/configSys0.json");
        EXPECT_EQ(table.m_files[10].m_name, "System Startup");
        EXPECT_EQ(table.m_files[10].m_size, 0u);
    }
    SystemDefaultCfg::getInstance()->resetToDefaults();
    EXPECT_EQ(CfgFileTable().m_files[3].m_path, "/etc/aes67/config3.json");
}

TEST_F(CfgFileTableTest, FirstEmptyPosition) {
    CfgFileTable table;
    LogCapture capture;
    EXPECT_EQ(table.getFirstEmptyPosition(), 0);
    table.setFileInfo(0, "a", 1);
    table.setFileInfo(2, "c", 1);
    EXPECT_EQ(table.getFirstEmptyPosition(), 1);
    EXPECT_EQ(capture.at(6), (Lines{"getFirstEmptyPosition: Empty Position Found at 0",
                                    "getFirstEmptyPosition: Empty Position Found at 1"}));
    for (unsigned i = 0; i < 10; ++i) {
        table.setFileInfo(i, "", 100 + i);  // a size without a name still occupies the position
    }
    capture.clear();
    EXPECT_EQ(table.getFirstEmptyPosition(), -16);  // position 10 is never offered
    EXPECT_TRUE(capture.lines().empty());
}

TEST_F(CfgFileTableTest, StartupSelection) {
    CfgFileTable table;
    table.setFileInfo(1, "studio", 2048);
    table.setFileInfo(2, "", 2048);
    table.setFileInfo(3, "named but empty", 0);
    struct Row {
        unsigned pos;
        int result;
        unsigned startup;
    };
    const std::vector<Row> rows = {
        {10, -23, 10}, {11, -8, 10}, {0xffffffffu, -8, 10}, {0, -23, 10}, {2, -23, 10},
        {3, -23, 10},  {1, 0, 1},    {4, -23, 1},           {11, -8, 1},
    };
    for (const Row& row : rows) {
        LogCapture capture;
        EXPECT_EQ(table.setStartupPosition(row.pos), row.result) << row.pos;
        EXPECT_EQ(table.getStartupPosition(), row.startup);
        EXPECT_EQ(capture.at(2), row.result == -23 ? Lines{kEmptyStartup} : Lines{}) << row.pos;
        EXPECT_EQ(capture.lines().size(), row.result == -23 ? 1u : 0u);
    }
    EXPECT_FALSE(table.isStartupTheDefault());
    EXPECT_EQ(table.setStartupPositiontoDefault(), 0);
    EXPECT_TRUE(table.isStartupTheDefault());

    table.setFileInfo(10, "System Startup", 10);  // once the system file has a size
    EXPECT_EQ(table.setStartupPosition(10), 0);
    table.setStartupPosition(1);
    EXPECT_EQ(table.clearFileInfo(1), 0);
    EXPECT_TRUE(table.isStartupTheDefault());
    EXPECT_EQ(table.setFileInfo(11, "x", 1), -16);
    EXPECT_EQ(table.clearFileInfo(11), -16);
    EXPECT_EQ(table.getFileInfo(11), nullptr);
    EXPECT_EQ(table.getFileInfo(10)->m_size, 10u);
}

TEST_F(CfgFileTableTest, JsonForm) {
    CfgFileTable table;
    EXPECT_TRUE(table.isStartupTheDefault());
    EXPECT_EQ(written(table), canon(R"({"list":null,"startup":10})"));

    table.setFileInfo(7, "late", 9);
    table.setFileInfo(4, "", 3);
    table.setFileInfo(2, "early", 4000000000u);
    table.setStartupPosition(2);
    Json::Value out;
    table.Serialize(out);
    EXPECT_JSON_EQ(out,
                   R"({"list":[{"index":2,"name":"early","size":4000000000},{"index":4,"name":"","size":3},
                                    {"index":7,"name":"late","size":9}],"startup":2})");

    CfgFileTable back;
    back.m_files[5].m_name = "kept";
    LogCapture capture;
    back.Deserialize(out);
    EXPECT_EQ(capture.at(5),
              (Lines{"Config file restored: Index 2 Name [early] size [-294967296] available for use",
                     "Config file restored: Index 4 Name [] size [3] available for use",
                     "Config file restored: Index 7 Name [late] size [9] available for use",
                     "Deserialize:: m_startup_pos 2"}));
    EXPECT_EQ(back.m_files, [&] {
        auto files = table.m_files;
        files[5].m_name = "kept";  // positions the list does not mention keep their values
        return files;
    }());
    EXPECT_EQ(back.getStartupPosition(), 2u);
}

TEST_F(CfgFileTableTest, ReadingEdgeCases) {
    struct Row {
        const char* doc;
        unsigned startup;
        uint32_t size4;
        Lines lines;
    };
    const std::vector<Row> rows = {
        {R"({"list":[{"index":12,"size":5,"name":"x"}]})", 10, 0, {"Deserialize:: m_startup_pos 10"}},
        {R"({"list":[{"size":5,"name":"x"}]})", 10, 0, {"Deserialize:: m_startup_pos 10"}},
        {R"({"list":[{"index":4,"size":2048,"name":"show"}],"startup":4})",
         4,
         2048,
         {"Config file restored: Index 4 Name [show] size [2048] available for use",
          "Deserialize:: m_startup_pos 4"}},
        {R"({"startup":42})", 42, 0, {"Deserialize:: m_startup_pos 42"}},
        {R"({"list":null})", 10, 0, {"Deserialize:: m_startup_pos 10"}},
    };
    for (const Row& row : rows) {
        CfgFileTable table;
        LogCapture capture;
        readInto(table, row.doc);
        EXPECT_EQ(table.getStartupPosition(), row.startup) << row.doc;
        EXPECT_EQ(table.m_files[4].m_size, row.size4) << row.doc;
        EXPECT_EQ(capture.texts(), row.lines) << row.doc;
        EXPECT_EQ(table.m_files[4].m_path, CfgFileTable().m_files[4].m_path);
        EXPECT_EQ(table.isStartupTheDefault(), row.startup == 10);
        if (row.size4 != 0) {
            EXPECT_EQ(table.setStartupPosition(4), 0);
        }
    }
    for (const char* bad :
         {R"({"list":{"index":1}})", R"({"list":[3]})", R"({"list":[{"index":"one"}]})",
          R"({"list":[{"index":1,"name":{}}]})", R"({"startup":"ten"})", R"({"list":"x"})"}) {
        CfgFileTable table;
        LogCapture capture;
        EXPECT_ANY_THROW(readInto(table, bad)) << bad;
    }
}

}  // namespace
