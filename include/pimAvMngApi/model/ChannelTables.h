#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "pimAvMngApi/model/DaifType.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Channel usage of the device's local interfaces (SDI, HDMI, TDM, MADI, ...): the member
/// "list" of the reply to "GET Channel Table". One table per interface; each table lists
/// the interface's channels and, for a channel in use, the session and stream that use
/// it. Without "full" in the request the daemon lists only the channels in use.
///
/// JSON form: a bare array (the document itself is the array), one object per interface:
///   {"interface": {"type": 12, "string": "auto"},  the interface's DaifType
///    "interface-index": 0,    unsigned, which interface of that kind
///    "num-channels": 0,       unsigned, channels the interface has
///    "channels": [            one object per listed channel:
///      {"channel": 0,         unsigned, channel number on the interface
///       "used": false,        bool
///       "session-id": 0,      unsigned 64-bit, the session using it (0: none)
///       "stream-id": 0,       unsigned 64-bit, the stream using it
///       "class": ""}]}        text, "sender" or "receiver" ("" when unused)
///
/// Reading replaces the content: the list is emptied, then each array element becomes
/// one Table in array order. A null document gives an empty list; any other document
/// that is not an array throws Json::LogicError, as does a "channels" member that is
/// neither null nor an array. Missing keys give the defaults above; wrong JSON kinds
/// throw (jsoncpp), and the tables read before the failure stay. Members that the record
/// does not know are kept per table and per channel and written back.
class ChannelTables : public IJsonSerializable {
public:
    /// One channel of an interface and the stream that uses it.
    struct Usage {
        uint32_t m_channel = 0;     ///< "channel".
        bool m_used = false;        ///< "used".
        uint64_t m_session_id = 0;  ///< "session-id".
        uint64_t m_stream_id = 0;   ///< "stream-id".
        std::string m_class;        ///< "class".
        Json::Value m_other_keys;   ///< Members of the last object read that the record does not know.

        /// Writes the channel object, unknown members included.
        void Serialize(Json::Value& out) const;
        /// Reads one channel object.
        void Deserialize(Json::Value& in);
    };

    /// The channels of one interface.
    struct Table {
        DaifType m_interface;            ///< "interface".
        uint32_t m_interface_index = 0;  ///< "interface-index".
        uint32_t m_num_channels = 0;     ///< "num-channels".
        std::list<Usage> m_channels;     ///< "channels", in array order.
        Json::Value m_other_keys;        ///< Members of the last object read that the record does not know.

        /// Writes the interface object with its channels, unknown members included.
        void Serialize(Json::Value& out) const;
        /// Reads one interface object with its channels.
        void Deserialize(Json::Value& in);
        /// Channels of this table that are in use.
        size_t usedCount() const;
    };

    ChannelTables() = default;
    ~ChannelTables() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    std::list<Table> m_tables;  ///< One table per interface, in array order.
};
