#include "pimAvMngApi/api/AvMngApiJson.h"

#include "pimAvMngApi/platform/IpcMsg.h"
#include "api/AvMngApiTrace.h"

AvMngApiJson::AvMngApiJson() : ClientJsonApi(), ipcPort(kDefaultIpcPort), ipcHost("127.0.0.1") {}

AvMngApiJson::~AvMngApiJson() = default;

std::string AvMngApiJson::getIpcConnectAddress() {
    return "tcp://" + ipcHost + ":" + std::to_string(ipcPort);
}

int AvMngApiJson::getCommandDescription(unsigned int id, std::string& description) {
    return Aes67Commands::getCommandNameStr(static_cast<aes67_command_id_t>(id), description);
}

int AvMngApiJson::getClientTimeout() {
    return 150000;
}

int AvMngApiJson::init(zmq::context_t& context) {
    PIMAV_CHK(ClientJsonApi::init(context));
    return 0;
}

int AvMngApiJson::init(zmq::context_t& context, std::string& host) {
    ipcHost = host;
    PIMAV_CHK(init(context));
    return 0;
}

int AvMngApiJson::getSessionSdp(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_GET_SESSION_SDP, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::addSourceSession(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_ADD_SOURCE_SESSION, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::addDestinationSession(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_ADD_DESTINATION_SESSION, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::removeSession(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_REMOVE_SESSION, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSourceSessionList(Json::Value& reply) {
    IpcMsg msg(AES67_GET_SOURCE_LIST);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getDestinationSessionList(Json::Value& reply) {
    IpcMsg msg(AES67_GET_DESTINATION_LIST);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getAdvertisedSessionList(Json::Value& reply) {
    IpcMsg msg(AES67_GET_ADVERTISED_SESSIONS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::updateSession(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_UPDATE_SESSION, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::fileCfgSaveRunning(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_FILE_SAVE_RUNNING, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::fileCfgGetRunning(Json::Value& reply) {
    IpcMsg msg(AES67_GET_RUNNING_CFG);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::fileCfgLoadCfgToRunning(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_FILE_LOAD_TO_RUNNING, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::fileCfgLoadConfiguration(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_FILE_LOAD_CFG_TO_RUNNING, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::fileCfgGetTable(Json::Value& reply) {
    IpcMsg msg(AES67_FILE_GET_TABLE);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::addDestinationSessionManually(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_ADD_DESTINATION_SESSION_MANUALLY, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSessionBasicInfo(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_GET_SESSION_BASIC_INFO, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getChannelUsageTable(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_GET_CHANNEL_TABLE, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getDigitalInterfaces(Json::Value& reply) {
    IpcMsg msg(AES67_GET_DIGITAL_INTERFACES);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getWebServices(Json::Value& reply) {
    IpcMsg msg(AES67_GET_WEB_SERVICES);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getCodecs(Json::Value& reply) {
    IpcMsg msg(AES67_GET_CODECS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSessionTPCStatistics(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_GET_SESSION_TPC_STATISTICS, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::cfgSystemClk(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_CLK_SET_CFG, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSystemClockInfo(Json::Value& reply) {
    IpcMsg msg(AES67_CLK_GET_INFO);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::pauseResumeSession(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_PAUSE_RESUME_SESSION, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getAlarmStatus(Json::Value& reply) {
    IpcMsg msg(AES67_GET_ALARM_STATUS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::fileCfgSetStartupPos(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_FILE_SET_STARTUP_POS, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::fileCfgRemoveConfig(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_FILE_REMOVE_CFG, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getGlobalConfig(Json::Value& reply) {
    IpcMsg msg(AES67_GET_GLOBAL_CFG);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setGlobalConfig(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_GLOBAL_CFG, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setSdiPatternGeneratorConfig(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_SDI_PATTERN_GENERATOR_CFG, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setHdmiPatternGeneratorConfig(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_HDMI_PATTERN_GENERATOR_CFG, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSdiInterfaceInfo(Json::Value& reply) {
    IpcMsg msg(AES67_GET_SDI_INTERFACE_INFO);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSdiOffsets(Json::Value& reply) {
    IpcMsg msg(AES67_GET_SDI_OFFSETS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setSdiOffsets(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_SDI_OFFSETS, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getHdmiAudioOffset(Json::Value& reply) {
    IpcMsg msg(AES67_GET_HDMI_AUDIO_OFFSET);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setHdmiAudioOffset(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_HDMI_AUDIO_OFFSET, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSessionCounters(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_GET_SESSION_COUNTERS, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSdiVpgInfo(Json::Value& reply) {
    IpcMsg msg(AES67_GET_SDI_VPG_INFO);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSessionInternalStatus(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_GET_SESSION_INTERNAL_STATUS, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::resetSystemClockCounters(Json::Value& reply) {
    IpcMsg msg(AES67_RESET_SYSTEM_CLOCK_COUNTERS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getUserNotifications(Json::Value& reply) {
    IpcMsg msg(AES67_GET_USER_NOTIFICATIONS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getTdmCfgOptions(Json::Value& reply) {
    IpcMsg msg(AES67_GET_TDM_CFG_OPTIONS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setInterfaceLoopBackMode(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_INTERFACE_LOOPBACK_MODE, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getAudioCfgOptions(Json::Value& reply) {
    IpcMsg msg(AES67_GET_AUDIO_CFG_OPTIONS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getVideoReferenceCfg(Json::Value& reply) {
    IpcMsg msg(AES67_GET_VIDEO_REFERENCE_CFG);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setVideoReferenceCfg(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_VIDEO_REFERENCE_CFG, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getDefaultConfigurationParams(Json::Value& reply) {
    IpcMsg msg(AES67_GET_DEFAULT_CFG_PARAMS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getInternalDebugInfo(Json::Value& reply) {
    IpcMsg msg(AES67_GET_INTERNAL_DEBUG_INFO);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::disconnectChannels(const Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_DISCONNECT_CHANNELS, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getListOfExistingStreams(Json::Value& reply) {
    IpcMsg msg(AES67_GET_LIST_OF_EXISTING_STREAMS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getResourceAllocatedIds(Json::Value& reply) {
    IpcMsg msg(AES67_GET_RESOURCE_ALLOCATED_IDS);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setSourceChannelGain(Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_SOURCE_CHANNEL_GAIN, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::setDestinationChannelGain(Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_SET_DESTINATION_CHANNEL_GAIN, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getSourceChannelGain(Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_GET_SOURCE_CHANNEL_GAIN, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}

int AvMngApiJson::getDestinationChannelGain(Json::Value& request, Json::Value& reply) {
    IpcMsg msg(AES67_GET_DESTINATION_CHANNEL_GAIN, request);
    PIMAV_CHK(sendMessage(msg, reply));
    return 0;
}
