#pragma once

#include <json/json.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "RequestServer.h"
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
    static constexpr unsigned kCommandCount = 56;

    explicit Emulator(const EmulatorOptions& options);

    // Answers one decoded request. Throws CommandError for a refused request.
    Json::Value handle(const Request& request);

    // Reloads the advertised sessions from the advertise folder. Returns the number of
    // files accepted.
    int reloadAdvertised();

    const std::map<uint64_t, EmulatedSession>& sessions() const { return m_sessions; }

private:
    using Handler = Json::Value (Emulator::*)(const Request&);
    static const Handler kHandlers[kCommandCount];

    // Sessions.
    Json::Value getSessionSdp(const Request& r);
    Json::Value saveSdpInfo(const Request& r);
    Json::Value addSourceSession(const Request& r);
    Json::Value addDestinationSession(const Request& r);
    Json::Value removeSession(const Request& r);
    Json::Value getSourceSessionList(const Request& r);
    Json::Value getDestinationSessionList(const Request& r);
    Json::Value getAdvertisedSessionList(const Request& r);
    Json::Value updateSession(const Request& r);
    Json::Value addDestinationSessionManually(const Request& r);
    Json::Value getSessionBasicInfo(const Request& r);
    Json::Value pauseResumeSession(const Request& r);
    Json::Value removeExternalAdvertisement(const Request& r);
    Json::Value disconnectChannels(const Request& r);
    Json::Value getListOfExistingStreams(const Request& r);
    Json::Value getResourceAllocatedIds(const Request& r);
    Json::Value getSessionTPCStatistics(const Request& r);
    Json::Value getSessionCounters(const Request& r);
    Json::Value getSessionInternalStatus(const Request& r);
    Json::Value getChannelUsageTable(const Request& r);
    // Saved configurations.
    Json::Value fileCfgSaveRunning(const Request& r);
    Json::Value fileCfgGetRunning(const Request& r);
    Json::Value fileCfgLoadCfgToRunning(const Request& r);
    Json::Value fileCfgLoadConfiguration(const Request& r);
    Json::Value fileCfgGetTable(const Request& r);
    Json::Value fileCfgSetStartupPos(const Request& r);
    Json::Value fileCfgRemoveConfig(const Request& r);
    // Device.
    Json::Value getDigitalInterfaces(const Request& r);
    Json::Value getWebServices(const Request& r);
    Json::Value getCodecs(const Request& r);
    Json::Value cfgSystemClk(const Request& r);
    Json::Value getSystemClockInfo(const Request& r);
    Json::Value getAlarmStatus(const Request& r);
    Json::Value getGlobalConfig(const Request& r);
    Json::Value setGlobalConfig(const Request& r);
    Json::Value setSdiPatternGeneratorConfig(const Request& r);
    Json::Value setHdmiPatternGeneratorConfig(const Request& r);
    Json::Value getSdiInterfaceInfo(const Request& r);
    Json::Value getSdiOffsets(const Request& r);
    Json::Value setSdiOffsets(const Request& r);
    Json::Value getHdmiAudioOffset(const Request& r);
    Json::Value setHdmiAudioOffset(const Request& r);
    Json::Value getSdiVpgInfo(const Request& r);
    Json::Value resetSystemClockCounters(const Request& r);
    Json::Value getUserNotifications(const Request& r);
    Json::Value getTdmCfgOptions(const Request& r);
    Json::Value setInterfaceLoopBackMode(const Request& r);
    Json::Value getAudioCfgOptions(const Request& r);
    Json::Value getVideoReferenceCfg(const Request& r);
    Json::Value setVideoReferenceCfg(const Request& r);
    Json::Value getDefaultConfigurationParams(const Request& r);
    Json::Value getInternalDebugInfo(const Request& r);
    Json::Value setSourceChannelGain(const Request& r);
    Json::Value setDestinationChannelGain(const Request& r);
    Json::Value getSourceChannelGain(const Request& r);
    Json::Value getDestinationChannelGain(const Request& r);

    // Helpers.
    void applyBoard();
    EmulatedSession& findSession(const Request& r, const char* key = "id");
    uint64_t allocateSessionId();
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
