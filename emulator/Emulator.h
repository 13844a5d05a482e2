#pragma once

#include <json/json.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "common/RequestServer.h"
#include "pimAvMngApi/api/Aes67Commands.h"
#include "pimAvMngApi/adv/AdvSessions.h"
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
};

struct EmulatorOptions {
    std::string advertiseDir;  // folder of .sdp files; empty: no advertised sessions at start
    std::string configDir;     // saved configurations and the running state
    std::string board = "JUNIPER";
    std::string module = "MODULE_SDI_BIDIR_ST2110";
    std::string localAddress = "192.168.10.20";
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

    const std::map<uint64_t, EmulatedSession>& sessions() const { return m_sessions; }

private:
    using Handler = Json::Value (Emulator::*)(const Request&);
    static const Handler kHandlers[Aes67Commands::kCommandCount];

    // One handler per command, named by its row of the command table.
#define PIMAV_COMMAND(id, name, method, shape, access, text) Json::Value method(const Request& r);
#include "api/CommandTable.def"
#undef PIMAV_COMMAND

    // Helpers.
    void applyBoard();
    EmulatedSession& findSession(const Request& r, const char* key = "id");
    uint64_t allocateSessionId();
    // A session of `kind` with the next free id, which `cfg` gets as "session-id", and with
    // `cfg` as its configuration; a configuration without a name is named "<unnamed> <id>".
    EmulatedSession newSession(EmulatedSession::Kind kind, Json::Value& cfg, const char* unnamed);
    // Reads the request's object `key` over the current setting `key` through `record`,
    // keeps what the record writes and persists it.
    Json::Value mergeSetting(const Request& r, const char* key, IJsonSerializable& record);
    template <typename Record>
    Json::Value mergeSetting(const Request& r, const char* key) {
        Record record;
        return mergeSetting(r, key, record);
    }
    uint64_t allocateStreamId();
    void buildSenderStreams(EmulatedSession& session);
    void refreshSenderSdp(EmulatedSession& session);
    Json::Value receiverStreamFromSdp(const std::string& sdpText, unsigned mediaIndex, uint64_t streamId,
                                      const Json::Value& channels);
    SdpSession parseCheckedSdp(const std::string& sdpText);
    std::string checkUserSdp(const std::string& sdpText);
    void releaseAdvertisedUse(const EmulatedSession& session);
    bool advertisedSdp(uint64_t id, std::string& sdp, std::string& url) const;
    void markAdvertisedUse(uint64_t id, bool used);
    Json::Value sessionListReply(bool senders) const;
    Json::Value gainReply(const char* table, const Request& r, unsigned command);

    Json::Value runningDocument() const;
    void restoreRunning(const Json::Value& running);
    void resetRunning();
    void persistRunning();
    // Persists the running state and gives the empty reply of a command that changed it.
    Json::Value acknowledgeChange();
    void loadPersisted();
    std::string positionPath(unsigned pos) const;
    void persistTableMeta();

    EmulatorOptions m_options;
    std::map<uint64_t, EmulatedSession> m_sessions;
    uint64_t m_next_session_id = 1;
    uint64_t m_next_stream_id = 1;
    Json::Value m_settings;       // clock, global, interface settings, gains
    Json::Value m_clock_counters; // counters of the system clock (reset by command 39)

    // Saved configurations: name and size per position, start-up position. The files of
    // positions 0..9 are the table's paths inside the configuration directory.
    CfgFileTable m_table;

    // Advertised sessions, and the ids that came from files of the advertise folder
    // (withdrawn when their file disappears).
    AdvSessions m_advertised;
    std::set<uint64_t> m_advertised_from_files;
};

}  // namespace pimav::detail
