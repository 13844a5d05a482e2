#pragma once

// What the harnesses share: quiet log formatting, the boards whose SDP rules differ, a state
// folder in memory, and the split of one input into several messages.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"

namespace pimav::detail {

// Every log line is formatted, then dropped: the formatting runs, the output stays quiet.
inline void formatAndDropLogLines() {
    static const bool configured = [] {
        Logger::getInstance()->setThreshold(7);
        Logger::getInstance()->setSink([](int, const std::string&) {});
        return true;
    }();
    (void)configured;
}

// ST 2022-6 video, channel orders, neither: one of them by `selector`.
inline void selectBoard(uint8_t selector) {
    static const BoardModel boards[] = {
        BoardModel(DAMSON, BitstreamType::MODULE_SDI_TR04),
        BoardModel(MAPLE, BitstreamType::MODULE_SDI_ST2110),
        BoardModel(BIRCH_AES67, BitstreamType::MODULE_NA),
    };
    SystemDefaultCfg::getInstance()->setBoardModel(boards[selector % 3]);
}

// An empty state folder in memory (/dev/shm when present), the same one for every input, so
// that a finding replays from its input alone.
inline std::string freshFuzzStateDir() {
    static const std::string root = [] {
        std::string pattern = (access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/emu-fuzz-XXXXXX");
        return std::string(::mkdtemp(pattern.data()));
    }();
    const std::string dir = root + "/state";
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
    return dir;
}

// At most `limit` parts of `input`, separated by a line "--".
inline std::vector<std::string> splitFuzzInput(const std::string& input, size_t limit) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (parts.size() < limit) {
        const size_t sep = input.find("\n--\n", start);
        parts.push_back(input.substr(start, sep == std::string::npos ? std::string::npos : sep - start));
        if (sep == std::string::npos) {
            break;
        }
        start = sep + 4;
    }
    return parts;
}

}  // namespace pimav::detail
