// The small network and transport records embedded in the stream and sender records.

#include <exception>

#include "pimAvMngApi/model/IpAddrCfg.h"
#include "pimAvMngApi/model/Rtp.h"
#include "pimAvMngApi/model/SessionConnectionInfo.h"
#include "pimAvMngApi/model/Ssrc.h"
#include "pimAvMngApi/model/UdpPort.h"
#include "pimAvMngApi/model/Vlan.h"
#include "pimAvMngApi/platform/Logger.h"
#include "platform/WordTable.h"

// ---- IpAddrCfg ----

void IpAddrCfg::Serialize(Json::Value& out) const {
    out["local"] = Json::Value(m_local.toString());
    out["transport"] = Json::Value(m_transport.toString());
    out["source-ip"] = Json::Value(m_source.toString());
    out["dscp"] = Json::Value(static_cast<int>(m_dscp));
    out["ttl"] = Json::Value(static_cast<int>(m_ttl));
}

void IpAddrCfg::Deserialize(Json::Value& in) {
    m_local.Deserialize("local", in);
    m_transport.Deserialize("transport", in);
    m_source.Deserialize("source-ip", in);
    m_dscp = static_cast<uint8_t>(in.get("dscp", 34).asUInt());
    m_ttl = static_cast<uint8_t>(in.get("ttl", 64).asUInt());
}

// ---- Vlan ----

void Vlan::Serialize(Json::Value& out) const {
    out["id"] = Json::Value(static_cast<int>(m_id));
    out["priority"] = Json::Value(static_cast<int>(m_priority));
    out["tpid"] = Json::Value(static_cast<int>(m_tpid));
}

void Vlan::Deserialize(Json::Value& in) {
    m_id = static_cast<uint16_t>(in.get("id", 0).asUInt());
    m_priority = static_cast<uint8_t>(in.get("priority", 0).asUInt());
    m_tpid = static_cast<uint16_t>(in.get("tpid", kDefaultTpid).asUInt());
}

// ---- UdpPort ----

void UdpPort::Serialize(Json::Value& out) const {
    out["source"] = Json::Value(static_cast<int>(m_source));
    out["destination"] = Json::Value(static_cast<int>(m_destination));
}

void UdpPort::Deserialize(Json::Value& in) {
    m_source = static_cast<uint16_t>(in.get("source", 0).asUInt());
    m_destination = static_cast<uint16_t>(in.get("destination", 0).asUInt());
}

// ---- Ssrc ----

namespace {

constexpr pimav::detail::WordRow<int32_t> kSsrcWords[] = {
    {Ssrc::SESSION_ID, "session-id"}, {Ssrc::ASIO, "asio"}, {Ssrc::MANUAL, "manual"},
    {Ssrc::UNSPECIFIED, "unspecified"}};

}  // namespace

std::string Ssrc::toString() const {
    return std::string(pimav::detail::wordOf(kSsrcWords, m_type, "-"));
}

void Ssrc::Serialize(Json::Value& out) const {
    out["type"] = Json::Value(toString());
    out["value"] = Json::Value(m_value);
}

void Ssrc::Deserialize(Json::Value& in) {
    if (in.isObject()) {
        const std::string word = in.get("type", "-").asString();
        m_value = in.get("value", 0u).asUInt();
        m_type = pimav::detail::codeOf(kSsrcWords, word).value_or(m_type);
    } else if (!in.isNull()) {
        // A bare number is the value itself, chosen by session id. The selection is set
        // first, so a text or array in its place still leaves "session-id" behind when
        // asUInt throws.
        m_type = SESSION_ID;
        m_value = in.asUInt();
    }
}

// ---- Rtp ----

void Rtp::Serialize(Json::Value& out) const {
    out["payload-type"] = Json::Value(static_cast<int>(m_payload_type));
    m_ssrc.Serialize(out["sscr"]);
}

void Rtp::Deserialize(Json::Value& in) {
    m_payload_type = static_cast<uint8_t>(in.get("payload-type", 98).asUInt());
    m_ssrc.Deserialize(in["sscr"]);
}

// ---- SessionConnectionInfo ----

void SessionConnectionInfo::Serialize(Json::Value& out) const {
    out["remote"] = m_remote.empty() ? Json::Value(Json::nullValue) : Json::Value(m_remote);
    out["origin"] = Json::Value(m_origin == NMOS ? "nmos" : "jsonapi");
}

void SessionConnectionInfo::Deserialize(Json::Value& in) {
    try {
        m_remote = in.get("remote", "").asString();
        const std::string origin = in.get("origin", "").asString();
        m_origin = (origin == "nmos") ? NMOS : JSONAPI;
    } catch (const std::exception&) {
        Logger::log(2, "[SessionConnectionInfo] Error de-serializing json [%s]", in.toStyledString().c_str());
    }
}
