// SDP side of the emulated device: the SDP text of sender sessions, receivers built from
// advertised or user SDP, and the advertised-sessions table fed from a folder of files.

#include <dirent.h>

#include <limits.h>
#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "common/AtomicFile.h"
#include "Emulator.h"
#include "EmulatorSupport.h"
#include "pimAvMngApi/model/IpAddress.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

namespace pimav::detail {

namespace {

// SDP texts are small (a SAP packet carries at most a few kilobytes).
constexpr size_t kMaxSdpFileBytes = 64u << 10;

uint32_t addressOf(const Json::Value& text) {
    IpAddress address;
    if (text.isString()) {
        address.fromString(text.asString());
    }
    return address.get();
}

// Decodes %XX escapes of a file name ("%2F" is "/").
std::string percentDecode(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(text[i + 2]))) {
            out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

SdpMedia mediaOfSource(const Json::Value& source, bool video, const Json::Value& clock) {
    SdpMedia media;
    media.m_type = video ? SdpMedia::VIDEO : SdpMedia::AUDIO;
    media.m_udp_port = static_cast<uint32_t>(source.get("udp", video ? 20000 : 5004).asInt());
    media.m_ttl = static_cast<uint8_t>(source.get("ttl", 64).asUInt());
    media.m_info = source.get("name", "").asString();
    media.m_local_ip = addressOf(source["source-ip"]);
    media.m_transport_ip = addressOf(source["transport"]);
    media.m_clock_is_ptp = true;
    media.m_ptp_gm_id = "00-1D-C1-FF-FE-12-34-56";
    media.m_ptp_domain = static_cast<uint8_t>(clock.get("ptp-domain", 0).asUInt());
    media.m_media_clock = source.get("media-clk-offset", 0).asUInt();
    const uint8_t pt = static_cast<uint8_t>(source.get("payload-type", video ? 96 : 98).asUInt());
    media.m_payload_types.push_back(pt);
    SdpMediaRtpMap map;
    map.m_payload_type = pt;
    if (video) {
        map.m_codec = Codec(Codec::CODEC_RAW);
        map.m_channel_freq = 90000;
        Json::Value format = source["video"];
        if (format.isObject()) {
            media.m_video.Deserialize(format);
        }
        // A sender without a format sends what the device's outputs default to.
        if (media.m_video.getVideoFormat() == VideoFormat::VIDEO_FORMAT_UNDEFINED) {
            media.m_video.setVideoFormat(VideoFormat::VIDEO_FORMAT_1080P50);
        }
        media.m_sampling = "YCbCr-4:2:2";
        media.m_depth = 10;
        media.m_colorimetry = "BT709";
        media.m_packing_mode = "2110GPM";
        media.m_sender_type = "2110TPN";
    } else {
        Codec codec;
        codec.setCodec(source.get("codec", "L24").asString());
        map.m_codec = codec;
        map.m_channel_freq = source.get("channel-freq", 48000).asUInt();
        map.m_number_channels =
            static_cast<uint16_t>(std::max<unsigned>(1, source["channel-list"].isArray() ? source["channel-list"].size() : 1));
        const unsigned ptimeMicros = source.get("ptime", 1000).asUInt();
        media.m_ptime = static_cast<float>(ptimeMicros) / 1000.0f;
        media.m_number_samples =
            static_cast<uint8_t>(std::min<uint64_t>(255, uint64_t{ptimeMicros} * map.m_channel_freq / 1000000u));
    }
    media.m_rtp_maps.push_back(map);
    return media;
}

}  // namespace

void Emulator::refreshSenderSdp(EmulatedSession& session) {
    SdpSession sdp;
    sdp.m_session_id = session.id;
    sdp.m_session_version = session.version;
    sdp.m_info = session.config.get("name", "").asString();
    IpAddress local;
    local.fromString(m_options.localAddress);
    sdp.m_local_ip = local.get();
    // The session's SDP describes its first audio stream, else its first video stream:
    // the generator writes any two media descriptions as a DUP pair, which a session
    // carrying several essences is not.
    for (const char* list : {"audio-sources", "video-sources"}) {
        const Json::Value& sources = session.config[list];
        if (sdp.m_media.empty() && sources.isArray() && !sources.empty()) {
            sdp.m_media.push_back(mediaOfSource(sources[0], std::string(list) == "video-sources", m_settings["global"]));
        }
    }
    if (sdp.m_media.empty()) {
        // An ancillary-only session has no media that SDP describes.
        session.sdp.clear();
        return;
    }
    SdpConverter converter;
    std::string text;
    if (converter.setSdpConfig(sdp) != 0 || converter.getSdpString(&text) != 0) {
        throw CommandError(kSdpRefused, "the SDP of session " + std::to_string(session.id) + " cannot be generated");
    }
    session.sdp = text;
}

// Parses `sdpText` with the parser and its minimum check; a refusal becomes a
// CommandError carrying every user message the check produced.
SdpSession Emulator::parseCheckedSdp(const std::string& sdpText) {
    if (sdpText.find('\0') != std::string::npos) {
        throw CommandError(kBadRequest, "the SDP text must not hold a NUL character");
    }
    ErrorAuxMsg::getInstance()->clear();
    SdpConverter converter;
    const int rc = converter.parseSdp(sdpText);
    if (rc != 0) {
        refuseWithUserMessages(rc, "the SDP text is refused.");
    }
    SdpSession session;
    converter.getSdpConfig(session);
    return session;
}

std::string Emulator::checkUserSdp(const std::string& sdpText) {
    parseCheckedSdp(sdpText);
    return sdpText;
}

Json::Value Emulator::receiverStreamFromSdp(const std::string& sdpText, unsigned mediaIndex, uint64_t streamId,
                                            const Json::Value& channels) {
    const SdpSession session = parseCheckedSdp(sdpText);
    if (mediaIndex >= session.m_media.size()) {
        throw CommandError(kSdpRefused, "media index " + std::to_string(mediaIndex) + " is not below the " +
                                            std::to_string(session.m_media.size()) + " media of the session");
    }
    const SdpMedia& media = session.m_media[mediaIndex];
    const bool video = media.m_type == SdpMedia::VIDEO;
    Json::Value source;
    source["id"] = Json::UInt64(streamId);
    source["name"] = media.m_info.empty() ? session.m_info : media.m_info;
    source["udp"] = static_cast<int>(media.m_udp_port);
    source["ttl"] = media.m_ttl;
    source["transport"] = IpAddress(media.m_transport_ip).toString();
    source["source-ip"] = IpAddress(media.m_local_ip != 0 ? media.m_local_ip : session.m_local_ip).toString();
    source["channel-list"] = channels.isArray() ? channels : Json::Value(Json::arrayValue);
    if (!media.m_rtp_maps.empty()) {
        const SdpMediaRtpMap& map = media.m_rtp_maps.front();
        source["payload-type"] = map.m_payload_type;
        source["codec"] = map.m_codec.toString();
        source["channel-freq"] = map.m_channel_freq;
    }
    source["ptime"] = static_cast<unsigned>(std::lround(media.m_ptime * 1000.0f));
    if (video) {
        media.m_video.Serialize(source["video"]);
    }
    Json::Value stream = senderStreamDocument(source, video ? "video" : "audio", mediaIndex, false);
    stream["class"] = "receiver";
    return stream;
}

int Emulator::reloadAdvertised() {
    if (m_options.advertiseDir.empty()) {
        return 0;
    }
    DIR* dir = ::opendir(m_options.advertiseDir.c_str());
    if (dir == nullptr) {
        Logger::log(2, "emulator: cannot open the advertise folder %s: %s", m_options.advertiseDir.c_str(),
                    std::strerror(errno));
        return 0;
    }
    char* folder = ::realpath(m_options.advertiseDir.c_str(), nullptr);
    const std::string absoluteFolder = folder != nullptr ? folder : m_options.advertiseDir;
    std::free(folder);
    // readdir returns null at the end and on an error alike; errno tells them apart. A
    // listing cut short (EOVERFLOW in a 32-bit build without 64-bit file offsets) keeps the
    // table as it is: withdrawing advertisements whose files are still there would be wrong.
    std::vector<std::string> names;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(dir);
        if (entry == nullptr) {
            break;
        }
        const std::string name = entry->d_name;
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".sdp") == 0) {
            names.push_back(name);
        }
    }
    const int listError = errno;
    ::closedir(dir);
    if (listError != 0) {
        Logger::log(2, "emulator: cannot list the advertise folder %s: %s", m_options.advertiseDir.c_str(),
                    std::strerror(listError));
        return 0;
    }
    std::sort(names.begin(), names.end());
    std::map<std::string, uint64_t> claimed;
    int accepted = 0;
    for (const auto& name : names) {
        const std::string path = m_options.advertiseDir + "/" + name;
        std::string text;
        std::string why;
        if (readRegularFile(path, kMaxSdpFileBytes, text, why) != FileRead::kRead) {
            Logger::log(2, "emulator: cannot read %s: %s", path.c_str(), why.empty() ? "gone" : why.c_str());
            continue;
        }
        std::string url = percentDecode(name.substr(0, name.size() - 4));
        if (url.find("://") == std::string::npos) {
            // A file URL without an authority (RFC 8089 "file:/path"): it names no host,
            // so no host text is looked for in it.
            url = "file:" + absoluteFolder + "/" + name;
        }
        uint64_t id = 0;
        why.clear();
        const Advertised result = advertise({{"file", path, path}, url, text}, id, why);
        if (result == Advertised::Refused) {
            Logger::log(2, "emulator: advertisement %s refused: %s", path.c_str(), why.c_str());
            continue;
        }
        if (result == Advertised::Waiting) {
            Logger::log(2, "emulator: advertisement %s waits: session id %llu is advertised by %s", path.c_str(),
                        static_cast<unsigned long long>(id), m_claims.source(id)->from.c_str());
        }
        claimed[path] = id;
        ++accepted;
    }
    // Files that are gone, or that now carry another session, withdraw what they advertised.
    for (const auto& [path, id] : m_advertised_files) {
        const auto now = claimed.find(path);
        if (now == claimed.end() || now->second != id) {
            withdrawAdvertised(id, path);
        }
    }
    m_advertised_files = std::move(claimed);
    Logger::log(5, "emulator: %d advertised sessions loaded from %s", accepted, m_options.advertiseDir.c_str());
    return accepted;
}

bool Emulator::advertisedSdp(uint64_t id, std::string& sdp, std::string& url) const {
    return m_advertised.getAdvertisedSdp(id, sdp, url) == 0;
}

void Emulator::markAdvertisedUse(uint64_t id, bool used) {
    bool removed = false;
    m_advertised.setSessionAsUsed(id, used, removed);
    forgetIfGone(id);
}

Json::Value Emulator::getAdvertisedSessionList(const Request& r) {
    if (r.hasDocument && r.document.isObject() && r.document.get("refresh", false).asBool()) {
        reloadAdvertised();
    }
    Json::Value reply(Json::objectValue);
    m_advertised.getAdvertisedSessionsJson(reply);
    // Where each entry comes from, beside the library's list: {"<id>": {"kind", "from"}}.
    Json::Value& sources = reply["sources"] = Json::Value(Json::objectValue);
    for (const auto& item : m_advertised.getDb().m_entries) {
        if (const AdvertisedSource* source = m_claims.source(item.first)) {
            Json::Value& s = sources[std::to_string(item.first)];
            s["kind"] = source->kind;
            s["from"] = source->from;
        }
    }
    return reply;
}

Json::Value Emulator::removeExternalAdvertisement(const Request& r) {
    const uint64_t id = requireId(r, "id");
    if (id == 0) {
        throw CommandError(kSessionIdZero, "advertised session id 0");
    }
    std::string sdp;
    std::string url;
    if (!advertisedSdp(id, sdp, url)) {
        throw CommandError(kAdvertisedNotFound, "no advertised session with id " + std::to_string(id));
    }
    // Every source's claim goes: a file claims it again on the next reload, a SAP session when
    // its announcement changes or it is announced anew.
    m_claims.clear(id);
    m_advertised.removeAdvertisedSession(id);
    forgetIfGone(id);
    return emptyReply();
}

}  // namespace pimav::detail
