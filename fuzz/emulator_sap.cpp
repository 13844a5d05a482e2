// Feeds arbitrary SAP packets to the emulator, as its listening socket would: decoded,
// counted or refused, then kept in the advertised-sessions table through the directory and
// the sources' claims. After the last packet every session is let expire: the table, the
// directory and the waiting claims must then be empty. Every log line is formatted (into a
// sink that drops it). A crash, a leak, undefined behaviour, an exception or a session left
// behind is a finding.
//
// Input: up to six packets separated by a line "--", heard 30 s apart. Every input runs
// against a fresh emulator whose state lives in memory (/dev/shm when present), so that a
// finding replays from its input alone.

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "Emulator.h"
#include "EmulatorSap.h"
#include "pimAvMngApi/platform/Logger.h"

using namespace pimav::detail;

namespace {

std::string stateRoot() {
    static const std::string root = [] {
        std::string pattern = (access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/emu-sap-fuzz-XXXXXX");
        return std::string(::mkdtemp(pattern.data()));
    }();
    return root;
}

std::vector<std::string> splitPackets(const std::string& input) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (parts.size() < 6) {
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

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Logger::getInstance()->setThreshold(7);  // format every line, then drop it
    Logger::getInstance()->setSink([](int, const std::string&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string dir = stateRoot() + "/state";
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
    EmulatorOptions options;
    options.configDir = dir;
    Emulator emulator(options);
    EmulatorSap sap(emulator, EmulatorSapOptions());
    UdpEndpoint from;
    auto now = EmulatorSap::Clock::time_point();
    for (const std::string& packet : splitPackets(std::string(reinterpret_cast<const char*>(data), size))) {
        sap.receive(reinterpret_cast<const uint8_t*>(packet.data()), packet.size(), kSapPort, from, now);
        now += std::chrono::seconds(30);
    }
    sap.tick(now + std::chrono::hours(1000));
    Request list;
    list.commandId = 7;
    if (sap.status()["heard-sessions"].asUInt64() != 0 || emulator.advertisedClaims().waiting() != 0 ||
        !emulator.handle(list)["list"].empty()) {
        std::abort();
    }
    return 0;
}
