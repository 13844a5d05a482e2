#pragma once

// The board facts that the SDP parser and generator branch on.

#include "pimAvMngApi/device/BitstreamType.h"
#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/device/Codec.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"

namespace pimav::detail {

// A DAMSON board with an SDI-TR04 module carries SMPTE ST 2022-6 video; every other
// board carries SMPTE ST 2110-20 ("raw").
inline bool isDamsonTr04() {
    const BoardModel board = SystemDefaultCfg::getInstance()->getBoardModel();
    return board.m_model == DAMSON && board.m_bitstream.m_module == BitstreamType::MODULE_SDI_TR04;
}

// Boards whose audio descriptions carry an ST 2110-30 channel-order line per RTP map.
inline bool writesChannelOrder() {
    const BoardModel board = SystemDefaultCfg::getInstance()->getBoardModel();
    const BitstreamType::module_t module = board.m_bitstream.m_module;
    switch (board.m_model) {
        case DAMSON:
            return module == BitstreamType::MODULE_SDI_TR04 || module == BitstreamType::MODULE_SDI_BIDIR_ST2110;
        case JUNIPER:
        case MAPLE:
        case JUNIPER_QH:
            return module == BitstreamType::MODULE_SDI_ST2110 || module == BitstreamType::MODULE_HDMI_ST2110 ||
                   module == BitstreamType::MODULE_SDI_BIDIR_ST2110;
        default:
            return false;
    }
}

// Codecs whose "a=rtpmap:" line carries a channel count.
inline bool isAudioCodec(const Codec& codec) {
    switch (codec.m_codec) {
        case Codec::CODEC_AM824:
        case Codec::CODEC_L32:
        case Codec::CODEC_L24:
        case Codec::CODEC_L16:
        case Codec::CODEC_AM824_TRANSPARENT:
            return true;
        default:
            return false;
    }
}

}  // namespace pimav::detail
