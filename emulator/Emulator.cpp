#include "Emulator.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>

#include "EmulatorSupport.h"
#include "api/CommandTable.h"
#include "common/AtomicFile.h"
#include "common/ModuleOption.h"
#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/model/VolumeGainApi.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"

namespace pimav::detail {

namespace {

constexpr unsigned kDefaultPosition = 10;

}  // namespace

const Emulator::Handler Emulator::kHandlers[Aes67Commands::kCommandCount] = {
#define PIMAV_COMMAND(id, name, method, shape, access, text) &Emulator::method,
#include "api/CommandTable.def"
#undef PIMAV_COMMAND
};

Emulator::Emulator(const EmulatorOptions& options) : m_options(options), m_settings(defaultSettings()) {
    if (m_options.configDir.empty()) {
        throw std::runtime_error("no configuration directory given");
    }
    if (!makeDirectories(m_options.configDir)) {
        throw std::runtime_error("cannot create configuration directory " + m_options.configDir);
    }
    applyBoard();
    // The table takes its file paths from the board and directory just set.
    m_table = CfgFileTable();
    loadPersisted();
    reloadAdvertised();
}

Json::Value Emulator::handle(const Request& request) {
    if (request.commandId >= Aes67Commands::kCommandCount) {
        throw CommandError(kBadRequest, "unknown command id " + std::to_string(request.commandId));
    }
    ErrorAuxMsg::getInstance()->clear();
    if (Logger::isEnabled(7)) {
        Logger::log(7, "emulator: command %u request %s", request.commandId,
                    request.hasDocument ? renderReply(request.document).c_str() : "(none)");
    }
    Json::Value reply = (this->*kHandlers[request.commandId])(request);
    ErrorAuxMsg::getInstance()->clear();
    return reply;
}

// ---- helpers ----

EmulatedSession& Emulator::findSession(const Request& r, const char* key) {
    const uint64_t id = requireId(r, key);
    if (id == 0) {
        throw CommandError(kSessionIdZero, "session id 0 names no session");
    }
    auto it = m_sessions.find(id);
    if (it == m_sessions.end()) {
        throw CommandError(kNotFound, "no session with id " + std::to_string(id));
    }
    return it->second;
}

uint64_t Emulator::allocateSessionId() {
    while (m_sessions.count(m_next_session_id) != 0 || m_next_session_id == 0) {
        ++m_next_session_id;
    }
    return m_next_session_id++;
}

uint64_t Emulator::allocateStreamId() { return m_next_stream_id++; }

void Emulator::releaseAdvertisedUse(const EmulatedSession& session) {
    if (session.kind != EmulatedSession::RECEIVER) {
        return;
    }
    const uint64_t remote = session.config["rem-sid"].get("id", 0).asUInt64();
    const bool stillUsed = std::any_of(m_sessions.begin(), m_sessions.end(), [&](const auto& entry) {
        return entry.second.id != session.id && entry.second.kind == EmulatedSession::RECEIVER &&
               entry.second.config["rem-sid"].get("id", 0).asUInt64() == remote;
    });
    if (!stillUsed) {
        markAdvertisedUse(remote, false);
    }
}

void Emulator::applyBoard() {
    BoardModelType model = JUNIPER;
    if (!boardModelTypeFromString(m_options.board, model)) {
        throw std::runtime_error("unknown board model " + m_options.board);
    }
    BitstreamType::module_t module = BitstreamType::MODULE_NA;
    if (!moduleFromOption(m_options.module, module)) {
        throw std::runtime_error("unknown board module " + m_options.module);
    }
    // Normalise the option texts to the enumerator names used for file prefixes.
    m_options.board = boardModelTypeToString(model);
    m_options.module = moduleOptionName(module);
    SystemDefaultCfg::getInstance()->setBoardModel(BoardModel(model, module));
    SystemDefaultCfg::getInstance()->setCfgFilePath(m_options.configDir);
}

// ---- persistence ----

std::string Emulator::positionPath(unsigned pos) const {
    const CfgFileInfo* info = m_table.getFileInfo(pos);
    return info != nullptr ? info->m_path : std::string();
}

Json::Value Emulator::runningDocument() const {
    Json::Value doc(Json::objectValue);
    doc["next-session-id"] = Json::UInt64(m_next_session_id);
    doc["next-stream-id"] = Json::UInt64(m_next_stream_id);
    Json::Value list(Json::arrayValue);
    for (const auto& [id, s] : m_sessions) {
        Json::Value e;
        e["id"] = Json::UInt64(id);
        e["kind"] = s.kind == EmulatedSession::SENDER ? "sender"
                    : s.kind == EmulatedSession::RECEIVER ? "receiver"
                                                          : "manual-receiver";
        e["paused"] = s.paused;
        e["version"] = Json::UInt64(s.version);
        e["config"] = s.config;
        e["sdp"] = s.sdp;
        e["streams"] = s.streams;
        list.append(e);
    }
    doc["sessions"] = list;
    doc["settings"] = m_settings;
    return doc;
}

void Emulator::resetRunning() {
    for (const auto& entry : m_sessions) {
        releaseAdvertisedUse(entry.second);
    }
    m_sessions.clear();
    m_settings = defaultSettings();
}

void Emulator::restoreRunning(const Json::Value& running) {
    if (!running.isObject()) {
        throw CommandError(kBadRequest, "a configuration must be a JSON object");
    }
    std::map<uint64_t, EmulatedSession> sessions;
    const Json::Value& list = running["sessions"];
    if (!list.isNull() && !list.isArray()) {
        throw CommandError(kBadRequest, "\"sessions\" must be an array");
    }
    for (const auto& e : list) {
        if (!e.isObject() || !e["id"].isUInt64() || e["id"].asUInt64() == 0) {
            throw CommandError(kBadRequest, "every saved session needs a non-zero \"id\"");
        }
        EmulatedSession s;
        s.id = e["id"].asUInt64();
        const std::string kind = e.get("kind", "sender").asString();
        s.kind = kind == "receiver"          ? EmulatedSession::RECEIVER
                 : kind == "manual-receiver" ? EmulatedSession::MANUAL_RECEIVER
                                             : EmulatedSession::SENDER;
        s.paused = e.get("paused", false).asBool();
        s.version = e.get("version", 1).asUInt64();
        s.config = e["config"];
        s.sdp = e.get("sdp", "").asString();
        s.streams = e["streams"].isArray() ? e["streams"] : Json::Value(Json::arrayValue);
        sessions[s.id] = s;
    }
    Json::Value settings = defaultSettings();
    if (running["settings"].isObject()) {
        for (const auto& key : running["settings"].getMemberNames()) {
            settings[key] = running["settings"][key];
        }
    }
    resetRunning();
    m_sessions = std::move(sessions);
    m_settings = settings;
    uint64_t maxStream = 0;
    for (auto& [id, s] : m_sessions) {
        m_next_session_id = std::max(m_next_session_id, id + 1);
        for (const auto& st : s.streams) {
            maxStream = std::max<uint64_t>(maxStream, st.get("id", 0).asUInt64());
        }
        if (s.kind == EmulatedSession::RECEIVER) {
            markAdvertisedUse(s.config["rem-sid"].get("id", 0).asUInt64(), true);
        }
    }
    m_next_stream_id = std::max(m_next_stream_id, maxStream + 1);
    m_next_session_id = std::max<uint64_t>(m_next_session_id, running.get("next-session-id", 1).asUInt64());
    m_next_stream_id = std::max<uint64_t>(m_next_stream_id, running.get("next-stream-id", 1).asUInt64());
}

void Emulator::persistRunning() {
    std::string error;
    if (!writeFileAtomically(m_options.configDir + "/running.json", runningDocument().toStyledString(), error)) {
        Logger::log(2, "emulator: cannot save the running state: %s", error.c_str());
    }
}

Json::Value Emulator::acknowledgeChange() {
    persistRunning();
    return emptyReply();
}

Json::Value Emulator::mergeSetting(const Request& r, const char* key, IJsonSerializable& record) {
    // Members not given keep their value: the request is read over the current settings.
    const Json::Value& given = requireObjectMember(r, key);
    m_settings[key] = throughRecord(record, mergedOver(m_settings[key], given), std::string("\"") + key + "\" cannot be read");
    return acknowledgeChange();
}

void Emulator::persistTableMeta() {
    Json::Value meta;
    meta["startup"] = m_table.getStartupPosition();
    std::string error;
    if (!writeFileAtomically(m_options.configDir + "/startup.json", meta.toStyledString(), error)) {
        Logger::log(2, "emulator: cannot save the start-up position: %s", error.c_str());
    }
}

void Emulator::loadPersisted() {
    Json::CharReaderBuilder builder;
    auto parse = [&](const std::string& path, Json::Value& out) {
        std::string text;
        if (!readWholeFile(path, text)) {
            return false;
        }
        std::string errors;
        std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        if (!reader->parse(text.data(), text.data() + text.size(), &out, &errors)) {
            Logger::log(2, "emulator: ignoring unreadable file %s: %s", path.c_str(), errors.c_str());
            return false;
        }
        return true;
    };
    for (unsigned pos = 0; pos < kDefaultPosition; ++pos) {
        Json::Value saved;
        struct stat st {};
        const std::string path = positionPath(pos);
        if (::stat(path.c_str(), &st) == 0 && parse(path, saved) && saved.isObject()) {
            const std::string name = saved.get("name", "").asString();
            m_table.setFileInfo(pos, name, static_cast<uint32_t>(st.st_size));
            Logger::log(5, "emulator: saved configuration %u [%s] found, %u bytes", pos, name.c_str(),
                        static_cast<unsigned>(st.st_size));
        }
    }
    Json::Value meta;
    if (parse(m_options.configDir + "/startup.json", meta) && meta.isObject()) {
        const unsigned pos = meta.get("startup", kDefaultPosition).asUInt();
        if (pos != kDefaultPosition) {
            m_table.setStartupPosition(pos);
        }
    }
    Json::Value running;
    try {
        if (parse(m_options.configDir + "/running.json", running)) {
            restoreRunning(running);
            Logger::log(5, "emulator: running state restored with %zu sessions", m_sessions.size());
        } else if (!m_table.isStartupTheDefault()) {
            Json::Value saved;
            const unsigned pos = m_table.getStartupPosition();
            if (parse(positionPath(pos), saved)) {
                restoreRunning(saved["running"]);
                Logger::log(5, "emulator: start-up configuration %u loaded", pos);
            }
        }
    } catch (const CommandError& e) {
        Logger::log(2, "emulator: persisted state refused: %s", e.what());
    }
}

}  // namespace pimav::detail
