#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/device/ClockConfig.h"
#include "pimAvMngApi/device/ClockCounters.h"
#include "pimAvMngApi/device/ClockStatus.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

using Lines = std::vector<std::string>;

class ClockConfigTest : public ::testing::Test {
protected:
    void TearDown() override { SystemDefaultCfg::getInstance()->resetToDefaults(); }
};

TEST_F(ClockConfigTest, ExternalReferenceDependsOnTheBoard) {
    struct Row {
        BoardModelType board;
        int external;
    };
    const std::vector<Row> rows = {
        {LARCH_MADI, 0}, {LARCH_AES1616, 0}, {LARCH_ANA88, 0}, {BIRCH_AES67, -8},
        {MAPLE, -8},     {JUNIPER, -8},      {JUNIPER_QH, -8}, {static_cast<BoardModelType>(20), -8},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(boardModelTypeToString(row.board));
        SystemDefaultCfg::getInstance()->setBoardModel(BoardModel(row.board, BitstreamType::MODULE_NA));
        ClockConfig cfg;
        LogCapture capture;
        EXPECT_EQ(cfg.setClockReference(ClockConfig::CLOCK_REF_AUTO_EXTERNAL), row.external);
        EXPECT_EQ(cfg.getClockRefType(),
                  row.external == 0 ? ClockConfig::CLOCK_REF_AUTO_EXTERNAL : ClockConfig::CLOCK_REF_AUTO_PTP);
        EXPECT_EQ(cfg.setClockReference(static_cast<ClockConfig::ClockInterface_en>(3)), -8);
        EXPECT_EQ(cfg.setClockReference(static_cast<ClockConfig::ClockInterface_en>(6)), -8);
        EXPECT_EQ(cfg.setClockReference(ClockConfig::CLOCK_REF_AUTO_PTP), 0);
        EXPECT_EQ(cfg.getClockRefType(), ClockConfig::CLOCK_REF_AUTO_PTP);
        EXPECT_TRUE(capture.lines().empty());  // refusals are silent
    }
}

TEST_F(ClockConfigTest, TextsAndJsonForm) {
    ClockConfig cfg;
    std::string text = "kept";
    EXPECT_EQ(cfg.getClockRefTypeStr(ClockConfig::CLOCK_REF_AUTO_EXTERNAL, text), 0);
    EXPECT_EQ(text, "AUTO - EXTERNAL REFERENCE");
    EXPECT_EQ(cfg.getCurrentClockRefTypeStr(), "AUTO - PTP BASED");
    EXPECT_EQ(written(cfg), canon(R"({"ref-type":4,"ref-str":"AUTO - PTP BASED"})"));
    {
        LogCapture capture;
        text = "kept";
        EXPECT_EQ(cfg.getClockRefTypeStr(static_cast<ClockConfig::ClockInterface_en>(0), text), 0);
        EXPECT_EQ(text, "kept");
        EXPECT_EQ(capture.at(2), Lines{"Error unsupported case getClockRefTypeStr"});
    }
    const std::vector<std::pair<const char*, const char*>> rows = {
        {R"({"ref-type":5,"ref-str":"ignored"})", R"({"ref-type":5,"ref-str":"AUTO - EXTERNAL REFERENCE"})"},
        {"{}", R"({"ref-type":4,"ref-str":"AUTO - PTP BASED"})"},
        {R"({"ref-type":9})", R"({"ref-type":9,"ref-str":""})"},  // no range check on reading
        {R"({"ref-type":"five"})", "throws"},
    };
    for (const auto& [doc, expected] : rows) {
        ClockConfig read;
        read.m_clock_ref = ClockConfig::CLOCK_REF_AUTO_EXTERNAL;
        LogCapture capture;
        EXPECT_EQ(readThenWritten(read, doc), canon(expected)) << doc;
        EXPECT_EQ(capture.count("Error unsupported case getClockRefTypeStr"),
                  read.getClockRefType() == 9 ? 1u : 0u);
    }
}

TEST(ClockStatus, InterfaceChangesLogInOrderAndOnlyWhenSomethingChanges) {
    using S = ClockStatus;
    struct Step {
        S::ClockInterfaceStatus_en status;
        Lines lines;  // system line first, then interface
        S::ClockStatus_en system;
    };
    const std::string up = "System clock changed from FREERUN to LOCKED";
    const std::string down = "System clock changed from LOCKED to FREERUN";
    const std::string from = "Interface clock changed from ";
    const std::vector<Step> steps = {
        {S::INTERFACE_CLOCK_LOCKED, {up, from + "FAIL to LOCKED"}, S::SYSTEM_CLOCK_LOCKED},
        {S::INTERFACE_CLOCK_LOCKED, {}, S::SYSTEM_CLOCK_LOCKED},
        {S::INTERFACE_CLOCK_FAIL, {down, from + "LOCKED to FAIL"}, S::SYSTEM_CLOCK_FREERUN},
        {S::INTERFACE_CLOCK_ACQUIRING, {from + "FAIL to ACQUIRING"}, S::SYSTEM_CLOCK_FREERUN},
        {S::INTERFACE_CLOCK_LOCKED, {up, from + "ACQUIRING to LOCKED"}, S::SYSTEM_CLOCK_LOCKED},
        {S::INTERFACE_CLOCK_FAIL, {down, from + "LOCKED to FAIL"}, S::SYSTEM_CLOCK_FREERUN},
        {static_cast<S::ClockInterfaceStatus_en>(9), {from + "FAIL to ACQUIRING"}, S::SYSTEM_CLOCK_FREERUN},
    };
    ClockStatus status;
    for (const Step& step : steps) {
        LogCapture capture;
        EXPECT_EQ(status.setClockInterfaceStatus(step.status), 0);
        EXPECT_EQ(capture.at(5), step.lines);
        EXPECT_EQ(capture.lines().size(), step.lines.size());
        S::ClockStatus_en system = S::SYSTEM_CLOCK_LOCKED;
        S::ClockInterfaceStatus_en iface = S::INTERFACE_CLOCK_LOCKED;
        EXPECT_EQ(status.getClockStatus(&system, &iface), 0);
        EXPECT_EQ(system, step.system);
        EXPECT_EQ(iface, step.status);
    }
}

TEST(ClockStatus, ReferenceChangesAndNullArguments) {
    ClockStatus status;
    LogCapture capture;
    EXPECT_EQ(status.setCurrentClockReference(ClockStatus::CURRENT_REF_INTERNAL_OSCILLATOR), 0);
    EXPECT_TRUE(capture.lines().empty());
    EXPECT_EQ(status.setCurrentClockReference(ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE), 0);
    EXPECT_EQ(status.getCurrentClockReference(), ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE);
    EXPECT_EQ(capture.at(5), Lines{"Clock reference changed from 0 to 2"});

    capture.clear();
    ClockStatus::ClockStatus_en system = ClockStatus::SYSTEM_CLOCK_LOCKED;
    ClockStatus::ClockInterfaceStatus_en iface = ClockStatus::INTERFACE_CLOCK_LOCKED;
    EXPECT_EQ(status.getClockStatus(nullptr, &iface), -4);
    EXPECT_EQ(status.getClockStatus(&system, nullptr), -4);
    EXPECT_EQ(system, ClockStatus::SYSTEM_CLOCK_LOCKED);
    EXPECT_EQ(iface, ClockStatus::INTERFACE_CLOCK_LOCKED);
    EXPECT_EQ(capture.at(2),
              (Lines{"getClockStatus:: Parameter is null.", "getClockStatus:: Parameter is null."}));
}

TEST(ClockStatus, TextsOfValuesOutsideTheChangeLines) {
    // LOCKED, FREERUN, FAIL, ACQUIRING and INTERNAL OSCILLATOR are covered above and below.
    EXPECT_EQ(ClockStatus::currentRefText(ClockStatus::CURRENT_REF_PTP_SLAVE), "PTP SLAVE");
    EXPECT_EQ(ClockStatus::currentRefText(ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE), "EXTERNAL REFERENCE");
    EXPECT_EQ(ClockStatus::currentRefText(5), "PTP SLAVE");
    EXPECT_EQ(ClockStatus::interfaceClockText(-1), "ACQUIRING");
    std::string text;
    ClockStatus().getSystemClockStr(static_cast<ClockStatus::ClockStatus_en>(2), text);
    EXPECT_EQ(text, "FREERUN");
}

TEST(ClockStatus, JsonForm) {
    EXPECT_EQ(written(ClockStatus()),
              canon(R"({"system":{"code":1,"string":"FREERUN"},"interface":{"code":2,"string":"FAIL"},
                        "current-ref":{"code":0,"string":"INTERNAL OSCILLATOR"}})"));
    ClockStatus read;
    read.setClockInterfaceStatus(ClockStatus::INTERFACE_CLOCK_LOCKED);
    LogCapture capture;
    // A missing member takes its default; the code is kept even where it names no text.
    EXPECT_EQ(readThenWritten(read, R"({"system":{"code":7,"string":"LOCKED"},"current-ref":{"code":2}})"),
              canon(R"({"system":{"code":7,"string":"FREERUN"},"interface":{"code":2,"string":"FAIL"},
                        "current-ref":{"code":2,"string":"EXTERNAL REFERENCE"}})"));
    EXPECT_TRUE(capture.lines().empty());
    EXPECT_EQ(read.getCurrentSystemClockStr(), "FREERUN");
    for (const char* bad : {R"({"system":5})", R"({"interface":{"code":"x"}})", R"({"current-ref":[1]})"}) {
        EXPECT_EQ(readThenWritten(read, bad), "throws") << bad;
    }
}

TEST(ClockCounters, JsonForm) {
    ClockCounters c;
    EXPECT_EQ(
        written(c),
        canon(R"({"cdc":{"current":0,"min":0,"max":0,"underflow-event":false,"overflow-event":false}})"));
    const char* full =
        R"({"cdc":{"current":17,"min":3,"max":4000000000,"underflow-event":false,"overflow-event":true}})";
    EXPECT_EQ(readThenWritten(c, full), canon(full));
    EXPECT_TRUE(writtenDoc(c)["cdc"]["max"].isUInt());
    EXPECT_EQ(
        readThenWritten(c, R"({"cdc":{"min":9}})"),
        canon(R"({"cdc":{"current":0,"min":9,"max":0,"underflow-event":false,"overflow-event":false}})"));
    EXPECT_EQ(readThenWritten(c, R"({"cdc":{"underflow-event":{}}})"), "throws");
}

}  // namespace
