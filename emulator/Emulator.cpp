#include "Emulator.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
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

const Emulator::Handler Emulator::kHandlers[Aes67Commands::kCommandCount] = {
#define PIMAV_COMMAND(id, name, method, shape, access, text) &Emulator::method,
#include "api/CommandTable.def"
#undef PIMAV_COMMAND
};

// The property of each handler that the transactions, and the tests of requests without
// their members, go by: the command table's access column.
bool Emulator::changesState(uint32_t commandId) { return commandChangesState(commandId); }

Emulator::Emulator(const EmulatorOptions& options) : m_options(options), m_settings(defaultSettings()) {
    if (m_options.configDir.empty()) {
        throw std::runtime_error("no configuration directory given");
    }
    if (!makeDirectories(m_options.configDir)) {
        throw std::runtime_error("cannot create configuration directory " + m_options.configDir + ": " +
                                 std::strerror(errno));
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
    Json::Value reply = run(request);
    ErrorAuxMsg::getInstance()->clear();
    return reply;
}

// ---- helpers ----

const EmulatedSession& Emulator::findSession(const Request& r, const char* key) const {
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

EmulatedSession& Emulator::changeSession(uint64_t id) {
    const auto it = m_sessions.find(id);
    if (m_in_transaction && !m_undo.all && m_undo.changed.count(id) == 0) {
        m_undo.changed[id] = it != m_sessions.end() ? std::optional<EmulatedSession>(it->second) : std::nullopt;
    }
    EmulatedSession& session = m_sessions[id];
    session.rendered.clear();
    return session;
}

void Emulator::replaceSessions(std::map<uint64_t, EmulatedSession> sessions) {
    if (m_in_transaction && !m_undo.all) {
        rollBackSessions();
        m_undo.all = std::move(m_sessions);
    }
    m_sessions = std::move(sessions);
}

void Emulator::rollBackSessions() {
    if (m_undo.all) {
        m_sessions = std::move(*m_undo.all);
    } else {
        for (auto& [id, old] : m_undo.changed) {
            if (old) {
                m_sessions[id] = std::move(*old);
            } else {
                m_sessions.erase(id);
            }
        }
    }
    m_undo = SessionUndo();
}

uint64_t Emulator::allocateSessionId() {
    while (m_sessions.count(m_next_session_id) != 0 || m_next_session_id == 0) {
        ++m_next_session_id;
    }
    return m_next_session_id++;
}

uint64_t Emulator::allocateStreamId() { return m_next_stream_id++; }

std::set<uint64_t> Emulator::advertisedInUse() const {
    std::set<uint64_t> ids;
    for (const auto& [id, s] : m_sessions) {
        if (s.kind == EmulatedSession::RECEIVER) {
            ids.insert(s.config["rem-sid"].get("id", 0).asUInt64());
        }
    }
    return ids;
}

void Emulator::syncAdvertisedUse(const std::set<uint64_t>& before) {
    const std::set<uint64_t> now = advertisedInUse();
    for (uint64_t id : now) {
        if (before.count(id) == 0) {
            markAdvertisedUse(id, true);
        }
    }
    for (uint64_t id : before) {
        if (now.count(id) == 0) {
            markAdvertisedUse(id, false);
        }
    }
}

Json::Value Emulator::run(const Request& r) {
    const Handler handler = kHandlers[r.commandId];
    if (!changesState(r.commandId)) {
        return (this->*handler)(r);
    }
    Snapshot before{m_sessions.size(), m_next_session_id, m_next_stream_id, m_settings,
                    m_clock_counters, m_table, advertisedInUse()};
    m_in_transaction = true;
    try {
        Json::Value reply = (this->*handler)(r);
        commit(before);
        m_in_transaction = false;
        m_undo = SessionUndo();
        return reply;
    } catch (...) {
        rollBackSessions();
        m_in_transaction = false;
        m_next_session_id = before.nextSessionId;
        m_next_stream_id = before.nextStreamId;
        m_settings = std::move(before.settings);
        m_clock_counters = std::move(before.clockCounters);
        m_table = std::move(before.table);
        throw;
    }
}

void Emulator::commit(const Snapshot& before) {
    // Gain tables of sessions that are gone go with them.
    Json::Value& gains = m_settings["source-gains"];
    for (const auto& key : gains.getMemberNames()) {
        if (key != "all" && m_sessions.count(std::strtoull(key.c_str(), nullptr, 10)) == 0) {
            gains.removeMember(key);
        }
    }
    if (m_sessions.size() > m_options.maxSessions && m_sessions.size() > before.sessionCount) {
        throw CommandError(kLimitReached, "the device runs at most " + std::to_string(m_options.maxSessions) +
                                              " sessions (--max-sessions)");
    }
    const std::string text = runningText();
    if (text != m_saved_running && text.size() > m_options.maxStateBytes &&
        text.size() > m_saved_running.size()) {
        throw CommandError(kDocumentTooLarge, "the running state would take " + std::to_string(text.size()) +
                                                  " bytes, more than the " +
                                                  std::to_string(m_options.maxStateBytes) +
                                                  " the device keeps (--max-state-bytes)");
    }
    writeStateFile(m_options.configDir + "/running.json", text, m_saved_running, "the running state");
    syncAdvertisedUse(before.advertisedInUse);
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

}  // namespace pimav::detail
