#pragma once

// Records driven by scripts under tests/data/records/: each case makes a record by its
// registered name, reads documents into it, and compares what it writes, logs and dumps
// with the script. The format is described in tests/data/records/README.md.

#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "pimAvMngApi/platform/IJsonSerializable.h"

// What a script's `do NAME [ARGS]` step runs on the record, with the rest of the line.
using RecordAction = std::function<void(IJsonSerializable&, std::istream& args)>;
using RecordActions = std::map<std::string, RecordAction>;

template <typename T, typename Base, typename R>
RecordAction recordAction(R (Base::*member)()) {
    return [member](IJsonSerializable& record, std::istream&) { (static_cast<T&>(record).*member)(); };
}
template <typename T, typename Base, typename R>
RecordAction recordAction(R (Base::*member)() const) {
    return [member](IJsonSerializable& record, std::istream&) { (static_cast<T&>(record).*member)(); };
}
template <typename T>
RecordAction recordAction(std::function<void(T&, std::istream&)> run) {
    return [run](IJsonSerializable& record, std::istream& args) { run(static_cast<T&>(record), args); };
}

// How a script makes a record of one kind, and the actions it may run on it.
struct RecordKind {
    std::function<std::unique_ptr<IJsonSerializable>(std::istream& args)> make;
    RecordActions actions;
};
using RecordKinds = std::map<std::string, RecordKind>;

// A kind made by T's constructor: with no arguments when the script gives none, else with
// Args read in order from the script's words (std::string takes one word, bool 0 or 1).
template <typename T, typename... Args>
RecordKind recordKind(RecordActions actions = {}) {
    RecordKind kind;
    kind.actions = std::move(actions);
    kind.make = [](std::istream& in) -> std::unique_ptr<IJsonSerializable> {
        if constexpr (sizeof...(Args) == 0) {
            return std::make_unique<T>();
        } else {
            if ((in >> std::ws).eof()) {
                return std::make_unique<T>();
            }
            std::tuple<Args...> values;
            std::apply([&in](auto&... v) { ((in >> v), ...); }, values);
            return std::apply([](auto&... v) { return std::make_unique<T>(v...); }, values);
        }
    };
    return kind;
}

// A kind whose record `prepare` sets up beyond what reading can reach.
template <typename T>
RecordKind preparedKind(std::function<void(T&)> prepare, RecordActions actions = {}) {
    RecordKind kind = recordKind<T>(std::move(actions));
    kind.make = [prepare](std::istream&) -> std::unique_ptr<IJsonSerializable> {
        auto record = std::make_unique<T>();
        prepare(*record);
        return record;
    };
    return kind;
}

// Runs every case of every *.txt file in tests/data/<dir>/ with the given kinds.
void runRecordScripts(const std::string& dir, const RecordKinds& kinds);
