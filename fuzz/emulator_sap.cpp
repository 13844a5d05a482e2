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

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "Emulator.h"
#include "EmulatorSap.h"
#include "FuzzSupport.h"

using namespace pimav::detail;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    formatAndDropLogLines();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    EmulatorOptions options;
    options.configDir = freshFuzzStateDir();
    Emulator emulator(options);
    EmulatorSap sap(emulator, EmulatorSapOptions());
    UdpEndpoint from;
    auto now = EmulatorSap::Clock::time_point();
    for (const std::string& packet : splitFuzzInput(std::string(reinterpret_cast<const char*>(data), size), 6)) {
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
