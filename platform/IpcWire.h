#pragma once

// Frame encoding of the request/reply link between ClientJsonApi and the AV manager
// daemon, shared by the client and by any in-process responder (tests, benchmarks,
// emulator). docs/wire-protocol.md describes the same rules for other languages.
//
//   request: frame 1 = command id, 4 bytes, unsigned, little-endian
//            frame 2 = request document as compact JSON text, or empty
//   reply:   one frame = reply document as JSON text

#include <json/json.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace pimav::detail {

constexpr size_t kCommandIdSize = 4;

// Command id frame: the id as 4 little-endian bytes, whatever the host byte order.
inline std::string encodeCommandId(uint32_t id) {
    std::string frame(kCommandIdSize, '\0');
    for (size_t i = 0; i < kCommandIdSize; ++i) {
        frame[i] = static_cast<char>((id >> (8 * i)) & 0xFFu);
    }
    return frame;
}

// Reads a command id frame; false when it does not hold exactly 4 bytes.
inline bool decodeCommandId(const void* data, size_t size, uint32_t& id) {
    if (data == nullptr || size != kCommandIdSize) {
        return false;
    }
    const auto* bytes = static_cast<const unsigned char*>(data);
    id = 0;
    for (size_t i = 0; i < kCommandIdSize; ++i) {
        id |= static_cast<uint32_t>(bytes[i]) << (8 * i);
    }
    return true;
}

// Compact one-line JSON text of a document (no indentation, no comments).
inline std::string renderDocument(const Json::Value& document) {
    static const Json::StreamWriterBuilder builder = [] {
        Json::StreamWriterBuilder b;
        b["commentStyle"] = "None";
        b["indentation"] = "";
        return b;
    }();
    return Json::writeString(builder, document);
}

// Parses one JSON document that must fill the whole text (trailing garbage is an
// error). On failure `document` is untouched and `errors` (if given) says why.
inline bool parseDocument(const char* begin, size_t size, Json::Value& document,
                          std::string* errors = nullptr) {
    static const Json::CharReaderBuilder builder = [] {
        Json::CharReaderBuilder b;
        b["failIfExtra"] = true;
        b["collectComments"] = false;
        return b;
    }();
    if (begin == nullptr || size == 0) {
        if (errors != nullptr) {
            *errors = "empty text";
        }
        return false;
    }
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value parsed;
    std::string why;
    if (!reader->parse(begin, begin + size, &parsed, &why)) {
        if (errors != nullptr) {
            *errors = why;
        }
        return false;
    }
    document.swap(parsed);
    return true;
}

}  // namespace pimav::detail
