#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Video and audio offsets of one SDI port. The serialization base is private: an
/// SdiOffset is written and read through its own Serialize/Deserialize only.
///
/// JSON form: {"sdi-port": integer, "video-offset": unsigned, "audio-offset": unsigned}
/// Reading: a missing key keeps its member; a present one is read as a signed integer
/// and truncated to the member width (offsets above 2147483647 make jsoncpp throw).
class SdiOffset : private IJsonSerializable {
public:
    SdiOffset() = default;
    /// The offsets of SDI port `port`.
    SdiOffset(uint8_t port, uint32_t videoOffset, uint32_t audioOffset)
        : m_sdi_port(port), m_video_offset(videoOffset), m_audio_offset(audioOffset) {}
    ///@{
    /// Copied and assigned member by member.
    SdiOffset(const SdiOffset&) = default;
    SdiOffset& operator=(const SdiOffset&) = default;
    ///@}
    ~SdiOffset() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Offsets are equal when port and both offsets are.
    bool operator==(const SdiOffset& o) const {
        return m_sdi_port == o.m_sdi_port && m_video_offset == o.m_video_offset &&
               m_audio_offset == o.m_audio_offset;
    }

    uint8_t m_sdi_port = 0;       ///< "sdi-port".
    uint32_t m_video_offset = 0;  ///< "video-offset".
    uint32_t m_audio_offset = 0;  ///< "audio-offset".
};
