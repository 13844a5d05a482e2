#include "pimAvMngApi/adv/AdvSessionEntry.h"

#include <cstdio>

#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"

int AdvSessionEntry::setSourceUrl(const std::string& url) {
    const std::string::size_type slashes = url.find("//");
    if (slashes != std::string::npos) {
        // The search for ':' starts at the "//", so the scheme's own ':' is skipped.
        const std::string::size_type colon = url.find(':', slashes);
        const std::string::size_type hostStart = slashes + 2;
        const std::string host =
            (colon == std::string::npos) ? url.substr(hostStart) : url.substr(hostStart, colon - hostStart);
        if (!m_host_ip.fromString(host)) {
            Logger::log(2, "Error parsing IP [%s]: invalid IP address", host.c_str());
        }
        m_host_is_local = SystemDefaultCfg::getInstance()->isLocalBoardIpAddr(m_host_ip);

        if (colon != std::string::npos) {
            const std::string::size_type slash = url.find('/', colon + 1);
            if (slash != std::string::npos) {
                // Base 0: decimal, "0x" hexadecimal or leading "0" octal. A text without a
                // number throws std::invalid_argument before the URL is stored.
                const int port = std::stoi(url.substr(colon + 1, slash - colon - 1), nullptr, 0);
                m_host_port = static_cast<uint16_t>(port);
            }
        }
    }
    m_source_url = url;
    return 0;
}

void AdvSessionEntry::Serialize(Json::Value& out) const {
    const session_id_t id = getSessionId();
    char idText[32];
    std::snprintf(idText, sizeof(idText), "%llu", static_cast<unsigned long long>(id));

    out["session-id"] = Json::UInt64(id);
    out["session-id-str"] = idText;
    out["url"] = m_source_url;
    Json::Value& host = out["host"];
    host["ip"] = m_host_ip.toString();
    host["address"] = m_host_is_local ? "local" : "remote";
    out["sdp-raw"] = m_sdp;
    out["inuse"] = m_in_use;
    out["status"] = m_status.toString();
    m_session.Serialize(out["session"]);
}

void AdvSessionEntry::Deserialize(Json::Value& in) {
    m_status.fromString(in.get("status", "").asString());
    m_session.Deserialize(in["session"]);
    // The URL is kept as text only: the host fields are not derived from it here.
    m_source_url = in.get("url", "").asString();
    if (in.isMember("host") && in["host"].isObject()) {
        Json::Value& host = in["host"];
        m_host_ip.readText(host.get("ip", "").asString());
        if (host.get("address", "remote").asString() == "local") {
            m_host_is_local = true;
        }
    }
    m_sdp = in.get("sdp-raw", "").asString();
    m_in_use = in.get("inuse", false).asBool();
}
