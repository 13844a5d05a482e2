#include "pimAvMngApi/device/BoardModel.h"

#include <cctype>
#include <optional>
#include <string_view>

#include "pimAvMngApi/platform/Logger.h"
#include "platform/WordTable.h"

namespace {

using pimav::detail::WordRow;
using pimav::detail::WordUse;

constexpr WordRow<BoardModelType> kModelNames[] = {
    {BIRCH_AES67, "BIRCH_AES67"},
    {CEDAR_AES67, "CEDAR_AES67"},
    {BIRCH_AVB, "BIRCH_AVB"},
    {DAMSON, "DAMSON"},
    {BIRCH_ELM, "BIRCH_ELM"},
    {BIRCH_FIR, "BIRCH_FIR"},
    {GORSE_AOIP, "GORSE_AOIP"},
    {BIRCH_HAZEL_IO, "BIRCH_HAZEL_IO"},
    {IVY_AES67, "IVY_AES67"},
    {JUNIPER, "JUNIPER"},
    {KAPOK, "KAPOK"},
    {MAPLE, "MAPLE"},
    {LARCH_MADI, "LARCH_MADI"},
    {LARCH_AES1616, "LARCH_AES1616"},
    {LARCH_ANA88, "LARCH_ANA88"},
    {JUNIPER_QH, "JUNIPER_QH"},
    {DAMSON, "ALDER", WordUse::ReadOnly},
};

// Written in upper case; read in exactly upper or exactly lower case.
constexpr WordRow<BitstreamType::module_t> kModuleNames[] = {
    {BitstreamType::MODULE_SDI_TR04, "SDI-TR04"},
    {BitstreamType::MODULE_SDI_ST2110, "SDI-ST2110"},
    {BitstreamType::MODULE_HDMI_ST2110, "HDMI-ST2110"},
    {BitstreamType::MODULE_SDI_BIDIR_ST2110, "SDI-BIDIR-ST2110"},
};

bool hasUpperCase(std::string_view text) {
    for (char c : text) {
        if (std::isupper(static_cast<unsigned char>(c)) != 0) {
            return true;
        }
    }
    return false;
}

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
    return std::string(pimav::detail::wordOf(kModelNames, model, "Undefined"));
}

bool boardModelTypeFromString(const std::string& text, BoardModelType& model) {
    const std::optional<BoardModelType> code = pimav::detail::codeOf(kModelNames, text);
    if (!code) {
        return false;
    }
    model = *code;
    return true;
}

std::string BitstreamType::toString(module_t module) {
    return std::string(pimav::detail::wordOf(kModuleNames, module, "NA"));
}

BitstreamType::module_t BitstreamType::fromString(const std::string& text) {
    const std::optional<module_t> module = hasUpperCase(text) ? pimav::detail::codeOf(kModuleNames, text)
                                                              : pimav::detail::codeOfAnyCase(kModuleNames, text);
    return module.value_or(MODULE_NA);
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
