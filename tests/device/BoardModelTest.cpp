#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/device/Codec.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

using Module = BitstreamType;

std::vector<int> codes(const BoardModel& board) {
    std::vector<int> out;
    for (const auto& f : board.getSupportedVideoFormats()) {
        out.push_back(f.getVideoFormat());
    }
    return out;
}

const std::vector<int> kHd = {1, 2, 10, 4, 5, 11, 8, 9, 3, 21, 6, 7, 14, 15, 16, 17};

std::vector<int> hdPlus(const std::vector<int>& extra) {
    std::vector<int> all = kHd;
    all.insert(all.end(), extra.begin(), extra.end());
    return all;
}

TEST(BoardModel, FormatListPerModelAndModule) {
    struct Row {
        BoardModelType model;
        Module::module_t module;
        std::vector<int> expected;
    };
    const std::vector<Row> rows = {
        {DAMSON, Module::MODULE_SDI_TR04, kHd},
        {DAMSON, Module::MODULE_HDMI_ST2110, kHd},
        {MAPLE, Module::MODULE_NA, hdPlus({25, 28, 24, 27, 29, 26})},
        {MAPLE, Module::MODULE_HDMI_ST2110, hdPlus({25, 28, 24, 27, 29, 26})},
        {JUNIPER, Module::MODULE_HDMI_ST2110, hdPlus({25, 28, 24, 27})},
        {JUNIPER_QH, Module::MODULE_HDMI_ST2110, hdPlus({25, 28, 24, 27})},
        {JUNIPER, Module::MODULE_SDI_BIDIR_ST2110, kHd},
        {JUNIPER_QH, Module::MODULE_SDI_ST2110, kHd},
        {JUNIPER, Module::MODULE_NA, kHd},
        {BIRCH_AES67, Module::MODULE_HDMI_ST2110, {}},
        {LARCH_MADI, Module::MODULE_NA, {}},
        {KAPOK, Module::MODULE_SDI_TR04, {}},
        {static_cast<BoardModelType>(20), Module::MODULE_HDMI_ST2110, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(boardModelTypeToString(row.model) + "/" + Module::toString(row.module));
        BoardModel board;
        board.m_bitstream.setModule(row.module);
        LogCapture capture;
        board.setModel(row.model);
        EXPECT_EQ(codes(board), row.expected);
        EXPECT_EQ(capture.texts(),
                  std::vector<std::string>{"BoardModel::setModel - " + boardModelTypeToString(row.model)});
        EXPECT_EQ(capture.at(5).size(), 1u);
        // Rebuilding replaces the list instead of appending to it.
        EXPECT_EQ(board.initializeSupportedVideoFormatList(), 0);
        EXPECT_EQ(codes(board), row.expected);
        // The list follows the module when it changes.
        EXPECT_EQ(codes(BoardModel(row.model, row.module)), row.expected);
    }
    BoardModel board(JUNIPER, Module::MODULE_HDMI_ST2110);
    EXPECT_TRUE(board.isVideoFormatSupported(VideoFormat::VIDEO_FORMAT_2160P59_94));
    board.setModule(Module::MODULE_SDI_ST2110);
    EXPECT_EQ(codes(board), kHd);
    EXPECT_FALSE(board.isVideoFormatSupported(VideoFormat::VIDEO_FORMAT_2160P59_94));
}

TEST(BoardModel, ModelWordsBothWays) {
    const std::vector<std::string> names = {"BIRCH_AES67", "CEDAR_AES67",   "BIRCH_AVB",   "DAMSON",
                                            "BIRCH_ELM",   "BIRCH_FIR",     "GORSE_AOIP",  "BIRCH_HAZEL_IO",
                                            "IVY_AES67",   "JUNIPER",       "KAPOK",       "MAPLE",
                                            "LARCH_MADI",  "LARCH_AES1616", "LARCH_ANA88", "JUNIPER_QH"};
    for (size_t i = 0; i < names.size(); ++i) {
        const auto model = static_cast<BoardModelType>(i);
        EXPECT_EQ(boardModelTypeToString(model), names[i]);
        BoardModelType read = KAPOK;
        EXPECT_TRUE(boardModelTypeFromString(names[i], read));
        EXPECT_EQ(read, model);
    }
    EXPECT_EQ(boardModelTypeToString(static_cast<BoardModelType>(16)), "Undefined");
    EXPECT_EQ(boardModelTypeToString(static_cast<BoardModelType>(-1)), "Undefined");
    for (const char* bad : {"maple", "Maple", "Undefined", "", "ALDER ", "alder"}) {
        BoardModelType read = KAPOK;
        EXPECT_FALSE(boardModelTypeFromString(bad, read)) << bad;
        EXPECT_EQ(read, KAPOK);
    }
}

TEST(BoardModel, JsonForm) {
    struct Row {
        const char* doc;
        BoardModelType model;
        Module::module_t module;
        size_t formats;
        const char* written;
        bool logsSetModel;
    };
    const std::vector<Row> rows = {
        {R"({"model":"JUNIPER","module":"hdmi-st2110"})", JUNIPER, Module::MODULE_HDMI_ST2110, 20,
         R"({"model":"JUNIPER","module":"HDMI-ST2110"})", true},
        {R"({"model":"JUNIPER","module":"Hdmi-St2110"})", JUNIPER, Module::MODULE_NA, 16,
         R"({"model":"JUNIPER","module":"NA"})", true},
        {R"({"model":"ALDER","module":"SDI-TR04"})", DAMSON, Module::MODULE_SDI_TR04, 16,
         R"({"model":"DAMSON","module":"SDI-TR04"})", true},
        {R"({"model":"MAPLE","module":"sdi-bidir-st2110"})", MAPLE, Module::MODULE_SDI_BIDIR_ST2110, 22,
         R"({"model":"MAPLE","module":"SDI-BIDIR-ST2110"})", true},
        // Unknown model text: the module is still read, model and list stay.
        {R"({"model":"maple","module":"sdi-st2110"})", LARCH_ANA88, Module::MODULE_SDI_ST2110, 0,
         R"({"model":"LARCH_ANA88","module":"SDI-ST2110"})", false},
        {"{}", LARCH_ANA88, Module::MODULE_NA, 0, R"({"model":"LARCH_ANA88","module":"NA"})", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.doc);
        BoardModel board(LARCH_ANA88, Module::MODULE_HDMI_ST2110);
        Json::Value doc = jsonOf(row.doc);
        LogCapture capture;
        board.Deserialize(doc);
        EXPECT_EQ(board.getModel(), row.model);
        EXPECT_EQ(board.getModule(), row.module);
        EXPECT_EQ(board.getSupportedVideoFormats().size(), row.formats);
        EXPECT_EQ(capture.lines().size(), row.logsSetModel ? 1u : 0u);
        Json::Value out;
        board.Serialize(out);
        EXPECT_JSON_EQ(out, row.written);
    }
    BoardModel odd;
    odd.m_model = static_cast<BoardModelType>(20);
    Json::Value out;
    odd.Serialize(out);
    EXPECT_EQ(out["model"].asString(), "Undefined");

    Json::Value wrongKind = jsonOf(R"({"model":{"x":1}})");
    EXPECT_ANY_THROW(odd.Deserialize(wrongKind));
}

TEST(BitstreamType, ModuleWordsBothWays) {
    struct Row {
        const char* text;
        Module::module_t module;
        const char* written;
    };
    const std::vector<Row> rows = {
        {"SDI-TR04", Module::MODULE_SDI_TR04, "SDI-TR04"},
        {"sdi-tr04", Module::MODULE_SDI_TR04, "SDI-TR04"},
        {"SDI-ST2110", Module::MODULE_SDI_ST2110, "SDI-ST2110"},
        {"sdi-st2110", Module::MODULE_SDI_ST2110, "SDI-ST2110"},
        {"HDMI-ST2110", Module::MODULE_HDMI_ST2110, "HDMI-ST2110"},
        {"hdmi-st2110", Module::MODULE_HDMI_ST2110, "HDMI-ST2110"},
        {"SDI-BIDIR-ST2110", Module::MODULE_SDI_BIDIR_ST2110, "SDI-BIDIR-ST2110"},
        {"sdi-bidir-st2110", Module::MODULE_SDI_BIDIR_ST2110, "SDI-BIDIR-ST2110"},
        {"Sdi-Tr04", Module::MODULE_NA, "NA"},
        {"NA", Module::MODULE_NA, "NA"},
        {"", Module::MODULE_NA, "NA"},
    };
    for (const Row& row : rows) {
        Module m(Module::MODULE_HDMI_ST2110);
        Json::Value doc;
        doc["module"] = row.text;
        m.Deserialize(doc);
        EXPECT_EQ(m.getModule(), row.module) << row.text;
        Json::Value out;
        m.Serialize(out);
        EXPECT_EQ(out["module"].asString(), row.written);
    }
    Module m(Module::MODULE_SDI_TR04);
    Json::Value empty(Json::objectValue);
    m.Deserialize(empty);
    EXPECT_EQ(m.getModule(), Module::MODULE_NA);
    EXPECT_EQ(Module::toString(static_cast<Module::module_t>(9)), "NA");
}

TEST(Codec, NamesInAnyCase) {
    struct Row {
        const char* name;
        int result;
        uint32_t code;
        const char* text;
    };
    const std::vector<Row> rows = {
        {"AM824", 0, 0, "AM824"},
        {"am824", 0, 0, "AM824"},
        {"L32", 0, 1, "L32"},
        {"L24", 0, 2, "L24"},
        {"l24", 0, 2, "L24"},
        {"L16", 0, 3, "L16"},
        {"smpte2022-6", 0, 4, "SMPTE2022-6"},
        {"Smpte2022-6", 0, 4, "SMPTE2022-6"},
        {"AM824_Transparent", 0, 5, "AM824_TRANSPARENT"},
        {"RAW", 0, 6, "raw"},
        {"raw", 0, 6, "raw"},
        {"opus", -11, 7, "Not-supported"},
        {"Not-supported", -11, 7, "Not-supported"},
        {"", -11, 7, "Not-supported"},
        {"L24 ", -11, 7, "Not-supported"},
    };
    for (const Row& row : rows) {
        Codec c(Codec::CODEC_L16);
        EXPECT_EQ(c.setCodec(row.name), row.result) << row.name;
        EXPECT_EQ(c.getCodec(), row.code) << row.name;
        EXPECT_EQ(c.toString(), row.text);

        Json::Value doc;
        doc["codec"] = row.name;
        Codec r(Codec::CODEC_L16);
        r.Deserialize(doc);
        EXPECT_EQ(r.getCodec(), row.code) << row.name;
        Json::Value out;
        r.Serialize(out);
        EXPECT_EQ(out["codec"].asString(), row.text);
    }
    EXPECT_EQ(Codec(8).toString(), "Not-supported");
    EXPECT_EQ(Codec(0xffffffffu).toString(), "Not-supported");

    Codec c(Codec::CODEC_RAW);
    Json::Value missing(Json::objectValue);
    c.Deserialize(missing);
    EXPECT_EQ(c.getCodec(), Codec::CODEC_AM824);
    Json::Value number = jsonOf(R"({"codec":2})");
    c.Deserialize(number);  // a number becomes its text, which names no codec
    EXPECT_EQ(c.getCodec(), Codec::CODEC_NOT_SUPPORTED);
    Json::Value object = jsonOf(R"({"codec":{}})");
    EXPECT_ANY_THROW(c.Deserialize(object));
}

}  // namespace
