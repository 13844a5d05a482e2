#pragma once

// What the SDP harnesses share: the boards whose SDP rules differ, and a logger that
// formats every line (so that log arguments are exercised too) into a sink that drops it.

#include <cstdint>
#include <string>

#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"

namespace fuzzing {

// ST 2022-6 video, channel orders, neither: one of them by `selector`.
inline void selectBoard(uint8_t selector) {
    static const BoardModel boards[] = {
        BoardModel(DAMSON, BitstreamType::MODULE_SDI_TR04),
        BoardModel(MAPLE, BitstreamType::MODULE_SDI_ST2110),
        BoardModel(BIRCH_AES67, BitstreamType::MODULE_NA),
    };
    SystemDefaultCfg::getInstance()->setBoardModel(boards[selector % 3]);
}

inline void formatEveryLogLine() {
    static const bool configured = [] {
        Logger::getInstance()->setThreshold(7);
        Logger::getInstance()->setSink([](int, const std::string&) {});
        return true;
    }();
    (void)configured;
}

}  // namespace fuzzing
