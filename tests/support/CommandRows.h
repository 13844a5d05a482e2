#pragma once

// The command table as the tests know it: tests/data/commands.tsv, written apart from the
// library's own table so that each checks the other. Columns, tab-separated: id, enum name,
// method, shape (REQUEST, REPLY, GAIN or NONE: no client method), access (WRITE when the
// command changes the device's state, else READ), description.

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "pimAvMngApi/api/AvMngApiJson.h"
#include "support/TestData.h"

struct CommandRowText {
    unsigned id = 0;
    std::string enumName;
    std::string method;
    std::string shape;
    std::string access;
    std::string description;

    bool hasMethod() const { return shape != "NONE"; }
    bool sendsDocument() const { return shape == "REQUEST" || shape == "GAIN"; }
    bool changesState() const { return access == "WRITE"; }
    // The method's pretty-function signature.
    std::string signature() const {
        const char* params = shape == "REQUEST" ? "(const Json::Value&, Json::Value&)"
                             : shape == "GAIN"  ? "(Json::Value&, Json::Value&)"
                                                : "(Json::Value&)";
        return "int AvMngApiJson::" + method + params;
    }
};

// The rows of tests/data/commands.tsv, in file order; a malformed file throws.
inline const std::vector<CommandRowText>& commandRows() {
    static const std::vector<CommandRowText> rows = [] {
        std::vector<CommandRowText> out;
        for (const pimav::detail::DataRow& r : pimav::detail::dataRows("commands.tsv")) {
            const auto& f = r.fields;
            if (f.size() != 6 || (f[4] != "READ" && f[4] != "WRITE")) {
                throw std::runtime_error("malformed row " + r.where);
            }
            out.push_back({static_cast<unsigned>(std::stoul(f[0])), f[1], f[2], f[3], f[4], f[5]});
        }
        if (out.empty()) {
            throw std::runtime_error("cannot read tests/data/commands.tsv");
        }
        return out;
    }();
    return rows;
}

// A pass-through method of AvMngApiJson, by the shape of its parameter list.
struct PassThroughMethod {
    int (AvMngApiJson::*withRequest)(const Json::Value&, Json::Value&) = nullptr;
    int (AvMngApiJson::*gain)(Json::Value&, Json::Value&) = nullptr;
    int (AvMngApiJson::*replyOnly)(Json::Value&) = nullptr;

    int call(AvMngApiJson& api, Json::Value& request, Json::Value& reply) const {
        if (withRequest != nullptr) {
            return (api.*withRequest)(request, reply);
        }
        if (gain != nullptr) {
            return (api.*gain)(request, reply);
        }
        return (api.*replyOnly)(reply);
    }
    const char* shape() const {
        return withRequest != nullptr ? "REQUEST" : gain != nullptr ? "GAIN" : "REPLY";
    }
};

// The pass-through methods by name. Only the names come from the library's table (C++
// cannot look a method up by its name); ids, shapes and texts are checked against
// commandRows().
inline const std::map<std::string, PassThroughMethod>& passThroughMethods() {
#define PIMAV_TEST_METHOD_REQUEST(m) {#m, {&AvMngApiJson::m, nullptr, nullptr}},
#define PIMAV_TEST_METHOD_GAIN(m) {#m, {nullptr, &AvMngApiJson::m, nullptr}},
#define PIMAV_TEST_METHOD_REPLY(m) {#m, {nullptr, nullptr, &AvMngApiJson::m}},
#define PIMAV_TEST_METHOD_NONE(m)
    static const std::map<std::string, PassThroughMethod> methods = {
#define PIMAV_COMMAND(id, name, method, shape, access, text) PIMAV_TEST_METHOD_##shape(method)
#include "api/CommandTable.def"
#undef PIMAV_COMMAND
    };
    return methods;
}

// The method of a row with one; throws when the library has no method of that name.
inline const PassThroughMethod& passThroughOf(const CommandRowText& row) {
    const auto it = passThroughMethods().find(row.method);
    if (it == passThroughMethods().end()) {
        throw std::runtime_error("AvMngApiJson has no pass-through method " + row.method);
    }
    return it->second;
}
