#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Selects one stream of a remote session for a receiver: by the advertised session id,
/// the media section index and the payload type, or by NMOS sender and receiver ids.
///
/// JSON form: {"id": unsigned 64-bit, "media-idx": int, "payload-type": int,
///             "nmos": {"sender": text, "receiver": text}}
/// The "nmos" object is always written. Constructed with payload type 98, but reading a
/// document without "payload-type" gives 0. Reading truncates "media-idx" and
/// "payload-type" to 8 bits; when "nmos" is absent, null or {} both NMOS ids keep their
/// values, otherwise each missing one reads as "".
class DestinationApiSessionSel : public IJsonSerializable {
public:
    DestinationApiSessionSel() = default;
    ~DestinationApiSessionSel() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint64_t m_id = 0;            ///< Advertised session id ("id").
    uint8_t m_media_idx = 0;      ///< Index of the media section ("media-idx").
    uint8_t m_payload_type = 98;  ///< RTP payload type ("payload-type").
    std::string m_nmos_sender;    ///< NMOS sender id ("nmos"/"sender").
    std::string m_nmos_receiver;  ///< NMOS receiver id ("nmos"/"receiver").
};
