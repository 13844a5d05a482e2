#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "pimAvMngApi/platform/ChannelId.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// An ordered list of channel selections.
///
/// JSON form: a bare array of ChannelId objects, written into the value handed to
/// Serialize (records call Serialize(out["channel-list"])). An empty list is written
/// as [].
///
/// Deserialize replaces the content with the array's elements in array order. A null
/// value (the key was absent) leaves the list empty, like a missing scalar gives its
/// default. Any other non-array value throws Json::LogicError; an element of the wrong
/// kind throws from jsoncpp, and the elements read before it stay in the list.
class ChannelList : public IJsonSerializable {
public:
    ChannelList() = default;
    ~ChannelList() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Empties the list.
    void clearChannelList() { m_channels.clear(); }
    /// The number of entries.
    int numChannelEntries() const { return static_cast<int>(m_channels.size()); }
    /// True when the list has no entry.
    bool empty() const { return m_channels.empty(); }

    /// Appends an entry.
    void addChannelEntry(const ChannelId& channel) { m_channels.push_back(channel); }
    ///@{
    /// The entry at `index`, or nullptr when index is not below numChannelEntries().
    ChannelId* getChannelEntry(int index);
    const ChannelId* getChannelEntry(int index) const;
    ///@}
    /// Replaces the entry at `index`; -16 when there is no such entry.
    int setChannelEntry(int index, const ChannelId& channel);
    /// Removes the entry at `index`; -16 when there is no such entry.
    int removeChannelEntry(int index);

    ///@{
    /// The entry at `index`, unchecked: `index` must be below numChannelEntries().
    ChannelId& operator[](std::size_t index) { return m_channels[index]; }
    const ChannelId& operator[](std::size_t index) const { return m_channels[index]; }
    ///@}

    ///@{
    /// Iteration over the entries in list order.
    std::vector<ChannelId>::iterator begin() { return m_channels.begin(); }
    std::vector<ChannelId>::iterator end() { return m_channels.end(); }
    std::vector<ChannelId>::const_iterator begin() const { return m_channels.begin(); }
    std::vector<ChannelId>::const_iterator end() const { return m_channels.end(); }
    ///@}

    /// Logs one line per entry at level 6: "<prefix>Channel[<i>] <ChannelId::toString()>".
    void dump(const std::string& prefix) const;

    ///@{
    /// Lists are equal when they hold equal entries in the same order.
    bool operator==(const ChannelList& o) const { return m_channels == o.m_channels; }
    bool operator!=(const ChannelList& o) const { return !(*this == o); }
    ///@}

    std::vector<ChannelId> m_channels;  ///< The entries, in array order.
};
