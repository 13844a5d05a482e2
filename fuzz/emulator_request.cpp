// Feeds arbitrary request sequences to the emulator's command handlers, as the daemon's
// request loop would: frames decoded, then handled, a CommandError (or the JSON
// library's exception for a member of the wrong kind) answered as an error reply.
// A crash, a leak, undefined behaviour or any other exception is a finding.
//
// Input: up to four requests separated by a line "--"; each request is one byte of
// command id (taken modulo 64, so unknown ids are reached too) followed by the request
// document text. Every input runs against a fresh emulator whose state lives in memory
// (/dev/shm when present), so that a finding replays from its input alone.

#include <json/json.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "Emulator.h"
#include "common/RequestServer.h"
#include "pimAvMngApi/platform/Logger.h"
#include "platform/IpcWire.h"

using namespace pimav::detail;

namespace {

std::string stateRoot() {
    static const std::string root = [] {
        std::string pattern = (access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/emu-fuzz-XXXXXX");
        return std::string(::mkdtemp(pattern.data()));
    }();
    return root;
}

std::vector<std::string> splitRequests(const std::string& input) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (parts.size() < 4) {
        const size_t sep = input.find("\n--\n", start);
        parts.push_back(input.substr(start, sep == std::string::npos ? std::string::npos : sep - start));
        if (sep == std::string::npos) {
            break;
        }
        start = sep + 4;
    }
    return parts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Logger::getInstance()->setThreshold(0);
    const std::string dir = stateRoot() + "/state";
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
    EmulatorOptions options;
    options.configDir = dir;
    Emulator emulator(options);
    for (const std::string& part : splitRequests(std::string(reinterpret_cast<const char*>(data), size))) {
        if (part.empty()) {
            continue;
        }
        try {
            emulator.handle(decodeRequest({encodeCommandId(static_cast<uint8_t>(part[0]) % 64u), part.substr(1)}));
        } catch (const CommandError&) {
        } catch (const Json::LogicError&) {
            // A member of the wrong kind: the request loop answers it with an error reply.
        }
    }
    return 0;
}
