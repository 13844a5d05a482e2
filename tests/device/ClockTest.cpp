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
    Json::Value out;
    cfg.Serialize(out);
    EXPECT_JSON_EQ(out, R"({"ref-type":4,"ref-str":"AUTO - PTP BASED"})");

    {
        LogCapture capture;
        text = "kept";
        EXPECT_EQ(cfg.getClockRefTypeStr(static_cast<ClockConfig::ClockInterface_en>(0), text), 0);
        EXPECT_EQ(text, "kept");
        EXPECT_EQ(capture.at(2), Lines{"Error unsupported case getClockRefTypeStr"});
    }

    struct Row {
        const char* doc;
        int ref;
        const char* written;
    };
    const std::vector<Row> rows = {
        {R"({"ref-type":5,"ref-str":"ignored"})", 5,
         R"({"ref-type":5,"ref-str":"AUTO - EXTERNAL REFERENCE"})"},
        {"{}", 4, R"({"ref-type":4,"ref-str":"AUTO - PTP BASED"})"},
        {R"({"ref-type":9})", 9, R"({"ref-type":9,"ref-str":""})"},  // no range check on reading
    };
    for (const Row& row : rows) {
        ClockConfig read;
        read.m_clock_ref = ClockConfig::CLOCK_REF_AUTO_EXTERNAL;
        Json::Value doc = jsonOf(row.doc);
        read.Deserialize(doc);
        EXPECT_EQ(read.getClockRefType(), row.ref) << row.doc;
        Json::Value written;
        LogCapture capture;
        read.Serialize(written);
        EXPECT_JSON_EQ(written, row.written);
        EXPECT_EQ(capture.count("Error unsupported case getClockRefTypeStr"), row.ref == 9 ? 1u : 0u);
    }
    Json::Value bad = jsonOf(R"({"ref-type":"five"})");
    EXPECT_ANY_THROW(cfg.Deserialize(bad));
}

TEST(ClockStatus, InterfaceChangesLogInOrderAndOnlyWhenSomethingChanges) {
    using S = ClockStatus;
    struct Step {
        S::ClockInterfaceStatus_en status;
        Lines lines;
        S::ClockStatus_en system;
    };
    const std::vector<Step> steps = {
        {S::INTERFACE_CLOCK_ACQUIRING,
         {"Interface clock changed from FAIL to ACQUIRING"},
         S::SYSTEM_CLOCK_FREERUN},
        {S::INTERFACE_CLOCK_LOCKED,
         {"System clock changed from FREERUN to LOCKED", "Interface clock changed from ACQUIRING to LOCKED"},
         S::SYSTEM_CLOCK_LOCKED},
        {S::INTERFACE_CLOCK_LOCKED, {}, S::SYSTEM_CLOCK_LOCKED},
        {S::INTERFACE_CLOCK_FAIL,
         {"System clock changed from LOCKED to FREERUN", "Interface clock changed from LOCKED to FAIL"},
         S::SYSTEM_CLOCK_FREERUN},
        {static_cast<S::ClockInterfaceStatus_en>(9),
         {"Interface clock changed from FAIL to ACQUIRING"},
         S::SYSTEM_CLOCK_FREERUN},
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
    // A fresh record going straight to LOCKED: system line first, then interface.
    ClockStatus fresh;
    LogCapture capture;
    fresh.setClockInterfaceStatus(S::INTERFACE_CLOCK_LOCKED);
    EXPECT_EQ(capture.at(5), (Lines{"System clock changed from FREERUN to LOCKED",
                                    "Interface clock changed from FAIL to LOCKED"}));
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
    ClockStatus fresh;
    Json::Value out;
    fresh.Serialize(out);
    EXPECT_JSON_EQ(out, R"({"system":{"code":1,"string":"FREERUN"},"interface":{"code":2,"string":"FAIL"},
                             "current-ref":{"code":0,"string":"INTERNAL OSCILLATOR"}})");

    ClockStatus read;
    read.setClockInterfaceStatus(ClockStatus::INTERFACE_CLOCK_LOCKED);
    Json::Value doc = jsonOf(R"({"system":{"code":7,"string":"LOCKED"},"current-ref":{"code":2}})");
    LogCapture capture;
    read.Deserialize(doc);
    EXPECT_TRUE(capture.lines().empty());
    EXPECT_EQ(read.m_system_status, 7);
    EXPECT_EQ(read.m_interface_status, ClockStatus::INTERFACE_CLOCK_FAIL);  // missing: default 2
    EXPECT_EQ(read.m_current_ref, ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE);
    EXPECT_EQ(read.getCurrentSystemClockStr(), "FREERUN");
    Json::Value back;
    read.Serialize(back);
    EXPECT_EQ(back["system"]["code"].asInt(), 7);
    EXPECT_EQ(back["system"]["string"].asString(), "FREERUN");

    for (const char* bad : {R"({"system":5})", R"({"interface":{"code":"x"}})", R"({"current-ref":[1]})"}) {
        Json::Value d = jsonOf(bad);
        EXPECT_ANY_THROW(read.Deserialize(d)) << bad;
    }
}

TEST(ClockCounters, JsonForm) {
    ClockCounters c;
    Json::Value out;
    c.Serialize(out);
    EXPECT_JSON_EQ(out,
                   R"({"cdc":{"current":0,"min":0,"max":0,"underflow-event":false,"overflow-event":false}})");

    c.m_max = 4000000000u;
    c.m_min = 3;
    c.m_current = 17;
    c.m_overflow_event = true;
    Json::Value doc;
    c.Serialize(doc);
    EXPECT_TRUE(doc["cdc"]["max"].isUInt());
    ClockCounters back;
    back.Deserialize(doc);
    EXPECT_EQ(back, c);

    Json::Value partial = jsonOf(R"({"cdc":{"min":9}})");
    back.Deserialize(partial);
    ClockCounters expected;
    expected.m_min = 9;
    EXPECT_EQ(back, expected);
    Json::Value bad = jsonOf(R"({"cdc":{"underflow-event":{}}})");
    EXPECT_ANY_THROW(back.Deserialize(bad));
}

}  // namespace
