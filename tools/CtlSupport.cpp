#include "CtlSupport.h"

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <memory>
#include <sstream>

namespace pimav::detail {

namespace {

struct CommandName {
    const char* method;  // AvMngApiJson method, "" for ids without one
    const char* enumName;
};

const CommandName kCommandNames[Aes67Commands::kCommandCount] = {
    {"getSessionSdp", "AES67_GET_SESSION_SDP"},
    {"", "AES67_SAVE_SDP_INFO"},
    {"addSourceSession", "AES67_ADD_SOURCE_SESSION"},
    {"addDestinationSession", "AES67_ADD_DESTINATION_SESSION"},
    {"removeSession", "AES67_REMOVE_SESSION"},
    {"getSourceSessionList", "AES67_GET_SOURCE_LIST"},
    {"getDestinationSessionList", "AES67_GET_DESTINATION_LIST"},
    {"getAdvertisedSessionList", "AES67_GET_ADVERTISED_SESSIONS"},
    {"updateSession", "AES67_UPDATE_SESSION"},
    {"fileCfgSaveRunning", "AES67_FILE_SAVE_RUNNING"},
    {"fileCfgGetRunning", "AES67_GET_RUNNING_CFG"},
    {"fileCfgLoadCfgToRunning", "AES67_FILE_LOAD_TO_RUNNING"},
    {"fileCfgLoadConfiguration", "AES67_FILE_LOAD_CFG_TO_RUNNING"},
    {"fileCfgGetTable", "AES67_FILE_GET_TABLE"},
    {"addDestinationSessionManually", "AES67_ADD_DESTINATION_SESSION_MANUALLY"},
    {"getSessionBasicInfo", "AES67_GET_SESSION_BASIC_INFO"},
    {"getChannelUsageTable", "AES67_GET_CHANNEL_TABLE"},
    {"getDigitalInterfaces", "AES67_GET_DIGITAL_INTERFACES"},
    {"getWebServices", "AES67_GET_WEB_SERVICES"},
    {"getCodecs", "AES67_GET_CODECS"},
    {"getSessionTPCStatistics", "AES67_GET_SESSION_TPC_STATISTICS"},
    {"cfgSystemClk", "AES67_CLK_SET_CFG"},
    {"getSystemClockInfo", "AES67_CLK_GET_INFO"},
    {"pauseResumeSession", "AES67_PAUSE_RESUME_SESSION"},
    {"getAlarmStatus", "AES67_GET_ALARM_STATUS"},
    {"fileCfgSetStartupPos", "AES67_FILE_SET_STARTUP_POS"},
    {"fileCfgRemoveConfig", "AES67_FILE_REMOVE_CFG"},
    {"getGlobalConfig", "AES67_GET_GLOBAL_CFG"},
    {"setGlobalConfig", "AES67_SET_GLOBAL_CFG"},
    {"setSdiPatternGeneratorConfig", "AES67_SET_SDI_PATTERN_GENERATOR_CFG"},
    {"setHdmiPatternGeneratorConfig", "AES67_SET_HDMI_PATTERN_GENERATOR_CFG"},
    {"getSdiInterfaceInfo", "AES67_GET_SDI_INTERFACE_INFO"},
    {"getSdiOffsets", "AES67_GET_SDI_OFFSETS"},
    {"setSdiOffsets", "AES67_SET_SDI_OFFSETS"},
    {"getHdmiAudioOffset", "AES67_GET_HDMI_AUDIO_OFFSET"},
    {"setHdmiAudioOffset", "AES67_SET_HDMI_AUDIO_OFFSET"},
    {"getSessionCounters", "AES67_GET_SESSION_COUNTERS"},
    {"getSdiVpgInfo", "AES67_GET_SDI_VPG_INFO"},
    {"getSessionInternalStatus", "AES67_GET_SESSION_INTERNAL_STATUS"},
    {"resetSystemClockCounters", "AES67_RESET_SYSTEM_CLOCK_COUNTERS"},
    {"getUserNotifications", "AES67_GET_USER_NOTIFICATIONS"},
    {"getTdmCfgOptions", "AES67_GET_TDM_CFG_OPTIONS"},
    {"", "AES67_REMOVE_EXTERNAL_ADVERTISEMENT"},
    {"setInterfaceLoopBackMode", "AES67_SET_INTERFACE_LOOPBACK_MODE"},
    {"getAudioCfgOptions", "AES67_GET_AUDIO_CFG_OPTIONS"},
    {"getVideoReferenceCfg", "AES67_GET_VIDEO_REFERENCE_CFG"},
    {"setVideoReferenceCfg", "AES67_SET_VIDEO_REFERENCE_CFG"},
    {"getDefaultConfigurationParams", "AES67_GET_DEFAULT_CFG_PARAMS"},
    {"getInternalDebugInfo", "AES67_GET_INTERNAL_DEBUG_INFO"},
    {"disconnectChannels", "AES67_DISCONNECT_CHANNELS"},
    {"getListOfExistingStreams", "AES67_GET_LIST_OF_EXISTING_STREAMS"},
    {"getResourceAllocatedIds", "AES67_GET_RESOURCE_ALLOCATED_IDS"},
    {"setSourceChannelGain", "AES67_SET_SOURCE_CHANNEL_GAIN"},
    {"setDestinationChannelGain", "AES67_SET_DESTINATION_CHANNEL_GAIN"},
    {"getSourceChannelGain", "AES67_GET_SOURCE_CHANNEL_GAIN"},
    {"getDestinationChannelGain", "AES67_GET_DESTINATION_CHANNEL_GAIN"},
};

using RequestMethod = int (AvMngApiJson::*)(const Json::Value&, Json::Value&);
using ReplyMethod = int (AvMngApiJson::*)(Json::Value&);
using GainMethod = int (AvMngApiJson::*)(Json::Value&, Json::Value&);

struct PassThrough {
    RequestMethod request = nullptr;
    ReplyMethod replyOnly = nullptr;
    GainMethod gain = nullptr;
};

PassThrough passThroughOf(unsigned id) {
    PassThrough p;
    switch (id) {
        case 0: p.request = &AvMngApiJson::getSessionSdp; break;
        case 2: p.request = &AvMngApiJson::addSourceSession; break;
        case 3: p.request = &AvMngApiJson::addDestinationSession; break;
        case 4: p.request = &AvMngApiJson::removeSession; break;
        case 5: p.replyOnly = &AvMngApiJson::getSourceSessionList; break;
        case 6: p.replyOnly = &AvMngApiJson::getDestinationSessionList; break;
        case 7: p.replyOnly = &AvMngApiJson::getAdvertisedSessionList; break;
        case 8: p.request = &AvMngApiJson::updateSession; break;
        case 9: p.request = &AvMngApiJson::fileCfgSaveRunning; break;
        case 10: p.replyOnly = &AvMngApiJson::fileCfgGetRunning; break;
        case 11: p.request = &AvMngApiJson::fileCfgLoadCfgToRunning; break;
        case 12: p.request = &AvMngApiJson::fileCfgLoadConfiguration; break;
        case 13: p.replyOnly = &AvMngApiJson::fileCfgGetTable; break;
        case 14: p.request = &AvMngApiJson::addDestinationSessionManually; break;
        case 15: p.request = &AvMngApiJson::getSessionBasicInfo; break;
        case 16: p.request = &AvMngApiJson::getChannelUsageTable; break;
        case 17: p.replyOnly = &AvMngApiJson::getDigitalInterfaces; break;
        case 18: p.replyOnly = &AvMngApiJson::getWebServices; break;
        case 19: p.replyOnly = &AvMngApiJson::getCodecs; break;
        case 20: p.request = &AvMngApiJson::getSessionTPCStatistics; break;
        case 21: p.request = &AvMngApiJson::cfgSystemClk; break;
        case 22: p.replyOnly = &AvMngApiJson::getSystemClockInfo; break;
        case 23: p.request = &AvMngApiJson::pauseResumeSession; break;
        case 24: p.replyOnly = &AvMngApiJson::getAlarmStatus; break;
        case 25: p.request = &AvMngApiJson::fileCfgSetStartupPos; break;
        case 26: p.request = &AvMngApiJson::fileCfgRemoveConfig; break;
        case 27: p.replyOnly = &AvMngApiJson::getGlobalConfig; break;
        case 28: p.request = &AvMngApiJson::setGlobalConfig; break;
        case 29: p.request = &AvMngApiJson::setSdiPatternGeneratorConfig; break;
        case 30: p.request = &AvMngApiJson::setHdmiPatternGeneratorConfig; break;
        case 31: p.replyOnly = &AvMngApiJson::getSdiInterfaceInfo; break;
        case 32: p.replyOnly = &AvMngApiJson::getSdiOffsets; break;
        case 33: p.request = &AvMngApiJson::setSdiOffsets; break;
        case 34: p.replyOnly = &AvMngApiJson::getHdmiAudioOffset; break;
        case 35: p.request = &AvMngApiJson::setHdmiAudioOffset; break;
        case 36: p.request = &AvMngApiJson::getSessionCounters; break;
        case 37: p.replyOnly = &AvMngApiJson::getSdiVpgInfo; break;
        case 38: p.request = &AvMngApiJson::getSessionInternalStatus; break;
        case 39: p.replyOnly = &AvMngApiJson::resetSystemClockCounters; break;
        case 40: p.replyOnly = &AvMngApiJson::getUserNotifications; break;
        case 41: p.replyOnly = &AvMngApiJson::getTdmCfgOptions; break;
        case 43: p.request = &AvMngApiJson::setInterfaceLoopBackMode; break;
        case 44: p.replyOnly = &AvMngApiJson::getAudioCfgOptions; break;
        case 45: p.replyOnly = &AvMngApiJson::getVideoReferenceCfg; break;
        case 46: p.request = &AvMngApiJson::setVideoReferenceCfg; break;
        case 47: p.replyOnly = &AvMngApiJson::getDefaultConfigurationParams; break;
        case 48: p.replyOnly = &AvMngApiJson::getInternalDebugInfo; break;
        case 49: p.request = &AvMngApiJson::disconnectChannels; break;
        case 50: p.replyOnly = &AvMngApiJson::getListOfExistingStreams; break;
        case 51: p.replyOnly = &AvMngApiJson::getResourceAllocatedIds; break;
        case 52: p.gain = &AvMngApiJson::setSourceChannelGain; break;
        case 53: p.gain = &AvMngApiJson::setDestinationChannelGain; break;
        case 54: p.gain = &AvMngApiJson::getSourceChannelGain; break;
        case 55: p.gain = &AvMngApiJson::getDestinationChannelGain; break;
        default: break;
    }
    return p;
}

std::string lowerCase(std::string s) {
    for (auto& c : s) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return s;
}

}  // namespace

std::string describeCode(int code) {
    switch (code) {
        case -1: return "SDP text fails a check or index out of range";
        case -3: return "advertised entry not found";
        case -4: return "a pointer argument is null";
        case -7: return "unsupported or malformed SDP input";
        case -8: return "value refused";
        case -11: return "unknown codec name";
        case -13: return "request could not be built, read or was rejected";
        case -14: return "session id 0";
        case -16: return "no such entry or no free position";
        case -23: return "an empty configuration file selected as start-up";
        default: return ClientJsonApi::describeError(code);
    }
}

Failure::Failure(int code, const std::string& detail)
    : std::runtime_error(code < 0 ? "error " + std::to_string(code) + " (" + describeCode(code) + ")" +
                                        (detail.empty() ? "" : ": " + detail)
                                  : detail),
      m_status(code < 0 ? 1 : code) {}

CtlJsonApi::CtlJsonApi(const std::string& host, uint32_t port, int timeoutMs) : m_timeout_ms(timeoutMs) {
    ipcHost = host;
    ipcPort = port;
}

int CtlJsonApi::init(zmq::context_t& context) { return AvMngApiJson::init(context); }

int CtlJsonApi::lastError() {
    ErrorReport report;
    getLastErrorMessage(report);
    return report.code < 0 ? report.code : ClientJsonApi::kErrConnect;
}

Json::Value CtlJsonApi::call(unsigned id, Json::Value& request, bool hasRequest) {
    if (id >= Aes67Commands::kCommandCount) {
        throw Failure(2, "command id " + std::to_string(id) + " is not one of 0.." +
                             std::to_string(Aes67Commands::kCommandCount - 1));
    }
    Json::Value reply;
    int rc = 0;
    const PassThrough p = passThroughOf(id);
    if (p.request != nullptr) {
        rc = (this->*p.request)(hasRequest ? request : Json::Value(Json::objectValue), reply);
    } else if (p.gain != nullptr) {
        if (!hasRequest) {
            request = Json::Value(Json::objectValue);
        }
        rc = (this->*p.gain)(request, reply);
    } else if (p.replyOnly != nullptr) {
        rc = (this->*p.replyOnly)(reply);
    } else {
        IpcMsg msg = hasRequest ? IpcMsg(id, request) : IpcMsg(id);
        rc = sendMessage(msg, reply);
    }
    if (rc < 0) {
        ErrorReport report;
        getLastErrorMessage(report);
        throw Failure(rc, report.text.empty() ? "to " + getIpcConnectAddress() : report.text);
    }
    if (reply.isObject() && reply.isMember("error") && reply["error"].isObject()) {
        const Json::Value& error = reply["error"];
        std::string detail = error.get("message", "").asString();
        const int code = error.get("code", -13).isInt() ? error.get("code", -13).asInt() : -13;
        throw Failure(code < 0 ? code : -13, detail);
    }
    return reply;
}

int commandIdOf(const std::string& text) {
    if (text.empty()) {
        return -1;
    }
    char* end = nullptr;
    const unsigned long value = std::strtoul(text.c_str(), &end, 10);
    if (*end == '\0' && std::isdigit(static_cast<unsigned char>(text[0]))) {
        return value < Aes67Commands::kCommandCount ? static_cast<int>(value) : -1;
    }
    const std::string wanted = lowerCase(text);
    for (unsigned id = 0; id < Aes67Commands::kCommandCount; ++id) {
        if (wanted == lowerCase(kCommandNames[id].method) || wanted == lowerCase(kCommandNames[id].enumName)) {
            return static_cast<int>(id);
        }
    }
    return -1;
}

std::vector<std::string> commandWords() {
    std::vector<std::string> words;
    for (unsigned id = 0; id < Aes67Commands::kCommandCount; ++id) {
        words.push_back(std::to_string(id));
        if (kCommandNames[id].method[0] != '\0') {
            words.emplace_back(kCommandNames[id].method);
        }
    }
    return words;
}

void printCommands(std::ostream& out) {
    for (unsigned id = 0; id < Aes67Commands::kCommandCount; ++id) {
        std::string description;
        Aes67Commands::getCommandNameStr(static_cast<aes67_command_id_t>(id), description);
        const std::string method = kCommandNames[id].method[0] != '\0' ? kCommandNames[id].method : "-";
        out << std::setw(2) << id << "  " << std::left << std::setw(30) << method << "  " << description
            << std::right << "\n";
    }
}

std::string renderJson(const Json::Value& value, bool pretty) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = pretty ? "  " : "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

bool readFile(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::ostringstream buffer;
    buffer << in.rdbuf();
    text = buffer.str();
    return true;
}

bool parseJson(const std::string& text, Json::Value& doc, std::string& errors) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    if (!reader->parse(text.data(), text.data() + text.size(), &doc, &errors)) {
        const auto newline = errors.find('\n');
        if (newline != std::string::npos) {
            errors = errors.substr(0, newline);
        }
        return false;
    }
    return true;
}

}  // namespace pimav::detail
