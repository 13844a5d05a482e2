#pragma once

// The linter's view of an SDP text: lines with their type, value, number and line end,
// grouped into the session block and one block per media. It interprets nothing beyond
// that; each check reads the few fields it needs through the helpers below.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pimav::detail {

enum class LineEnd { Lf, CrLf, None };

struct LintLine {
    size_t number = 0;       // 1-based
    char type = '\0';        // the letter before '=', '\0' when the line is not <letter>=<value>
    std::string_view text;   // the line without its line end
    std::string_view value;  // the text after "<type>="
    LineEnd end = LineEnd::Lf;

    // For "a=" lines: the name up to ':' and the value after it (empty when there is none).
    std::string_view attributeName() const;
    std::string_view attributeValue() const;
};

// Lines [first, last) of LintText::lines(): the session block, or one media block
// starting at its m= line.
struct LintBlock {
    size_t first = 0;
    size_t last = 0;
};

class LintText {
public:
    explicit LintText(std::string text);
    LintText(const LintText&) = delete;
    LintText& operator=(const LintText&) = delete;

    const std::vector<LintLine>& lines() const { return m_lines; }
    const LintBlock& session() const { return m_session; }
    const std::vector<LintBlock>& media() const { return m_media; }

    const LintLine* field(const LintBlock& block, char type) const;
    const LintLine* attribute(const LintBlock& block, std::string_view name) const;
    std::vector<const LintLine*> attributes(const LintBlock& block, std::string_view name) const;
    // The media's own attribute, else the session's.
    const LintLine* inherited(const LintBlock& media, std::string_view name) const;
    // The media's own c= line, else the session's.
    const LintLine* connection(const LintBlock& media) const;

private:
    std::string m_text;
    std::vector<LintLine> m_lines;
    LintBlock m_session;
    std::vector<LintBlock> m_media;
};

// Fields separated by runs of `separator`.
std::vector<std::string_view> splitFields(std::string_view text, char separator = ' ');
std::string_view trimSpaces(std::string_view text);
bool startsWith(std::string_view text, std::string_view prefix);
bool equalsIgnoreCase(std::string_view a, std::string_view b);
// A decimal number (digits, optionally with one '.'); nullopt for anything else.
std::optional<double> decimalNumber(std::string_view text);
// Digits only, up to 2^64-1; nullopt for anything else or overflow.
std::optional<uint64_t> unsignedNumber(std::string_view text);
// An RFC 4566 token (the form RFC 5888 requires of identification tags).
bool isSdpToken(std::string_view text);
// Digits with a leading zero ("007", "0096"); "0" itself is not.
bool hasLeadingZero(std::string_view text);

// An address of a c= line or source filter.
struct LintAddress {
    bool ipv4 = false;       // a dotted-quad IPv4 address
    bool multicast = false;  // 224.0.0.0/4, or an IPv6 address starting with ff
    bool ssm = false;        // 232.0.0.0/8
    std::string_view address;
};
LintAddress classifyAddress(std::string_view address);

// The fields of a c= value "IN IP4 <address>[/<ttl>[/<count>]]".
struct LintConnection {
    bool valid = false;
    LintAddress address;
    bool hasTtl = false;
};
LintConnection readConnection(std::string_view value);

// The "<encoding>/<rate>[/<channels>]" of the a=rtpmap for `format` in a media block.
struct LintRtpMap {
    const LintLine* line = nullptr;
    std::string_view encoding;
    unsigned rate = 0;
    unsigned channels = 1;
};
LintRtpMap rtpMapOf(const LintText& text, const LintBlock& media, std::string_view format);
// The a=fmtp line for `format` in a media block, or null.
const LintLine* fmtpOf(const LintText& text, const LintBlock& media, std::string_view format);
// Parameters "key=value" of a format line's parameter text, separated by ';'.
std::optional<std::string_view> fmtpParameter(std::string_view parameters, std::string_view key);
// The parameter text of an a=fmtp value (after "<format> ").
std::string_view fmtpParameters(const LintLine& fmtp);

}  // namespace pimav::detail
