// Session commands of the emulated device: senders, receivers, their streams, SDP,
// statistics and channel disconnection.

#include <algorithm>

#include "Emulator.h"
#include "EmulatorSupport.h"
#include "pimAvMngApi/model/SessionStatus.h"
#include "pimAvMngApi/model/TpcStatistics.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

namespace {

const char* mediaOfList(const std::string& list) {
    if (list == "audio-sources") {
        return "audio";
    }
    if (list == "video-sources") {
        return "video";
    }
    return "ancillary";
}

// Number of sources (audio, video and ancillary) of a session configuration.
unsigned sourceCount(const Json::Value& cfg) {
    unsigned count = 0;
    for (const char* list : kSourceLists) {
        count += cfg.isMember(list) ? cfg[list].size() : 0;
    }
    return count;
}

// The refusal of a configuration without any source.
[[noreturn]] void refuseNoSource(const char* what) {
    throw CommandError(
        kBadRequest,
        std::string(what) +
            " needs at least one of \"audio-sources\", \"video-sources\", \"ancillary-sources\"");
}

}  // namespace

// ---- sender sessions ----

EmulatedSession Emulator::newSession(EmulatedSession::Kind kind, Json::Value& cfg, const char* unnamed) {
    EmulatedSession session;
    session.id = allocateSessionId();
    session.kind = kind;
    cfg["session-id"] = Json::UInt64(session.id);
    if (cfg.get("name", "").asString().empty()) {
        cfg["name"] = std::string(unnamed) + " " + std::to_string(session.id);
    }
    session.config = cfg;
    return session;
}

void Emulator::buildSenderStreams(EmulatedSession& session) {
    Json::Value& cfg = session.config;
    Json::Value streams(Json::arrayValue);
    unsigned index = 0;
    for (const char* list : kSourceLists) {
        if (!cfg.isMember(list)) {
            continue;
        }
        const std::string media = mediaOfList(list);
        for (auto& source : cfg[list]) {
            if (source.get("id", 0).asUInt64() == 0) {
                source["id"] = Json::UInt64(allocateStreamId());
            }
            if (addressUnset(source["transport"])) {
                // Multicast group per session and stream: 239.<media>.<session>.<stream>.
                const uint32_t group = (239u << 24) | ((media == "audio" ? 69u : media == "video" ? 70u : 71u) << 16) |
                                       (static_cast<uint32_t>(session.id % 250) << 8) | ((index % 250) + 1);
                source["transport"] = dotted(group);
            }
            if (addressUnset(source["source-ip"])) {
                source["source-ip"] = m_options.localAddress;
            }
            if (source.get("udp", -1).asInt() < 0) {
                source["udp"] = media == "audio" ? 5004 : 20000;
            }
            if (source.get("dscp", -1).asInt() < 0) {
                source["dscp"] = media == "audio" ? 34 : 40;
            }
            if (source.get("network-index", -1).asInt() < 0) {
                source["network-index"] = 0;
            }
            if (media == "audio" && source.get("ptime", 0).asUInt() == 0) {
                source["ptime"] = 1000;
            }
            if (media == "audio" && source.get("channel-freq", 0).asUInt() == 0) {
                source["channel-freq"] = 48000;
            }
            if (source.get("name", "").asString().empty()) {
                source["name"] = cfg.get("name", "").asString() + " " + media + " " + std::to_string(index + 1);
            }
            streams.append(senderStreamDocument(source, media, index, session.paused));
            ++index;
        }
    }
    session.streams = streams;
}

Json::Value Emulator::addSourceSession(const Request& r) {
    Json::Value cfg = normaliseSourceApi(documentOf(r));
    const unsigned count = sourceCount(cfg);
    if (count == 0) {
        refuseNoSource("a sender session");
    }
    requireOneLineNames(cfg, "");
    EmulatedSession session = newSession(EmulatedSession::SENDER, cfg, "Session");
    buildSenderStreams(session);
    refreshSenderSdp(session);
    Json::Value reply = normaliseSourceApi(session.config);
    session.config = reply;
    changeSession(session.id) = session;
    Logger::log(5, "emulator: sender session %llu [%s] added with %u streams",
                static_cast<unsigned long long>(session.id), cfg["name"].asCString(), count);
    return reply;
}

Json::Value Emulator::updateSession(const Request& r) {
    const Json::Value& doc = documentOf(r);
    if (!doc["session-id"].isUInt64()) {
        throw CommandError(kBadRequest, "an update needs the \"session-id\" of the session");
    }
    EmulatedSession& session = changeSession(findSession(r, "session-id").id);
    if (session.kind == EmulatedSession::RECEIVER) {
        throw CommandError(kValueRefused, "session " + std::to_string(session.id) + " is a receiver of an advertised stream");
    }
    Json::Value cfg = normaliseSourceApi(doc);
    requireOneLineNames(cfg, "");
    cfg["session-id"] = Json::UInt64(session.id);
    if (cfg.get("name", "").asString().empty()) {
        cfg["name"] = session.config.get("name", "").asString();
    }
    session.config = cfg;
    ++session.version;
    buildSenderStreams(session);
    if (session.kind == EmulatedSession::SENDER) {
        refreshSenderSdp(session);
    }
    session.config = normaliseSourceApi(session.config);
    Logger::log(5, "emulator: session %llu updated to version %llu", static_cast<unsigned long long>(session.id),
                static_cast<unsigned long long>(session.version));
    return emptyReply();
}

// ---- receiver sessions ----

Json::Value Emulator::addDestinationSession(const Request& r) {
    const Json::Value& doc = documentOf(r);
    if (!doc.isMember("user-sdp") && !doc.isMember("rem-sid")) {
        throw CommandError(kBadRequest,
                           "request needs the member \"rem-sid\" (an advertised session) or \"user-sdp\"");
    }
    Json::Value cfg = normaliseDestinationApi(doc);
    requireOneLine(cfg["name"], "\"name\"");
    const std::string userSdp = cfg.get("user-sdp", "").asString();
    const uint64_t remote = cfg["rem-sid"].get("id", 0).asUInt64();
    const unsigned mediaIndex = cfg["rem-sid"].get("media-idx", 0).asUInt();
    EmulatedSession session;
    std::string sdp;
    if (!userSdp.empty()) {
        sdp = checkUserSdp(userSdp);
        session.kind = EmulatedSession::MANUAL_RECEIVER;
    } else {
        if (remote == 0) {
            throw CommandError(kSessionIdZero, "a receiver needs \"rem-sid\".\"id\" of an advertised session or a \"user-sdp\"");
        }
        std::string url;
        if (!advertisedSdp(remote, sdp, url)) {
            throw CommandError(kAdvertisedNotFound, "no advertised session with id " + std::to_string(remote));
        }
        session.kind = EmulatedSession::RECEIVER;
    }
    Json::Value stream = receiverStreamFromSdp(sdp, mediaIndex, 0, cfg["channel-list"]);
    session.id = allocateSessionId();
    stream["id"] = Json::UInt64(allocateStreamId());
    cfg["session-id"] = Json::UInt64(session.id);
    if (cfg.get("name", "").asString().empty()) {
        cfg["name"] = stream.get("name", "").asString().empty() ? "Receiver " + std::to_string(session.id)
                                                                 : stream["name"].asString();
    }
    session.config = cfg;
    session.sdp = sdp;
    session.streams = Json::Value(Json::arrayValue);
    session.streams.append(stream);
    changeSession(session.id) = session;
    Logger::log(5, "emulator: receiver session %llu [%s] added", static_cast<unsigned long long>(session.id),
                cfg["name"].asCString());
    return cfg;
}

Json::Value Emulator::addDestinationSessionManually(const Request& r) {
    Json::Value cfg = normaliseSourceApi(documentOf(r));
    if (sourceCount(cfg) == 0) {
        refuseNoSource("a receiver");
    }
    requireOneLineNames(cfg, "");
    for (const char* list : kSourceLists) {
        if (!cfg.isMember(list)) {
            continue;
        }
        for (const auto& source : cfg[list]) {
            if (addressUnset(source["transport"])) {
                throw CommandError(kBadRequest, "every stream of a manual receiver needs its \"transport\" address");
            }
        }
    }
    EmulatedSession session = newSession(EmulatedSession::MANUAL_RECEIVER, cfg, "Receiver");
    buildSenderStreams(session);
    for (auto& stream : session.streams) {
        stream["class"] = "receiver";
    }
    session.config = normaliseSourceApi(session.config);
    changeSession(session.id) = session;
    return session.config;
}

// ---- common session commands ----

Json::Value Emulator::removeSession(const Request& r) {
    const uint64_t id = findSession(r).id;
    changeSession(id);
    m_sessions.erase(id);
    Logger::log(5, "emulator: session %llu removed", static_cast<unsigned long long>(id));
    return emptyReply();
}

Json::Value Emulator::getSessionSdp(const Request& r) {
    return memberReply("sdp", findSession(r).sdp);
}

Json::Value Emulator::saveSdpInfo(const Request& r) {
    EmulatedSession& session = changeSession(findSession(r).id);
    const Json::Value& doc = r.document;
    if (!doc["sdp"].isString() || doc["sdp"].asString().empty()) {
        throw CommandError(kBadRequest, "request needs the SDP text in \"sdp\"");
    }
    session.sdp = checkUserSdp(doc["sdp"].asString());
    ++session.version;
    if (session.kind == EmulatedSession::SENDER) {
        // A sender's SDP carries its version, as the generated one does: announcements and
        // their receivers see the change.
        session.sdp = withSdpVersion(session.sdp, session.version);
    }
    return emptyReply();
}

Json::Value Emulator::pauseResumeSession(const Request& r) {
    EmulatedSession& session = changeSession(findSession(r).id);
    if (!r.document.isMember("pause") || !r.document["pause"].isBool()) {
        throw CommandError(kBadRequest, "request needs the boolean \"pause\"");
    }
    session.paused = r.document["pause"].asBool();
    for (auto& stream : session.streams) {
        stream["state"] = session.paused ? "Paused" : "Enabled";
    }
    Logger::log(5, "emulator: session %llu %s", static_cast<unsigned long long>(session.id),
                session.paused ? "paused" : "resumed");
    return emptyReply();
}

Json::Value Emulator::disconnectChannels(const Request& r) {
    EmulatedSession& session = changeSession(findSession(r).id);
    if (!r.document["channel-list"].isArray()) {
        throw CommandError(kBadRequest, "request needs the array \"channel-list\"");
    }
    ChannelList requested;
    const Json::Value wanted = throughRecord(requested, r.document["channel-list"], "\"channel-list\" cannot be read");
    unsigned removed = 0;
    auto strip = [&](Json::Value& holder) {
        if (!holder.isMember("channel-list") || !holder["channel-list"].isArray()) {
            return;
        }
        Json::Value kept(Json::arrayValue);
        for (const auto& channel : holder["channel-list"]) {
            bool drop = false;
            for (const auto& w : wanted) {
                drop = drop || channel == w;
            }
            if (drop) {
                ++removed;
            } else {
                kept.append(channel);
            }
        }
        holder["channel-list"] = kept;
    };
    for (auto& stream : session.streams) {
        strip(stream);
    }
    strip(session.config);
    for (const char* list : kSourceLists) {
        if (session.config.isMember(list)) {
            for (auto& source : session.config[list]) {
                strip(source);
            }
        }
    }
    return memberReply("disconnected", removed);
}

Json::Value Emulator::getSessionBasicInfo(const Request& r) {
    const EmulatedSession& session = findSession(r);
    Json::Value info;
    info["id"] = Json::UInt64(session.id);
    info["version"] = Json::UInt64(session.version);
    info["name"] = session.config.get("name", "").asString();
    const uint64_t remote = session.kind == EmulatedSession::RECEIVER ? session.config["rem-sid"].get("id", 0).asUInt64()
                                                                      : 0;
    info["remote-sid"] = Json::UInt64(remote);
    info["remote-sid-str"] = std::to_string(remote);
    info["ptp-domain"] = m_settings["global"].get("ptp-domain", 0).asInt();
    info["ptp-gmid"] = "00-1D-C1-FF-FE-12-34-56";
    std::string advertisedText;
    std::string url;
    info["rtsp-url"] = remote != 0 && advertisedSdp(remote, advertisedText, url) ? url : "";
    info["session-list"] = session.streams;
    return info;
}

Json::Value Emulator::sessionListReply(bool senders) const {
    Json::Value list(Json::arrayValue);
    for (const auto& [id, s] : m_sessions) {
        if ((s.kind == EmulatedSession::SENDER) != senders) {
            continue;
        }
        Json::Value e;
        e["id"] = Json::UInt64(id);
        e["id-str"] = std::to_string(id);
        e["name"] = s.config.get("name", "").asString();
        e["version"] = Json::UInt64(s.version);
        e["paused"] = s.paused;
        e["streams"] = s.streams;
        list.append(e);
    }
    return memberReply("list", list);
}

Json::Value Emulator::getSourceSessionList(const Request&) { return sessionListReply(true); }

Json::Value Emulator::getDestinationSessionList(const Request&) { return sessionListReply(false); }

Json::Value Emulator::getListOfExistingStreams(const Request&) {
    Json::Value list(Json::arrayValue);
    for (const auto& [id, s] : m_sessions) {
        list.append(sessionConfigDocument(s, m_settings));
    }
    return memberReply("list", list);
}

Json::Value Emulator::getResourceAllocatedIds(const Request&) {
    Json::Value reply;
    reply["senders"] = Json::Value(Json::arrayValue);
    reply["receivers"] = Json::Value(Json::arrayValue);
    for (const auto& [id, s] : m_sessions) {
        reply[s.kind == EmulatedSession::SENDER ? "senders" : "receivers"].append(Json::UInt64(id));
    }
    return reply;
}

Json::Value Emulator::getSessionTPCStatistics(const Request& r) {
    Json::Value reply;
    reply["tpc"] = Json::Value(Json::arrayValue);
    auto add = [&](const EmulatedSession& s) {
        for (const auto& stream : s.streams) {
            TpcStatistics stats;
            stats.m_session_id = s.id;
            stats.m_stream_id = static_cast<uint32_t>(stream.get("id", 0).asUInt64());
            stats.m_data_detected = !s.paused;
            stats.m_error_detected = false;
            Json::Value doc;
            stats.Serialize(doc);
            reply["tpc"].append(doc);
        }
    };
    if (r.hasDocument && r.document.get("all", false).isBool() && r.document.get("all", false).asBool()) {
        for (const auto& entry : m_sessions) {
            add(entry.second);
        }
        return reply;
    }
    add(findSession(r));
    return reply;
}

Json::Value Emulator::getSessionCounters(const Request& r) {
    const EmulatedSession& session = findSession(r);
    Json::Value reply;
    reply["id"] = Json::UInt64(session.id);
    Json::Value streams(Json::arrayValue);
    for (const auto& stream : session.streams) {
        Json::Value c;
        c["id"] = stream.get("id", 0);
        c["packets"] = Json::UInt64(session.paused ? 0 : 1000 * session.version);
        c["bytes"] = Json::UInt64(session.paused ? 0 : 1000 * session.version * stream.get("payload-size", 0).asUInt());
        c["lost"] = 0;
        c["late"] = 0;
        streams.append(c);
    }
    reply["streams"] = streams;
    return reply;
}

Json::Value Emulator::getSessionInternalStatus(const Request& r) {
    const EmulatedSession& session = findSession(r);
    Json::Value reply;
    reply["id"] = Json::UInt64(session.id);
    reply["state"] = session.paused ? "Paused" : "Enabled";
    reply["clear_fifo_levels"] = optionalBool(r, "clear_fifo_levels", false);
    reply["clear_counters"] = optionalBool(r, "clear_counters", false);
    reply["clear_pending"] = optionalBool(r, "clear_pending", false);
    reply["fifo-level"] = 0;
    reply["pending"] = 0;
    reply["streams"] = static_cast<unsigned>(session.streams.size());
    return reply;
}

Json::Value Emulator::getChannelUsageTable(const Request& r) {
    const bool full = optionalBool(r, "full", false);
    // One table per interface that a stream uses; with "full", every channel of it.
    std::map<std::string, Json::Value> tables;
    for (const auto& [id, s] : m_sessions) {
        for (const auto& stream : s.streams) {
            for (const auto& channel : stream["channel-list"]) {
                const Json::Value iface = channel.isMember("interface") ? channel["interface"] : Json::Value();
                const unsigned index = channel.get("interface-index", 0).asUInt();
                const std::string key = compactText(iface) + "/" + std::to_string(index);
                Json::Value& table = tables[key];
                if (table.isNull()) {
                    if (iface.isNull()) {
                        table["interface"]["type"] = 12;
                        table["interface"]["string"] = "auto";
                    } else {
                        table["interface"] = iface;
                    }
                    table["interface-index"] = index;
                    table["num-channels"] = 64;
                    table["channels"] = Json::Value(Json::arrayValue);
                }
                Json::Value used;
                used["channel"] = channel.get("channel", 0).asUInt();
                used["used"] = true;
                used["session-id"] = Json::UInt64(id);
                used["stream-id"] = stream.get("id", 0);
                used["class"] = stream.get("class", "sender");
                table["channels"].append(used);
            }
        }
    }
    Json::Value reply;
    reply["list"] = Json::Value(Json::arrayValue);
    for (auto& [key, table] : tables) {
        if (full) {
            Json::Value all(Json::arrayValue);
            for (unsigned c = 0; c < table["num-channels"].asUInt(); ++c) {
                Json::Value entry;
                entry["channel"] = c;
                entry["used"] = false;
                entry["session-id"] = 0;
                entry["stream-id"] = 0;
                entry["class"] = "";
                for (const auto& used : table["channels"]) {
                    if (used["channel"].asUInt() == c) {
                        entry = used;
                    }
                }
                all.append(entry);
            }
            table["channels"] = all;
        }
        reply["list"].append(table);
    }
    return reply;
}

Json::Value Emulator::getAlarmStatus(const Request&) {
    Json::Value reply;
    reply["sessions"] = Json::Value(Json::arrayValue);
    for (const auto& [id, s] : m_sessions) {
        SessionStatus status;
        status.m_id = id;
        for (const auto& stream : s.streams) {
            StreamStatus st;
            st.m_id = stream.get("id", 0).asUInt64();
            if (s.paused) {
                st.m_alarms.emplace_back(Alarm(1, AlarmSeverity(), "stream paused", 0));
            }
            status.m_streams.push_back(st);
        }
        Json::Value doc;
        status.Serialize(doc);
        reply["sessions"].append(doc);
    }
    reply["global"] = Json::Value(Json::arrayValue);
    for (const auto& alarm : m_settings["alarms"]) {
        reply["global"].append(alarm);
    }
    return reply;
}

}  // namespace pimav::detail
