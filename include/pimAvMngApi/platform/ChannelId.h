#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/model/DaifType.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// One channel selection: the interface the channel belongs to (its format descriptor
/// and, for boards with several interfaces of one kind, which of them) and the channel
/// number on that interface.
///
/// JSON form (an object):
///   {"interface": {"type": 12, "string": "auto"},   the DaifType
///    "interface-index": 0,                          unsigned, which interface of that kind
///    "channel": 0}                                  unsigned, channel number on the interface
/// Reading: a missing "interface" gives type 12 and "auto"; missing numbers give 0.
/// Values of the wrong JSON kind make jsoncpp throw out of Deserialize.
class ChannelId : public IJsonSerializable {
public:
    ChannelId() = default;
    /// Channel `channel` of interface number `interfaceIndex` of kind `interface`.
    ChannelId(const DaifType& interface, uint32_t interfaceIndex, uint32_t channel)
        : m_interface(interface), m_interface_index(interfaceIndex), m_channel(channel) {}
    ~ChannelId() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// "<string>(<type>)/<interface-index>:<channel>", for example "auto(12)/0:5".
    std::string toString() const;

    ///@{
    /// Selections are equal when interface, interface index and channel are.
    bool operator==(const ChannelId& o) const {
        return m_interface == o.m_interface && m_interface_index == o.m_interface_index &&
               m_channel == o.m_channel;
    }
    bool operator!=(const ChannelId& o) const { return !(*this == o); }
    ///@}

    DaifType m_interface;            ///< "interface".
    uint32_t m_interface_index = 0;  ///< "interface-index".
    uint32_t m_channel = 0;          ///< "channel".
};
