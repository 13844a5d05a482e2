// Typed client API: device-level operations (configuration files, clock, global
// settings, alarms and statistics, SDI/HDMI/video reference interfaces, gains).

#include "api/TypedExchange.h"
#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/model/SdiOffsetList.h"
#include "platform/RecordArrays.h"

using namespace pimav::detail;

namespace {

// The entry `index` of a reply's list; logs "Error getting <what> - index <index> out of
// range" and gives -1 when the list is shorter.
int entryAt(const Json::Value& entries, uint32_t index, const char* what, Json::Value& entry) {
    if (index >= entries.size()) {
        Logger::log(2, "Error getting %s - index %d out of range", what, static_cast<int>(index));
        return -1;
    }
    entry = entries[index];
    return 0;
}

// Reads entry `index` of the reply's list `key` into `record`.
template <typename Record>
auto readEntry(Record& record, const char* key, uint32_t index, const char* what) {
    return [&record, key, index, what](Json::Value& reply) {
        Json::Value entry;
        const int rc = entryAt(reply[key], index, what, entry);
        if (rc == 0) {
            record.Deserialize(entry);
        }
        return rc;
    };
}

}  // namespace

// ---- saved configuration files ----

int AvMngApi::fileCfgSaveRunning(unsigned int pos, std::string* name, bool startup) {
    PIMAV_CHK_NULL(name, "fileCfgSaveRunning");
    const auto write = [&](Json::Value& request) {
        request["pos"] = Json::Value(pos);
        request["name"] = Json::Value(*name);
        request["startup"] = Json::Value(startup);
    };
    return PIMAV_EXCHANGE(fileCfgSaveRunning, write, NoReply());
}

int AvMngApi::fileCfgLoadCfgToRunning(unsigned int pos) {
    return PIMAV_EXCHANGE(fileCfgLoadCfgToRunning, withMember("pos", Json::Value(pos)), NoReply());
}

int AvMngApi::fileCfgLoadDefaultToRunning() {
    return PIMAV_EXCHANGE(fileCfgLoadCfgToRunning, withMember("default", Json::Value(true)), NoReply());
}

int AvMngApi::fileCfgGetTable(CfgFileTable* table) {
    // The table is filled in place; without one there is nothing to fill, so the
    // request is not sent.
    PIMAV_CHK_NULL(table, "fileCfgGetTable");
    return PIMAV_EXCHANGE(fileCfgGetTable, readInto(*table));
}

int AvMngApi::fileCfgSetStartupPos(unsigned int pos) {
    return PIMAV_EXCHANGE(fileCfgSetStartupPos, withMember("pos", Json::Value(pos)), NoReply());
}

int AvMngApi::fileCfgRemoveConfig(unsigned int pos) {
    return PIMAV_EXCHANGE(fileCfgRemoveConfig, withMember("pos", Json::Value(pos)), NoReply());
}

// ---- system clock and global settings ----

int AvMngApi::cfgSystemClock(ClockConfig* config) {
    PIMAV_CHK_NULL(config, "cfgSystemClock");
    return PIMAV_EXCHANGE(cfgSystemClk, writtenBy(*config), NoReply());
}

int AvMngApi::getSystemClockInfo(ClockConfig* config, ClockStatus* status, ClockCounters* counters,
                                 VtcStatus* vtc) {
    // Each record the caller passes is read from its member of the reply.
    const auto read = [&](Json::Value& reply) {
        if (config != nullptr) {
            config->Deserialize(reply["config"]);
        }
        if (status != nullptr) {
            status->Deserialize(reply["status"]);
        }
        if (counters != nullptr) {
            counters->Deserialize(reply["counters"]);
        }
        if (vtc != nullptr) {
            vtc->Deserialize(reply["smpte-2059"]);
        }
    };
    return PIMAV_EXCHANGE(getSystemClockInfo, read);
}

int AvMngApi::resetSystemClockCounters() {
    return PIMAV_EXCHANGE(resetSystemClockCounters, NoReply());
}

int AvMngApi::getGlobalConfig(AvGlobalCfg* config) {
    PIMAV_CHK_NULL(config, "getGlobalConfig");
    return PIMAV_EXCHANGE(getGlobalConfig, readInto(*config, "global"));
}

int AvMngApi::setGlobalConfig(AvGlobalCfg& config) {
    return PIMAV_EXCHANGE(setGlobalConfig, writtenBy(config, "global"), NoReply());
}

// ---- alarms, notifications, statistics, counters ----

int AvMngApi::getAlarmStatus(std::list<SessionStatus>& sessions, std::list<Alarm>& alarms) {
    // The reply is traced before it is read: what the daemon sent shows even when a
    // record cannot read it.
    Json::Value reply;
    PIMAV_CHK(jsonApi.getAlarmStatus(reply));
    PIMAV_TRACE_OUT(reply);
    sessions.clear();
    PIMAV_TRY_DESERIALIZE(appendEach(reply["sessions"], sessions));
    PIMAV_TRY_DESERIALIZE(appendEach(reply["global"], alarms));
    return 0;
}

int AvMngApi::getUserNotifications(UserNotifications& notifications) {
    return PIMAV_EXCHANGE(getUserNotifications, readInto(notifications, "notifications"));
}

int AvMngApi::getSessionTPCStats(session_id_t id, TpcStatistics& stats) {
    const auto read = [&](Json::Value& reply) { stats.Deserialize(reply["tpc"][Json::ArrayIndex(0)]); };
    return PIMAV_EXCHANGE(getSessionTPCStatistics, withMember("id", idValue(id)), read);
}

int AvMngApi::getSessionAllTPCStats(std::list<TpcStatistics>& stats) {
    const auto read = [&](Json::Value& reply) { appendEach(reply["tpc"], stats); };
    return PIMAV_EXCHANGE(getSessionTPCStatistics, withMember("all", Json::Value(true)), read);
}

int AvMngApi::getSessionCounters(session_id_t id, Json::Value& counters) {
    const auto read = [&](Json::Value& reply) { counters = reply; };
    return PIMAV_EXCHANGE(getSessionCounters, withMember("id", idValue(id)), read);
}

int AvMngApi::getSessionInternalStatus(session_id_t id, bool clearFifoLevels, bool clearCounters,
                                       bool clearPending, Json::Value& status) {
    const auto write = [&](Json::Value& request) {
        request["id"] = idValue(id);
        request["clear_fifo_levels"] = Json::Value(clearFifoLevels);
        request["clear_counters"] = Json::Value(clearCounters);
        request["clear_pending"] = Json::Value(clearPending);
    };
    const auto read = [&](Json::Value& reply) { status = reply; };
    return PIMAV_EXCHANGE(getSessionInternalStatus, write, read);
}

int AvMngApi::getChannelTables(ChannelTables& tables, bool full) {
    return PIMAV_EXCHANGE(getChannelUsageTable, withMember("full", Json::Value(full)),
                          readInto(tables, "list"));
}

// ---- SDI, HDMI, loop-back, video reference ----

int AvMngApi::setSdiInterface(SdiData* data) {
    PIMAV_CHK_NULL(data, "setSdiInterface");
    return PIMAV_EXCHANGE(setSdiPatternGeneratorConfig, writtenBy(*data, "sdi"), NoReply());
}

int AvMngApi::getSdiInterfaceInfo(uint32_t index, bool& locked, std::string& videoMode) {
    const auto read = [&](Json::Value& reply) {
        Json::Value port;
        const int rc =
            entryAt(reply.isMember("sdi") ? reply["sdi"] : reply["interface"], index, "interface info", port);
        if (rc == 0) {
            locked = port.get("locked", false).asBool();
            videoMode = port.get("video_mode", "NA").asString();
        }
        return rc;
    };
    return PIMAV_EXCHANGE(getSdiInterfaceInfo, read);
}

int AvMngApi::setSdiOffset(uint32_t /*index*/, SdiOffset& offset) {
    // The port is the one the offset itself names; the daemon needs no index.
    const auto write = [&](Json::Value& request) {
        SdiOffsetList list;
        list.m_offsets.push_back(offset);
        list.Serialize(request["sdi-offsets"]);
    };
    return PIMAV_EXCHANGE(setSdiOffsets, write, NoReply());
}

int AvMngApi::getSdiOffset(uint32_t index, SdiOffset& offset) {
    return PIMAV_EXCHANGE(getSdiOffsets, readEntry(offset, "sdi-offsets", index, "SDI offsets"));
}

int AvMngApi::getSdiVpgInfo(uint32_t index, SdiVpgData& data) {
    return PIMAV_EXCHANGE(getSdiVpgInfo, readEntry(data, "sdi-vpg-info", index, "SDI VPG info"));
}

int AvMngApi::setHdmiAudioOffset(HdmiAudioOffset& offset) {
    return PIMAV_EXCHANGE(setHdmiAudioOffset, writtenBy(offset), NoReply());
}

int AvMngApi::getHdmiAudioOffset(HdmiAudioOffset& offset) {
    return PIMAV_EXCHANGE(getHdmiAudioOffset, readInto(offset));
}

int AvMngApi::setInterfaceLoopBackMode(InterfaceLoopBack& mode) {
    return PIMAV_EXCHANGE(setInterfaceLoopBackMode, writtenBy(mode), NoReply());
}

int AvMngApi::getVideoReferenceCfg(VideoRefOutputCfg& config) {
    return PIMAV_EXCHANGE(getVideoReferenceCfg, readInto(config, "video-ref"));
}

int AvMngApi::setVideoReferenceCfg(VideoRefOutputCfg& config) {
    return PIMAV_EXCHANGE(setVideoReferenceCfg, writtenBy(config, "video-ref"), NoReply());
}

// ---- channel gains: carried by the JSON layer ----

int AvMngApi::setSourceChannelGain() { return 0; }

int AvMngApi::setDestinationChannelGain() { return 0; }

int AvMngApi::getSourceChannelGain() { return 0; }

int AvMngApi::getDestinationChannelGain() { return 0; }
