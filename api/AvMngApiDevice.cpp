// Typed client API: device-level operations (configuration files, clock, global
// settings, alarms and statistics, SDI/HDMI/video reference interfaces, gains).

#include "api/AvMngApiTrace.h"
#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/model/SdiOffsetList.h"

namespace {

Json::Value idValue(session_id_t id) { return Json::Value(static_cast<Json::UInt64>(id)); }

void appendSessionStatus(Json::Value& array, std::list<SessionStatus>& sessions) {
    for (Json::Value::ArrayIndex i = 0; i < array.size(); ++i) {
        SessionStatus status;
        status.Deserialize(array[i]);
        sessions.push_back(status);
    }
}

void appendAlarms(Json::Value& array, std::list<Alarm>& alarms) {
    for (Json::Value::ArrayIndex i = 0; i < array.size(); ++i) {
        Alarm alarm;
        alarm.Deserialize(array[i]);
        alarms.push_back(alarm);
    }
}

void appendTpc(Json::Value& array, std::list<TpcStatistics>& stats) {
    for (Json::Value::ArrayIndex i = 0; i < array.size(); ++i) {
        TpcStatistics s;
        s.Deserialize(array[i]);
        stats.push_back(s);
    }
}

}  // namespace

// ---- saved configuration files ----

int AvMngApi::fileCfgSaveRunning(unsigned int pos, std::string* name, bool startup) {
    PIMAV_CHK_NULL(name, "fileCfgSaveRunning");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["pos"] = Json::Value(pos));
    PIMAV_TRY_SERIALIZE(request["name"] = Json::Value(*name));
    PIMAV_TRY_SERIALIZE(request["startup"] = Json::Value(startup));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.fileCfgSaveRunning(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::fileCfgLoadCfgToRunning(unsigned int pos) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["pos"] = Json::Value(pos));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.fileCfgLoadCfgToRunning(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::fileCfgLoadDefaultToRunning() {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["default"] = Json::Value(true));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.fileCfgLoadCfgToRunning(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::fileCfgGetTable(CfgFileTable* table) {
    // The table is filled in place; without one there is nothing to fill, so the
    // request is not sent.
    PIMAV_CHK_NULL(table, "fileCfgGetTable");
    Json::Value reply;
    PIMAV_CHK(jsonApi.fileCfgGetTable(reply));
    PIMAV_TRY_DESERIALIZE(table->Deserialize(reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::fileCfgSetStartupPos(unsigned int pos) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["pos"] = Json::Value(pos));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.fileCfgSetStartupPos(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::fileCfgRemoveConfig(unsigned int pos) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["pos"] = Json::Value(pos));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.fileCfgRemoveConfig(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

// ---- system clock and global settings ----

int AvMngApi::cfgSystemClock(ClockConfig* config) {
    PIMAV_CHK_NULL(config, "cfgSystemClock");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(config->Serialize(request));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.cfgSystemClk(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSystemClockInfo(ClockConfig* config, ClockStatus* status, ClockCounters* counters,
                                 VtcStatus* vtc) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getSystemClockInfo(reply));
    if (config != nullptr) {
        PIMAV_TRY_DESERIALIZE(config->Deserialize(reply["config"]));
    }
    if (status != nullptr) {
        PIMAV_TRY_DESERIALIZE(status->Deserialize(reply["status"]));
    }
    if (counters != nullptr) {
        PIMAV_TRY_DESERIALIZE(counters->Deserialize(reply["counters"]));
    }
    if (vtc != nullptr) {
        PIMAV_TRY_DESERIALIZE(vtc->Deserialize(reply["smpte-2059"]));
    }
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::resetSystemClockCounters() {
    Json::Value reply;
    PIMAV_CHK(jsonApi.resetSystemClockCounters(reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getGlobalConfig(AvGlobalCfg* config) {
    PIMAV_CHK_NULL(config, "getGlobalConfig");
    Json::Value reply;
    PIMAV_CHK(jsonApi.getGlobalConfig(reply));
    PIMAV_TRY_DESERIALIZE(config->Deserialize(reply["global"]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::setGlobalConfig(AvGlobalCfg& config) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(config.Serialize(request["global"]));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.setGlobalConfig(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

// ---- alarms, notifications, statistics, counters ----

int AvMngApi::getAlarmStatus(std::list<SessionStatus>& sessions, std::list<Alarm>& alarms) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getAlarmStatus(reply));
    PIMAV_TRACE_OUT(reply);
    sessions.clear();
    PIMAV_TRY_DESERIALIZE(appendSessionStatus(reply["sessions"], sessions));
    PIMAV_TRY_DESERIALIZE(appendAlarms(reply["global"], alarms));
    return 0;
}

int AvMngApi::getUserNotifications(UserNotifications& notifications) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getUserNotifications(reply));
    PIMAV_TRY_DESERIALIZE(notifications.Deserialize(reply["notifications"]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSessionTPCStats(session_id_t id, TpcStatistics& stats) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["id"] = idValue(id));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.getSessionTPCStatistics(request, reply));
    PIMAV_TRY_DESERIALIZE(stats.Deserialize(reply["tpc"][Json::ArrayIndex(0)]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSessionAllTPCStats(std::list<TpcStatistics>& stats) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["all"] = Json::Value(true));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.getSessionTPCStatistics(request, reply));
    PIMAV_TRY_DESERIALIZE(appendTpc(reply["tpc"], stats));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSessionCounters(session_id_t id, Json::Value& counters) {
    Json::Value request;
    PIMAV_TRY_SERIALIZE(request["id"] = idValue(id));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.getSessionCounters(request, counters));
    PIMAV_TRACE_OUT(counters);
    return 0;
}

int AvMngApi::getSessionInternalStatus(session_id_t id, bool clearFifoLevels, bool clearCounters,
                                       bool clearPending, Json::Value& status) {
    Json::Value request;
    PIMAV_TRY_SERIALIZE(request["id"] = idValue(id));
    PIMAV_TRY_SERIALIZE(request["clear_fifo_levels"] = Json::Value(clearFifoLevels));
    PIMAV_TRY_SERIALIZE(request["clear_counters"] = Json::Value(clearCounters));
    PIMAV_TRY_SERIALIZE(request["clear_pending"] = Json::Value(clearPending));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.getSessionInternalStatus(request, status));
    PIMAV_TRACE_OUT(status);
    return 0;
}

int AvMngApi::getChannelTables(ChannelTables& tables, bool full) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(request["full"] = Json::Value(full));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.getChannelUsageTable(request, reply));
    PIMAV_TRY_DESERIALIZE(tables.Deserialize(reply["list"]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

// ---- SDI, HDMI, loop-back, video reference ----

int AvMngApi::setSdiInterface(SdiData* data) {
    PIMAV_CHK_NULL(data, "setSdiInterface");
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(data->Serialize(request["sdi"]));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.setSdiPatternGeneratorConfig(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSdiInterfaceInfo(uint32_t index, bool& locked, std::string& videoMode) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getSdiInterfaceInfo(reply));
    Json::Value interfaces;
    PIMAV_TRY_DESERIALIZE(interfaces = reply.isMember("sdi") ? reply["sdi"] : reply["interface"]);
    if (index >= interfaces.size()) {
        Logger::log(2, "Error getting interface info - index %d out of range", static_cast<int>(index));
        return -1;
    }
    PIMAV_TRY_DESERIALIZE(locked = interfaces[index].get("locked", false).asBool());
    PIMAV_TRY_DESERIALIZE(videoMode = interfaces[index].get("video_mode", "NA").asString());
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::setSdiOffset(uint32_t /*index*/, SdiOffset& offset) {
    // The port is the one the offset itself names; the daemon needs no index.
    Json::Value request;
    Json::Value reply;
    SdiOffsetList list;
    list.m_offsets.push_back(offset);
    PIMAV_TRY_SERIALIZE(list.Serialize(request["sdi-offsets"]));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.setSdiOffsets(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSdiOffset(uint32_t index, SdiOffset& offset) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getSdiOffsets(reply));
    Json::Value offsets;
    PIMAV_TRY_DESERIALIZE(offsets = reply["sdi-offsets"]);
    if (index >= offsets.size()) {
        Logger::log(2, "Error getting SDI offsets - index %d out of range", static_cast<int>(index));
        return -1;
    }
    PIMAV_TRY_DESERIALIZE(offset.Deserialize(offsets[index]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getSdiVpgInfo(uint32_t index, SdiVpgData& data) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getSdiVpgInfo(reply));
    Json::Value entries;
    PIMAV_TRY_DESERIALIZE(entries = reply["sdi-vpg-info"]);
    if (index >= entries.size()) {
        Logger::log(2, "Error getting SDI VPG info - index %d out of range", static_cast<int>(index));
        return -1;
    }
    PIMAV_TRY_DESERIALIZE(data.Deserialize(entries[index]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::setHdmiAudioOffset(HdmiAudioOffset& offset) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(offset.Serialize(request));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.setHdmiAudioOffset(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getHdmiAudioOffset(HdmiAudioOffset& offset) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getHdmiAudioOffset(reply));
    PIMAV_TRY_DESERIALIZE(offset.Deserialize(reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::setInterfaceLoopBackMode(InterfaceLoopBack& mode) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(mode.Serialize(request));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.setInterfaceLoopBackMode(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::getVideoReferenceCfg(VideoRefOutputCfg& config) {
    Json::Value reply;
    PIMAV_CHK(jsonApi.getVideoReferenceCfg(reply));
    PIMAV_TRY_DESERIALIZE(config.Deserialize(reply["video-ref"]));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

int AvMngApi::setVideoReferenceCfg(VideoRefOutputCfg& config) {
    Json::Value request;
    Json::Value reply;
    PIMAV_TRY_SERIALIZE(config.Serialize(request["video-ref"]));
    PIMAV_TRACE_IN(request);
    PIMAV_CHK(jsonApi.setVideoReferenceCfg(request, reply));
    PIMAV_TRACE_OUT(reply);
    return 0;
}

// ---- channel gains: carried by the JSON layer ----

int AvMngApi::setSourceChannelGain() { return 0; }

int AvMngApi::setDestinationChannelGain() { return 0; }

int AvMngApi::getSourceChannelGain() { return 0; }

int AvMngApi::getDestinationChannelGain() { return 0; }
