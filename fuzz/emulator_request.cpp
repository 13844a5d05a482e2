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

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "Emulator.h"
#include "FuzzSupport.h"
#include "common/RequestServer.h"
#include "pimAvMngApi/platform/Logger.h"
#include "platform/IpcWire.h"

using namespace pimav::detail;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Logger::getInstance()->setThreshold(0);
    EmulatorOptions options;
    options.configDir = freshFuzzStateDir();
    Emulator emulator(options);
    for (const std::string& part : splitFuzzInput(std::string(reinterpret_cast<const char*>(data), size), 4)) {
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
