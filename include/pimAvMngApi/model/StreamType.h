#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Media type of a stream, JSON key "type".
///
///   1 "audio"      read from "audio"
///   2 "video"      read from "video"
///   3 "ancillary"  written only: reading "ancillary" keeps the code
///   other codes are written "undefined"
/// Any other text, and a missing key, keep the code.
class StreamType : public IJsonSerializable {
public:
    /// The media types, by code.
    enum stream_type_en : int32_t { UNDEFINED = 0, AUDIO = 1, VIDEO = 2, ANCILLARY = 3 };

    StreamType() = default;
    /// A type holding `code`, kept as given.
    explicit StreamType(int32_t code) : m_value(code) {}
    ~StreamType() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The type code.
    int32_t get() const { return m_value; }
    /// Sets the type code; any value is kept as given.
    void set(int32_t code) { m_value = code; }
    /// The word of the code by the table above.
    std::string toString() const;
    /// The reading rule: "audio" and "video" set their code, anything else keeps it.
    void fromString(const std::string& word);

    int32_t m_value = AUDIO;  ///< The type code ("type").
};
