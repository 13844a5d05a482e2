#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>
#include <zmq.hpp>

#include "pimAvMngApi/api/Aes67Commands.h"
#include "pimAvMngApi/platform/ClientJsonApi.h"

/// JSON layer of the client API: one method per daemon command. Each method sends its
/// command id with the caller's request document (or none, for the reply-only form) and
/// hands back the daemon's reply document untouched. Results: 0, or the negative code of
/// ClientJsonApi::sendMessage, which is also logged as a CHK line at level 2.
///
/// The daemon's endpoint is "tcp://" + ipcHost + ":" + ipcPort.
class AvMngApiJson : public ClientJsonApi {
public:
    /// Port of the daemon's endpoint unless the host sets ipcPort.
    static constexpr uint32_t kDefaultIpcPort = 5559;

    AvMngApiJson();
    ~AvMngApiJson() override;

    /// Hooks used by the transport.
    std::string getIpcConnectAddress() override;
    /// The command's name from the command table.
    int getCommandDescription(unsigned int id, std::string& description) override;
    /// 150000 ms, the time limit of every exchange.
    int getClientTimeout() override;

    /// Prepares the link with the host's context. Negative base result: CHK line and
    /// that code; otherwise 0.
    int init(zmq::context_t& context);
    /// Sets ipcHost to `host` first (kept even when the link cannot be prepared), then
    /// behaves as init(context).
    int init(zmq::context_t& context, std::string& host);

    /// Pass-through methods, by command id (trailing comment).
    int getSessionSdp(const Json::Value& request, Json::Value& reply);                  ///< 0
    int addSourceSession(const Json::Value& request, Json::Value& reply);               ///< 2
    int addDestinationSession(const Json::Value& request, Json::Value& reply);          ///< 3
    int removeSession(const Json::Value& request, Json::Value& reply);                  ///< 4
    int getSourceSessionList(Json::Value& reply);                                       ///< 5
    int getDestinationSessionList(Json::Value& reply);                                  ///< 6
    int getAdvertisedSessionList(Json::Value& reply);                                   ///< 7
    int updateSession(const Json::Value& request, Json::Value& reply);                  ///< 8
    int fileCfgSaveRunning(const Json::Value& request, Json::Value& reply);             ///< 9
    int fileCfgGetRunning(Json::Value& reply);                                          ///< 10
    int fileCfgLoadCfgToRunning(const Json::Value& request, Json::Value& reply);        ///< 11
    int fileCfgLoadConfiguration(const Json::Value& request, Json::Value& reply);       ///< 12
    int fileCfgGetTable(Json::Value& reply);                                            ///< 13
    int addDestinationSessionManually(const Json::Value& request, Json::Value& reply);  ///< 14
    int getSessionBasicInfo(const Json::Value& request, Json::Value& reply);            ///< 15
    int getChannelUsageTable(const Json::Value& request, Json::Value& reply);           ///< 16
    int getDigitalInterfaces(Json::Value& reply);                                       ///< 17
    int getWebServices(Json::Value& reply);                                             ///< 18
    int getCodecs(Json::Value& reply);                                                  ///< 19
    int getSessionTPCStatistics(const Json::Value& request, Json::Value& reply);        ///< 20
    int cfgSystemClk(const Json::Value& request, Json::Value& reply);                   ///< 21
    int getSystemClockInfo(Json::Value& reply);                                         ///< 22
    int pauseResumeSession(const Json::Value& request, Json::Value& reply);             ///< 23
    int getAlarmStatus(Json::Value& reply);                                             ///< 24
    int fileCfgSetStartupPos(const Json::Value& request, Json::Value& reply);           ///< 25
    int fileCfgRemoveConfig(const Json::Value& request, Json::Value& reply);            ///< 26
    int getGlobalConfig(Json::Value& reply);                                            ///< 27
    int setGlobalConfig(const Json::Value& request, Json::Value& reply);                ///< 28
    int setSdiPatternGeneratorConfig(const Json::Value& request, Json::Value& reply);   ///< 29
    int setHdmiPatternGeneratorConfig(const Json::Value& request, Json::Value& reply);  ///< 30
    int getSdiInterfaceInfo(Json::Value& reply);                                        ///< 31
    int getSdiOffsets(Json::Value& reply);                                              ///< 32
    int setSdiOffsets(const Json::Value& request, Json::Value& reply);                  ///< 33
    int getHdmiAudioOffset(Json::Value& reply);                                         ///< 34
    int setHdmiAudioOffset(const Json::Value& request, Json::Value& reply);             ///< 35
    int getSessionCounters(const Json::Value& request, Json::Value& reply);             ///< 36
    int getSdiVpgInfo(Json::Value& reply);                                              ///< 37
    int getSessionInternalStatus(const Json::Value& request, Json::Value& reply);       ///< 38
    int resetSystemClockCounters(Json::Value& reply);                                   ///< 39
    int getUserNotifications(Json::Value& reply);                                       ///< 40
    int getTdmCfgOptions(Json::Value& reply);                                           ///< 41
    int setInterfaceLoopBackMode(const Json::Value& request, Json::Value& reply);       ///< 43
    int getAudioCfgOptions(Json::Value& reply);                                         ///< 44
    int getVideoReferenceCfg(Json::Value& reply);                                       ///< 45
    int setVideoReferenceCfg(const Json::Value& request, Json::Value& reply);           ///< 46
    int getDefaultConfigurationParams(Json::Value& reply);                              ///< 47
    int getInternalDebugInfo(Json::Value& reply);                                       ///< 48
    int disconnectChannels(const Json::Value& request, Json::Value& reply);             ///< 49
    int getListOfExistingStreams(Json::Value& reply);                                   ///< 50
    int getResourceAllocatedIds(Json::Value& reply);                                    ///< 51
    int setSourceChannelGain(Json::Value& request, Json::Value& reply);                 ///< 52
    int setDestinationChannelGain(Json::Value& request, Json::Value& reply);            ///< 53
    int getSourceChannelGain(Json::Value& request, Json::Value& reply);                 ///< 54
    int getDestinationChannelGain(Json::Value& request, Json::Value& reply);            ///< 55

    uint32_t ipcPort;     ///< TCP port of the daemon's endpoint (kDefaultIpcPort unless set).
    std::string ipcHost;  ///< Host of the daemon's endpoint.
};
