#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Audio offset of the HDMI output.
///
/// JSON form: {"hdmi-audio-offset": unsigned}. Reading: a missing key keeps the offset;
/// a present one is read as a signed integer, so values above 2147483647 make jsoncpp
/// throw.
class HdmiAudioOffset : public IJsonSerializable {
public:
    HdmiAudioOffset() = default;
    /// An offset of `offset`.
    explicit HdmiAudioOffset(uint32_t offset) : m_offset(offset) {}
    ~HdmiAudioOffset() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint32_t m_offset = 0;  ///< "hdmi-audio-offset".
};
