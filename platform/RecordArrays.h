#pragma once

// JSON arrays of records: the one loop that reads them and the one that writes them.

#include <json/json.h>

#include <string>

namespace pimav::detail {

// Appends one record per element of `array`, each read in place by its Deserialize; a
// null or empty array adds nothing.
template <typename Container>
void appendEach(Json::Value& array, Container& records) {
    for (Json::Value::ArrayIndex i = 0; i < array.size(); ++i) {
        typename Container::value_type record;
        record.Deserialize(array[i]);
        records.push_back(record);
    }
}

// Replaces `records` with those of `array`, which must be an array or null (null reads as
// none); any other kind throws Json::LogicError "<owner>: <what> is not an array".
template <typename Container>
void readArrayOrNull(Json::Value& array, Container& records, const char* owner, const char* what) {
    records.clear();
    if (!array.isNull() && !array.isArray()) {
        Json::throwLogicError(std::string(owner) + ": " + what + " is not an array");
    }
    appendEach(array, records);
}

// Writes the records' forms at indexes 0, 1, ... of out[key], over what is already there;
// without records, `out` gets no `key`.
template <typename Container>
void writeEachInto(const Container& records, Json::Value& out, const char* key) {
    Json::Value::ArrayIndex i = 0;
    for (const auto& record : records) {
        record.Serialize(out[key][i++]);
    }
}

// Replaces `out` with the array of the records' JSON forms, each written into a fresh
// object ([] for no records).
template <typename Container>
void writeEach(const Container& records, Json::Value& out) {
    out = Json::Value(Json::arrayValue);
    for (const auto& record : records) {
        Json::Value element(Json::objectValue);
        record.Serialize(element);
        out.append(element);
    }
}

}  // namespace pimav::detail
