#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Role of a stream in a pair of redundant streams, JSON key "redundant-type".
///
///   0 "none"       read from "none" and from a missing key
///   1 "primary"
///   2 "secondary"
///   other codes are written "none"
/// Any other text keeps the code.
class RedundantType : public IJsonSerializable {
public:
    /// The role codes.
    enum redundant_type_en : int32_t { NONE = 0, PRIMARY = 1, SECONDARY = 2 };

    RedundantType() = default;
    /// A role holding `code`, kept as given.
    explicit RedundantType(int32_t code) : m_value(code) {}
    ~RedundantType() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The role code.
    int32_t get() const { return m_value; }
    /// Sets the role code; any value is kept as given.
    void set(int32_t code) { m_value = code; }
    /// "primary" for 1, "secondary" for 2, "none" for anything else.
    std::string toString() const;
    /// Accepts exactly "none", "primary" and "secondary": sets the code and returns 0.
    /// Any other text keeps the code and returns -8.
    int fromString(const std::string& word);

    int32_t m_value = NONE;  ///< The role code ("redundant-type").
};
