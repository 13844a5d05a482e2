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
    /// The directions, by code.
    enum stream_class_en : int32_t { UNDEFINED = 0, RECEIVER = 1, SENDER = 2 };

    StreamClass() = default;
    /// A direction holding `code`, kept as given.
    explicit StreamClass(int32_t code) : m_value(code) {}
    ~StreamClass() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The direction code.
    int32_t get() const { return m_value; }
    /// Sets the direction code; any value is kept as given.
    void set(int32_t code) { m_value = code; }
    /// The word of the code by the table above.
    std::string toString() const;
    /// The reading rule: "receiver" and "sender" set their code, anything else keeps it.
    void fromString(const std::string& word);

    int32_t m_value = SENDER;  ///< The direction code ("class").
};
