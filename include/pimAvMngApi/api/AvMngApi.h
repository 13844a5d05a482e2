#pragma once

#include <json/json.h>

#include <cstdint>
#include <list>
#include <string>
#include <zmq.hpp>

#include "pimAvMngApi/adv/AdvSessionsDb.h"
#include "pimAvMngApi/api/AvMngApiJson.h"
#include "pimAvMngApi/device/CfgFileTable.h"
#include "pimAvMngApi/device/ClockConfig.h"
#include "pimAvMngApi/device/ClockCounters.h"
#include "pimAvMngApi/device/ClockStatus.h"
#include "pimAvMngApi/model/AvGlobalCfg.h"
#include "pimAvMngApi/model/ChannelTables.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/HdmiAudioOffset.h"
#include "pimAvMngApi/model/InterfaceLoopBack.h"
#include "pimAvMngApi/model/SdiData.h"
#include "pimAvMngApi/model/SdiOffset.h"
#include "pimAvMngApi/model/SdiVpgData.h"
#include "pimAvMngApi/model/SessionBasicInfo.h"
#include "pimAvMngApi/model/SessionConfigData.h"
#include "pimAvMngApi/model/SessionStatus.h"
#include "pimAvMngApi/model/SessionStreamList.h"
#include "pimAvMngApi/model/Source.h"
#include "pimAvMngApi/model/SourceApi.h"
#include "pimAvMngApi/model/StreamData.h"
#include "pimAvMngApi/model/TpcStatistics.h"
#include "pimAvMngApi/model/UserNotifications.h"
#include "pimAvMngApi/model/VideoRefOutputCfg.h"
#include "pimAvMngApi/model/VtcStatus.h"
#include "pimAvMngApi/platform/Alarm.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/ErrorReport.h"

/// Typed client API of the AV manager daemon.
///
/// Each method is one request/reply exchange through the JSON layer `jsonApi`: it checks
/// its pointer arguments, builds the request document from its arguments (records write
/// themselves through their virtual Serialize), sends the command, and reads the reply
/// back into the caller's records (virtual Deserialize). Calls run on the caller's
/// thread and keep no state between them.
///
/// Results:
///    0   success
///   -1   an index argument is not below the number of entries in the reply array
///   -4   a pointer argument is null; nothing was sent
///        ("<method>:: Parameter is null." at level 2)
///  -13   building the request threw (nothing was sent) or reading the reply threw
///        (records keep what they received before the failure)
///        ("TRY_SERIALIZE(...)" / "TRY_DESERIALIZE(...)" lines at level 2)
///  other negative: the transport's code, or the code of the daemon's refusal
///        ({"error": {"code": ...}}, see ClientJsonApi::sendMessage), passed up unchanged,
///        with one "CHK(<signature>)::<line> Error Code <code>" line per layer at level 2;
///        the caller's records are left as they were.
///
/// Traces at level 7: "AVMANAGER JSON API <signature>:<line>:IN" with the request (for
/// commands that carry one) and ":OUT" with the reply, each followed by the document as
/// one line of JSON. Documents are rendered only when level 7 is enabled.
///
/// Output lists are appended to, never cleared, except the sessions list of
/// getAlarmStatus.
class AvMngApi {
public:
    AvMngApi() = default;
    ~AvMngApi() = default;
    AvMngApi(const AvMngApi&) = delete;
    AvMngApi& operator=(const AvMngApi&) = delete;

    /// Connects to "tcp://" + host + ":5559" with the host's context; the result of
    /// AvMngApiJson::init.
    int init(zmq::context_t& context, std::string host = "127.0.0.1");
    /// Details of the last transport failure; the transport's result.
    int getLastErrorMessage(ErrorReport& report);
    /// `value` as one line of JSON (no indentation, members ordered by key).
    std::string convertJsonToString(Json::Value& value);

    // ---- sessions ----

    /// Command 2. Sends the whole record; the whole reply is read back into it.
    int addSourceSession(SourceApi* api);
    /// Command 3. Sends the whole record; the whole reply is read back into it.
    int addDestinationSession(DestinationApi* api);
    /// Command 14 (receiver configured by hand). Whole record out, whole reply back in.
    int addDestinationSession(SourceApi* api);
    /// Command 8. Sends the whole record; the reply is not read.
    int updateSession(SourceApi* api);
    /// Command 4: {"id"}.
    int removeSession(session_id_t id);
    /// Command 49: {"id", "channel-list"}; also traced as "TX AES67_DISCONNECT_CHANNELS".
    int disconnectChannels(session_id_t id, ChannelList& channels);
    /// Command 0: {"id"}; the reply's "sdp" text is appended to *sdp.
    int getSessionSdp(session_id_t id, std::string* sdp);
    /// Command 15: {"id"}; the whole reply is read into *info (streams are appended).
    int getSessionBasicInfo(session_id_t id, SessionBasicInfo* info);
    /// A sender configuration rebuilt from getSessionBasicInfo: id, name, and one source
    /// per audio, video and ancillary stream, appended to the three lists of *api.
    int getSessionCfg(session_id_t id, SourceApi* api);
    ///@{
    /// Commands 5 and 6: the reply's "list" is read into *list.
    int getSourceSessionList(SessionStreamList* list);
    int getDestinationSessionList(SessionStreamList* list);
    ///@}
    /// Command 7: the reply's "list" is read into *db.
    int getAdvertisedSessionList(AdvSessionsDb* db);
    /// Command 23: {"id", "pause"}.
    int pauseResumeSession(session_id_t id, bool pause);
    /// Command 51: the ids of the reply's "senders" and "receivers" are appended.
    int getResourceAllocatedIds(std::list<unsigned long long>& senders, std::list<unsigned long long>& receivers);
    /// Command 50: one SessionConfigData per element of the reply's "list" is appended.
    int getListOfExistingStreams(std::list<SessionConfigData>& streams);
    /// No exchange: copies into `source` what a sender configuration shares with a
    /// running stream (transport address, destination port, DSCP, TTL, payload type, name,
    /// channels, id, redundancy role). A null `stream` is logged and changes nothing.
    void getSourceInfo(Source& source, StreamData* stream);

    // ---- saved configuration files ----

    /// Command 9: {"pos", "name", "startup"}.
    int fileCfgSaveRunning(unsigned int pos, std::string* name, bool startup);
    /// Command 11: {"pos"}.
    int fileCfgLoadCfgToRunning(unsigned int pos);
    /// Command 11: {"default": true}.
    int fileCfgLoadDefaultToRunning();
    /// Command 13: the whole reply is read into *table. A null table gives -4 with
    /// "fileCfgGetTable:: Parameter is null." and sends nothing, like every other
    /// pointer argument.
    int fileCfgGetTable(CfgFileTable* table);
    ///@{
    /// Commands 25 and 26: {"pos"}.
    int fileCfgSetStartupPos(unsigned int pos);
    int fileCfgRemoveConfig(unsigned int pos);
///@}

    // ---- system clock and global settings ----

    /// Command 21: the whole record.
    int cfgSystemClock(ClockConfig* config);
    /// Command 22: each record that is not null reads its member of the reply ("config",
    /// "status", "counters", "smpte-2059"); null pointers are skipped.
    int getSystemClockInfo(ClockConfig* config, ClockStatus* status, ClockCounters* counters, VtcStatus* vtc);
    /// Command 39.
    int resetSystemClockCounters();
    ///@{
    /// Commands 27 and 28: the member "global".
    int getGlobalConfig(AvGlobalCfg* config);
    int setGlobalConfig(AvGlobalCfg& config);
///@}

    // ---- alarms, notifications, statistics, counters ----

    /// Command 24: `sessions` is emptied and refilled from the reply's "sessions"; the
    /// reply's "global" alarms are appended to `alarms`.
    int getAlarmStatus(std::list<SessionStatus>& sessions, std::list<Alarm>& alarms);
    /// Command 40: the member "notifications".
    int getUserNotifications(UserNotifications& notifications);
    /// Command 20 with {"id"}: element 0 of the reply's "tpc".
    int getSessionTPCStats(session_id_t id, TpcStatistics& stats);
    /// Command 20 with {"all": true}: one record per element of "tpc" is appended.
    int getSessionAllTPCStats(std::list<TpcStatistics>& stats);
    /// Command 36 with {"id"}: `counters` receives the daemon's reply as sent.
    int getSessionCounters(session_id_t id, Json::Value& counters);
    /// Command 38 with {"id", "clear_fifo_levels", "clear_counters", "clear_pending"}:
    /// `status` receives the daemon's reply as sent.
    int getSessionInternalStatus(session_id_t id, bool clearFifoLevels, bool clearCounters, bool clearPending,
                                 Json::Value& status);
    /// Command 16 with {"full"}: the reply's "list".
    int getChannelTables(ChannelTables& tables, bool full);

    // ---- SDI, HDMI, loop-back, video reference ----

    /// Command 29: the member "sdi".
    int setSdiInterface(SdiData* data);
    /// Command 31: "locked" and "video_mode" of entry `index` of the reply's "sdi" (or,
    /// when the reply has no "sdi", of its "interface"); -1 when there is no such entry.
    int getSdiInterfaceInfo(uint32_t index, bool& locked, std::string& videoMode);
    /// Command 33: {"sdi-offsets": [offset]}. The SDI port is the one `offset` names;
    /// `index` is not sent.
    int setSdiOffset(uint32_t index, SdiOffset& offset);
    /// Command 32: entry `index` of the reply's "sdi-offsets"; -1 when there is none.
    int getSdiOffset(uint32_t index, SdiOffset& offset);
    /// Command 37: entry `index` of the reply's "sdi-vpg-info"; -1 when there is none.
    int getSdiVpgInfo(uint32_t index, SdiVpgData& data);
    ///@{
    /// Commands 35 and 34: the whole document.
    int setHdmiAudioOffset(HdmiAudioOffset& offset);
    int getHdmiAudioOffset(HdmiAudioOffset& offset);
    ///@}
    /// Command 43: the whole record.
    int setInterfaceLoopBackMode(InterfaceLoopBack& mode);
    ///@{
    /// Commands 45 and 46: the member "video-ref".
    int getVideoReferenceCfg(VideoRefOutputCfg& config);
    int setVideoReferenceCfg(VideoRefOutputCfg& config);
///@}

    // ---- channel gains ----

    ///@{
    /// These send nothing and return 0. Gain requests travel through the JSON layer
    /// (jsonApi.setSourceChannelGain(request, reply) and the three others), with request
    /// documents built from VolumeGainApi records.
    int setSourceChannelGain();
    int setDestinationChannelGain();
    int getSourceChannelGain();
    int getDestinationChannelGain();
///@}

    /// The JSON layer that carries every exchange; hosts may use it for the commands
    /// that have no typed method.
    AvMngApiJson jsonApi;
};
