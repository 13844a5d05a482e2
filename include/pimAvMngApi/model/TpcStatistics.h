#pragma once

#include <cstdint>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Transport statistics of one stream.
///
/// JSON form: {"session-id": unsigned 64-bit, "stream-id": unsigned,
///             "error-detected": bool, "data-detected": bool}
/// Reading: missing keys give 0 and false.
class TpcStatistics : public IJsonSerializable {
public:
    TpcStatistics() = default;
    ~TpcStatistics() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint64_t m_session_id = 0;      ///< "session-id".
    uint32_t m_stream_id = 0;       ///< "stream-id".
    bool m_error_detected = false;  ///< Errors were seen on the stream ("error-detected").
    bool m_data_detected = false;   ///< Packets arrive ("data-detected").
};
