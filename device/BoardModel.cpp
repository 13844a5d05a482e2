#include "pimAvMngApi/device/BoardModel.h"

#include <iterator>

#include "pimAvMngApi/platform/Logger.h"

namespace {

const char* const kModelNames[] = {
    "BIRCH_AES67", "CEDAR_AES67",    "BIRCH_AVB",   "DAMSON",     "BIRCH_ELM", "BIRCH_FIR",
    "GORSE_AOIP",  "BIRCH_HAZEL_IO", "IVY_AES67",   "JUNIPER",    "KAPOK",     "MAPLE",
    "LARCH_MADI",  "LARCH_AES1616",  "LARCH_ANA88", "JUNIPER_QH",
};

struct ModuleName {
    BitstreamType::module_t module;
    const char* upper;
    const char* lower;
};

const ModuleName kModuleNames[] = {
    {BitstreamType::MODULE_SDI_TR04, "SDI-TR04", "sdi-tr04"},
    {BitstreamType::MODULE_SDI_ST2110, "SDI-ST2110", "sdi-st2110"},
    {BitstreamType::MODULE_HDMI_ST2110, "HDMI-ST2110", "hdmi-st2110"},
    {BitstreamType::MODULE_SDI_BIDIR_ST2110, "SDI-BIDIR-ST2110", "sdi-bidir-st2110"},
};

using VF = VideoFormat;
// HD formats of every board with video, in the order the boards list them.
const VF::video_format_t kHdFormats[] = {
    VF::VIDEO_FORMAT_720P50,     VF::VIDEO_FORMAT_720P59_94,  VF::VIDEO_FORMAT_720P60,
    VF::VIDEO_FORMAT_1080I50,    VF::VIDEO_FORMAT_1080I59_94, VF::VIDEO_FORMAT_1080I60,
    VF::VIDEO_FORMAT_1080P23_98, VF::VIDEO_FORMAT_1080P24,    VF::VIDEO_FORMAT_1080P25,
    VF::VIDEO_FORMAT_1080P29_97, VF::VIDEO_FORMAT_1080P30,    VF::VIDEO_FORMAT_1080P50,
    VF::VIDEO_FORMAT_1080P59_94, VF::VIDEO_FORMAT_1080P60,    VF::VIDEO_FORMAT_720P25,
    VF::VIDEO_FORMAT_720P29_97,
};
// 2160p formats of an HDMI module.
const VF::video_format_t kUhdHdmiFormats[] = {
    VF::VIDEO_FORMAT_2160P25,
    VF::VIDEO_FORMAT_2160P29_97,
    VF::VIDEO_FORMAT_2160P50,
    VF::VIDEO_FORMAT_2160P59_94,
};
// 2160p formats MAPLE adds after those of an HDMI module.
const VF::video_format_t kUhdMapleExtra[] = {
    VF::VIDEO_FORMAT_2160P30,
    VF::VIDEO_FORMAT_2160P60,
};

}  // namespace

std::string boardModelTypeToString(BoardModelType model) {
    const auto index = static_cast<int32_t>(model);
    if (index < 0 || index >= static_cast<int32_t>(std::size(kModelNames))) {
        return "Undefined";
    }
    return kModelNames[index];
}

bool boardModelTypeFromString(const std::string& text, BoardModelType& model) {
    for (size_t i = 0; i < std::size(kModelNames); ++i) {
        if (text == kModelNames[i]) {
            model = static_cast<BoardModelType>(i);
            return true;
        }
    }
    if (text == "ALDER") {
        model = DAMSON;
        return true;
    }
    return false;
}

std::string BitstreamType::toString(module_t module) {
    for (const auto& m : kModuleNames) {
        if (m.module == module) {
            return m.upper;
        }
    }
    return "NA";
}

BitstreamType::module_t BitstreamType::fromString(const std::string& text) {
    for (const auto& m : kModuleNames) {
        if (text == m.upper || text == m.lower) {
            return m.module;
        }
    }
    return MODULE_NA;
}

void BitstreamType::Serialize(Json::Value& out) const {
    out["module"] = toString();
}

void BitstreamType::Deserialize(Json::Value& in) {
    m_module = fromString(in.get("module", "").asString());
}

BoardModel::BoardModel(BoardModelType model, BitstreamType::module_t module)
    : m_model(model), m_bitstream(module) {
    initializeSupportedVideoFormatList();
}

void BoardModel::setModel(BoardModelType model) {
    m_model = model;
    initializeSupportedVideoFormatList();
    Logger::log(5, "BoardModel::%s - %s", "setModel", boardModelTypeToString(model).c_str());
}

void BoardModel::setModule(BitstreamType::module_t module) {
    m_bitstream.setModule(module);
    initializeSupportedVideoFormatList();
}

int BoardModel::initializeSupportedVideoFormatList() {
    m_supported_video_formats.clear();
    const bool juniper = m_model == JUNIPER || m_model == JUNIPER_QH;
    if (m_model != DAMSON && m_model != MAPLE && !juniper) {
        return 0;
    }
    for (auto code : kHdFormats) {
        m_supported_video_formats.emplace_back(code);
    }
    if (m_model == MAPLE || (juniper && m_bitstream.getModule() == BitstreamType::MODULE_HDMI_ST2110)) {
        for (auto code : kUhdHdmiFormats) {
            m_supported_video_formats.emplace_back(code);
        }
    }
    if (m_model == MAPLE) {
        for (auto code : kUhdMapleExtra) {
            m_supported_video_formats.emplace_back(code);
        }
    }
    return 0;
}

bool BoardModel::isVideoFormatSupported(VideoFormat::video_format_t format) const {
    for (const auto& f : m_supported_video_formats) {
        if (f.getVideoFormat() == format) {
            return true;
        }
    }
    return false;
}

void BoardModel::Serialize(Json::Value& out) const {
    out["model"] = getModelString();
    out["module"] = m_bitstream.toString();
}

void BoardModel::Deserialize(Json::Value& in) {
    const std::string model = in.get("model", "").asString();
    const std::string module = in.get("module", "").asString();
    m_bitstream.setModule(BitstreamType::fromString(module));
    BoardModelType value;
    if (boardModelTypeFromString(model, value)) {
        setModel(value);
    }
}
