// SDP side of the emulated device: the SDP text of sender sessions, receivers built from
// advertised or user SDP, and the advertised-sessions table fed from a folder of files.

#include <dirent.h>

#include <algorithm>

#include "AtomicFile.h"
#include "Emulator.h"
#include "EmulatorSupport.h"
#include "pimAvMngApi/platform/Logger.h"

namespace emu {

void Emulator::refreshSenderSdp(EmulatedSession& session) { session.sdp.clear(); }

std::string Emulator::checkUserSdp(const std::string&) {
    throw CommandError(-7, "SDP text cannot be checked by this build");
}

Json::Value Emulator::receiverStreamFromSdp(const std::string&, unsigned, uint64_t, const Json::Value&) {
    throw CommandError(-7, "SDP text cannot be read by this build");
}

int Emulator::reloadAdvertised() { return 0; }

Json::Value Emulator::getAdvertisedSessionList(const Request&) {
    Json::Value reply;
    reply["list"] = Json::Value();
    return reply;
}

Json::Value Emulator::removeExternalAdvertisement(const Request& r) {
    const uint64_t id = requireId(r, "id");
    auto it = m_advertised.find(id);
    if (it == m_advertised.end()) {
        throw CommandError(kAdvertisedNotFound, "no advertised session with id " + std::to_string(id));
    }
    m_advertised.erase(it);
    return emptyReply();
}

}  // namespace emu
