#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "pimAvMngApi/model/AudioSource.h"
#include "pimAvMngApi/model/Source.h"
#include "pimAvMngApi/model/VideoSource.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

using session_id_t = uint64_t;

/// The configuration of a sending session: identity and three lists of streams.
///
/// JSON form: {"session-id": unsigned 64-bit, "name": text,
///             "ancillary-sources": [Source...], "audio-sources": [AudioSource...],
///             "video-sources": [VideoSource...]}
/// An empty list writes no key. Deserialize clears the record first, then reads each list
/// only when its key holds an array (anything else leaves it empty), building each
/// element from a fresh record; after each audio and video element it logs
/// "Source IP in Source API: %s" at level 5 with the element's source address. An
/// element of the wrong kind throws; the elements appended before it stay.
class SourceApi : public IJsonSerializable {
public:
    SourceApi() = default;
    ~SourceApi() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Session id 0, empty name, all three lists emptied. Logs nothing.
    void clear();

    session_id_t m_session_id = 0;           ///< "session-id".
    std::string m_name;                      ///< "name".
    std::list<Source> m_ancillary_sources;   ///< "ancillary-sources".
    std::list<AudioSource> m_audio_sources;  ///< "audio-sources".
    std::list<VideoSource> m_video_sources;  ///< "video-sources".
};
