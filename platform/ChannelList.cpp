#include "pimAvMngApi/platform/ChannelList.h"

#include "pimAvMngApi/platform/Logger.h"
#include "platform/RecordArrays.h"

using namespace pimav::detail;

void ChannelId::Serialize(Json::Value& out) const {
    m_interface.Serialize(out["interface"]);
    out["interface-index"] = Json::Value(m_interface_index);
    out["channel"] = Json::Value(m_channel);
}

void ChannelId::Deserialize(Json::Value& in) {
    m_interface.Deserialize(in["interface"]);
    m_interface_index = in.get("interface-index", 0u).asUInt();
    m_channel = in.get("channel", 0u).asUInt();
}

std::string ChannelId::toString() const {
    return m_interface.m_string + "(" + std::to_string(m_interface.m_type) + ")/" +
           std::to_string(m_interface_index) + ":" + std::to_string(m_channel);
}

void ChannelList::Serialize(Json::Value& out) const { writeEach(m_channels, out); }

void ChannelList::Deserialize(Json::Value& in) { readArrayOrNull(in, m_channels, "ChannelList", "\"channel-list\""); }

ChannelId* ChannelList::getChannelEntry(int index) {
    if (index < 0 || index >= numChannelEntries()) {
        return nullptr;
    }
    return &m_channels[static_cast<std::size_t>(index)];
}

const ChannelId* ChannelList::getChannelEntry(int index) const {
    if (index < 0 || index >= numChannelEntries()) {
        return nullptr;
    }
    return &m_channels[static_cast<std::size_t>(index)];
}

int ChannelList::setChannelEntry(int index, const ChannelId& channel) {
    ChannelId* entry = getChannelEntry(index);
    if (entry == nullptr) {
        return -16;
    }
    *entry = channel;
    return 0;
}

int ChannelList::removeChannelEntry(int index) {
    if (getChannelEntry(index) == nullptr) {
        return -16;
    }
    m_channels.erase(m_channels.begin() + index);
    return 0;
}

void ChannelList::dump(const std::string& prefix) const {
    int i = 0;
    for (const ChannelId& channel : m_channels) {
        Logger::log(6, "%sChannel[%d] %s", prefix.c_str(), i++, channel.toString().c_str());
    }
}
