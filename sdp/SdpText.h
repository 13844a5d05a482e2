#pragma once

// Small text helpers shared by the SDP records, parser and generator.

#include <arpa/inet.h>

#include <cctype>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

inline bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// `text` without leading and trailing white space (as classified by isspace).
inline std::string_view trim(std::string_view text) {
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && isSpace(text[begin])) {
        ++begin;
    }
    while (end > begin && isSpace(text[end - 1])) {
        --end;
    }
    return text.substr(begin, end - begin);
}

// Dotted-quad text of a host-order address, held in a small buffer.
class IpText {
public:
    explicit IpText(uint32_t hostOrder) {
        in_addr addr{};
        addr.s_addr = htonl(hostOrder);
        if (inet_ntop(AF_INET, &addr, m_text, sizeof(m_text)) == nullptr) {
            m_text[0] = '\0';
        }
    }
    const char* c_str() const { return m_text; }

private:
    char m_text[INET_ADDRSTRLEN];
};

// inet_pton for IPv4; true and `out` set (host order) when the text is an address.
inline bool parseIp(const char* text, uint32_t& out) {
    in_addr addr{};
    if (inet_pton(AF_INET, text, &addr) != 1) {
        return false;
    }
    out = ntohl(addr.s_addr);
    return true;
}

// The same for a text that need not end in a NUL. The text is read up to its first NUL,
// as its C string would be; no IPv4 address is longer than 15 characters, so cutting a
// longer text after 16 refuses it just as the whole text would be refused.
inline bool parseIp(std::string_view text, uint32_t& out) {
    char buffer[INET_ADDRSTRLEN + 1];
    const size_t length = text.size() < sizeof(buffer) - 1 ? text.size() : sizeof(buffer) - 1;
    // An empty view may have no data pointer at all, which copying must not touch.
    buffer[length == 0 ? 0 : text.copy(buffer, length)] = '\0';
    return parseIp(buffer, out);
}

// Reading rule of an address key: empty text keeps the value, invalid text is logged
// and keeps the value.
inline void readAddress(uint32_t& field, const std::string& text) {
    if (text.empty()) {
        return;
    }
    if (!parseIp(text.c_str(), field)) {
        Logger::log(2, "Error parsing IP [%s]: invalid IP address", text.c_str());
    }
}

// printf-style append.
inline void appendFormat(std::string& out, const char* fmt, ...) PIMAV_PRINTF_FORMAT(2, 3);
inline void appendFormat(std::string& out, const char* fmt, ...) {
    char small[256];
    va_list args;
    va_start(args, fmt);
    va_list copy;
    va_copy(copy, args);
    const int needed = std::vsnprintf(small, sizeof(small), fmt, copy);
    va_end(copy);
    if (needed > 0) {
        if (static_cast<size_t>(needed) < sizeof(small)) {
            out.append(small, static_cast<size_t>(needed));
        } else {
            const size_t at = out.size();
            out.resize(at + static_cast<size_t>(needed));
            std::vsnprintf(&out[at], static_cast<size_t>(needed) + 1, fmt, args);
        }
    }
    va_end(args);
}

}  // namespace pimav::detail
