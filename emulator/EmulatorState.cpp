// The stored forms of the emulator's state: a running state document (command 12, the
// saved configurations, running.json) and each device setting, read with every member
// checked and every record normalised, so that what the emulator keeps is what the
// commands that read it can always serve.

#include <memory>

#include "Emulator.h"
#include "EmulatorSupport.h"
#include "pimAvMngApi/device/ClockConfig.h"
#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "pimAvMngApi/model/AudioStreamData.h"
#include "pimAvMngApi/model/AvGlobalCfg.h"
#include "pimAvMngApi/model/HdmiAudioOffset.h"
#include "pimAvMngApi/model/InterfaceLoopBack.h"
#include "pimAvMngApi/model/SdiOffsetList.h"
#include "pimAvMngApi/model/VideoRefOutputCfg.h"
#include "pimAvMngApi/model/VideoStreamData.h"
#include "pimAvMngApi/platform/Alarm.h"

namespace pimav::detail {

namespace {

[[noreturn]] void refuse(const std::string& where, const std::string& what) {
    throw CommandError(kBadRequest, where + " " + what);
}

std::string indexPath(const std::string& where, Json::Value::ArrayIndex i) {
    return where + "[" + std::to_string(i) + "]";
}

const Json::Value& arrayOf(const Json::Value& value, const std::string& where) {
    if (!value.isArray()) {
        refuse(where, "must be an array");
    }
    return value;
}

const Json::Value& objectOf(const Json::Value& value, const std::string& where) {
    if (!value.isObject()) {
        refuse(where, "must be an object");
    }
    return value;
}

template <typename Record>
Json::Value record(const Json::Value& value, const std::string& where) {
    Record r;
    return throughRecord(r, objectOf(value, where), where + " cannot be read");
}

template <typename Record>
Json::Value recordOver(const Json::Value& given, const Json::Value& current, const std::string& where) {
    Record r;
    return throughRecord(r, mergedOver(current, objectOf(given, where)), where + " cannot be read");
}

template <typename Record>
Json::Value eachRecord(const Json::Value& given, const std::string& where) {
    Json::Value out(Json::arrayValue);
    for (Json::Value::ArrayIndex i = 0; i < arrayOf(given, where).size(); ++i) {
        out.append(record<Record>(given[i], indexPath(where, i)));
    }
    return out;
}

// An optional member of the kind that `is` tests; copied into `out` when present.
void optionalMember(const Json::Value& in, Json::Value& out, const char* key, bool (Json::Value::*is)() const,
                    const char* kind, const std::string& where) {
    if (!in.isMember(key)) {
        return;
    }
    if (!(in[key].*is)()) {
        refuse(memberPath(where, key), std::string("must be ") + kind);
    }
    out[key] = in[key];
}

}  // namespace

// The settings of one SDI port: {"sdi-port", "vpg": {"patctrl", "video-format", "enable",
// "sync-enable"}}; other members are not kept.
Json::Value readSdiPattern(const Json::Value& given, const std::string& where) {
    objectOf(given, where);
    const Json::Value& port = given.get("sdi-port", 0);
    if (!port.isUInt() || port.asUInt() >= kSdiPorts) {
        throw CommandError(kValueRefused, memberPath(where, "sdi-port") + " must be a port number below " +
                                              std::to_string(kSdiPorts));
    }
    Json::Value out(Json::objectValue);
    out["sdi-port"] = port.asUInt();
    if (given.isMember("vpg")) {
        const std::string at = memberPath(where, "vpg");
        const Json::Value& vpg = objectOf(given["vpg"], at);
        Json::Value kept(Json::objectValue);
        optionalMember(vpg, kept, "patctrl", &Json::Value::isInt, "an integer", at);
        optionalMember(vpg, kept, "video-format", &Json::Value::isString, "a text", at);
        optionalMember(vpg, kept, "enable", &Json::Value::isBool, "a boolean", at);
        optionalMember(vpg, kept, "sync-enable", &Json::Value::isBool, "a boolean", at);
        requireOneLine(kept["video-format"], memberPath(at, "video-format"));
        out["vpg"] = kept;
    }
    return out;
}

namespace {

Json::Value sdiPatterns(const Json::Value& given, const Json::Value&, const std::string& where) {
    Json::Value out(Json::objectValue);
    for (const auto& key : objectOf(given, where).getMemberNames()) {
        const Json::Value port = readSdiPattern(given[key], memberPath(where, key.c_str()));
        if (key != std::to_string(port["sdi-port"].asUInt())) {
            refuse(memberPath(where, key.c_str()), "must hold the settings of the port it names");
        }
        out[key] = port;
    }
    return out;
}

// The HDMI pattern generator's settings are kept as the host wrote them, bounded.
Json::Value hdmiPattern(const Json::Value& given, const Json::Value&, const std::string& where) {
    requireBoundedDepth(objectOf(given, where), where);
    return given;
}

// Gain tables: {"all" or a session id: {position: {"position", "channel-gain", "mute"}}}.
Json::Value gains(const Json::Value& given, const Json::Value&, const std::string& where) {
    Json::Value out(Json::objectValue);
    for (const auto& table : objectOf(given, where).getMemberNames()) {
        const std::string at = memberPath(where, table.c_str());
        if (table != "all" && (table.empty() || table.find_first_not_of("0123456789") != std::string::npos)) {
            refuse(at, "must be \"all\" or a session id");
        }
        for (const auto& position : objectOf(given[table], at).getMemberNames()) {
            const std::string entryAt = memberPath(at, position.c_str());
            const Json::Value& entry = objectOf(given[table][position], entryAt);
            if (!entry["position"].isInt() || std::to_string(entry["position"].asInt()) != position ||
                !entry["channel-gain"].isDouble() || !entry["mute"].isBool()) {
                refuse(entryAt, "must be {\"position\": " + position +
                                    ", \"channel-gain\": number, \"mute\": boolean}");
            }
            Json::Value& kept = out[table][position];
            kept["position"] = entry["position"].asInt();
            kept["channel-gain"] = entry["channel-gain"].asDouble();
            kept["mute"] = entry["mute"].asBool();
        }
    }
    return out;
}

using SettingReader = Json::Value (*)(const Json::Value& given, const Json::Value& current,
                                      const std::string& where);

// One reader per member of defaultSettings().
const std::map<std::string, SettingReader>& settingReaders() {
    static const std::map<std::string, SettingReader> readers = {
        {"clock", [](const Json::Value& g, const Json::Value&,
                     const std::string& w) { return record<ClockConfig>(g, w); }},
        {"global", recordOver<AvGlobalCfg>},
        {"sdi-pattern", sdiPatterns},
        {"hdmi-pattern", hdmiPattern},
        {"sdi-offsets",
         [](const Json::Value& g, const Json::Value&, const std::string& w) {
             SdiOffsetList list;
             return throughRecord(list, arrayOf(g, w), w + " cannot be read");
         }},
        {"hdmi-audio-offset", recordOver<HdmiAudioOffset>},
        {"loopback", [](const Json::Value& g, const Json::Value&,
                        const std::string& w) { return eachRecord<InterfaceLoopBack>(g, w); }},
        {"video-ref", recordOver<VideoRefOutputCfg>},
        {"source-gains", gains},
        {"destination-gains", gains},
        {"alarms", [](const Json::Value& g, const Json::Value&,
                      const std::string& w) { return eachRecord<Alarm>(g, w); }},
    };
    return readers;
}

// A stream document through the record of its type.
Json::Value streamDocument(const Json::Value& given, const std::string& where) {
    objectOf(given, where);
    const Json::Value& type = given.get("type", "");
    if (!type.isString()) {
        refuse(memberPath(where, "type"), "must be a text");
    }
    std::unique_ptr<StreamData> r;
    if (type.asString() == "audio") {
        r = std::make_unique<AudioStreamData>();
    } else if (type.asString() == "video") {
        r = std::make_unique<VideoStreamData>();
    } else {
        r = std::make_unique<AncillaryStreamData>();
    }
    Json::Value out = throughRecord(*r, given, where + " cannot be read");
    requireOneLine(out["name"], memberPath(where, "name"));
    return out;
}

EmulatedSession readSession(const Json::Value& e, const std::string& where) {
    objectOf(e, where);
    EmulatedSession s;
    if (!e["id"].isUInt64() || e["id"].asUInt64() == 0) {
        refuse(memberPath(where, "id"), "must be a non-zero unsigned integer");
    }
    s.id = e["id"].asUInt64();
    const Json::Value& kind = e.get("kind", "sender");
    const std::string kindText = kind.isString() ? kind.asString() : "";
    if (kindText == "sender") {
        s.kind = EmulatedSession::SENDER;
    } else if (kindText == "receiver") {
        s.kind = EmulatedSession::RECEIVER;
    } else if (kindText == "manual-receiver") {
        s.kind = EmulatedSession::MANUAL_RECEIVER;
    } else {
        refuse(memberPath(where, "kind"), "must be \"sender\", \"receiver\" or \"manual-receiver\"");
    }
    const Json::Value& paused = e.get("paused", false);
    const Json::Value& version = e.get("version", 1);
    const Json::Value& sdp = e.get("sdp", "");
    if (!paused.isBool()) {
        refuse(memberPath(where, "paused"), "must be a boolean");
    }
    if (!version.isUInt64()) {
        refuse(memberPath(where, "version"), "must be an unsigned integer");
    }
    if (!sdp.isString() || sdp.asString().find('\0') != std::string::npos) {
        refuse(memberPath(where, "sdp"), "must be a text without NUL characters");
    }
    s.paused = paused.asBool();
    s.version = version.asUInt64();
    s.sdp = sdp.asString();
    const std::string configAt = memberPath(where, "config");
    const Json::Value& config = objectOf(e["config"], configAt);
    try {
        // Receivers of user SDP keep the receiver form; manual receivers the sender form.
        const bool receiverForm = s.kind == EmulatedSession::RECEIVER || config.isMember("user-sdp");
        s.config = receiverForm ? normaliseDestinationApi(config) : normaliseSourceApi(config);
    } catch (const CommandError& error) {
        throw CommandError(error.code(), configAt + ": " + error.what());
    }
    s.config["session-id"] = Json::UInt64(s.id);
    requireOneLineNames(s.config, configAt);
    s.streams = Json::Value(Json::arrayValue);
    const std::string streamsAt = memberPath(where, "streams");
    const Json::Value& streams = e.get("streams", Json::Value(Json::arrayValue));
    for (Json::Value::ArrayIndex i = 0; i < arrayOf(streams, streamsAt).size(); ++i) {
        s.streams.append(streamDocument(streams[i], indexPath(streamsAt, i)));
    }
    return s;
}

}  // namespace

Json::Value readSetting(const std::string& key, const Json::Value& given, const Json::Value& current,
                        const std::string& where) {
    const auto reader = settingReaders().find(key);
    if (reader == settingReaders().end()) {
        refuse(where, "is not a setting of the device");
    }
    return reader->second(given, current, where);
}

RunningState readRunningState(const Json::Value& doc) {
    if (!doc.isObject() || !doc.isMember("sessions")) {
        throw CommandError(kBadRequest, "a running state needs the member \"sessions\"");
    }
    RunningState state;
    const Json::Value& list = arrayOf(doc["sessions"], "\"sessions\"");
    for (Json::Value::ArrayIndex i = 0; i < list.size(); ++i) {
        EmulatedSession s = readSession(list[i], indexPath("\"sessions\"", i));
        if (state.sessions.count(s.id) != 0) {
            refuse(memberPath(indexPath("\"sessions\"", i), "id"), "repeats the id of another session");
        }
        state.sessions[s.id] = std::move(s);
    }
    for (const char* key : {"next-session-id", "next-stream-id"}) {
        if (doc.isMember(key) && !doc[key].isUInt64()) {
            refuse(memberPath("", key), "must be an unsigned integer");
        }
    }
    state.nextSessionId = doc.get("next-session-id", 1).asUInt64();
    state.nextStreamId = doc.get("next-stream-id", 1).asUInt64();
    state.settings = defaultSettings();
    if (doc.isMember("settings")) {
        const Json::Value& settings = objectOf(doc["settings"], "\"settings\"");
        for (const auto& key : settings.getMemberNames()) {
            state.settings[key] =
                readSetting(key, settings[key], state.settings[key], memberPath("\"settings\"", key.c_str()));
        }
    }
    return state;
}

}  // namespace pimav::detail
