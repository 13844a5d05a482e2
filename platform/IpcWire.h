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
// error) and whose strings and member names are valid UTF-8 (raw or from \u escapes).
// Never throws: a document nested beyond the reader's depth limit, or one that cannot be
// held in memory, is a failure like any other. On failure `document` is untouched and
// `errors` (if given) says why.
bool parseDocument(const char* begin, size_t size, Json::Value& document, std::string* errors = nullptr);

// Where `value` holds text that is not valid UTF-8 ("sessions[0].name", "<root>",
// "sessions[0].<member name>"); empty when every string is valid.
std::string firstInvalidUtf8(const Json::Value& value);

}  // namespace pimav::detail
