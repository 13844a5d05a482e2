#pragma once

// The words of an enumerated type: a constexpr array of {code, word} rows read in both
// directions. A code may have several rows; it is written with the first row that
// writes it, and a row may serve one direction only (a word that is written but not
// read back, or a second name that is read but never written).

#include <cctype>
#include <cstddef>
#include <optional>
#include <string_view>

namespace pimav::detail {

enum class WordUse { Both, WrittenOnly, ReadOnly };

template <typename Code>
struct WordRow {
    Code code;
    std::string_view word;
    WordUse use = WordUse::Both;
};

// The word of `code`, `otherwise` when no row writes it.
template <typename Code, size_t N>
constexpr std::string_view wordOf(const WordRow<Code> (&rows)[N], Code code, std::string_view otherwise) {
    for (const WordRow<Code>& row : rows) {
        if (row.code == code && row.use != WordUse::ReadOnly) {
            return row.word;
        }
    }
    return otherwise;
}

// The code of `word`, compared exactly (case included); nothing when no row reads it.
template <typename Code, size_t N>
constexpr std::optional<Code> codeOf(const WordRow<Code> (&rows)[N], std::string_view word) {
    for (const WordRow<Code>& row : rows) {
        if (row.word == word && row.use != WordUse::WrittenOnly) {
            return row.code;
        }
    }
    return std::nullopt;
}

// The same, with letters compared in any case.
template <typename Code, size_t N>
std::optional<Code> codeOfAnyCase(const WordRow<Code> (&rows)[N], std::string_view word) {
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    for (const WordRow<Code>& row : rows) {
        if (row.word.size() != word.size() || row.use == WordUse::WrittenOnly) {
            continue;
        }
        size_t i = 0;
        while (i < word.size() && lower(word[i]) == lower(row.word[i])) {
            ++i;
        }
        if (i == word.size()) {
            return row.code;
        }
    }
    return std::nullopt;
}

}  // namespace pimav::detail

// The four members of an enumerated-word type whose reading never fails: toString gives
// the word of `member` (`otherwise` when no row writes it), fromString sets `member` to
// the code of a word (`unknown` when no row reads it; pass `member` to keep the code),
// and the JSON form is the word under `key` (`missing`: the word read when the key is
// absent).
#define PIMAV_WORD_TYPE_MEMBERS(Type, member, rows, otherwise, unknown, key, missing)            \
    std::string Type::toString() const {                                                      \
        return std::string(pimav::detail::wordOf(rows, member, otherwise));                   \
    }                                                                                         \
    void Type::fromString(const std::string& word) {                                          \
        member = pimav::detail::codeOf(rows, word).value_or(unknown);                         \
    }                                                                                         \
    void Type::Serialize(Json::Value& out) const { out[key] = Json::Value(toString()); }      \
    void Type::Deserialize(Json::Value& in) { fromString(in.get(key, missing).asString()); }
