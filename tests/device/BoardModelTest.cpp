#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
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
        // Rebuilding gives the same list: it is replaced, not appended to.
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
        const char* written;
        size_t formats;
        bool logsSetModel;
    };
    const std::vector<Row> rows = {
        {R"({"model":"JUNIPER","module":"hdmi-st2110"})", R"({"model":"JUNIPER","module":"HDMI-ST2110"})", 20,
         true},
        {R"({"model":"JUNIPER","module":"Hdmi-St2110"})", R"({"model":"JUNIPER","module":"NA"})", 16, true},
        {R"({"model":"ALDER","module":"SDI-TR04"})", R"({"model":"DAMSON","module":"SDI-TR04"})", 16, true},
        {R"({"model":"MAPLE","module":"sdi-bidir-st2110"})",
         R"({"model":"MAPLE","module":"SDI-BIDIR-ST2110"})", 22, true},
        // Unknown model text: the module is still read, model and list stay.
        {R"({"model":"maple","module":"sdi-st2110"})", R"({"model":"LARCH_ANA88","module":"SDI-ST2110"})", 0,
         false},
        {"{}", R"({"model":"LARCH_ANA88","module":"NA"})", 0, false},
        {R"({"model":{"x":1}})", "throws", 0, false},
    };
    for (const Row& row : rows) {
        BoardModel board(LARCH_ANA88, Module::MODULE_HDMI_ST2110);
        LogCapture capture;
        EXPECT_EQ(readThenWritten(board, row.doc), canon(row.written)) << row.doc;
        EXPECT_EQ(board.getSupportedVideoFormats().size(), row.formats) << row.doc;
        EXPECT_EQ(capture.lines().size(), row.logsSetModel ? 1u : 0u) << row.doc;
    }
    BoardModel odd;
    odd.m_model = static_cast<BoardModelType>(20);
    EXPECT_EQ(writtenDoc(odd)["model"].asString(), "Undefined");
}

// Each word is read in any case and written in capitals; other texts read as NA.
TEST(BitstreamType, ModuleWordsBothWays) {
    const std::vector<std::pair<std::string, Module::module_t>> rows = {
        {"SDI-TR04", Module::MODULE_SDI_TR04},
        {"sdi-tr04", Module::MODULE_SDI_TR04},
        {"SDI-ST2110", Module::MODULE_SDI_ST2110},
        {"sdi-st2110", Module::MODULE_SDI_ST2110},
        {"HDMI-ST2110", Module::MODULE_HDMI_ST2110},
        {"hdmi-st2110", Module::MODULE_HDMI_ST2110},
        {"SDI-BIDIR-ST2110", Module::MODULE_SDI_BIDIR_ST2110},
        {"sdi-bidir-st2110", Module::MODULE_SDI_BIDIR_ST2110},
        {"Sdi-Tr04", Module::MODULE_NA},
        {"NA", Module::MODULE_NA},
        {"", Module::MODULE_NA},
    };
    for (const auto& [text, module] : rows) {
        Module m(Module::MODULE_HDMI_ST2110);
        Json::Value doc;
        doc["module"] = text;
        m.Deserialize(doc);
        EXPECT_EQ(m.getModule(), module) << text;
        std::string upper = module == Module::MODULE_NA ? "NA" : text;
        std::transform(upper.begin(), upper.end(), upper.begin(), ::toupper);
        EXPECT_EQ(writtenDoc(m)["module"].asString(), upper);
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
        uint32_t code;  // 7: not supported, setCodec answers -11
        const char* text;
    };
    const std::vector<Row> rows = {
        {"AM824", 0, "AM824"},
        {"am824", 0, "AM824"},
        {"L32", 1, "L32"},
        {"L24", 2, "L24"},
        {"l24", 2, "L24"},
        {"L16", 3, "L16"},
        {"smpte2022-6", 4, "SMPTE2022-6"},
        {"Smpte2022-6", 4, "SMPTE2022-6"},
        {"AM824_Transparent", 5, "AM824_TRANSPARENT"},
        {"RAW", 6, "raw"},
        {"raw", 6, "raw"},
        {"opus", 7, "Not-supported"},
        {"Not-supported", 7, "Not-supported"},
        {"", 7, "Not-supported"},
        {"L24 ", 7, "Not-supported"},
    };
    for (const Row& row : rows) {
        Codec c(Codec::CODEC_L16);
        EXPECT_EQ(c.setCodec(row.name), row.code == 7 ? -11 : 0) << row.name;
        EXPECT_EQ(c.getCodec(), row.code) << row.name;
        EXPECT_EQ(c.toString(), row.text);

        Json::Value doc;
        doc["codec"] = row.name;
        Codec r(Codec::CODEC_L16);
        r.Deserialize(doc);
        EXPECT_EQ(r.getCodec(), row.code) << row.name;
        EXPECT_EQ(writtenDoc(r)["codec"].asString(), row.text) << row.name;
    }
    EXPECT_EQ(Codec(8).toString(), "Not-supported");
    EXPECT_EQ(Codec(0xffffffffu).toString(), "Not-supported");

    Codec c(Codec::CODEC_RAW);
    readInto(c, "{}");
    EXPECT_EQ(c.getCodec(), Codec::CODEC_AM824);
    readInto(c, R"({"codec":2})");  // a number becomes its text, which names no codec
    EXPECT_EQ(c.getCodec(), Codec::CODEC_NOT_SUPPORTED);
    EXPECT_EQ(readThenWritten(c, R"({"codec":{}})"), "throws");
}

}  // namespace
