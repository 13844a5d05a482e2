#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Who created a session.
///
/// JSON form: {"remote": text or null, "origin": "nmos" | "jsonapi"}
/// "remote" is written as null when empty; origin 1 is written "nmos", any other code
/// "jsonapi". Reading: "remote" defaults to "" (null reads as ""), "origin" "nmos"
/// gives 1 and any other text 0.
///
/// Deserialize catches its own errors: when a value cannot be read (for example
/// "remote" is an object) it logs "[SessionConnectionInfo] Error de-serializing json
/// [%s]" at level 2 with the styled input and returns normally. A "remote" read before
/// the failure keeps its new value; the origin is then unchanged.
class SessionConnectionInfo : public IJsonSerializable {
public:
    /// Who created the session, by code.
    enum origin_en : int32_t { JSONAPI = 0, NMOS = 1 };

    SessionConnectionInfo() = default;
    ~SessionConnectionInfo() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    std::string m_remote;        ///< "remote"; empty when not known.
    int32_t m_origin = JSONAPI;  ///< Origin code ("origin").
};
