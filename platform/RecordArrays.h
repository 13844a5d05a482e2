#pragma once

// JSON arrays of records: the one loop that reads them and the one that writes them.

#include <json/json.h>

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
