// Device-level commands of the emulated board: clock, global settings, interfaces,
// notifications, option lists and channel gains.

#include "Emulator.h"
#include "EmulatorSupport.h"
#include "pimAvMngApi/device/ClockConfig.h"
#include "pimAvMngApi/device/ClockCounters.h"
#include "pimAvMngApi/device/ClockStatus.h"
#include "pimAvMngApi/model/AvGlobalCfg.h"
#include "pimAvMngApi/model/HdmiAudioOffset.h"
#include "pimAvMngApi/model/SdiVpgData.h"
#include "pimAvMngApi/model/VideoRefOutputCfg.h"
#include "pimAvMngApi/model/VtcStatus.h"
#include "pimAvMngApi/model/InterfaceLoopBack.h"
#include "pimAvMngApi/model/SdiOffsetList.h"
#include "pimAvMngApi/model/UserNotifications.h"
#include "pimAvMngApi/model/VolumeGainApi.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

namespace {

// Name of a pattern generator's pattern control code.
std::string patternName(int code) {
    static const char* const kNames[] = {"colorbars", "ramp", "pathological", "black"};
    if (code >= 0 && code < 4) {
        return kNames[code];
    }
    return "pattern " + std::to_string(code);
}

}  // namespace

// ---- clock ----

Json::Value Emulator::cfgSystemClk(const Request& r) {
    requireId(r, "ref-type");
    ClockConfig wanted;
    readThrough(wanted, r.document, "clock configuration cannot be read");
    ClockConfig applied;
    if (applied.setClockReference(wanted.getClockRefType()) != 0) {
        throw CommandError(kValueRefused, "clock reference " + std::to_string(wanted.getClockRefType()) +
                                              " is not allowed on board " + m_options.board);
    }
    Json::Value out;
    applied.Serialize(out);
    m_settings["clock"] = out;
    return emptyReply();
}

Json::Value Emulator::getSystemClockInfo(const Request&) {
    ClockConfig config;
    Json::Value stored = m_settings["clock"];
    try {
        config.Deserialize(stored);
    } catch (const std::exception&) {
        config = ClockConfig();
    }
    const bool external = config.getClockRefType() == ClockConfig::CLOCK_REF_AUTO_EXTERNAL;
    ClockStatus status;
    status.setClockInterfaceStatus(ClockStatus::INTERFACE_CLOCK_LOCKED);
    status.setCurrentClockReference(external ? ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE
                                             : ClockStatus::CURRENT_REF_PTP_SLAVE);
    ClockCounters counters;
    counters.m_current = m_clock_counters.get("current", 512).asUInt();
    counters.m_min = m_clock_counters.get("min", 508).asUInt();
    counters.m_max = m_clock_counters.get("max", 516).asUInt();
    Json::Value reply;
    config.Serialize(reply["config"]);
    status.Serialize(reply["status"]);
    counters.Serialize(reply["counters"]);
    VtcStatus vtc;
    vtc.m_locked = !external;
    vtc.m_master_locking_status = external ? VtcStatus::FREE_RUN : VtcStatus::WARM_LOCKED;
    vtc.Serialize(reply["smpte-2059"]);
    return reply;
}

Json::Value Emulator::resetSystemClockCounters(const Request&) {
    m_clock_counters["current"] = 512;
    m_clock_counters["min"] = 512;
    m_clock_counters["max"] = 512;
    return emptyReply();
}

// ---- global settings and notifications ----

Json::Value Emulator::getGlobalConfig(const Request&) { return memberReply("global", m_settings["global"]); }

Json::Value Emulator::setGlobalConfig(const Request& r) { return mergeSetting(r, "global"); }

Json::Value Emulator::getUserNotifications(const Request&) {
    UserNotifications notifications;
    notifications.m_running_is_not_saved = !m_sessions.empty();
    notifications.m_startup_applied = !m_table.isStartupTheDefault();
    Json::Value reply;
    notifications.Serialize(reply["notifications"]);
    return reply;
}

// ---- SDI, HDMI, loop-back, video reference ----

Json::Value Emulator::setSdiPatternGeneratorConfig(const Request& r) {
    // The settings of the port that "sdi-port" names (SdiData form), kept per port.
    const Json::Value sdi = readSdiPattern(requireObjectMember(r, "sdi"), "\"sdi\"");
    m_settings["sdi-pattern"][std::to_string(sdi["sdi-port"].asUInt())] = sdi;
    return emptyReply();
}

Json::Value Emulator::setHdmiPatternGeneratorConfig(const Request& r) {
    m_settings["hdmi-pattern"] =
        readSetting("hdmi-pattern", requireObjectMember(r, "hdmi"), m_settings["hdmi-pattern"], "\"hdmi\"");
    return emptyReply();
}

Json::Value Emulator::getSdiInterfaceInfo(const Request&) {
    Json::Value reply;
    for (int port = 0; port < kSdiPorts; ++port) {
        Json::Value e;
        e["port"] = port;
        e["locked"] = port == 0;
        e["video_mode"] = port == 0 ? "1080p50" : "NA";
        reply["sdi"].append(e);
    }
    return reply;
}

Json::Value Emulator::getSdiOffsets(const Request&) { return memberReply("sdi-offsets", m_settings["sdi-offsets"]); }

Json::Value Emulator::setSdiOffsets(const Request& r) {
    const Json::Value& doc = documentOf(r);
    if (!doc["sdi-offsets"].isArray()) {
        throw CommandError(kBadRequest, "request needs the array \"sdi-offsets\"");
    }
    SdiOffsetList list;
    for (const auto& offset : throughRecord(list, doc["sdi-offsets"], "\"sdi-offsets\" cannot be read")) {
        const int port = offset.get("sdi-port", 0).asInt();
        bool replaced = false;
        for (auto& existing : m_settings["sdi-offsets"]) {
            if (existing.get("sdi-port", -1).asInt() == port) {
                existing = offset;
                replaced = true;
            }
        }
        if (!replaced) {
            m_settings["sdi-offsets"].append(offset);
        }
    }
    return emptyReply();
}

Json::Value Emulator::getHdmiAudioOffset(const Request&) { return m_settings["hdmi-audio-offset"]; }

Json::Value Emulator::setHdmiAudioOffset(const Request& r) {
    const Json::Value& in = documentOf(r);
    if (!in.isMember("hdmi-audio-offset")) {
        throw CommandError(kBadRequest, "request needs the member \"hdmi-audio-offset\"");
    }
    HdmiAudioOffset offset;
    m_settings["hdmi-audio-offset"] = throughRecord(offset, in, "\"hdmi-audio-offset\" cannot be read");
    return emptyReply();
}

Json::Value Emulator::getSdiVpgInfo(const Request&) {
    Json::Value reply;
    for (uint8_t port = 0; port < kSdiPorts; ++port) {
        // What command 29 set for this port: {"sdi-port", "vpg": {"patctrl", "video-format",
        // "enable", "sync-enable"}}; a port never set has its generator off.
        const Json::Value vpg =
            m_settings["sdi-pattern"].get(std::to_string(port), Json::Value()).get("vpg", Json::Value());
        SdiVpgData data;
        data.m_port = port;
        data.m_enable = vpg.isObject() && vpg.get("enable", false).asBool();
        data.m_pattern = patternName(vpg.isObject() ? vpg.get("patctrl", 0).asInt() : 0);
        data.m_video_mode = data.m_enable ? vpg.get("video-format", "NA").asString() : "NA";
        Json::Value e;
        data.Serialize(e);
        reply["sdi-vpg-info"].append(e);
    }
    return reply;
}

Json::Value Emulator::setInterfaceLoopBackMode(const Request& r) {
    requireObjectMember(r, "interface");
    InterfaceLoopBack mode;
    const Json::Value out = throughRecord(mode, r.document, "loop-back request cannot be read");
    Json::Value kept(Json::arrayValue);
    for (const auto& existing : m_settings["loopback"]) {
        if (existing["interface"] != out["interface"]) {
            kept.append(existing);
        }
    }
    kept.append(out);
    m_settings["loopback"] = kept;
    return emptyReply();
}

Json::Value Emulator::getVideoReferenceCfg(const Request&) { return memberReply("video-ref", m_settings["video-ref"]); }

Json::Value Emulator::setVideoReferenceCfg(const Request& r) { return mergeSetting(r, "video-ref"); }

// ---- option lists ----

Json::Value Emulator::getDigitalInterfaces(const Request&) {
    Json::Value reply;
    const char* const names[] = {"sdi", "hdmi", "tdm", "madi", "aes3"};
    for (unsigned i = 0; i < 5; ++i) {
        Json::Value e;
        e["index"] = i;
        e["name"] = names[i];
        e["channels"] = i < 2 ? 16 : 64;
        reply["list"].append(e);
    }
    return reply;
}

Json::Value Emulator::getWebServices(const Request&) {
    Json::Value reply;
    const char* const names[] = {"http", "nmos", "sap", "rtsp"};
    const int ports[] = {80, 3212, 9875, 554};
    for (unsigned i = 0; i < 4; ++i) {
        Json::Value e;
        e["name"] = names[i];
        e["port"] = ports[i];
        e["enabled"] = true;
        reply["list"].append(e);
    }
    return reply;
}

Json::Value Emulator::getCodecs(const Request&) {
    Json::Value reply;
    for (const char* codec : {"AM824", "L32", "L24", "L16", "SMPTE2022-6", "AM824_TRANSPARENT", "raw"}) {
        reply["list"].append(codec);
    }
    return reply;
}

Json::Value Emulator::getTdmCfgOptions(const Request&) {
    Json::Value reply;
    for (int slots : {2, 4, 8, 16}) {
        reply["slots"].append(slots);
    }
    for (int bits : {16, 24, 32}) {
        reply["bits"].append(bits);
    }
    reply["modes"].append("i2s");
    reply["modes"].append("tdm");
    return reply;
}

Json::Value Emulator::getAudioCfgOptions(const Request&) {
    Json::Value reply;
    for (int f : {44100, 48000, 96000}) {
        reply["channel-freq"].append(f);
    }
    for (int p : {125, 250, 333, 1000, 4000}) {
        reply["ptime"].append(p);
    }
    for (const char* codec : {"L16", "L24", "AM824"}) {
        reply["codec"].append(codec);
    }
    return reply;
}

Json::Value Emulator::getDefaultConfigurationParams(const Request&) {
    Json::Value reply;
    reply["audio"]["udp"] = 5004;
    reply["audio"]["dscp"] = 34;
    reply["audio"]["ttl"] = 64;
    reply["audio"]["payload-type"] = 98;
    reply["audio"]["ptime"] = 1000;
    reply["audio"]["channel-freq"] = 48000;
    reply["audio"]["codec"] = "L24";
    reply["video"]["udp"] = 20000;
    reply["video"]["dscp"] = 40;
    reply["video"]["payload-type"] = 96;
    reply["board"]["model"] = m_options.board;
    reply["board"]["module"] = m_options.module;
    reply["board"]["local-ip"] = m_options.localAddress;
    return reply;
}

Json::Value Emulator::getInternalDebugInfo(const Request&) {
    Json::Value reply;
    reply["sessions"] = static_cast<unsigned>(m_sessions.size());
    reply["advertised"] = static_cast<unsigned>(m_advertised.size());
    reply["next-session-id"] = Json::UInt64(m_next_session_id);
    reply["next-stream-id"] = Json::UInt64(m_next_stream_id);
    reply["startup"] = m_table.getStartupPosition();
    for (const auto& [name, section] : m_debug_sections) {
        reply[name] = section();
    }
    return reply;
}

// ---- channel gains ----

Json::Value Emulator::gainReply(const char* table, const Request& r, unsigned command) {
    Json::Value request = documentOf(r);
    const int result = VolumeGainApi::Validate(request, command);
    if (result < 0) {
        const bool needsSession = command == 52 || command == 54;
        refuseWithUserMessages(result, needsSession && !request.isMember("session-id")
                                           ? "request needs the member \"session-id\":"
                                           : "");
    }
    std::string key = "all";
    if (command == 52 || command == 54) {
        Request lookup;
        lookup.hasDocument = true;
        lookup.document["id"] = request["session-id"];
        key = std::to_string(findSession(lookup).id);
    }
    Json::Value& gains = m_settings[table][key];
    if (command == 52 || command == 53) {
        for (const auto& change : request["channel-list"]) {
            const std::string position = std::to_string(change["position"].asInt());
            gains[position]["position"] = change["position"].asInt();
            gains[position]["channel-gain"] = change["channel-gain"].asDouble();
            gains[position]["mute"] = change["mute"].asBool();
        }
        return emptyReply();
    }
    Json::Value reply;
    if (command == 54) {
        reply["session-id"] = request["session-id"];
    }
    reply["channel-list"] = Json::Value(Json::arrayValue);
    auto entryFor = [&](int position) {
        const std::string k = std::to_string(position);
        if (gains.isMember(k)) {
            return gains[k];
        }
        Json::Value e;
        e["position"] = position;
        e["channel-gain"] = 1.0;
        e["mute"] = false;
        return e;
    };
    if (command == 55) {
        for (const auto& wanted : request["channel-list"]) {
            const int position = wanted.isObject() ? wanted.get("position", 0).asInt() : wanted.asInt();
            reply["channel-list"].append(entryFor(position));
        }
    } else {
        for (const auto& k : gains.getMemberNames()) {
            reply["channel-list"].append(gains[k]);
        }
    }
    return reply;
}

Json::Value Emulator::setSourceChannelGain(const Request& r) { return gainReply("source-gains", r, 52); }

Json::Value Emulator::setDestinationChannelGain(const Request& r) { return gainReply("destination-gains", r, 53); }

Json::Value Emulator::getSourceChannelGain(const Request& r) { return gainReply("source-gains", r, 54); }

Json::Value Emulator::getDestinationChannelGain(const Request& r) { return gainReply("destination-gains", r, 55); }

}  // namespace pimav::detail
