// The emulator's state on disk: the running state and the start-up position written when
// they change, and everything read back at start-up, where a file that cannot be read is
// set aside and the daemon starts with the rest.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Emulator.h"
#include "EmulatorSupport.h"
#include "common/AtomicFile.h"
#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

namespace {

constexpr unsigned kDefaultPosition = 10;
// A saved configuration holds a running state and its name: room for the name.
constexpr size_t kSavedFileMargin = 1u << 20;
// Documents the emulator writes are at most kMaxStoredDepth deep inside a few wrapping
// levels; a deeper file did not come from the emulator and is refused early.
constexpr int kReadDepthLimit = 128;

const char* kindName(EmulatedSession::Kind kind) {
    return kind == EmulatedSession::SENDER     ? "sender"
           : kind == EmulatedSession::RECEIVER ? "receiver"
                                               : "manual-receiver";
}

}  // namespace

std::string Emulator::positionPath(unsigned pos) const {
    const CfgFileInfo* info = m_table.getFileInfo(pos);
    return info != nullptr ? info->m_path : std::string();
}

namespace {

Json::Value sessionDocument(const EmulatedSession& s) {
    Json::Value e;
    e["id"] = Json::UInt64(s.id);
    e["kind"] = kindName(s.kind);
    e["paused"] = s.paused;
    e["version"] = Json::UInt64(s.version);
    e["config"] = s.config;
    e["sdp"] = s.sdp;
    e["streams"] = s.streams;
    return e;
}

}  // namespace

Json::Value Emulator::runningDocument() const {
    Json::Value doc(Json::objectValue);
    doc["next-session-id"] = Json::UInt64(m_next_session_id);
    doc["next-stream-id"] = Json::UInt64(m_next_stream_id);
    Json::Value list(Json::arrayValue);
    for (const auto& entry : m_sessions) {
        list.append(sessionDocument(entry.second));
    }
    doc["sessions"] = list;
    doc["settings"] = m_settings;
    return doc;
}

std::string Emulator::runningText() const {
    // Members in the writer's order (sorted by name), so that the text is the one that
    // renderReply(runningDocument()) gives.
    std::string text = "{\"next-session-id\":" + std::to_string(m_next_session_id) +
                       ",\"next-stream-id\":" + std::to_string(m_next_stream_id) + ",\"sessions\":[";
    for (const auto& entry : m_sessions) {
        const EmulatedSession& s = entry.second;
        if (s.rendered.empty()) {
            s.rendered = renderReply(sessionDocument(s));
        }
        text += s.rendered;
        text += ',';
    }
    if (!m_sessions.empty()) {
        text.pop_back();
    }
    return text + "],\"settings\":" + renderReply(m_settings) + "}";
}

void Emulator::resetRunning() {
    replaceSessions({});
    m_settings = defaultSettings();
}

void Emulator::restoreRunning(const Json::Value& running) {
    RunningState state = readRunningState(running);
    replaceSessions(std::move(state.sessions));
    m_settings = std::move(state.settings);
    uint64_t maxStream = 0;
    for (const auto& [id, s] : m_sessions) {
        m_next_session_id = std::max(m_next_session_id, id + 1);
        for (const auto& st : s.streams) {
            maxStream = std::max<uint64_t>(maxStream, st.get("id", 0).asUInt64());
        }
    }
    m_next_stream_id = std::max({m_next_stream_id, maxStream + 1, state.nextStreamId});
    m_next_session_id = std::max(m_next_session_id, state.nextSessionId);
}

void Emulator::writeStateFile(const std::string& path, const std::string& text, std::string& lastWritten,
                              const char* what) {
    if (text == lastWritten) {
        return;
    }
    std::string error;
    if (!writeFileAtomically(path, text, error)) {
        Logger::log(2, "emulator: cannot save %s: %s", what, error.c_str());
        throw CommandError(kStateNotSaved, std::string("cannot save ") + what + ": " + error);
    }
    lastWritten = text;
}

void Emulator::persistTableMeta() {
    Json::Value meta;
    meta["startup"] = m_table.getStartupPosition();
    writeStateFile(m_options.configDir + "/startup.json", renderReply(meta), m_saved_meta,
                   "the start-up position");
}

Json::Value Emulator::mergeSetting(const Request& r, const char* key) {
    // Members not given keep their value: the request is read over the current settings.
    m_settings[key] = readSetting(key, requireObjectMember(r, key), m_settings[key], memberPath("", key));
    return emptyReply();
}

// ---- start-up ----

void Emulator::setAside(const std::string& path, const std::string& why) {
    const std::string aside = path + ".bad";
    if (std::rename(path.c_str(), aside.c_str()) == 0) {
        Logger::log(2, "emulator: set aside unreadable file %s as %s: %s", path.c_str(), aside.c_str(),
                    why.c_str());
    } else {
        Logger::log(2, "emulator: ignoring unreadable file %s (%s), which cannot be set aside: %s",
                    path.c_str(), why.c_str(), std::strerror(errno));
    }
}

FileRead Emulator::parseStateFile(const std::string& path, Json::Value& doc, size_t* size,
                                  std::string& why) const {
    std::string text;
    const FileRead read = readRegularFile(path, m_options.maxStateBytes + kSavedFileMargin, text, why);
    if (read != FileRead::kRead) {
        return read;
    }
    Json::CharReaderBuilder builder;
    builder["stackLimit"] = kReadDepthLimit;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &doc, &why) && !doc.isObject()) {
            why = "not a JSON object";
        }
    } catch (const std::exception& e) {
        why = e.what();
    }
    if (size != nullptr) {
        *size = text.size();
    }
    return why.empty() ? FileRead::kRead : FileRead::kRefused;
}

bool Emulator::readStateFile(const std::string& path, Json::Value& doc, size_t* size) {
    std::string why;
    const FileRead read = parseStateFile(path, doc, size, why);
    if (read == FileRead::kRefused) {
        setAside(path, why);
    }
    return read == FileRead::kRead;
}

std::string Emulator::checkSavedConfiguration(const Json::Value& saved) const {
    if (!saved["name"].isString() || saved["name"].asString().empty()) {
        throw CommandError(kBadRequest, "a saved configuration needs a non-empty \"name\"");
    }
    requireOneLine(saved["name"], "\"name\"");
    try {
        readRunningState(saved["running"]);
    } catch (const CommandError& e) {
        throw CommandError(e.code(), std::string("\"running\": ") + e.what());
    }
    return saved["name"].asString();
}

void Emulator::loadPersisted() {
    const std::string& dir = m_options.configDir;
    for (const std::string& name : removeLeftoverTemporaryFiles(dir)) {
        Logger::log(4, "emulator: removed %s/%s, left by an interrupted write", dir.c_str(), name.c_str());
    }
    for (unsigned pos = 0; pos < kDefaultPosition; ++pos) {
        const std::string path = positionPath(pos);
        Json::Value saved;
        size_t size = 0;
        if (!readStateFile(path, saved, &size)) {
            continue;
        }
        try {
            const std::string name = checkSavedConfiguration(saved);
            m_table.setFileInfo(pos, name, static_cast<uint32_t>(size));
            Logger::log(5, "emulator: saved configuration %u [%s] found, %zu bytes", pos, name.c_str(), size);
        } catch (const std::exception& e) {
            setAside(path, e.what());
        }
    }
    const std::string metaPath = dir + "/startup.json";
    Json::Value meta;
    if (readStateFile(metaPath, meta)) {
        const Json::Value& pos = meta["startup"];
        if (!pos.isUInt() || pos.asUInt() > kDefaultPosition) {
            setAside(metaPath, "\"startup\" must be a position 0..10");
        } else if (pos.asUInt() != kDefaultPosition && m_table.setStartupPosition(pos.asUInt()) != 0) {
            Logger::log(2, "emulator: start-up position %u holds no saved configuration; the default is used",
                        pos.asUInt());
        } else {
            m_saved_meta = renderReply(meta);
        }
    }
    Json::Value running;
    const std::string runningPath = dir + "/running.json";
    if (readStateFile(runningPath, running)) {
        try {
            restoreRunning(running);
            m_saved_running = runningText();
            Logger::log(5, "emulator: running state restored with %zu sessions", m_sessions.size());
        } catch (const std::exception& e) {
            setAside(runningPath, e.what());
        }
    }
    if (m_saved_running.empty() && !m_table.isStartupTheDefault()) {
        // Without a running state, the start-up configuration (checked above) is loaded.
        const unsigned pos = m_table.getStartupPosition();
        Json::Value saved;
        try {
            if (readStateFile(positionPath(pos), saved)) {
                restoreRunning(saved["running"]);
                Logger::log(5, "emulator: start-up configuration %u loaded", pos);
            }
        } catch (const std::exception& e) {
            setAside(positionPath(pos), e.what());
        }
    }
    syncAdvertisedUse({});
}

}  // namespace pimav::detail
