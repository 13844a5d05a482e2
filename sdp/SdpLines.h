#pragma once

// Reading the lines of an SDP text: each line is scanned once for the tokens by which
// the rules recognise it, and the rules then ask for the value that follows a token.

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pimav::detail {

// The tokens. Each has "=" as its second character, so one pass over the "=" signs of a
// line finds the first occurrence of all of them.
enum Token : unsigned {
    kMediaToken,
    kInfoToken,
    kVersionToken,
    kOriginToken,
    kNameToken,
    kTimeToken,
    kConnectionToken,
    kRtpmapToken,  // the first of the "a=" tokens
    kFramecountToken,
    kPtimeToken,
    kMidToken,
    kRefclkToken,
    kSourceFilterToken,
    kMediaclkToken,
    kClockDomainToken,
    kFmtpToken,
    kFramerateToken,
    kGroupToken,
    kTokenCount
};

// The text of each token, indexed by Token.
inline constexpr std::string_view kTokenText[kTokenCount] = {
    "m=",
    "i=",
    "v=",
    "o=",
    "s=",
    "t=",
    "c=IN IP4 ",
    "a=rtpmap:",
    "a=framecount:",
    "a=ptime:",
    "a=mid:",
    "a=ts-refclk:",
    "a=source-filter",
    "a=mediaclk:",
    "a=clock-domain:",
    "a=fmtp:",
    "a=framerate:",
    "a=group:",
};

// The scanner relies on the shape of the table: every token is a letter and "=", the "a="
// tokens come last from kRtpmapToken on, and among the others only the connection token
// goes on after its "=".
constexpr bool tokenTableHasItsShape() {
    for (unsigned token = 0; token < kTokenCount; ++token) {
        const std::string_view text = kTokenText[token];
        const bool attribute = text[0] == 'a';
        if (text.size() < 2 || text[1] != '=' || attribute != (token >= kRtpmapToken) ||
            (!attribute && text.size() > 2 && token != kConnectionToken)) {
            return false;
        }
    }
    return true;
}
static_assert(tokenTableHasItsShape(), "token table out of shape");

// The "a=" tokens by what follows "a=", for the scanner.
struct AttributeToken {
    Token token;
    std::string_view name;
};

template <size_t... I>
constexpr std::array<AttributeToken, sizeof...(I)> attributeTokens(std::index_sequence<I...>) {
    return {{{static_cast<Token>(kRtpmapToken + I), kTokenText[kRtpmapToken + I].substr(2)}...}};
}

inline constexpr std::array<AttributeToken, kTokenCount - kRtpmapToken> kAttributeTokens =
    attributeTokens(std::make_index_sequence<kTokenCount - kRtpmapToken>());

// The token of each letter whose token is that letter and "=" alone (kTokenCount: none).
inline constexpr std::array<Token, 128> kLetterTokens = [] {
    std::array<Token, 128> table{};
    for (Token& token : table) {
        token = kTokenCount;
    }
    for (unsigned token = 0; token < kTokenCount; ++token) {
        if (kTokenText[token].size() == 2) {
            table[static_cast<unsigned char>(kTokenText[token][0])] = static_cast<Token>(token);
        }
    }
    return table;
}();

// One line of the text (a view into it) with the position of the first occurrence of
// each token.
class SdpLine {
public:
    static constexpr size_t npos = std::string_view::npos;

    explicit SdpLine(std::string_view text) : m_text(text) {
        std::fill(std::begin(m_at), std::end(m_at), npos);
        for (size_t equals = text.find('=', 1); equals != npos; equals = text.find('=', equals + 1)) {
            const size_t at = equals - 1;
            const std::string_view rest = text.substr(equals + 1);
            const unsigned char letter = static_cast<unsigned char>(text[at]);
            if (letter == 'a') {
                for (const AttributeToken& attribute : kAttributeTokens) {
                    if (!rest.empty() && rest[0] == attribute.name[0] && startsWith(rest, attribute.name)) {
                        note(attribute.token, at);
                        break;
                    }
                }
            } else if (letter == 'c') {
                if (startsWith(rest, kTokenText[kConnectionToken].substr(2))) {
                    note(kConnectionToken, at);
                }
            } else if (letter < kLetterTokens.size() && kLetterTokens[letter] != kTokenCount) {
                note(kLetterTokens[letter], at);
            }
        }
    }

    std::string_view text() const { return m_text; }
    bool has(Token token) const { return m_at[token] != npos; }
    // What follows the first occurrence of the token, to the end of the line; the line
    // must have the token.
    std::string_view valueAt(Token token) const {
        return m_text.substr(m_at[token] + kTokenText[token].size());
    }

    // Drops everything from the first "\r" on. No token contains "\r", so the tokens
    // found before it are still where they were, whole, and the others are gone.
    void cutAtCarriageReturn() {
        const size_t cut = m_text.find('\r');
        if (cut == npos) {
            return;
        }
        m_text = m_text.substr(0, cut);
        for (size_t& at : m_at) {
            if (at != npos && at >= cut) {
                at = npos;
            }
        }
    }

private:
    static bool startsWith(std::string_view text, std::string_view prefix) {
        return text.substr(0, prefix.size()) == prefix;
    }

    void note(Token token, size_t at) {
        if (m_at[token] == npos) {
            m_at[token] = at;
        }
    }

    std::string_view m_text;
    size_t m_at[kTokenCount];
};

// Lists of lines refer to the scanned lines of one text (small, and nothing copied).
using LineList = std::vector<const SdpLine*>;

// The non-empty lines of `text`, split at "\n" and scanned.
inline std::vector<SdpLine> scanText(std::string_view text) {
    std::vector<SdpLine> lines;
    lines.reserve(32);
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == SdpLine::npos) {
            end = text.size();
        }
        if (end > start) {
            lines.emplace_back(text.substr(start, end - start));
        }
        start = end + 1;
    }
    return lines;
}

inline std::vector<SdpLine> scanLines(const std::vector<std::string>& lines) {
    std::vector<SdpLine> scanned;
    scanned.reserve(lines.size());
    for (const std::string& line : lines) {
        scanned.emplace_back(line);
    }
    return scanned;
}

inline LineList pointersTo(const std::vector<SdpLine>& lines) {
    LineList list;
    list.reserve(lines.size());
    for (const SdpLine& line : lines) {
        list.push_back(&line);
    }
    return list;
}

// A value read one field at a time: each field ends at the next separator, the last one
// at the end of the value.
class FieldReader {
public:
    explicit FieldReader(std::string_view value) : m_rest(value) {}

    // The text up to the next `separator`, or the rest of the value when there is none
    // (the value is then used up).
    std::string_view next(char separator) {
        const size_t end = m_rest.find(separator);
        m_separated = end != std::string_view::npos;
        const std::string_view field = m_rest.substr(0, end);
        m_rest.remove_prefix(m_separated ? end + 1 : m_rest.size());
        return field;
    }
    // Whether the last field ended at its separator.
    bool separated() const { return m_separated; }
    // The text after the last separator taken.
    std::string_view rest() const { return m_rest; }

private:
    std::string_view m_rest;
    bool m_separated = false;
};

// The text after the first `marker` in `text`: true and `after` set when there is one.
inline bool textAfter(std::string_view text, std::string_view marker, std::string_view& after) {
    const size_t at = text.find(marker);
    if (at == std::string_view::npos) {
        return false;
    }
    after = text.substr(at + marker.size());
    return true;
}

}  // namespace pimav::detail
