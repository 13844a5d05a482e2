#include "support/KindedJson.h"

#include <cctype>

#include "support/JsonText.h"

namespace {

// Stands in for `123u` while jsoncpp parses the text: no JSON text of ours holds it.
const std::string kUnsignedMark = "\x01uint:";

void restoreUnsigned(Json::Value& value) {
    if (value.isString() && value.asString().rfind(kUnsignedMark, 0) == 0) {
        value = Json::UInt64(std::stoull(value.asString().substr(kUnsignedMark.size())));
    }
    for (Json::Value& member : value) {  // no members unless an array or object
        restoreUnsigned(member);
    }
}

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

Json::Value kindedJsonOf(const std::string& text) {
    std::string marked;
    bool inString = false;
    for (size_t i = 0; i < text.size(); ++i) {
        size_t end = i;
        while (!inString && end < text.size() && isDigit(text[end]) &&
               (i == 0 || !std::isalnum(static_cast<unsigned char>(text[i - 1])))) {
            ++end;
        }
        if (end > i && end < text.size() && text[end] == 'u') {  // a number with its `u`
            marked += "\"" + kUnsignedMark + text.substr(i, end - i) + "\"";
            i = end;
            continue;
        }
        if (text[i] == '"' || (inString && text[i] == '\\')) {
            inString = text[i] == '"' ? !inString : inString;
            marked += text[i];
            if (text[i] == '\\') {
                marked += text[++i];
            }
            continue;
        }
        marked += text[i];
    }
    Json::Value value = jsonOf(marked);
    restoreUnsigned(value);
    return value;
}

std::string kindedText(const Json::Value& value) {
    std::string out;
    switch (value.type()) {
        case Json::uintValue:
            return Json::valueToString(value.asLargestUInt()) + "u";
        case Json::arrayValue:
            for (const Json::Value& item : value) {
                out += (out.empty() ? "" : ",") + kindedText(item);
            }
            return "[" + out + "]";
        case Json::objectValue:
            for (const std::string& key : value.getMemberNames()) {
                out += (out.empty() ? "" : ",") + Json::valueToQuotedString(key.c_str()) + ":" +
                       kindedText(value[key]);
            }
            return "{" + out + "}";
        default:
            return jsonText(value);
    }
}

std::string kindedMismatch(const Json::Value& expected, const Json::Value& actual, bool subset) {
    if (subset && ((expected.isObject() && actual.isObject()) ||
                   (expected.isArray() && actual.isArray() && expected.size() == actual.size()))) {
        for (auto it = expected.begin(); it != expected.end(); ++it) {
            const std::string at =
                expected.isArray() ? "[" + std::to_string(it.index()) + "]" : "\"" + it.name() + "\"";
            if (expected.isObject() && !actual.isMember(it.name())) {
                return at + " is missing";
            }
            const Json::Value& other = expected.isArray() ? actual[it.index()] : actual[it.name()];
            const std::string inner = kindedMismatch(*it, other, true);
            if (!inner.empty()) {
                return at + ": " + inner;
            }
        }
        return "";
    }
    if (expected == actual) {  // jsoncpp compares the kinds too
        return "";
    }
    static const char* const kKinds[] = {"null",   "int",  "unsigned", "real",
                                         "string", "bool", "array",    "object"};
    return std::string("expected ") + kKinds[expected.type()] + " " + kindedText(expected) + "\n  actual " +
           kKinds[actual.type()] + " " + kindedText(actual);
}
