// Saved configuration commands: each position is a real JSON file in the configuration
// directory, written atomically; the start-up position is kept beside them.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "common/AtomicFile.h"
#include "Emulator.h"
#include "EmulatorSupport.h"
#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

namespace {

constexpr unsigned kUserPositions = 10;
constexpr unsigned kDefaultPos = 10;

}  // namespace

Json::Value Emulator::fileCfgSaveRunning(const Request& r) {
    const unsigned pos = requirePosition(r);
    if (pos >= kUserPositions) {
        throw CommandError(kValueRefused, "position 10 holds the system start-up configuration and cannot be saved to");
    }
    const Json::Value& doc = r.document;
    if (!doc["name"].isString() || doc["name"].asString().empty()) {
        throw CommandError(kBadRequest, "request needs a non-empty \"name\"");
    }
    requireOneLine(doc["name"], "\"name\"");
    const bool startup = optionalBool(r, "startup", false);
    Json::Value saved;
    saved["name"] = doc["name"].asString();
    saved["position"] = pos;
    saved["saved-at"] = Json::UInt64(static_cast<uint64_t>(std::time(nullptr)));
    saved["running"] = runningDocument();
    const std::string text = renderReply(saved);
    std::string error;
    if (!writeFileAtomically(positionPath(pos), text, error)) {
        Logger::log(2, "emulator: cannot save configuration %u: %s", pos, error.c_str());
        throw CommandError(kStateNotSaved, "cannot save the configuration: " + error);
    }
    m_table.setFileInfo(pos, doc["name"].asString(), static_cast<uint32_t>(text.size()));
    if (startup) {
        m_table.setStartupPosition(pos);
        persistTableMeta();
    }
    Logger::log(5, "emulator: running configuration saved at position %u [%s], %zu bytes", pos,
                doc["name"].asCString(), text.size());
    return emptyReply();
}

Json::Value Emulator::fileCfgGetRunning(const Request&) { return memberReply("running", runningDocument()); }

Json::Value Emulator::fileCfgLoadCfgToRunning(const Request& r) {
    if (optionalBool(r, "default", false)) {
        resetRunning();
        Logger::log(5, "emulator: default configuration loaded to running");
        return emptyReply();
    }
    const unsigned pos = requirePosition(r);
    if (pos == kDefaultPos) {
        resetRunning();
        return emptyReply();
    }
    const CfgFileInfo* info = m_table.getFileInfo(pos);
    if (info == nullptr || info->m_size == 0) {
        throw CommandError(kNotFound, "position " + std::to_string(pos) + " holds no saved configuration");
    }
    const std::string name = info->m_name;
    Json::Value saved;
    std::string why;
    if (parseStateFile(positionPath(pos), saved, nullptr, why) != FileRead::kRead) {
        throw CommandError(kNotFound,
                           "the file of position " + std::to_string(pos) + " cannot be read: " + why);
    }
    try {
        restoreRunning(saved["running"]);
    } catch (const CommandError& e) {
        throw CommandError(
            e.code(), "the file of position " + std::to_string(pos) + " is not a configuration: " + e.what());
    }
    Logger::log(5, "emulator: configuration %u [%s] loaded to running with %zu sessions", pos,
                name.c_str(), m_sessions.size());
    return emptyReply();
}

Json::Value Emulator::fileCfgLoadConfiguration(const Request& r) {
    const Json::Value& doc = documentOf(r);
    if (!doc.isMember("running") && !doc.isMember("sessions")) {
        throw CommandError(kBadRequest,
                           "request needs the member \"running\", or a running state with \"sessions\"");
    }
    restoreRunning(doc.isMember("running") ? doc["running"] : doc);
    return emptyReply();
}

Json::Value Emulator::fileCfgGetTable(const Request&) {
    Json::Value reply;
    m_table.Serialize(reply);
    return reply;
}

Json::Value Emulator::fileCfgSetStartupPos(const Request& r) {
    const uint64_t pos = requireId(r, "pos");
    if (pos == kDefaultPos) {
        // The system start-up configuration is always there to go back to.
        m_table.setStartupPositiontoDefault();
    } else {
        const int rc = m_table.setStartupPosition(static_cast<unsigned>(std::min<uint64_t>(pos, 0xFFFFFFFFu)));
        if (rc == kEmptyStartup) {
            throw CommandError(rc, "It is not possible to select an empty config file as startup config.");
        }
        if (rc < 0) {
            throw CommandError(rc, "position " + std::to_string(pos) + " is out of range 0..10");
        }
    }
    persistTableMeta();
    return emptyReply();
}

Json::Value Emulator::fileCfgRemoveConfig(const Request& r) {
    const unsigned pos = requirePosition(r);
    if (pos >= kUserPositions) {
        throw CommandError(kValueRefused, "the system start-up configuration cannot be removed");
    }
    const CfgFileInfo* info = m_table.getFileInfo(pos);
    if (info == nullptr || info->m_size == 0) {
        throw CommandError(kNotFound, "position " + std::to_string(pos) + " holds no saved configuration");
    }
    if (::unlink(positionPath(pos).c_str()) != 0 && errno != ENOENT) {
        const std::string cause = positionPath(pos) + ": " + std::strerror(errno);
        Logger::log(2, "emulator: cannot remove configuration %u: %s", pos, cause.c_str());
        throw CommandError(kStateNotSaved, "cannot remove the configuration: " + cause);
    }
    m_table.clearFileInfo(pos);
    persistTableMeta();
    return emptyReply();
}

}  // namespace pimav::detail
