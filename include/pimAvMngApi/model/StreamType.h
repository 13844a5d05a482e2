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
    enum stream_type_en : int32_t { UNDEFINED = 0, AUDIO = 1, VIDEO = 2, ANCILLARY = 3 };

    StreamType() = default;
    explicit StreamType(int32_t code) : m_value(code) {}
    ~StreamType() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    int32_t get() const { return m_value; }
    void set(int32_t code) { m_value = code; }
    std::string toString() const;
    void fromString(const std::string& word);

    int32_t m_value = AUDIO;
};
