// The device records: JSON forms and logs from tests/data/records/device, the board tables
// from tests/data/device; below them what no document shows.

#include <gtest/gtest.h>

#include <sstream>

#include "pimAvMngApi/pimAvMngApi.h"
#include "support/LogCapture.h"
#include "support/RecordScript.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

using Lines = std::vector<std::string>;

class DeviceTest : public ::testing::Test {
protected:
    void TearDown() override { SystemDefaultCfg::getInstance()->resetToDefaults(); }
};

// A board of a data row: a model name or number, and a module word.
BoardModel boardOf(const DataRow& row) {
    BoardModelType model = KAPOK;
    if (!boardModelTypeFromString(row.fields.at(0), model)) {
        model = static_cast<BoardModelType>(std::stoi(row.fields.at(0)));
    }
    return BoardModel(model, BitstreamType::fromString(row.fields.at(1)));
}

std::string codes(const BoardModel& board) {
    std::string out;
    for (const auto& f : board.getSupportedVideoFormats()) {
        out += (out.empty() ? "" : " ") + std::to_string(f.getVideoFormat());
    }
    return out;
}

TEST_F(DeviceTest, RecordScripts) {
    const RecordKinds kinds = {
        {"BoardModel",
         settingKind<BoardModel, BoardModelType>([](BoardModel& b, BoardModelType m) { b.m_model = m; })},
        {"BitstreamType", recordKind<BitstreamType, BitstreamType::module_t>()},
        {"Codec", recordKind<Codec, uint32_t>({{"set", recordCall<Codec>(&Codec::setCodec)}})},
        {"CfgFileTable",
         recordKind<CfgFileTable>({
             {"set", recordCall<CfgFileTable>(&CfgFileTable::setFileInfo)},
             {"clear", recordCall<CfgFileTable>(&CfgFileTable::clearFileInfo)},
             {"startup", recordCall<CfgFileTable>(&CfgFileTable::setStartupPosition)},
             {"default", recordCall<CfgFileTable>(&CfgFileTable::setStartupPositiontoDefault)},
             {"first-empty", recordCall<CfgFileTable>(&CfgFileTable::getFirstEmptyPosition)},
             {"size", recordAction<CfgFileTable>([](CfgFileTable& t, std::istream& args) {  // -1: no record
                  const CfgFileInfo* info = t.getFileInfo(argumentOf<unsigned>(args));
                  EXPECT_EQ(info != nullptr ? static_cast<int>(info->m_size) : -1, argumentOf<int>(args));
              })},
         })},
        {"ClockConfig", settingKind<ClockConfig, BoardModelType>(  // the word: the board's model
                            [](ClockConfig&, BoardModelType model) {
                                SystemDefaultCfg::getInstance()->setBoardModel(
                                    BoardModel(model, BitstreamType::MODULE_NA));
                            },
                            {{"reference", recordCall<ClockConfig>(&ClockConfig::setClockReference)}})},
        {"ClockCounters", recordKind<ClockCounters>()},
        {"ClockStatus", recordKind<ClockStatus>({
                            {"interface", recordCall<ClockStatus>(&ClockStatus::setClockInterfaceStatus)},
                            {"reference", recordCall<ClockStatus>(&ClockStatus::setCurrentClockReference)},
                        })},
    };
    runRecordScripts("records/device", kinds);
}

TEST(BoardModel, FormatListPerModelAndModule) {
    for (const DataRow& row : dataRows("device/board-formats.tsv")) {
        SCOPED_TRACE(row.where);
        const std::string expected = row.fields.size() > 2 ? row.fields[2] : "";
        const BoardModel made = boardOf(row);
        EXPECT_EQ(codes(made), expected);
        BoardModel board;
        board.m_bitstream.setModule(made.getModule());
        LogCapture capture;
        board.setModel(made.getModel());
        EXPECT_EQ(codes(board), expected);
        EXPECT_EQ(capture.texts(), Lines{"BoardModel::setModel - " + boardModelTypeToString(made.getModel())});
        EXPECT_EQ(board.initializeSupportedVideoFormatList(), 0);  // replaces the list
        EXPECT_EQ(codes(board), expected);
    }
    // The list follows the module.
    BoardModel board(JUNIPER, BitstreamType::MODULE_HDMI_ST2110);
    EXPECT_TRUE(board.isVideoFormatSupported(VideoFormat::VIDEO_FORMAT_2160P59_94));
    board.setModule(BitstreamType::MODULE_SDI_ST2110);
    EXPECT_EQ(codes(board), codes(BoardModel(JUNIPER, BitstreamType::MODULE_NA)));
    EXPECT_FALSE(board.isVideoFormatSupported(VideoFormat::VIDEO_FORMAT_2160P59_94));
}

TEST(BoardModel, ModelNamesBothWays) {
    for (const DataRow& row : dataRows("device/board-models.tsv")) {
        SCOPED_TRACE(row.where);
        const std::string name = row.fields.size() > 1 ? row.fields[1] : "";
        const bool named = row.fields[0] != "-" && name != "Undefined";
        if (row.fields[0] != "-") {
            EXPECT_EQ(boardModelTypeToString(static_cast<BoardModelType>(std::stoi(row.fields[0]))), name);
        }
        BoardModelType read = KAPOK;
        EXPECT_EQ(boardModelTypeFromString(name, read), named);
        EXPECT_EQ(read, named ? static_cast<BoardModelType>(std::stoi(row.fields[0])) : KAPOK);
    }
}

TEST_F(DeviceTest, ConfigFilePathsPerBoard) {
    SystemDefaultCfg::getInstance()->setCfgFilePath("/data/cfg");
    for (const DataRow& row : dataRows("device/config-file-prefixes.tsv")) {
        SCOPED_TRACE(row.where);
        SystemDefaultCfg::getInstance()->setBoardModel(boardOf(row));
        const CfgFileTable table;
        for (unsigned i = 0; i < 10; ++i) {
            EXPECT_EQ(table.m_files[i].m_path, "/data/cfg/" + row.fields[2] + std::to_string(i) + ".json");
        }
        EXPECT_EQ(table.m_files[10].m_path, "/etc/aes67/configSys0.json");
    }
    SystemDefaultCfg::getInstance()->resetToDefaults();
    EXPECT_EQ(CfgFileTable().m_files[3].m_path, "/etc/aes67/config3.json");
}

TEST(ClockStatus, NullArgumentsAreRefused) {
    ClockStatus status;
    LogCapture capture;
    ClockStatus::ClockStatus_en system = ClockStatus::SYSTEM_CLOCK_LOCKED;
    ClockStatus::ClockInterfaceStatus_en iface = ClockStatus::INTERFACE_CLOCK_LOCKED;
    EXPECT_EQ(status.getClockStatus(nullptr, &iface), -4);
    EXPECT_EQ(status.getClockStatus(&system, nullptr), -4);
    EXPECT_EQ(system, ClockStatus::SYSTEM_CLOCK_LOCKED);
    EXPECT_EQ(iface, ClockStatus::INTERFACE_CLOCK_LOCKED);
    EXPECT_EQ(capture.at(2), (Lines(2, "getClockStatus:: Parameter is null.")));
    EXPECT_EQ(status.getClockStatus(&system, &iface), 0);
    EXPECT_EQ(system, ClockStatus::SYSTEM_CLOCK_FREERUN);
    EXPECT_EQ(iface, ClockStatus::INTERFACE_CLOCK_FAIL);
}

}  // namespace
