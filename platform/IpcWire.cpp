#include "platform/IpcWire.h"

#include <exception>
#include <memory>

namespace pimav::detail {

namespace {

// Length of the valid UTF-8 sequence at `p` (RFC 3629: no overlong forms, no surrogates,
// nothing above U+10FFFF), 0 when it is not one.
size_t utf8SequenceLength(const unsigned char* p, const unsigned char* end) {
    const unsigned char lead = p[0];
    if (lead < 0x80) {
        return 1;
    }
    size_t length = 0;
    unsigned char low = 0x80;  // bounds of the second byte
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (static_cast<size_t>(end - p) < length || p[1] < low || p[1] > high) {
        return 0;
    }
    for (size_t i = 2; i < length; ++i) {
        if (p[i] < 0x80 || p[i] > 0xBF) {
            return 0;
        }
    }
    return length;
}

bool isUtf8(const char* begin, const char* end) {
    const auto* p = reinterpret_cast<const unsigned char*>(begin);
    const auto* stop = reinterpret_cast<const unsigned char*>(end);
    while (p < stop) {
        const size_t n = utf8SequenceLength(p, stop);
        if (n == 0) {
            return false;
        }
        p += n;
    }
    return true;
}

// True when `value` holds text that is not UTF-8; `path` then leads to it from `value`
// (".name", "[2].name", ".<member name>" for a member name).
bool findInvalidUtf8(const Json::Value& value, std::string& path) {
    const char* begin = nullptr;
    const char* end = nullptr;
    if (value.isString()) {
        return value.getString(&begin, &end) && !isUtf8(begin, end);
    }
    if (value.isArray()) {
        for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
            if (findInvalidUtf8(value[i], path)) {
                path.insert(0, "[" + std::to_string(i) + "]");
                return true;
            }
        }
    } else if (value.isObject()) {
        for (auto it = value.begin(); it != value.end(); ++it) {
            begin = it.memberName(&end);
            if (!isUtf8(begin, end)) {
                path = ".<member name>";
                return true;
            }
            if (findInvalidUtf8(*it, path)) {
                path.insert(0, "." + std::string(begin, end));
                return true;
            }
        }
    }
    return false;
}

}  // namespace

std::string firstInvalidUtf8(const Json::Value& value) {
    std::string path;
    if (!findInvalidUtf8(value, path)) {
        return std::string();
    }
    if (path.empty()) {
        return "<root>";
    }
    return path[0] == '.' ? path.substr(1) : path;
}

bool parseDocument(const char* begin, size_t size, Json::Value& document, std::string* errors) {
    static const Json::CharReaderBuilder builder = [] {
        Json::CharReaderBuilder b;
        b["failIfExtra"] = true;
        b["collectComments"] = false;
        return b;
    }();
    std::string why;
    Json::Value parsed;
    if (begin == nullptr || size == 0) {
        why = "empty text";
    } else {
        try {
            std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
            if (reader->parse(begin, begin + size, &parsed, &why)) {
                const std::string where = firstInvalidUtf8(parsed);
                if (where.empty()) {
                    document.swap(parsed);
                    return true;
                }
                why = "text that is not UTF-8 at " + where;
            }
        } catch (const std::exception& e) {
            // The reader throws past its depth limit, and on exhausted memory.
            why = e.what();
        }
    }
    if (errors != nullptr) {
        *errors = why;
    }
    return false;
}

}  // namespace pimav::detail
