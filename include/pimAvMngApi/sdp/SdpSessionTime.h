#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// The two values of an SDP "t=" line.
///
/// JSON form: {"start": unsigned, "stop": unsigned}; a missing key reads as 0.
class SdpSessionTime : public IJsonSerializable {
public:
    SdpSessionTime() = default;
    ~SdpSessionTime() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint32_t m_start = 0;  ///< "start".
    uint32_t m_stop = 0;   ///< "stop".
};
