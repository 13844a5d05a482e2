#pragma once

#include <cstdint>

#include "pimAvMngApi/model/Ssrc.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// RTP parameters of a stream.
///
/// JSON form: {"payload-type": 98, "sscr": {"type": word, "value": unsigned}}
/// (the SSRC travels under the key "sscr" here). Reading: "payload-type" defaults to 98
/// and is truncated to 8 bits; "sscr" follows the Ssrc rule (object, bare number or
/// absent).
class Rtp : public IJsonSerializable {
public:
    Rtp() = default;
    ~Rtp() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint8_t m_payload_type = 98;  ///< "payload-type".
    Ssrc m_ssrc;                  ///< The synchronisation source ("sscr").
};
