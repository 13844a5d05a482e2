#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Direction of a stream, JSON key "class".
///
///   1 "receiver"  read from "receiver"
///   2 "sender"    read from "sender"
///   other codes are written "undefined"
/// Any other text, and a missing key, keep the code.
class StreamClass : public IJsonSerializable {
public:
    enum stream_class_en : int32_t { UNDEFINED = 0, RECEIVER = 1, SENDER = 2 };

    StreamClass() = default;
    explicit StreamClass(int32_t code) : m_value(code) {}
    ~StreamClass() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    int32_t get() const { return m_value; }
    void set(int32_t code) { m_value = code; }
    std::string toString() const;
    void fromString(const std::string& word);

    int32_t m_value = SENDER;
};
