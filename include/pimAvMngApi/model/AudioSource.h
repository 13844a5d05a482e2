#pragma once

#include <cstdint>

#include "pimAvMngApi/device/Codec.h"
#include "pimAvMngApi/model/Source.h"

/// An audio stream of a sending session.
///
/// JSON form: the Source keys plus "channel-freq" (unsigned), "ptime" (unsigned) and
/// "codec" (codec word). Reading: "channel-freq" and "ptime" default to 0, "codec" to
/// "AM824" (compared in lower case; an unknown name gives "Not-supported").
class AudioSource : public Source {
public:
    AudioSource() = default;
    ~AudioSource() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;
    /// Logs "Clearing Audio Source" at level 5, clears the Source members, then sets the
    /// packet time and channel frequency to 0. The codec is kept.
    void clear() override;

    Codec m_codec;                ///< The encoding ("codec").
    uint32_t m_ptime = 0;         ///< Packet time ("ptime").
    uint32_t m_channel_freq = 0;  ///< Sampling frequency of the channels ("channel-freq").
};
