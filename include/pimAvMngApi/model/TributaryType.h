#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Role of a video stream in a multi-stream video transport and its position there.
/// JSON form: the object "tributary" {"type": word, "index": integer} inside the
/// document handed to Serialize/Deserialize.
///
///   0 "none"       read from "none" and from a missing "type"
///   1 "MULTI-2SI"
///   2 "MULTI-SD"
///   other codes are written "none"
/// Any other text keeps the code. "index" is always read, -1 (no index) when missing.
class TributaryType : public IJsonSerializable {
public:
    /// The roles, by code.
    enum tributary_type_en : int32_t { NONE = 0, MULTI_2SI = 1, MULTI_SD = 2 };

    TributaryType() = default;
    /// A role `code` at position `index`.
    TributaryType(int32_t code, int32_t index) : m_type(code), m_index(index) {}
    ~TributaryType() override = default;

    /// Writes out["tributary"]["type"] and out["tributary"]["index"].
    void Serialize(Json::Value& out) const override;
    /// Reads in["tributary"]; an absent or null object gives code 0 and index -1.
    void Deserialize(Json::Value& in) override;

    /// The role code.
    int32_t get() const { return m_type; }
    /// Sets the role code; any value is kept as given.
    void set(int32_t code) { m_type = code; }
    /// The position in the transport; -1 for none.
    int32_t getIndex() const { return m_index; }
    /// Sets the position.
    void setIndex(int32_t index) { m_index = index; }
    /// The word of the role by the table above.
    std::string toString() const;
    /// Accepts exactly "none", "MULTI-2SI" and "MULTI-SD": sets the code and returns 0.
    /// Any other text keeps the code and returns -8.
    int fromString(const std::string& word);

    /// Values are equal when role and position are.
    bool operator==(const TributaryType& o) const { return m_type == o.m_type && m_index == o.m_index; }

    int32_t m_type = NONE;  ///< The role code ("type").
    int32_t m_index = -1;   ///< The position ("index").
};
