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

// One-line rendering; numbers compare by value whatever their jsoncpp kind
// (int, unsigned) since both render the same text.
inline std::string jsonText(const Json::Value& v) {
    Json::StreamWriterBuilder b;
    b["indentation"] = "";
    return Json::writeString(b, v);
}

// What a record writes into a fresh document, as a document and as one-line text.
template <typename R>
Json::Value writtenDoc(const R& record) {
    Json::Value out;
    record.Serialize(out);
    return out;
}
template <typename R>
std::string written(const R& record) {
    return jsonText(writtenDoc(record));
}

// Reads JSON text into a record (Deserialize takes a non-const document).
template <typename R>
void readInto(R& record, const std::string& text) {
    Json::Value in = jsonOf(text);
    record.Deserialize(in);
}

// JSON text in the one-line form `written` produces; "throws" stays as it is.
inline std::string canon(const std::string& text) {
    return text == "throws" ? text : jsonText(jsonOf(text));
}

// Reads `doc` into `record` and returns what the record then writes, or "throws" when
// reading throws.
template <typename R>
std::string readThenWritten(R& record, const std::string& doc) {
    Json::Value in = jsonOf(doc);  // outside the try: bad test JSON is no "throws"
    try {
        record.Deserialize(in);
    } catch (...) {
        return "throws";
    }
    return written(record);
}

#define EXPECT_JSON_EQ(actual, expectedText) EXPECT_EQ(jsonText(actual), jsonText(jsonOf(expectedText)))
