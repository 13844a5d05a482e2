#include "SdpLintText.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>

namespace pimav::detail {

std::string_view LintLine::attributeName() const {
    return type == 'a' ? value.substr(0, value.find(':')) : std::string_view();
}

std::string_view LintLine::attributeValue() const {
    const size_t colon = value.find(':');
    return type == 'a' && colon != std::string_view::npos ? value.substr(colon + 1) : std::string_view();
}

LintText::LintText(std::string text) : m_text(std::move(text)) {
    const std::string_view all(m_text);
    size_t start = 0;
    while (start < all.size()) {
        size_t end = all.find('\n', start);
        LintLine line;
        line.number = m_lines.size() + 1;
        if (end == std::string_view::npos) {
            end = all.size();
            line.end = LineEnd::None;
        }
        line.text = all.substr(start, end - start);
        if (line.end != LineEnd::None && !line.text.empty() && line.text.back() == '\r') {
            line.end = LineEnd::CrLf;
            line.text.remove_suffix(1);
        }
        if (line.text.size() >= 2 && line.text[1] == '=' &&
            std::islower(static_cast<unsigned char>(line.text[0]))) {
            line.type = line.text[0];
            line.value = line.text.substr(2);
        } else {
            line.value = line.text;
        }
        m_lines.push_back(line);
        start = end + 1;
    }
    m_session = {0, m_lines.size()};
    for (size_t i = 0; i < m_lines.size(); ++i) {
        if (m_lines[i].type != 'm') {
            continue;
        }
        if (m_media.empty()) {
            m_session.last = i;
        } else {
            m_media.back().last = i;
        }
        m_media.push_back({i, m_lines.size()});
    }
}

const LintLine* LintText::field(const LintBlock& block, char type) const {
    for (size_t i = block.first; i < block.last; ++i) {
        if (m_lines[i].type == type) {
            return &m_lines[i];
        }
    }
    return nullptr;
}

const LintLine* LintText::attribute(const LintBlock& block, std::string_view name) const {
    for (size_t i = block.first; i < block.last; ++i) {
        if (m_lines[i].type == 'a' && m_lines[i].attributeName() == name) {
            return &m_lines[i];
        }
    }
    return nullptr;
}

std::vector<const LintLine*> LintText::attributes(const LintBlock& block, std::string_view name) const {
    std::vector<const LintLine*> found;
    for (size_t i = block.first; i < block.last; ++i) {
        if (m_lines[i].type == 'a' && m_lines[i].attributeName() == name) {
            found.push_back(&m_lines[i]);
        }
    }
    return found;
}

const LintLine* LintText::inherited(const LintBlock& media, std::string_view name) const {
    const LintLine* own = attribute(media, name);
    return own != nullptr ? own : attribute(m_session, name);
}

const LintLine* LintText::connection(const LintBlock& media) const {
    const LintLine* own = field(media, 'c');
    return own != nullptr ? own : field(m_session, 'c');
}

std::vector<std::string_view> splitFields(std::string_view text, char separator) {
    std::vector<std::string_view> fields;
    size_t begin = 0;
    while (begin < text.size()) {
        if (text[begin] == separator) {
            ++begin;
            continue;
        }
        size_t end = text.find(separator, begin);
        if (end == std::string_view::npos) {
            end = text.size();
        }
        fields.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return fields;
}

std::string_view trimSpaces(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) {
        text.remove_prefix(1);
    }
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) {
        text.remove_suffix(1);
    }
    return text;
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return true;
}

std::optional<double> decimalNumber(std::string_view text) {
    double whole = 0;
    double scale = 0;  // 0 before the point, then 0.1, 0.01, ...
    bool digits = false;
    for (const char c : text) {
        if (c == '.' && scale == 0) {
            scale = 0.1;
        } else if (c >= '0' && c <= '9') {
            digits = true;
            if (scale == 0) {
                whole = whole * 10 + (c - '0');
            } else {
                whole += scale * (c - '0');
                scale /= 10;
            }
        } else {
            return std::nullopt;
        }
    }
    return digits ? std::optional<double>(whole) : std::nullopt;
}

std::optional<uint64_t> unsignedNumber(std::string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        const auto digit = static_cast<uint64_t>(c - '0');
        if (value > (UINT64_MAX - digit) / 10) {
            return std::nullopt;
        }
        value = value * 10 + digit;
    }
    return value;
}

bool isSdpToken(std::string_view text) {
    const auto tokenChar = [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return u == 0x21 || (u >= 0x23 && u <= 0x27) || u == 0x2A || u == 0x2B || u == 0x2D || u == 0x2E ||
               (u >= 0x30 && u <= 0x39) || (u >= 0x41 && u <= 0x5A) || (u >= 0x5E && u <= 0x7E);
    };
    return !text.empty() && std::all_of(text.begin(), text.end(), tokenChar);
}

bool hasLeadingZero(std::string_view text) {
    return text.size() > 1 && text[0] == '0' && unsignedNumber(text).has_value();
}

LintAddress classifyAddress(std::string_view address) {
    LintAddress out;
    out.address = address;
    in_addr v4{};
    const std::string text(address);
    if (inet_pton(AF_INET, text.c_str(), &v4) == 1) {
        const uint32_t host = ntohl(v4.s_addr);
        out.ipv4 = true;
        out.multicast = (host >> 28) == 0xE;
        out.ssm = (host >> 24) == 232;
    } else if (address.find(':') != std::string_view::npos && equalsIgnoreCase(address.substr(0, 2), "ff")) {
        out.multicast = true;
    }
    return out;
}

LintConnection readConnection(std::string_view value) {
    LintConnection out;
    const std::vector<std::string_view> fields = splitFields(value);
    if (fields.size() != 3 || fields[0] != "IN" || (fields[1] != "IP4" && fields[1] != "IP6")) {
        return out;
    }
    const std::string_view target = fields[2];
    const size_t slash = target.find('/');
    out.address = classifyAddress(target.substr(0, slash));
    out.hasTtl = slash != std::string_view::npos;
    out.valid = !out.address.address.empty() &&
                (fields[1] == "IP6" || out.address.ipv4 || target.find_first_of("0123456789") != 0);
    return out;
}

LintRtpMap rtpMapOf(const LintText& text, const LintBlock& media, std::string_view format) {
    LintRtpMap out;
    for (const LintLine* line : text.attributes(media, "rtpmap")) {
        const std::string_view value = line->attributeValue();
        const size_t space = value.find(' ');
        if (space == std::string_view::npos || value.substr(0, space) != format) {
            continue;
        }
        const std::vector<std::string_view> parts = splitFields(trimSpaces(value.substr(space + 1)), '/');
        out.line = line;
        out.encoding = parts.empty() ? std::string_view() : parts[0];
        out.rate = parts.size() > 1 ? static_cast<unsigned>(unsignedNumber(parts[1]).value_or(0)) : 0;
        out.channels = parts.size() > 2 ? static_cast<unsigned>(unsignedNumber(parts[2]).value_or(0)) : 1;
        break;
    }
    return out;
}

const LintLine* fmtpOf(const LintText& text, const LintBlock& media, std::string_view format) {
    for (const LintLine* line : text.attributes(media, "fmtp")) {
        const std::string_view value = line->attributeValue();
        if (value.substr(0, value.find(' ')) == format) {
            return line;
        }
    }
    return nullptr;
}

std::string_view fmtpParameters(const LintLine& fmtp) {
    const std::string_view value = fmtp.attributeValue();
    const size_t space = value.find(' ');
    return space == std::string_view::npos ? std::string_view() : value.substr(space + 1);
}

std::optional<std::string_view> fmtpParameter(std::string_view parameters, std::string_view key) {
    for (const std::string_view item : splitFields(parameters, ';')) {
        const std::string_view entry = trimSpaces(item);
        const size_t equals = entry.find('=');
        if (trimSpaces(entry.substr(0, equals)) == key) {
            return equals == std::string_view::npos ? std::string_view()
                                                    : trimSpaces(entry.substr(equals + 1));
        }
    }
    return std::nullopt;
}

}  // namespace pimav::detail
