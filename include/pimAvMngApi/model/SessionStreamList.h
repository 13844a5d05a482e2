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
    /// One stream of a session.
    struct Stream {
        uint64_t m_id = 0;         ///< "id".
        std::string m_name;        ///< "name".
        std::string m_type;        ///< "type".
        std::string m_class;       ///< "class".
        std::string m_state;       ///< "state".
        ChannelList m_channels;    ///< "channel-list".
        Json::Value m_other_keys;  ///< Members of the last object read that the record does not know.

        /// Writes the stream object, unknown members included.
        void Serialize(Json::Value& out) const;
        /// Reads one stream object.
        void Deserialize(Json::Value& in);
    };

    /// One session with its streams.
    struct Session {
        uint64_t m_id = 0;            ///< "id".
        std::string m_name;           ///< "name".
        uint64_t m_version = 0;       ///< "version".
        bool m_paused = false;        ///< "paused".
        std::list<Stream> m_streams;  ///< "streams", in array order.
        Json::Value m_other_keys;     ///< Members of the last object read that the record does not know.

        /// Writes the session object with its streams, unknown members included.
        void Serialize(Json::Value& out) const;
        /// Reads one session object with its streams.
        void Deserialize(Json::Value& in);
    };

    SessionStreamList() = default;
    ~SessionStreamList() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The session with this id, or nullptr.
    const Session* find(uint64_t id) const;

    std::list<Session> m_sessions;  ///< The sessions, in array order.
};
