#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// The sessions of one direction (senders for "GET Source List", receivers for "GET
/// Destination list") with their streams: the member "list" of the reply.
///
/// JSON form: a bare array (the document itself is the array), one object per session:
///   {"id": 0,                 unsigned 64-bit session id
///    "id-str": "0",           the id as decimal text (written; read when "id" is absent)
///    "name": "",              text
///    "version": 0,            unsigned 64-bit, changes whenever the session is changed
///    "paused": false,         bool
///    "streams": [             one object per stream of the session:
///      {"id": 0,              unsigned 64-bit stream id
///       "name": "",           text
///       "type": "",           text, the media word ("audio", "video", "ancillary")
///       "class": "",          text, "sender" or "receiver"
///       "state": "",          text, "Enabled", "Paused", "Disabled"
///       "channel-list": []}]} the stream's channels (ChannelList)
///
/// Words are kept as the daemon wrote them, so no value is lost on a round trip.
///
/// Reading replaces the content: the list is emptied, then each array element becomes
/// one Session in array order. A null document gives an empty list; any other document
/// that is not an array throws Json::LogicError, as does a stream list that is neither
/// null nor an array. Missing keys give the defaults above; wrong JSON kinds throw
/// (jsoncpp), and the sessions read before the failure stay in the list. Members that
/// the record does not know are kept per session and per stream and written back.
class SessionStreamList : public IJsonSerializable {
public:
    struct Stream {
        uint64_t m_id = 0;
        std::string m_name;
        std::string m_type;
        std::string m_class;
        std::string m_state;
        ChannelList m_channels;
        Json::Value m_other_keys;

        void Serialize(Json::Value& out) const;
        void Deserialize(Json::Value& in);
    };

    struct Session {
        uint64_t m_id = 0;
        std::string m_name;
        uint64_t m_version = 0;
        bool m_paused = false;
        std::list<Stream> m_streams;
        Json::Value m_other_keys;

        void Serialize(Json::Value& out) const;
        void Deserialize(Json::Value& in);
    };

    SessionStreamList() = default;
    ~SessionStreamList() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The session with this id, or nullptr.
    const Session* find(uint64_t id) const;

    std::list<Session> m_sessions;
};
