#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Interface format descriptor of a channel or an interface, as the daemon numbers it.
/// JSON form, written into the object handed to Serialize:
///   {"type": integer, "string": text}
/// Reading: a missing "type" gives 12, a missing "string" gives "auto".
class DaifType : public IJsonSerializable {
public:
    static constexpr int32_t kDefaultType = 12;  ///< The type that a missing "type" gives.

    DaifType() = default;
    /// A descriptor with `type` and its `text`.
    DaifType(int32_t type, std::string text) : m_type(type), m_string(std::move(text)) {}
    ~DaifType() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    ///@{
    /// Descriptors are equal when type and text are.
    bool operator==(const DaifType& o) const { return m_type == o.m_type && m_string == o.m_string; }
    bool operator!=(const DaifType& o) const { return !(*this == o); }
    ///@}

    int32_t m_type = kDefaultType;  ///< "type".
    std::string m_string = "auto";  ///< "string".
};
