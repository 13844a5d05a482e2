// Feeds arbitrary bytes to the SAP decoder. An accepted packet must encode and decode back
// to itself, and goes through a listener's directory as an announcement, a re-announcement,
// a deletion and an expiry. Every log line is formatted (into a sink that drops it). A
// crash, a leak, undefined behaviour or a round trip that changes the packet is a finding;
// refusals are not.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "sap/SapDirectory.h"
#include "sap/SapPacket.h"

using namespace pimav::detail;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    formatAndDropLogLines();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    SapPacket packet;
    if (decodeSap(data, size, packet) != SapError::None) {
        return 0;
    }
    SapPacket again;
    if (decodeSap(encodeSap(packet), again) != SapError::None || !(again == packet)) {
        std::abort();
    }

    size_t changes = 0;
    SapDirectory directory([&](const SapChange&) { ++changes; });
    const auto now = SapDirectory::Clock::time_point();
    directory.feed(packet, kSapPort, now);
    packet.hash = static_cast<uint16_t>(packet.hash + 1);
    directory.feed(packet, kSapPort, now + std::chrono::seconds(30));
    packet.type = packet.type == SapMessageType::Delete ? SapMessageType::Announce : SapMessageType::Delete;
    directory.feed(packet, kSapPort, now + std::chrono::seconds(60));
    directory.expire(now + std::chrono::hours(2));
    if (directory.size() != 0) {
        std::abort();
    }
    return 0;
}
