#include "EmulatorSupport.h"

#include <algorithm>
#include <memory>

#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "pimAvMngApi/model/AudioStreamData.h"
#include "pimAvMngApi/model/AvGlobalCfg.h"
#include "pimAvMngApi/model/VideoStreamData.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/VideoRefOutputCfg.h"
#include "pimAvMngApi/model/SourceApi.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"

namespace pimav::detail {

const char* const kSourceLists[3] = {"audio-sources", "video-sources", "ancillary-sources"};

uint64_t requireId(const Request& r, const char* key) {
    if (!r.hasDocument || !r.document.isMember(key)) {
        throw CommandError(kBadRequest, std::string("request needs the member \"") + key + "\"");
    }
    const Json::Value& v = r.document[key];
    if (!v.isUInt64()) {
        throw CommandError(kBadRequest, std::string("\"") + key + "\" must be an unsigned integer");
    }
    return v.asUInt64();
}

unsigned requirePosition(const Request& r) {
    const uint64_t pos = requireId(r, "pos");
    if (pos > 10) {
        throw CommandError(kValueRefused, "position " + std::to_string(pos) + " is out of range 0..10");
    }
    return static_cast<unsigned>(pos);
}

bool optionalBool(const Request& r, const char* key, bool fallback) {
    if (!r.hasDocument || !r.document.isMember(key)) {
        return fallback;
    }
    const Json::Value& v = r.document[key];
    if (!v.isBool()) {
        throw CommandError(kBadRequest, std::string("\"") + key + "\" must be a boolean");
    }
    return v.asBool();
}

const Json::Value& requireObjectMember(const Request& r, const char* key) {
    if (!r.hasDocument || !r.document.isMember(key) || !r.document[key].isObject()) {
        throw CommandError(kBadRequest, std::string("request needs the object \"") + key + "\"");
    }
    return r.document[key];
}

const Json::Value& documentOf(const Request& r) {
    static const Json::Value empty(Json::objectValue);
    return r.hasDocument ? r.document : empty;
}

std::string memberPath(const std::string& where, const char* key) {
    return (where.empty() ? "" : where + ".") + "\"" + key + "\"";
}

void requireOneLine(const Json::Value& text, const std::string& where) {
    if (text.isString() && text.asString().find_first_of(std::string("\r\n\0", 3)) != std::string::npos) {
        throw CommandError(kBadRequest, where + " must not hold a line break (CR, LF) or NUL character");
    }
}

void requireOneLineNames(const Json::Value& config, const std::string& where) {
    requireOneLine(config["name"], memberPath(where, "name"));
    for (const char* list : kSourceLists) {
        const Json::Value& sources = config[list];
        for (Json::Value::ArrayIndex i = 0; sources.isArray() && i < sources.size(); ++i) {
            requireOneLine(sources[i]["name"],
                           memberPath(memberPath(where, list) + "[" + std::to_string(i) + "]", "name"));
        }
    }
}

namespace {

bool deeperThan(const Json::Value& doc, unsigned levels) {
    if (!doc.isObject() && !doc.isArray()) {
        return false;
    }
    if (levels == 0) {
        return true;
    }
    for (const auto& child : doc) {
        if (deeperThan(child, levels - 1)) {
            return true;
        }
    }
    return false;
}

}  // namespace

void requireBoundedDepth(const Json::Value& doc, const std::string& where) {
    if (deeperThan(doc, kMaxStoredDepth)) {
        throw CommandError(kDocumentTooLarge,
                           where + " is nested deeper than " + std::to_string(kMaxStoredDepth) + " levels");
    }
}

// Refuses with the user messages that a validation left in the collector.
void refuseWithUserMessages(int code, const std::string& what) {
    const auto messages = ErrorAuxMsg::getInstance()->getMessages();
    ErrorAuxMsg::getInstance()->clear();
    std::string text = what;
    for (const auto& m : messages) {
        text += (text.empty() ? "" : " ") + m;
    }
    throw CommandError(code, text, messages);
}

Json::Value emptyReply() { return Json::Value(Json::objectValue); }

Json::Value memberReply(const char* key, const Json::Value& value) {
    Json::Value reply(Json::objectValue);
    reply[key] = value;
    return reply;
}

std::string compactText(const Json::Value& value) { return renderReply(value); }

std::string dotted(uint32_t address) {
    return std::to_string((address >> 24) & 0xFF) + "." + std::to_string((address >> 16) & 0xFF) + "." +
           std::to_string((address >> 8) & 0xFF) + "." + std::to_string(address & 0xFF);
}

bool addressUnset(const Json::Value& v) {
    return !v.isString() || v.asString().empty() || v.asString() == "0.0.0.0";
}

std::string withSdpVersion(const std::string& sdp, uint64_t version) {
    // o=<username> <sess-id> <sess-version> <nettype> <addrtype> <address>
    const size_t line = sdp.rfind("o=", 0) == 0 ? 0 : sdp.find("\no=");
    if (line == std::string::npos) {
        return sdp;
    }
    const size_t lineEnd = std::min(sdp.find_first_of("\r\n", line + 1), sdp.size());
    const size_t idStart = sdp.find(' ', line);
    const size_t versionStart = idStart < lineEnd ? sdp.find(' ', idStart + 1) : std::string::npos;
    if (versionStart >= lineEnd) {
        return sdp;
    }
    const size_t versionEnd = std::min(sdp.find(' ', versionStart + 1), lineEnd);
    std::string out = sdp;
    out.replace(versionStart + 1, versionEnd - versionStart - 1, std::to_string(version));
    return out;
}

void readThrough(IJsonSerializable& record, Json::Value doc, const std::string& refusal) {
    try {
        record.Deserialize(doc);
    } catch (const std::exception& e) {
        throw CommandError(kBadRequest, refusal + ": " + e.what());
    }
}

Json::Value throughRecord(IJsonSerializable& record, Json::Value doc, const std::string& refusal) {
    readThrough(record, std::move(doc), refusal);
    Json::Value out;
    record.Serialize(out);
    return out;
}

Json::Value mergedOver(Json::Value current, const Json::Value& given) {
    for (const auto& key : given.getMemberNames()) {
        current[key] = given[key];
    }
    return current;
}

Json::Value normaliseSourceApi(const Json::Value& doc) {
    if (!doc.isObject()) {
        throw CommandError(kBadRequest, "a session configuration must be a JSON object");
    }
    SourceApi api;
    return throughRecord(api, doc, "session configuration cannot be read");
}

Json::Value normaliseDestinationApi(const Json::Value& doc) {
    if (!doc.isObject()) {
        throw CommandError(kBadRequest, "a receiver configuration must be a JSON object");
    }
    // The members that the record reads but does not write are kept as given: checked first.
    if (doc.isMember("source-ip") && !doc["source-ip"].isString()) {
        throw CommandError(kBadRequest, "\"source-ip\" must be an address text");
    }
    if (doc.isMember("network-index") && !doc["network-index"].isInt()) {
        throw CommandError(kBadRequest, "\"network-index\" must be an integer");
    }
    DestinationApi api;
    Json::Value out = throughRecord(api, doc, "receiver configuration cannot be read");
    for (const char* kept : {"source-ip", "network-index"}) {
        if (doc.isMember(kept)) {
            out[kept] = doc[kept];
        }
    }
    return out;
}

namespace {

unsigned bytesPerSample(const std::string& codec) {
    if (codec == "L16") {
        return 2;
    }
    if (codec == "L24") {
        return 3;
    }
    return 4;  // AM824, L32
}

std::string multicastMac(const std::string& group) {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (std::sscanf(group.c_str(), "%u.%u.%u.%u", &a, &b, &c, &d) != 4 || a < 224 || a > 239) {
        return "00-00-00-00-00-00";
    }
    char text[18];
    std::snprintf(text, sizeof text, "01-00-5E-%02X-%02X-%02X", b & 0x7F, c & 0xFF, d & 0xFF);
    return text;
}

}  // namespace

Json::Value senderStreamDocument(const Json::Value& source, const std::string& media, unsigned index, bool paused) {
    Json::Value s;
    const int port = source.get("udp", media == "audio" ? 5004 : 20000).asInt();
    s["id"] = source.get("id", 0);
    s["hw-id"] = index;
    s["name"] = source.get("name", "");
    s["type"] = media;
    s["class"] = "sender";
    s["state"] = paused ? "Paused" : "Enabled";
    s["vlan"]["id"] = 0;
    s["vlan"]["priority"] = 0;
    s["vlan"]["tpid"] = 0x8100;
    s["udp"]["source"] = port;
    s["udp"]["destination"] = port;
    s["ipv4"]["local"] = source.get("source-ip", "0.0.0.0");
    s["ipv4"]["source-ip"] = source.get("source-ip", "0.0.0.0");
    s["ipv4"]["transport"] = source.get("transport", "0.0.0.0");
    s["ipv4"]["dscp"] = source.get("dscp", 34);
    s["ipv4"]["ttl"] = source.get("ttl", 64);
    s["rtp"]["payload-type"] = source.get("payload-type", 98);
    s["rtp"]["sscr"] = source.isMember("ssrc") && source["ssrc"].isObject() ? source["ssrc"] : Json::Value();
    if (s["rtp"]["sscr"].isNull()) {
        s["rtp"]["sscr"]["type"] = "session-id";
        s["rtp"]["sscr"]["value"] = 0;
    }
    s["channel-list"] = source["channel-list"].isArray() ? source["channel-list"] : Json::Value(Json::arrayValue);
    s["media-clk-offset"] = source.get("media-clk-offset", 0);
    s["network-interface-index"] = source.get("network-index", 0);
    s["unicast"] = false;
    s["dst-mac-addr"] = multicastMac(source.get("transport", "").asString());
    s["redundant-type"] = source.get("redundant-type", "none");
    if (media == "audio") {
        const unsigned ptime = source.get("ptime", 1000).asUInt();
        const unsigned freq = source.get("channel-freq", 48000).asUInt();
        const std::string codec = source.get("codec", "L24").asString();
        const unsigned samples = static_cast<unsigned>(static_cast<uint64_t>(ptime) * freq / 1000000u);
        const unsigned channels = source["channel-list"].isArray() ? source["channel-list"].size() : 0;
        const unsigned payload = samples * channels * bytesPerSample(codec);
        s["ptime"] = ptime;
        s["channel-freq"] = freq;
        s["link-offset"] = source.get("link-offset", 0);
        s["codec"] = codec;
        s["samples"] = samples;
        s["payload-size"] = payload;
        s["packet-size"] = payload + 54;
        s["l1-bandwidth"] = Json::UInt64(ptime == 0 ? 0 : static_cast<uint64_t>(payload + 54 + 24) * 8 * 1000000u / ptime);
    } else if (media == "video") {
        s["video"] = source["video"].isObject() ? source["video"] : Json::Value(Json::objectValue);
        s["sync-enable"] = source["video"].isObject() ? source["video"].get("sof-sync-enable", true) : true;
        s["sof-link-offset"] = source.get("link-offset", 0);
        s["tributary"] = source["tributary"].isObject() ? source["tributary"] : Json::Value();
        if (s["tributary"].isNull()) {
            s["tributary"]["type"] = "none";
            s["tributary"]["index"] = -1;
        }
        s["samples"] = 0;
        s["packet-size"] = 1376 + 66;
        s["l1-bandwidth"] = Json::UInt64(2970000000ull);
    } else {
        s["samples"] = 0;
        s["packet-size"] = 66;
        s["l1-bandwidth"] = Json::UInt64(1000000);
    }
    // Written back through the stream record, so the document is exactly what clients read.
    std::unique_ptr<StreamData> record;
    if (media == "audio") {
        record = std::make_unique<AudioStreamData>();
    } else if (media == "video") {
        record = std::make_unique<VideoStreamData>();
    } else {
        record = std::make_unique<AncillaryStreamData>();
    }
    return throughRecord(*record, std::move(s), "stream cannot be described");
}

Json::Value sessionConfigDocument(const EmulatedSession& session, const Json::Value& settings) {
    Json::Value d;
    d["id"] = Json::UInt64(session.id);
    d["version"] = Json::UInt64(session.version);
    d["name"] = session.config.get("name", "");
    d["nmos-id"] = "";
    d["ptp"]["domain"] = settings["global"].get("ptp-domain", 0);
    d["ptp"]["gmid"] = "00-1D-C1-FF-FE-12-34-56";
    d["connection"]["remote"] = Json::Value();
    d["connection"]["origin"] = "jsonapi";
    d["sdp"] = session.sdp;
    for (const auto& stream : session.streams) {
        const std::string type = stream.get("type", "").asString();
        if (type == "audio") {
            d["audio-streams"].append(stream);
        } else if (type == "video") {
            d["video-streams"].append(stream);
        }
    }
    d["type"] = session.kind == EmulatedSession::SENDER ? "source" : "destination";
    return d;
}

Json::Value defaultSettings() {
    Json::Value s(Json::objectValue);
    s["clock"]["ref-type"] = 4;
    s["clock"]["ref-str"] = "AUTO - PTP BASED";
    AvGlobalCfg global;
    global.m_device_name = "avmng-emulator";
    global.Serialize(s["global"]);
    s["sdi-pattern"] = Json::Value(Json::objectValue);
    s["hdmi-pattern"] = Json::Value(Json::objectValue);
    Json::Value offsets(Json::arrayValue);
    for (int port = 0; port < 2; ++port) {
        Json::Value o;
        o["sdi-port"] = port;
        o["video-offset"] = 0;
        o["audio-offset"] = 0;
        offsets.append(o);
    }
    s["sdi-offsets"] = offsets;
    s["hdmi-audio-offset"]["hdmi-audio-offset"] = 0;
    s["loopback"] = Json::Value(Json::arrayValue);
    VideoRefOutputCfg videoRef;
    videoRef.m_format = "1080p50";
    videoRef.Serialize(s["video-ref"]);
    s["source-gains"] = Json::Value(Json::objectValue);
    s["destination-gains"] = Json::Value(Json::objectValue);
    s["alarms"] = Json::Value(Json::arrayValue);
    return s;
}

}  // namespace pimav::detail
