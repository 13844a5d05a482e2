#pragma once

// The emulator in-process for its own tests: a fresh state folder, requests as the daemon
// decodes them, refusals as the reply documents they become.

#include <dirent.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Emulator.h"
#include "common/RequestServer.h"

namespace pimav::detail {

inline std::string tempDir(const char* tag) {
    std::string pattern = std::string("/tmp/pimav-emu-") + tag + "-XXXXXX";
    return ::mkdtemp(pattern.data());
}

// Emulator options with a fresh state folder and, when given, an advertise folder.
inline EmulatorOptions freshOptions(const char* tag, const std::string& advertiseDir = "") {
    EmulatorOptions options;
    options.configDir = tempDir(tag);
    options.advertiseDir = advertiseDir;
    return options;
}

inline std::vector<std::string> filesIn(const std::string& dir) {
    std::vector<std::string> names;
    DIR* d = ::opendir(dir.c_str());
    while (dirent* e = d != nullptr ? ::readdir(d) : nullptr) {
        if (e->d_name[0] != '.') {
            names.emplace_back(e->d_name);
        }
    }
    if (d != nullptr) {
        ::closedir(d);
    }
    return names;
}

inline std::string fileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Command `id` with the request document `json` (none when empty); a refusal gives its
// error reply.
inline Json::Value call(Emulator& emulator, unsigned id, const std::string& json = "") {
    Request request;
    try {
        if (!json.empty()) {
            request = decodeRequest({std::string("\0\0\0\0", 4), json});
        }
        request.commandId = id;
        return emulator.handle(request);
    } catch (const CommandError& e) {
        return errorReply(e.code(), e.what(), e.userMessages());
    }
}

}  // namespace pimav::detail
