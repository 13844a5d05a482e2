#pragma once

#include <json/json.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "AdvertisedClaims.h"
#include "common/AtomicFile.h"
#include "common/RequestServer.h"
#include "pimAvMngApi/adv/AdvSessions.h"
#include "pimAvMngApi/api/Aes67Commands.h"
#include "pimAvMngApi/device/CfgFileTable.h"

namespace pimav::detail {

// Result codes the emulator puts in the "error" member of a reply (the library's own codes).
enum EmulatorCode : int {
    kSdpRefused = -1,
    kAdvertisedNotFound = -3,
    kValueRefused = -8,
    kUnknownCodec = -11,
    kBadRequest = -13,
    kSessionIdZero = -14,
    kNotFound = -16,
    kEmptyStartup = -23,
    // The emulator's own codes, beyond the library's.
    kStateNotSaved = -30,     // the state could not be written to disk; nothing changed
    kLimitReached = -31,      // a limit of the device (sessions, advertised entries) is reached
    kDocumentTooLarge = -32,  // a document is larger or deeper than the device keeps
};

struct EmulatorOptions {
    std::string advertiseDir;  // folder of .sdp files; empty: no advertised sessions at start
    std::string configDir;     // saved configurations and the running state
    std::string board = "JUNIPER";
    std::string module = "MODULE_SDI_BIDIR_ST2110";
    std::string localAddress = "192.168.10.20";
    size_t maxSessions = 256;         // sessions the device runs at most
    size_t maxAdvertised = 1024;      // entries of the advertised-sessions table
    size_t maxStateBytes = 4u << 20;  // the running state as written (and so each saved one)
};

// One session the emulated device runs.
struct EmulatedSession {
    enum Kind { SENDER, RECEIVER, MANUAL_RECEIVER };
    uint64_t id = 0;
    Kind kind = SENDER;
    bool paused = false;
    uint64_t version = 1;
    Json::Value config;   // the request document as the device completed it
    std::string sdp;      // the session's SDP text
    Json::Value streams;  // array of stream documents (StreamData JSON forms)
    // Its text in the running state, rendered once and kept until the session changes
    // (Emulator::changeSession empties it).
    mutable std::string rendered;
};

// The emulated device: its state and one handler per command id. Every handler either
// returns the reply document or throws CommandError; state that a command changes is
// written to disk before the reply leaves.
class Emulator {
public:
    explicit Emulator(const EmulatorOptions& options);

    // Answers one decoded request. Throws CommandError for a refused request.
    Json::Value handle(const Request& request);

    // Reloads the advertised sessions from the advertise folder. Returns the number of
    // files accepted.
    int reloadAdvertised();

    // Advertised sessions from any source (see AdvertisedClaims): `claim` stores or
    // refreshes the entry of its SDP's session id, or waits while another source holds that
    // id. `id` receives the session id; `why` the reason of a refusal.
    enum class Advertised { Stored, Waiting, Refused };
    Advertised advertise(const AdvertisedClaim& claim, uint64_t& id, std::string& why);
    // The source `key` withdraws its advertisement of `id`: a waiting claim takes the entry
    // over, else it is removed (kept as stale while a receiver uses it).
    void withdrawAdvertised(uint64_t id, const std::string& key);
    const AdvertisedClaims& advertisedClaims() const { return m_claims; }

    // A member added to the reply of command 48 (internal debug information).
    void addDebugSection(const std::string& name, std::function<Json::Value()> section);

    const std::map<uint64_t, EmulatedSession>& sessions() const { return m_sessions; }

    // True for the commands that change the device's state (sessions, settings, saved
    // configurations, advertised entries). handle() runs each of them as a transaction:
    // the handler checks the whole request, then changes the state in memory; the change
    // is then written to disk, and put back in memory when anything of that fails.
    static bool changesState(uint32_t commandId);

private:
    using Handler = Json::Value (Emulator::*)(const Request&);
    static const Handler kHandlers[Aes67Commands::kCommandCount];

    // What a state-changing command may change, copied before it runs; the sessions,
    // which may be many, are recorded as the command changes them (m_undo).
    struct Snapshot {
        size_t sessionCount;
        uint64_t nextSessionId;
        uint64_t nextStreamId;
        Json::Value settings;
        Json::Value clockCounters;
        CfgFileTable table;
        std::set<uint64_t> advertisedInUse;
    };
    // The sessions as they were before the running transaction changed them: all of them
    // once replaced, else the old value of each one changed (none: it did not exist).
    struct SessionUndo {
        std::optional<std::map<uint64_t, EmulatedSession>> all;
        std::map<uint64_t, std::optional<EmulatedSession>> changed;
    };
    // Runs the handler of `r`, as a transaction when the command changes state.
    Json::Value run(const Request& r);
    // Ends a transaction: drops what removed sessions leave behind, checks the limits,
    // writes the running state when it changed, and updates the advertised entries that
    // receivers use. Throws CommandError when the change cannot be kept.
    void commit(const Snapshot& before);

    // One handler per command, named by its row of the command table.
#define PIMAV_COMMAND(id, name, method, shape, access, text) Json::Value method(const Request& r);
#include "api/CommandTable.def"
#undef PIMAV_COMMAND

    // Helpers.
    void applyBoard();
    const EmulatedSession& findSession(const Request& r, const char* key = "id") const;
    // The session `id` (created when absent) for a transaction to change; its old value is
    // recorded first. Every change of a session goes through here or replaceSessions.
    EmulatedSession& changeSession(uint64_t id);
    void replaceSessions(std::map<uint64_t, EmulatedSession> sessions);
    void rollBackSessions();
    uint64_t allocateSessionId();
    // A session of `kind` with the next free id, which `cfg` gets as "session-id", and with
    // `cfg` as its configuration; a configuration without a name is named "<unnamed> <id>".
    EmulatedSession newSession(EmulatedSession::Kind kind, Json::Value& cfg, const char* unnamed);
    // Reads the request's object `key` over the current setting `key` and keeps it.
    Json::Value mergeSetting(const Request& r, const char* key);
    uint64_t allocateStreamId();
    void buildSenderStreams(EmulatedSession& session);
    void refreshSenderSdp(EmulatedSession& session);
    Json::Value receiverStreamFromSdp(const std::string& sdpText, unsigned mediaIndex, uint64_t streamId,
                                      const Json::Value& channels);
    SdpSession parseCheckedSdp(const std::string& sdpText);
    std::string checkUserSdp(const std::string& sdpText);
    // The advertised sessions that receivers take their stream from.
    std::set<uint64_t> advertisedInUse() const;
    // Marks the advertised sessions that receivers started or stopped using since `before`.
    void syncAdvertisedUse(const std::set<uint64_t>& before);
    bool advertisedSdp(uint64_t id, std::string& sdp, std::string& url) const;
    // Stores `claim` in the table; false, with the reason in `why`, when it is refused.
    bool storeAdvertised(const AdvertisedClaim& claim, std::string& why);
    // Drops the sources of `id` once its entry has left the table.
    void forgetIfGone(uint64_t id);
    void markAdvertisedUse(uint64_t id, bool used);
    Json::Value sessionListReply(bool senders) const;
    Json::Value gainReply(const char* table, const Request& r, unsigned command);

    Json::Value runningDocument() const;
    // The compact text of runningDocument(), from the sessions' kept texts.
    std::string runningText() const;
    // Replaces the running state with a running state document, which is checked whole
    // first (CommandError naming the member refused).
    void restoreRunning(const Json::Value& running);
    void resetRunning();
    void loadPersisted();
    // Reads a JSON object from a state file of the configuration directory: a regular file
    // of bounded size, parsed inside the error handling (`why` tells a refusal).
    FileRead parseStateFile(const std::string& path, Json::Value& doc, size_t* size, std::string& why) const;
    // The same at start-up: a file that cannot be read is set aside as "<path>.bad" and
    // logged. Returns false for such a file and for one that is absent.
    bool readStateFile(const std::string& path, Json::Value& doc, size_t* size = nullptr);
    void setAside(const std::string& path, const std::string& why);
    // Reads a saved configuration document: its name, and its running state checked.
    std::string checkSavedConfiguration(const Json::Value& saved) const;
    std::string positionPath(unsigned pos) const;
    // Writes the start-up position when it changed (CommandError kStateNotSaved if not).
    void persistTableMeta();
    // Writes `text` to `path` unless it is `lastWritten`; a failed write is logged with
    // its cause and refused with kStateNotSaved.
    void writeStateFile(const std::string& path, const std::string& text, std::string& lastWritten,
                        const char* what);

    EmulatorOptions m_options;
    std::map<uint64_t, EmulatedSession> m_sessions;
    SessionUndo m_undo;
    bool m_in_transaction = false;
    uint64_t m_next_session_id = 1;
    uint64_t m_next_stream_id = 1;
    Json::Value m_settings;       // clock, global, interface settings, gains
    Json::Value m_clock_counters; // counters of the system clock (reset by command 39)
    // The texts last written to (or read from) running.json and startup.json.
    std::string m_saved_running;
    std::string m_saved_meta;

    // Saved configurations: name and size per position, start-up position. The files of
    // positions 0..9 are the table's paths inside the configuration directory.
    CfgFileTable m_table;

    // Advertised sessions, their sources, and the session id each file of the advertise
    // folder claims (withdrawn when the file disappears).
    AdvSessions m_advertised;
    AdvertisedClaims m_claims;
    std::map<std::string, uint64_t> m_advertised_files;

    std::vector<std::pair<std::string, std::function<Json::Value()>>> m_debug_sections;
};

}  // namespace pimav::detail
