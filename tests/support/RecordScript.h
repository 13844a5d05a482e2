#pragma once

// Records driven by scripts under tests/data/records/: each case makes a record by its
// registered name, reads documents into it, and compares what it writes, logs and dumps
// with the script. The format is described in tests/data/records/README.md.

#include <gtest/gtest.h>

#include <functional>
#include <iomanip>
#include <istream>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
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

// One word of a script as a value of A; an enumeration is written as its number, a string
// as a word or in double quotes ("" is empty).
template <typename A>
A argumentOf(std::istream& in) {
    if constexpr (std::is_enum_v<A>) {
        return static_cast<A>(argumentOf<std::underlying_type_t<A>>(in));
    } else {
        A value{};
        if constexpr (std::is_same_v<A, std::string>) {
            in >> std::quoted(value);
        } else {
            in >> value;
        }
        return value;
    }
}

// An action calling a member with arguments read from the script's words; the last word is
// the result expected.
template <typename T, typename Base, typename R, typename... A>
RecordAction recordCall(R (Base::*member)(A...)) {
    return [member](IJsonSerializable& record, std::istream& in) {
        std::tuple<std::decay_t<A>...> args{argumentOf<std::decay_t<A>>(in)...};  // braces: read in order
        const R result =
            std::apply([&](auto&... v) { return (static_cast<T&>(record).*member)(v...); }, args);
        EXPECT_EQ(result, argumentOf<R>(in));
    };
}

// A kind made by T's constructor: with no arguments when the script gives none, else with
// Args read in order from the script's words (std::string takes one word, bool 0 or 1).
template <typename T, typename... Args>
RecordKind recordKind(RecordActions actions = {}) {
    RecordKind kind{nullptr, std::move(actions)};
    kind.make = [](std::istream& in) -> std::unique_ptr<IJsonSerializable> {
        if constexpr (sizeof...(Args) != 0) {
            if (!(in >> std::ws).eof()) {
                std::tuple<Args...> values{argumentOf<Args>(in)...};  // braces: read in order
                return std::apply([](auto&... v) { return std::make_unique<T>(v...); }, values);
            }
        }
        return std::make_unique<T>();
    };
    return kind;
}

// A kind made by T's default constructor, then, when the script gives a word, `set` with it:
// for members that no document reaches.
template <typename T, typename V>
RecordKind settingKind(std::function<void(T&, V)> set, RecordActions actions = {}) {
    RecordKind kind{nullptr, std::move(actions)};
    kind.make = [set](std::istream& in) -> std::unique_ptr<IJsonSerializable> {
        auto record = std::make_unique<T>();
        if (!(in >> std::ws).eof()) {
            set(*record, argumentOf<V>(in));
        }
        return record;
    };
    return kind;
}

// Runs every case of every *.txt file in tests/data/<dir>/ with the given kinds.
void runRecordScripts(const std::string& dir, const RecordKinds& kinds);
