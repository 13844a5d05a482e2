#pragma once

#include <json/json.h>

#include <string>

/// Base of every record that travels as a JSON document.
///
/// Serialize writes every member into `out` with out[key] = value, so keys the record
/// does not know stay in place. Deserialize reads members with get(key, default);
/// a value of the wrong JSON kind makes jsoncpp throw, and the exception is the
/// caller's to catch.
class IJsonSerializable {
public:
    ///@{
    /// Records are values: copied and assigned member by member.
    IJsonSerializable() = default;
    IJsonSerializable(const IJsonSerializable&) = default;
    IJsonSerializable& operator=(const IJsonSerializable&) = default;
    virtual ~IJsonSerializable() = default;
    ///@}

    /// Writes the record's members into `out` under their JSON keys; other keys of `out` stay.
    virtual void Serialize(Json::Value& out) const = 0;
    /// Reads the record's members from `in`; a missing key gives the member its default.
    virtual void Deserialize(Json::Value& in) = 0;

    /// Renders a document as one line: no comments, no indentation, no blank after
    /// the colon, members in jsoncpp's (key-sorted) order. Replaces the text.
    static void convertJsonToString(Json::Value& value, std::string& text);
};
