#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// How the RTP synchronisation source identifier of a sender is chosen.
///
/// JSON form: {"type": word, "value": unsigned}, written into the object handed to
/// Serialize. Selections: 0 "session-id", 1 "asio", 2 "manual", 3 "unspecified";
/// any other code is written "-". Constructed as 3 "unspecified" with value 0.
///
/// Deserialize(in) takes the SSRC value itself (for example in["ssrc"]):
///  - an object: "value" (default 0) is always stored; "type" (default "-") sets the
///    selection only when it is one of the four words;
///  - any other non-null value (a bare number): selection 0 "session-id" and that
///    number as the value;
///  - null (the key was absent): nothing changes.
class Ssrc : public IJsonSerializable {
public:
    /// The selections, by code.
    enum ssrc_type_en : int32_t { SESSION_ID = 0, ASIO = 1, MANUAL = 2, UNSPECIFIED = 3 };

    Ssrc() = default;
    /// A selection `type` with the identifier `value`.
    Ssrc(int32_t type, uint32_t value) : m_type(type), m_value(value) {}
    ~Ssrc() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The word of the selection ("-" for a code outside the four).
    std::string toString() const;

    /// Values are equal when selection and identifier are.
    bool operator==(const Ssrc& o) const { return m_type == o.m_type && m_value == o.m_value; }

    int32_t m_type = UNSPECIFIED;  ///< The selection code ("type").
    uint32_t m_value = 0;          ///< The identifier ("value").
};
