#include "pimAvMngApi/model/StreamData.h"

#include <cstdio>
#include <cstdlib>

#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "pimAvMngApi/platform/Logger.h"

namespace {

// One pass of the MAC parse with one separator; true when all six octets were stored.
bool parseMacPass(const std::string& text, char separator, StreamData::MacAddress& mac) {
    std::string::size_type pos = 0;
    for (std::size_t octet = 0; octet < mac.size(); ++octet) {
        const std::string::size_type found = text.find(separator, pos);
        if (found == std::string::npos && octet < 5) {
            return false;
        }
        const std::string part =
            found == std::string::npos ? text.substr(pos) : text.substr(pos, found - pos);
        mac[octet] = static_cast<uint8_t>(std::strtoul(part.c_str(), nullptr, 16));
        if (found == std::string::npos) {
            pos = text.size();
        } else {
            pos = found + 1;
        }
    }
    return true;
}

// The members that are records of their own, in reading order, each with the key of its
// form (none: its members sit in the stream's own document).
template <typename Stream, typename Visit>
void forEachRecordMember(Stream& stream, Visit&& visit) {
    visit(stream.m_type, nullptr);
    visit(stream.m_class, nullptr);
    visit(stream.m_state, nullptr);
    visit(stream.m_redundant_type, nullptr);
    visit(stream.m_vlan, "vlan");
    visit(stream.m_udp, "udp");
    visit(stream.m_ipv4, "ipv4");
    visit(stream.m_rtp, "rtp");
}

}  // namespace

std::string StreamData::macToString(const MacAddress& mac) {
    char text[18];
    std::snprintf(text, sizeof(text), "%02X-%02X-%02X-%02X-%02X-%02X", mac[0], mac[1], mac[2], mac[3], mac[4],
                  mac[5]);
    return text;
}

void StreamData::parseMac(const std::string& text, MacAddress& mac) {
    if (!parseMacPass(text, '-', mac)) {
        parseMacPass(text, ':', mac);
    }
}

uint32_t StreamData::packetSize(uint32_t headerBytes) const {
    return m_payload_size + headerBytes + (m_vlan.isTagged() ? 4u : 0u);
}

void StreamData::readSamples(Json::Value& in) {
    PacketTimeOptions::toSamplesPerPacketEnum(in.get("samples", 0).asUInt(), m_samples);
}

void StreamData::Serialize(Json::Value& out) const {
    forEachRecordMember(*this, [&out](const auto& record, const char* key) {
        record.Serialize(key != nullptr ? out[key] : out);
    });
    out["name"] = Json::Value(m_name);
    m_channels.Serialize(out["channel-list"]);
    out["media-clk-offset"] = Json::Value(m_media_clk_offset);
    out["network-interface-index"] = Json::Value(m_network_interface_index);
    out["samples"] = Json::Value(static_cast<int>(m_samples));
    out["l1-bandwidth"] = Json::Value(static_cast<Json::UInt64>(m_l1_bandwidth));
    out["id"] = Json::Value(static_cast<Json::UInt64>(m_id));
    out["hw-id"] = Json::Value(m_hw_id);
    out["unicast"] = Json::Value(m_unicast);
    out["dst-mac-addr"] = Json::Value(macToString(m_dst_mac));
}

void StreamData::Deserialize(Json::Value& in) {
    forEachRecordMember(*this, [&in](auto& record, const char* key) {
        record.Deserialize(key != nullptr ? in[key] : in);
    });
    m_name = in.get("name", "").asString();
    m_channels.Deserialize(in["channel-list"]);
    m_media_clk_offset = in.get("media-clk-offset", 0).asInt();
    m_network_interface_index = in.get("network-interface-index", -1).asInt();
    readSamples(in);
    m_l1_bandwidth = in.get("l1-bandwidth", 0).asUInt64();
    m_id = in.get("id", 0).asUInt64();
    m_hw_id = in.get("hw-id", 0).asUInt();
    m_unicast = in.get("unicast", false).asBool();
    parseMac(in.get("dst-mac-addr", "").asString(), m_dst_mac);
}

void StreamData::dumpStreamData() {
    Logger::log(6, "DUMPING BASE STREAM DATA");
    Logger::log(6, "ID:               %llu", static_cast<unsigned long long>(m_id));
    Logger::log(6, "Name:             %s", m_name.c_str());
    Logger::log(6, "Type:             %s", m_type.toString().c_str());
    Logger::log(6, "State:            %s", m_state.toString().c_str());
    Logger::log(6, "HwIndex:          0x%X", m_hw_id);
    Logger::log(6, "Class:            %s (%s)", m_class.toString().c_str(),
                m_unicast ? "Unicast" : "Multicast");
    Logger::log(6, "VLAN:             %s", m_vlan.isTagged() ? "Enable" : "Disable");
    if (m_vlan.isTagged()) {
        Logger::log(6, "  ID              %d ", static_cast<int>(m_vlan.m_id));
        Logger::log(6, "  Priority        %d", static_cast<int>(m_vlan.m_priority));
        Logger::log(6, "  TPID            0x%x", static_cast<unsigned>(m_vlan.m_tpid));
    }
    Logger::log(6, "UDP:");
    Logger::log(6, "  Source          %d", static_cast<int>(m_udp.m_source));
    Logger::log(6, "  Destination     %d ", static_cast<int>(m_udp.m_destination));
    Logger::log(6, "IP: ");
    Logger::log(6, "  Source          %s", m_ipv4.m_local.toString().c_str());
    Logger::log(6, "  Destination     %s", m_ipv4.m_transport.toString().c_str());
    Logger::log(6, "    SRC Mac Addr  %s", macToString(m_src_mac).c_str());
    if (m_unicast) {
        Logger::log(6, "    DST Mac Addr  %s", macToString(m_dst_mac).c_str());
    }
    Logger::log(6, "  DSCP            %d", static_cast<int>(m_ipv4.m_dscp));
    Logger::log(6, "Payload Type      %d", static_cast<int>(m_rtp.m_payload_type));
    Logger::log(6, "Media CLK Offset  %d", m_media_clk_offset);
    Logger::log(6, "Interface index   %d", m_network_interface_index);
    Logger::log(6, "L1 Bandwidth      %llu", static_cast<unsigned long long>(m_l1_bandwidth));
    Logger::log(6, "Num Samples       %d", static_cast<int>(m_samples));
    Logger::log(6, "Payload Size      %d", static_cast<int>(m_payload_size));
    Logger::log(6, "Redundant Type    %s", m_redundant_type.toString().c_str());
    Logger::log(6, "Num Channel       %d", m_channels.numChannelEntries());
    m_channels.dump("");
    dumpDerivedStreamData();
}

// ---- AncillaryStreamData ----

AncillaryStreamData::AncillaryStreamData() {
    m_type.set(StreamType::ANCILLARY);
    m_udp = UdpPort(20000, 20000);
    m_ipv4.m_dscp = 40;
    m_ipv4.m_ttl = 64;
}

void AncillaryStreamData::Serialize(Json::Value& out) const {
    StreamData::Serialize(out);
    out["packet-size"] = Json::Value(getPacketSize());
    out["l1-bandwidth"] = Json::Value(static_cast<Json::UInt64>(m_l1_bandwidth));
}

void AncillaryStreamData::Deserialize(Json::Value& in) {
    StreamData::Deserialize(in);
    m_type.set(StreamType::ANCILLARY);
}

void AncillaryStreamData::dumpDerivedStreamData() {
    Logger::log(6, "(No AncillaryStreamData members to log)");
}
