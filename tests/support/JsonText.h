#pragma once

#include <json/json.h>

#include <memory>
#include <stdexcept>
#include <string>

// Parses JSON text for tests; a parse failure is a test bug and throws.
inline Json::Value jsonOf(const std::string& text) {
    Json::Value v;
    Json::CharReaderBuilder b;
    std::string errs;
    std::unique_ptr<Json::CharReader> r(b.newCharReader());
    if (!r->parse(text.data(), text.data() + text.size(), &v, &errs)) {
        throw std::runtime_error("bad test JSON: " + text + ": " + errs);
    }
    return v;
}

// One-line rendering, members in key order.
inline std::string jsonText(const Json::Value& v) {
    Json::StreamWriterBuilder b;
    b["indentation"] = "";
    return Json::writeString(b, v);
}

// Reads JSON text into a record (Deserialize takes a non-const document).
template <typename R>
void readInto(R& record, const std::string& text) {
    Json::Value in = jsonOf(text);
    record.Deserialize(in);
}
