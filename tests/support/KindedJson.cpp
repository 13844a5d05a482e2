#include "support/KindedJson.h"

#include <cctype>
#include <memory>
#include <stdexcept>

namespace {

// Stands in for `123u` while jsoncpp parses the text: no JSON text of ours holds it.
const std::string kUnsignedMark = "\x01uint:";

void restoreUnsigned(Json::Value& value) {
    if (value.isString() && value.asString().rfind(kUnsignedMark, 0) == 0) {
        value = Json::Value(
            static_cast<Json::UInt64>(std::stoull(value.asString().substr(kUnsignedMark.size()))));
    } else if (value.isArray() || value.isObject()) {
        for (Json::Value& member : value) {
            restoreUnsigned(member);
        }
    }
}

std::string kindName(const Json::Value& v) {
    static const char* const kNames[] = {"null",   "int",  "unsigned", "real",
                                         "string", "bool", "array",    "object"};
    return kNames[v.type()];
}

}  // namespace

Json::Value kindedJsonOf(const std::string& text) {
    std::string marked;
    bool inString = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            marked += c;
            if (c == '\\' && i + 1 < text.size()) {
                marked += text[++i];
            } else if (c == '"') {
                inString = false;
            }
        } else if (std::isdigit(static_cast<unsigned char>(c)) &&
                   (i == 0 || !std::isalnum(static_cast<unsigned char>(text[i - 1])))) {
            size_t end = i;
            while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end]))) {
                ++end;
            }
            const bool isUnsigned = end < text.size() && text[end] == 'u';
            marked +=
                isUnsigned ? "\"" + kUnsignedMark + text.substr(i, end - i) + "\"" : text.substr(i, end - i);
            i = isUnsigned ? end : end - 1;
        } else {
            inString = c == '"';
            marked += c;
        }
    }
    Json::Value value;
    Json::CharReaderBuilder builder;
    std::string errors;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    if (!reader->parse(marked.data(), marked.data() + marked.size(), &value, &errors)) {
        throw std::runtime_error("bad expected JSON: " + text + ": " + errors);
    }
    restoreUnsigned(value);
    return value;
}

std::string kindedText(const Json::Value& value) {
    switch (value.type()) {
        case Json::uintValue:
            return Json::valueToString(value.asLargestUInt()) + "u";
        case Json::arrayValue: {
            std::string out = "[";
            for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
                out += (i == 0 ? "" : ",") + kindedText(value[i]);
            }
            return out + "]";
        }
        case Json::objectValue: {
            std::string out = "{";
            for (const std::string& key : value.getMemberNames()) {
                out += (out.size() == 1 ? "" : ",") + Json::valueToQuotedString(key.c_str()) + ":" +
                       kindedText(value[key]);
            }
            return out + "}";
        }
        default: {
            Json::StreamWriterBuilder builder;
            builder["indentation"] = "";
            return Json::writeString(builder, value);
        }
    }
}

std::string kindedMismatch(const Json::Value& expected, const Json::Value& actual, bool subset) {
    if (subset && expected.isObject() && actual.isObject()) {
        for (const std::string& key : expected.getMemberNames()) {
            if (!actual.isMember(key)) {
                return "\"" + key + "\" is missing";
            }
            const std::string inner = kindedMismatch(expected[key], actual[key], true);
            if (!inner.empty()) {
                return "\"" + key + "\": " + inner;
            }
        }
        return "";
    }
    if (subset && expected.isArray() && actual.isArray() && expected.size() == actual.size()) {
        for (Json::ArrayIndex i = 0; i < expected.size(); ++i) {
            const std::string inner = kindedMismatch(expected[i], actual[i], true);
            if (!inner.empty()) {
                return "[" + std::to_string(i) + "]: " + inner;
            }
        }
        return "";
    }
    if (kindedText(expected) == kindedText(actual)) {
        return "";
    }
    return "expected " + kindName(expected) + " " + kindedText(expected) + "\n  actual " + kindName(actual) +
           " " + kindedText(actual);
}
