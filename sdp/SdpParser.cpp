// SDP text -> SdpSession: splitting, grouping lines, session-level and media-level
// rules, and the minimum-configuration check.

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "platform/ChkLog.h"
#include "sdp/SdpBoard.h"
#include "sdp/SdpText.h"

using namespace pimav::detail;

namespace {

const std::string::size_type npos = std::string::npos;

// A parser log line. Most are traces below the default threshold: checking the level
// here leaves a disabled line at one load instead of a call with its arguments.
#define SDP_LOG(level, ...)                  \
    do {                                     \
        if (Logger::isEnabled(level)) {      \
            Logger::log(level, __VA_ARGS__); \
        }                                    \
    } while (0)

// A message for the user: logged at level 2 and kept for the reply to the user.
#define SDP_USER_MESSAGE(...)                                \
    do {                                                     \
        Logger::getInstance()->logMessage(2, __VA_ARGS__);   \
        ErrorAuxMsg::getInstance()->addMessage(__VA_ARGS__); \
    } while (0)

enum class Conversion { Ok, Empty, Invalid, OutOfRange };

// strtoul / strtoull with base 0 on text[begin, end), for an unsigned type of `bits`
// bits (the device's unsigned long is 32 bits wide): white space, an optional sign,
// "0x" hexadecimal or "0" octal prefix; stops at the first foreign character; a
// negative number wraps as strtoul does.
Conversion convertUnsigned(const char* p, const char* end, unsigned bits, unsigned long long& out) {
    out = 0;
    if (p == end) {
        return Conversion::Empty;
    }
    while (p != end && isSpace(*p)) {
        ++p;
    }
    bool negative = false;
    if (p != end && (*p == '+' || *p == '-')) {
        negative = (*p == '-');
        ++p;
    }
    unsigned base = 10;
    if (p != end && *p == '0') {
        if (end - p >= 3 && (p[1] == 'x' || p[1] == 'X') && std::isxdigit(static_cast<unsigned char>(p[2]))) {
            base = 16;
            p += 2;
        } else {
            base = 8;
        }
    }
    const unsigned long long max =
        bits >= 64 ? std::numeric_limits<unsigned long long>::max() : ((1ULL << bits) - 1ULL);
    // value * base + digit exceeds max exactly when value passes these (one division
    // per number instead of one per digit).
    const unsigned long long cutoff = max / base;
    const unsigned long long cutlim = max % base;
    unsigned long long value = 0;
    bool any = false;
    bool overflow = false;
    for (; p != end; ++p) {
        const unsigned char c = static_cast<unsigned char>(*p);
        unsigned digit;
        if (c >= '0' && c <= '9') {
            digit = c - '0';
        } else if (c >= 'a' && c <= 'z') {
            digit = c - 'a' + 10;
        } else if (c >= 'A' && c <= 'Z') {
            digit = c - 'A' + 10;
        } else {
            break;
        }
        if (digit >= base) {
            break;
        }
        any = true;
        if (value > cutoff || (value == cutoff && digit > cutlim)) {
            overflow = true;
        } else {
            value = value * base + digit;
        }
    }
    if (!any) {
        return Conversion::Invalid;
    }
    if (overflow) {
        return Conversion::OutOfRange;
    }
    out = negative ? ((0ULL - value) & max) : value;
    return Conversion::Ok;
}

// The text of a number that failed to convert, for the log line (built only when the
// line is logged).
std::string failedText(std::string_view text, size_t begin, size_t end) {
    return std::string(text.substr(begin, end - begin));
}

unsigned int toUnsigned(std::string_view text, size_t begin, size_t end = npos) {
    if (end > text.size()) {
        end = text.size();
    }
    if (begin > end) {
        begin = end;
    }
    unsigned long long value = 0;
    switch (convertUnsigned(text.data() + begin, text.data() + end, 32, value)) {
        case Conversion::Ok:
            return static_cast<unsigned int>(value);
        case Conversion::Empty:
            SDP_LOG(2, "trying to convert to integer a empty string. That is bad.");
            return 0;
        case Conversion::Invalid:
            SDP_LOG(2, "trying to convert to integer invalid value: %s",
                    failedText(text, begin, end).c_str());
            return 0;
        case Conversion::OutOfRange:
            SDP_LOG(2, "trying to convert to integer out of range: %s", failedText(text, begin, end).c_str());
            return 0;
    }
    return 0;
}

unsigned long long toUnsigned64(std::string_view text, size_t begin, size_t end = npos) {
    if (end > text.size()) {
        end = text.size();
    }
    if (begin > end) {
        begin = end;
    }
    unsigned long long value = 0;
    switch (convertUnsigned(text.data() + begin, text.data() + end, 64, value)) {
        case Conversion::Ok:
            return value;
        case Conversion::Empty:
            SDP_LOG(2, "trying to convert to long long with an empty string. That is bad.");
            return 0;
        case Conversion::Invalid:
            SDP_LOG(2, "trying to convert to long long invalid value: %s",
                    failedText(text, begin, end).c_str());
            return 0;
        case Conversion::OutOfRange:
            SDP_LOG(2, "trying to convert to long long out of range: %s",
                    failedText(text, begin, end).c_str());
            return 0;
    }
    return 0;
}

// Formatted stream extraction of an unsigned 64-bit decimal number: white space is
// skipped, a sign is accepted (a minus wraps), no digit gives 0, overflow gives the
// largest value.
unsigned long long extractUnsigned64(std::string_view text, size_t begin, size_t end) {
    while (begin < end && isSpace(text[begin])) {
        ++begin;
    }
    bool negative = false;
    if (begin < end && (text[begin] == '+' || text[begin] == '-')) {
        negative = text[begin] == '-';
        ++begin;
    }
    unsigned long long value = 0;
    bool any = false;
    for (; begin < end && text[begin] >= '0' && text[begin] <= '9'; ++begin) {
        const unsigned digit = static_cast<unsigned>(text[begin] - '0');
        any = true;
        if (value > (std::numeric_limits<unsigned long long>::max() - digit) / 10) {
            return std::numeric_limits<unsigned long long>::max();
        }
        value = value * 10 + digit;
    }
    if (!any) {
        return 0;
    }
    return negative ? 0ULL - value : value;
}

// A float converted to int the way the device's Arm core does it: truncation toward
// zero, saturating at the limits, NaN giving 0.
int saturatingInt(float value) {
    if (!(value == value)) {
        return 0;
    }
    if (value >= 2147483648.0f) {
        return std::numeric_limits<int>::max();
    }
    if (value <= -2147483648.0f) {
        return std::numeric_limits<int>::min();
    }
    return static_cast<int>(value);
}

// ---- line tokens ----

// The tokens by which the rules recognise a line. Each has "=" as its second character,
// so one pass over the "=" signs of a line finds the first occurrence of all of them;
// the rules then ask that table instead of searching the line once per token.
enum Token : unsigned {
    kMediaToken,         // "m="
    kInfoToken,          // "i="
    kVersionToken,       // "v="
    kOriginToken,        // "o="
    kNameToken,          // "s="
    kTimeToken,          // "t="
    kConnectionToken,    // "c=IN IP4 "
    kRtpmapToken,        // "a=rtpmap:"
    kFramecountToken,    // "a=framecount:"
    kPtimeToken,         // "a=ptime:"
    kMidToken,           // "a=mid:"
    kRefclkToken,        // "a=ts-refclk:"
    kSourceFilterToken,  // "a=source-filter"
    kMediaclkToken,      // "a=mediaclk:"
    kClockDomainToken,   // "a=clock-domain:"
    kFmtpToken,          // "a=fmtp:"
    kFramerateToken,     // "a=framerate:"
    kGroupToken,         // "a=group:"
    kTokenCount
};

struct AttributeToken {
    Token token;
    std::string_view name;  // what follows "a="
};

constexpr AttributeToken kAttributeTokens[] = {
    {kRtpmapToken, "rtpmap:"},     {kFramecountToken, "framecount:"},
    {kPtimeToken, "ptime:"},       {kMidToken, "mid:"},
    {kRefclkToken, "ts-refclk:"},  {kSourceFilterToken, "source-filter"},
    {kMediaclkToken, "mediaclk:"}, {kClockDomainToken, "clock-domain:"},
    {kFmtpToken, "fmtp:"},         {kFramerateToken, "framerate:"},
    {kGroupToken, "group:"},
};

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

// One line of the text (a view into it) with the position of the first occurrence of
// each token (npos when absent).
class SdpLine {
public:
    explicit SdpLine(std::string_view text) : m_text(text) {
        std::fill(std::begin(m_at), std::end(m_at), npos);
        for (size_t equals = text.find('=', 1); equals != npos; equals = text.find('=', equals + 1)) {
            const size_t at = equals - 1;
            const std::string_view rest = text.substr(equals + 1);
            switch (text[at]) {
                case 'm':
                    note(kMediaToken, at);
                    break;
                case 'i':
                    note(kInfoToken, at);
                    break;
                case 'v':
                    note(kVersionToken, at);
                    break;
                case 'o':
                    note(kOriginToken, at);
                    break;
                case 's':
                    note(kNameToken, at);
                    break;
                case 't':
                    note(kTimeToken, at);
                    break;
                case 'c':
                    if (startsWith(rest, "IN IP4 ")) {
                        note(kConnectionToken, at);
                    }
                    break;
                case 'a':
                    for (const AttributeToken& attribute : kAttributeTokens) {
                        if (!rest.empty() && rest[0] == attribute.name[0] &&
                            startsWith(rest, attribute.name)) {
                            note(attribute.token, at);
                            break;
                        }
                    }
                    break;
                default:
                    break;
            }
        }
    }

    std::string_view text() const { return m_text; }
    size_t at(Token token) const { return m_at[token]; }
    bool has(Token token) const { return m_at[token] != npos; }

    // Drops everything from the first "\r" on. No token contains "\r", so the tokens
    // found before it are still where they were and the others are gone.
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

std::vector<SdpLine> scanLines(const std::vector<std::string>& lines) {
    std::vector<SdpLine> scanned;
    scanned.reserve(lines.size());
    for (const std::string& line : lines) {
        scanned.emplace_back(line);
    }
    return scanned;
}

// printf arguments of a view: "%.*s" stops at a NUL just as "%s" of the line's C string.
#define SDP_VIEW(view) static_cast<int>((view).size()), (view).data()

LineList pointersTo(const std::vector<SdpLine>& lines) {
    LineList list;
    list.reserve(lines.size());
    for (const SdpLine& line : lines) {
        list.push_back(&line);
    }
    return list;
}

bool hasMediaToken(const SdpLine& line) {
    return line.has(kConnectionToken) || line.has(kClockDomainToken) || line.has(kRefclkToken) ||
           line.has(kSourceFilterToken);
}

// Value of an fmtp key: from the end of the key to the next ";" searched from the key,
// or to the end of the line.
enum class FmtpKey { Missing, AtLineEnd, Found };

FmtpKey fmtpValue(std::string_view line, std::string_view key, std::string_view& value) {
    const size_t at = line.find(key);
    if (at == npos) {
        return FmtpKey::Missing;
    }
    const size_t begin = at + key.size();
    if (begin >= line.size()) {
        return FmtpKey::AtLineEnd;
    }
    const size_t end = line.find(';', at);
    value = line.substr(begin, end == npos ? npos : (end > begin ? end - begin : 0));
    return FmtpKey::Found;
}

// The standard strict conversions, which need a NUL-terminated text.
int strictInt(std::string_view text) {
    return std::stoi(std::string(text));
}
float strictFloat(std::string_view text) {
    return std::stof(std::string(text));
}

// ---- grouping lines ----

void splitGroupItems(std::string_view items, SdpGroup& group) {
    SDP_LOG(6, "SDP:: found group in SDP %.*s", SDP_VIEW(items));
    size_t begin = 0;
    size_t space;
    while ((space = items.find(' ', begin)) != npos) {
        group.m_items.emplace_back(trim(items.substr(begin, space - begin)));
        SDP_LOG(7, "SDP:: parsed group item %s", group.m_items.back().c_str());
        begin = space + 1;
    }
    group.m_items.emplace_back(trim(items.substr(begin)));
    SDP_LOG(7, "SDP:: parsed last group item %s", group.m_items.back().c_str());
}

int readGroups(const std::vector<SdpLine>& lines, SdpGroup& group) {
    constexpr std::string_view kDup = "a=group:DUP ";
    constexpr std::string_view kMulti2si = "a=group:MULTI-2SI ";
    constexpr std::string_view kMultiSd = "a=group:MULTI-SD ";
    constexpr std::string_view kPhased = "a=group:PHASED ";
    bool multiSeen = false;
    for (const SdpLine& scanned : lines) {
        if (!scanned.has(kGroupToken)) {
            continue;  // none of the tokens below can match
        }
        // A grouping line begins with its token: the items follow it.
        const std::string_view line = scanned.text();
        if (!multiSeen && line.find(kDup) != npos) {
            group.m_type = SdpGroup::GROUP_DUP;
            splitGroupItems(line.substr(std::min(kDup.size(), line.size())), group);
        }
        if (line.find(kMulti2si) != npos) {
            group.m_type = SdpGroup::GROUP_MULTI_2SI;
            splitGroupItems(line.substr(std::min(kMulti2si.size(), line.size())), group);
            multiSeen = true;
        }
        if (line.find(kMultiSd) != npos) {
            group.m_type = SdpGroup::GROUP_MULTI_SD;
            splitGroupItems(line.substr(std::min(kMultiSd.size(), line.size())), group);
            multiSeen = true;
        }
        if (line.find(kPhased) != npos) {
            SDP_LOG(2, "Group %s not supported", "PHASED");
            return -7;
        }
    }
    return 0;
}

// ---- session level ----

void readOrigin(SdpSession& session, std::string_view line, size_t at) {
    const size_t userBegin = at + 2;
    const size_t userEnd = line.find(' ', userBegin);
    session.m_user_name.assign(line.substr(userBegin, userEnd == npos ? npos : userEnd - userBegin));
    SDP_LOG(7, "::User name found::%s", session.m_user_name.c_str());
    if (userEnd == npos) {
        return;
    }
    const size_t idBegin = userEnd + 1;
    const size_t idEnd = line.find(' ', idBegin);
    session.m_session_id = extractUnsigned64(line, idBegin, idEnd == npos ? line.size() : idEnd);
    SDP_LOG(7, "::Session id found::%llu", static_cast<unsigned long long>(session.m_session_id));
    if (idEnd == npos) {
        return;
    }
    const size_t versionBegin = idEnd + 1;
    const size_t versionEnd = line.find(' ', versionBegin);
    if (versionEnd != npos) {
        session.m_session_version = toUnsigned64(line, versionBegin, versionEnd);
        SDP_LOG(7, "::Session version found::%llu",
                static_cast<unsigned long long>(session.m_session_version));
    }
    const size_t ip = line.find("IN IP4 ", versionBegin);
    if (ip != npos) {
        const std::string_view address = line.substr(ip + 7);
        if (parseIp(address, session.m_local_ip)) {
            SDP_LOG(7, "::Source IP found [%.*s]", SDP_VIEW(address));
        } else {
            SDP_LOG(2, "Error parsing IP [%.*s]: invalid IP address", SDP_VIEW(address));
            SDP_LOG(5, "::Source IP found but it is invalid: [%.*s]", SDP_VIEW(address));
        }
    }
}

// The session-level rules; lines that none takes are appended to `ignored`.
void readSessionLines(SdpSession& session, const LineList& lines, std::vector<std::string_view>& ignored) {
    for (const SdpLine* next : lines) {
        const SdpLine& scanned = *next;
        const std::string_view line = scanned.text();
        if (scanned.has(kVersionToken)) {
            session.m_protocol_version =
                static_cast<uint8_t>(toUnsigned(line, scanned.at(kVersionToken) + 2));
            SDP_LOG(7, "::Version found::%d", session.m_protocol_version);
        } else if (scanned.has(kOriginToken)) {
            readOrigin(session, line, scanned.at(kOriginToken));
        } else if (scanned.has(kNameToken)) {
            session.m_info.assign(line.substr(scanned.at(kNameToken) + 2));
            SDP_LOG(7, "::Description found::%s", session.m_info.c_str());
        } else if (scanned.has(kTimeToken)) {
            const size_t startBegin = scanned.at(kTimeToken) + 2;
            const size_t space = line.find(' ', startBegin);
            session.m_time.m_start = toUnsigned(line, startBegin, space);
            session.m_time.m_stop = (space == npos) ? 0 : toUnsigned(line, space + 1);
            SDP_LOG(7, "::start time %d Stop time %d", session.m_time.m_start, session.m_time.m_stop);
        } else {
            ignored.push_back(line);
        }
    }
}

// ---- media level ----

void readMediaLine(SdpMedia& media, std::string_view line, size_t at) {
    const size_t typeBegin = at + 2;
    const size_t typeEnd = line.find(' ', typeBegin);
    const std::string_view typeField = line.substr(typeBegin, typeEnd == npos ? npos : typeEnd - typeBegin);
    media.m_type = SdpMedia::NOT_RECOGNIZED;
    if (typeField.find("audio") != npos) {
        media.m_type = SdpMedia::AUDIO;
    }
    if (typeField.find("video") != npos) {
        media.m_type = SdpMedia::VIDEO;
    }
    SDP_LOG(7, "::Media Type found::%d", static_cast<int>(media.m_type));
    if (typeEnd == npos) {
        return;
    }
    const size_t portBegin = typeEnd + 1;
    const size_t portEnd = line.find(' ', portBegin);
    media.m_udp_port = toUnsigned(line, portBegin, portEnd);
    SDP_LOG(7, "::UDP port found::%d", media.m_udp_port);
    if (portEnd == npos) {
        return;
    }
    const size_t protoBegin = portEnd + 1;
    const size_t protoEnd = line.find(' ', protoBegin);
    if (protoEnd == npos) {
        return;  // no payload type: the protocol is not taken either
    }
    media.m_protocol.assign(line.substr(protoBegin, protoEnd - protoBegin));
    SDP_LOG(7, "::Protocol found::%s", media.m_protocol.c_str());
    media.m_payload_types.clear();
    size_t fieldBegin = protoEnd + 1;
    for (;;) {
        const size_t fieldEnd = line.find(' ', fieldBegin);
        const uint8_t payloadType = static_cast<uint8_t>(toUnsigned(line, fieldBegin, fieldEnd));
        media.m_payload_types.push_back(payloadType);
        SDP_LOG(7, "::[Media] Found payload type [%d]", payloadType);
        if (fieldEnd == npos) {
            break;
        }
        fieldBegin = fieldEnd + 1;
    }
    SDP_LOG(7, "::%d RTP map(s) expected::", static_cast<int>(media.m_payload_types.size()));
}

void readRtpMap(SdpMedia& media, std::string_view line, size_t at) {
    SdpMediaRtpMap map;
    const size_t ptBegin = at + 9;
    const size_t ptEnd = line.find(' ', ptBegin);
    map.m_payload_type = static_cast<uint8_t>(toUnsigned(line, ptBegin, ptEnd));
    SDP_LOG(7, "::[RTP map] Payload type found::%d", map.m_payload_type);
    const size_t nameBegin = (ptEnd == npos) ? line.size() : ptEnd + 1;
    const size_t slash1 = line.find('/', nameBegin);
    const std::string name(line.substr(nameBegin, slash1 == npos ? npos : slash1 - nameBegin));
    SDP_LOG(7, "::Codec found::%s", name.c_str());
    if (map.m_codec.setCodec(name) < 0) {
        SDP_LOG(5, "::Codec not recognized, using %s as standard::%s", map.m_codec.toString().c_str(),
                name.c_str());
    }
    const size_t rateBegin = (slash1 == npos) ? line.size() : slash1 + 1;
    const size_t slash2 = (slash1 == npos) ? npos : line.find('/', rateBegin);
    map.m_channel_freq = toUnsigned(line, rateBegin, slash2);
    SDP_LOG(7, "::Sampling frequency found::%d", map.m_channel_freq);
    if (isAudioCodec(map.m_codec)) {
        if (slash2 == npos) {
            // No channel field: the whole line is no number.
            SDP_LOG(2, "trying to convert to integer invalid value: %.*s", SDP_VIEW(line));
            map.m_number_channels = 0;
        } else {
            map.m_number_channels = static_cast<uint16_t>(toUnsigned(line, slash2 + 1));
        }
    } else {
        map.m_number_channels = 1;
    }
    SDP_LOG(7, "::Number of channels found::%d", map.m_number_channels);
    media.m_rtp_maps.push_back(std::move(map));
}

void readReferenceClock(SdpMedia& media, std::string_view line, size_t at) {
    const size_t sourceBegin = at + 12;
    const size_t equals = line.find('=', sourceBegin);
    const std::string_view source =
        line.substr(sourceBegin, (equals == npos ? line.size() : equals) - sourceBegin);
    if (source.find("ptp") == npos) {
        SDP_LOG(2, "::Clock reference is not PTP!! we do not support that yet.::%.*s", SDP_VIEW(source));
        return;
    }
    media.m_clock_is_ptp = true;
    const size_t colon1 = (equals == npos) ? npos : line.find(':', equals);
    if (colon1 == npos) {
        return;
    }
    const size_t colon2 = line.find(':', colon1 + 1);
    media.m_ptp_gm_id.assign(line.substr(colon1 + 1, colon2 == npos ? npos : colon2 - colon1 - 1));
    for (char& c : media.m_ptp_gm_id) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    SDP_LOG(7, "::GM ID found::%s", media.m_ptp_gm_id.c_str());
    if (colon2 == npos) {
        return;
    }
    const size_t domainBegin = colon2 + 1;
    if (line.find("domain-nmbr", domainBegin) != npos) {
        const size_t eq = line.find('=', domainBegin);
        media.m_ptp_domain = static_cast<uint8_t>(toUnsigned(line, eq == npos ? line.size() : eq + 1));
        SDP_LOG(7, "::[AES67-2015]Ptp domain found::%d", media.m_ptp_domain);
    } else {
        media.m_ptp_domain = static_cast<uint8_t>(toUnsigned(line, domainBegin));
        SDP_LOG(7, "::[AES67-2013]Ptp domain found::%d", media.m_ptp_domain);
    }
}

void readConnection(SdpMedia& media, std::string_view line, size_t at) {
    const size_t addressBegin = at + 9;
    const size_t slash = line.find('/', addressBegin);
    const std::string_view address = line.substr(addressBegin, slash == npos ? npos : slash - addressBegin);
    SDP_LOG(7, "::Destination IP found::%.*s", SDP_VIEW(address));
    if (!parseIp(address, media.m_transport_ip)) {
        SDP_LOG(2, "Error parsing IP [%.*s]: invalid IP address", SDP_VIEW(address));
        SDP_LOG(5, "::Destination IP found but it is invalid: [%.*s]", SDP_VIEW(address));
    }
    if (slash != npos) {
        media.m_ttl = static_cast<uint8_t>(toUnsigned(line, slash + 1));
        SDP_LOG(7, "::TTL found::%d", media.m_ttl);
    }
}

void readSourceFilter(SdpMedia& media, std::string_view line) {
    const size_t ip4 = line.find("IP4 ");
    if (ip4 == npos) {
        return;
    }
    const size_t destBegin = ip4 + 4;
    const size_t space = line.find(' ', destBegin);
    const std::string_view destination = line.substr(destBegin, space == npos ? npos : space - destBegin);
    const std::string_view source = (space == npos) ? std::string_view() : line.substr(space + 1);
    if (parseIp(destination, media.m_transport_ip)) {
        SDP_LOG(7, "::Destination IP found::%s", IpText(media.m_transport_ip).c_str());
    } else {
        SDP_LOG(2, "Error parsing IP [%.*s]: invalid IP address", SDP_VIEW(destination));
        SDP_LOG(5, "::Destination IP found but it is invalid: [%.*s]", SDP_VIEW(destination));
    }
    if (parseIp(source, media.m_local_ip)) {
        SDP_LOG(7, "::Source IP found::%s", IpText(media.m_local_ip).c_str());
    } else {
        SDP_LOG(2, "Error parsing IP [%.*s]: invalid IP address", SDP_VIEW(source));
        SDP_LOG(5, "::Source IP found but it is invalid: [%.*s]", SDP_VIEW(source));
    }
}

int readChannelOrder(const SdpLine& scanned, SdpMedia& media) {
    constexpr std::string_view kOrder = "channel-order=SMPTE2110.(";
    const std::string_view line = scanned.text();
    if (line.size() < 7 || !scanned.has(kFmtpToken)) {
        return 0;
    }
    const size_t at = line.find(kOrder, 7);
    if (at == npos) {
        return 0;
    }
    SDP_LOG(7, "::channel-order under a=fmtp found::%.*s", SDP_VIEW(line));
    size_t begin = at + kOrder.size();
    size_t comma;
    while ((comma = line.find(',', begin)) != npos) {
        media.m_channel_order.emplace_back(trim(line.substr(begin, comma - begin)));
        begin = comma + 1;
    }
    const size_t close = line.find(')', begin);
    media.m_channel_order.emplace_back(
        trim(line.substr(begin, close == npos ? npos : close - begin)));
    if (Logger::isEnabled(7)) {
        SDP_LOG(7, "::the following audio groups were found:");
        for (const std::string& group : media.m_channel_order) {
            SDP_LOG(7, "  %s", group.c_str());
        }
    }
    return 1;
}

int readVideoValues(const SdpLine& scanned, SdpMedia& media) {
    const std::string_view line = scanned.text();
    if (!scanned.has(kFmtpToken)) {
        if (scanned.has(kFramerateToken)) {
            // The rate written on this line is not taken over; a later fmtp line sets it.
            media.m_video.setVideoFrameRate(0);
            SDP_LOG(7, "::Frame rate found::%d", 0);
            return 1;
        }
        return 0;
    }

    struct Key {
        std::string_view key;
        const char* missing;
        const char* invalid;
        bool optional;
    };
    static const Key kKeys[] = {
        {"width=", "SDP fmtp line: could not find width", "SDP fmtp line: width is invalid", false},
        {"height=", "SDP fmtp line: could not find height", "SDP fmtp line: height is invalid", false},
        {"depth=", "SDP fmtp line: could not find depth", "SDP fmtp line: depth is invalid", false},
        {"colorimetry=", "SDP fmtp line: could not find colorimetry", "SDP fmtp line: colorimetry is invalid",
         false},
        {"PM=", "SDP fmtp line: could not find PM", "SDP fmtp line: PM is invalid", true},
        {"TP=", "SDP fmtp line: could not find TP", "SDP fmtp line: TP is invalid", true},
        {"sampling=", "SDP fmtp line: could not find sampling", "SDP fmtp line: sampling is invalid", false},
    };

    bool malformed = false;
    int width = 0;
    int height = 0;
    std::string_view value;
    for (size_t i = 0; i < sizeof(kKeys) / sizeof(kKeys[0]); ++i) {
        const Key& key = kKeys[i];
        switch (fmtpValue(line, key.key, value)) {
            case FmtpKey::Missing:
                SDP_LOG(key.optional ? 3 : 2, "%s", key.missing);
                malformed = malformed || !key.optional;
                continue;
            case FmtpKey::AtLineEnd:
                SDP_LOG(2, "%s", key.invalid);
                malformed = true;
                continue;
            case FmtpKey::Found:
                break;
        }
        switch (i) {
            case 0:
                width = strictInt(value);
                break;
            case 1:
                height = strictInt(value);
                break;
            case 2:
                media.m_depth = static_cast<uint32_t>(strictInt(value));
                break;
            case 3:
                media.m_colorimetry.assign(value);
                break;
            case 4:
                media.m_packing_mode.assign(value);
                break;
            case 5:
                media.m_sender_type.assign(value);
                break;
            default:
                media.m_sampling.assign(value);
                break;
        }
    }

    bool interlaced = line.find("interlace") != npos;
    if (line.find("interlace=") != npos) {
        switch (fmtpValue(line, "interlace=", value)) {
            case FmtpKey::AtLineEnd:
                SDP_LOG(2, "SDP fmtp line: interlace is invalid");
                malformed = true;
                break;
            case FmtpKey::Found:
                interlaced = strictInt(value) != 0;
                break;
            case FmtpKey::Missing:
                break;
        }
    }

    int frameRate = 0;
    if (line.find("exactframerate=") != npos) {
        SDP_LOG(6, "framerate found under a=fmtp as exactframerate");
        if (fmtpValue(line, "exactframerate=", value) == FmtpKey::AtLineEnd) {
            SDP_LOG(2, "SDP fmtp line: exactframerate is invalid");
            value = std::string_view();
        }
        const size_t slash = value.find('/');
        if (slash != npos) {
            const float numerator = strictFloat(value.substr(0, slash));
            const float denominator = strictFloat(value.substr(slash + 1));
            SDP_LOG(7, "framerate found %f/%f", static_cast<double>(numerator),
                    static_cast<double>(denominator));
            frameRate = saturatingInt(numerator / denominator);
        } else {
            frameRate = strictInt(value);
            SDP_LOG(7, "framerate found %d", frameRate);
        }
    } else if (line.find("framerate=") != npos) {
        SDP_LOG(6, "framerate found under a=fmtp as framerate");
        if (fmtpValue(line, "framerate=", value) == FmtpKey::AtLineEnd) {
            SDP_LOG(2, "SDP fmtp line: framerate is invalid");
            malformed = true;
        } else {
            frameRate = strictInt(value);
        }
    }

    if (malformed) {
        SDP_LOG(2, "::Format found but it is malformed: <%.*s>", SDP_VIEW(line));
        return 1;
    }

    media.m_video.setVideoWidth(static_cast<unsigned int>(width));
    media.m_video.setVideoHeight(static_cast<unsigned int>(height));
    media.m_video.setVideoInterlace(interlaced);
    if (Logger::isEnabled(7)) {
        SDP_LOG(7, "::Format found::");
        SDP_LOG(7, "\t width:         %d", width);
        SDP_LOG(7, "\t height:        %d", height);
        SDP_LOG(7, "\t interlace:     %s", interlaced ? "true" : "false");
        SDP_LOG(7, "\t depth:         %d", media.m_depth);
        SDP_LOG(7, "\t colorimetry:   %s", media.m_colorimetry.c_str());
        SDP_LOG(7, "\t sampling:      %s", media.m_sampling.c_str());
        SDP_LOG(7, "\t framerate:     %d", frameRate);
    }
    if (media.m_video.setVideoFrameRate(frameRate) < 0) {
        SDP_LOG(2, "::Format found but framerate is not supported: <%.*s>", SDP_VIEW(line));
        return 0;
    }
    return 1;
}

// One media section, lines [first, last); lines that no rule takes are appended to
// `leftovers`.
int readMediaSection(SdpMedia& media, const SdpLine* const* first, const SdpLine* const* last,
                     LineList& leftovers, SdpGroup::Type groupType, std::string_view groupItem) {
    for (const SdpLine* const* next = first; next != last; ++next) {
        const SdpLine* scanned = *next;
        const std::string_view line = scanned->text();

        // First stage: four independent tests.
        bool consumed = false;
        if (scanned->has(kMediaToken)) {
            consumed = true;
            readMediaLine(media, line, scanned->at(kMediaToken));
        }
        if (scanned->has(kRtpmapToken)) {
            consumed = true;
            readRtpMap(media, line, scanned->at(kRtpmapToken));
        }
        if (scanned->has(kFramecountToken)) {
            consumed = true;
            media.m_number_samples =
                static_cast<uint8_t>(toUnsigned(line, scanned->at(kFramecountToken) + 13));
            SDP_LOG(7, "::Number of samples found::%d", media.m_number_samples);
        }
        if (scanned->has(kPtimeToken)) {
            consumed = true;
            media.m_ptime = strictFloat(line.substr(scanned->at(kPtimeToken) + 8));
            SDP_LOG(7, "::Packet time found::%4.3f", static_cast<double>(media.m_ptime));
        }

        // Second stage: the first token found decides.
        if (scanned->has(kInfoToken)) {
            media.m_info.assign(line.substr(scanned->at(kInfoToken) + 2));
            SDP_LOG(7, "::Description found::%s", media.m_info.c_str());
        } else if (scanned->has(kMidToken)) {
            media.m_group.assign(trim(line.substr(scanned->at(kMidToken) + 6)));
            if (groupType == SdpGroup::GROUP_MULTI_2SI || groupType == SdpGroup::GROUP_MULTI_SD) {
                bool integer = true;
                try {
                    (void)std::stoi(media.m_group);
                } catch (const std::exception&) {
                    integer = false;
                }
                if (!integer) {
                    SDP_LOG(2, "Media identification in group is invalid and needs to be an integer: %s",
                            media.m_group.c_str());
                    return -7;
                }
            }
            media.m_group_type = groupType;
            SDP_LOG(7, "::Group found::%s", media.m_group.c_str());
        } else if (scanned->has(kRefclkToken)) {
            readReferenceClock(media, line, scanned->at(kRefclkToken));
        } else if (scanned->has(kConnectionToken)) {
            readConnection(media, line, scanned->at(kConnectionToken));
        } else if (scanned->has(kSourceFilterToken)) {
            readSourceFilter(media, line);
        } else if (scanned->has(kMediaclkToken)) {
            const size_t equals = line.find('=', scanned->at(kMediaclkToken) + 11);
            media.m_media_clock = toUnsigned(line, equals == npos ? line.size() : equals + 1);
            SDP_LOG(7, "::Media clock found::%d", media.m_media_clock);
        } else if (scanned->has(kClockDomainToken)) {
            const size_t space = line.find(' ', scanned->at(kClockDomainToken) + 15);
            if (space != npos) {
                media.m_ptp_domain = static_cast<uint8_t>(toUnsigned(line, space + 1));
                SDP_LOG(7, "::clock-domain found::%d", media.m_ptp_domain);
            }
        } else if (readChannelOrder(*scanned, media) == 0 && readVideoValues(*scanned, media) == 0 &&
                   !consumed) {
            leftovers.push_back(scanned);
        }
    }

    if (media.m_type == SdpMedia::VIDEO) {
        const char* wanted = isDamsonTr04() ? "SMPTE2022-6" : "raw";
        const std::string codec =
            media.m_rtp_maps.empty() ? std::string() : media.m_rtp_maps[0].m_codec.toString();
        if (media.m_rtp_maps.empty() || codec != wanted) {
            SDP_LOG(2, "::Stream is video, but not valid type %s.", codec.c_str());
            return -1;
        }
        if (media.m_video.checkVideoDetailConsistency() < 0) {
            SDP_LOG(2, "::Stream is video, but no valid video format found.");
            return -1;
        }
        SDP_LOG(7, "::Video Format found ::%s", media.m_video.toString().c_str());
    }
    if (!groupItem.empty() && groupItem != media.m_group) {
        SDP_LOG(2,
                "::Group (%s) delimiting the media type does not match the order set in a=group::DUP (%.*s)",
                media.m_group.c_str(), SDP_VIEW(groupItem));
        return -1;
    }
    return 0;
}

}  // namespace

// ---- lenient conversions ----

unsigned int SdpConverter::parseUnsigned(const std::string& text) {
    return toUnsigned(text, 0);
}

unsigned long long SdpConverter::parseUnsigned64(const std::string& text) {
    return toUnsigned64(text, 0);
}

// ---- session level ----

int SdpConverter::parseSdp(const std::string& text) {
    try {
        const int result = parseSdpInternal(text);
        SDP_LOG(6, "SDP PARSE returned %d", result);
        return result;
    } catch (...) {
        SDP_LOG(2, "SDP PARSE threw exception");
        return -7;
    }
}

// The lines are views into `text`, scanned once for their tokens, and the media
// sections are ranges of one list: nothing is copied until a value is stored.
int SdpConverter::parseSdpInternal(const std::string& text) {
    SdpSession session;
    SDP_LOG(7, "SDP:: generating from SDP String format");

    std::vector<SdpLine> lines;
    lines.reserve(32);
    const std::string_view all(text);
    size_t start = 0;
    while (start < all.size()) {
        size_t end = all.find('\n', start);
        if (end == npos) {
            end = all.size();
        }
        if (end > start) {
            lines.emplace_back(all.substr(start, end - start));
        }
        start = end + 1;
    }
    SDP_LOG(7, "SDP:: incoming SDP was split into %d lines", static_cast<int>(lines.size()));

    SdpGroup group;
    PIMAV_CHK(readGroups(lines, group));

    LineList sessionLines;
    LineList mediaLines;
    std::vector<size_t> boundaries;
    sessionLines.reserve(lines.size());
    mediaLines.reserve(lines.size());
    boundaries.reserve(8);
    int mediaCount = 0;
    for (SdpLine& line : lines) {
        line.cutAtCarriageReturn();
        if (line.has(kMediaToken)) {
            SDP_LOG(7, "::Media found::%d", static_cast<int>(mediaLines.size()));
            if (mediaCount > 0) {
                boundaries.push_back(mediaLines.size());
            }
            ++mediaCount;
            mediaLines.push_back(&line);
        } else if (mediaCount > 0) {
            mediaLines.push_back(&line);
        } else if (group.m_items.empty() && hasMediaToken(line)) {
            mediaLines.push_back(&line);
        } else {
            sessionLines.push_back(&line);
        }
    }
    boundaries.push_back(mediaLines.size());
    SDP_LOG(6, "::We have found %d Media session in this sdp", mediaCount);

    std::vector<std::string_view> ignoredLines;
    readSessionLines(session, sessionLines, ignoredLines);

    LineList leftoverLines;
    session.m_media.reserve(static_cast<size_t>(mediaCount));
    for (int k = 1; k <= mediaCount; ++k) {
        const size_t first = (k == 1) ? 0 : boundaries[static_cast<size_t>(k) - 2];
        const size_t last = boundaries[static_cast<size_t>(k) - 1];
        SDP_LOG(7, "splitting vector [%d - %d]", static_cast<int>(first), static_cast<int>(last));
        const std::string_view item = static_cast<size_t>(k) > group.m_items.size()
                                          ? std::string_view()
                                          : group.m_items[static_cast<size_t>(k) - 1];
        session.m_media.emplace_back();
        PIMAV_CHK(readMediaSection(session.m_media.back(), mediaLines.data() + first,
                                   mediaLines.data() + last, leftoverLines, group.m_type, item));
    }

    readSessionLines(session, leftoverLines, ignoredLines);

    for (const std::string_view line : ignoredLines) {
        SDP_LOG(4, "Ignored line:[%.*s]", SDP_VIEW(line));
    }

    PIMAV_CHK(checkMinimumCfg(&session));

    m_session = std::move(session);
    m_sdp = text;
    return 0;
}

int SdpConverter::parseSdpSession(SdpSession* session, std::vector<std::string>* lines,
                                  std::vector<std::string>* ignored) {
    if (session == nullptr || lines == nullptr || ignored == nullptr) {
        SDP_LOG(2, "%s:: Parameter is null.", "parseSdpSession");
        return -4;
    }
    std::vector<std::string_view> skipped;
    const std::vector<SdpLine> scanned = scanLines(*lines);
    readSessionLines(*session, pointersTo(scanned), skipped);
    ignored->insert(ignored->end(), skipped.begin(), skipped.end());
    return 0;
}

bool SdpConverter::isMediaLine(const std::string& line) {
    return hasMediaToken(SdpLine(line));
}

int SdpConverter::parseGroups(std::vector<std::string>& lines, SdpGroup& group) {
    return readGroups(scanLines(lines), group);
}

int SdpConverter::getGroups(std::string& token, unsigned int position, std::string& line, SdpGroup& group) {
    (void)position;  // grouping lines begin with their token
    splitGroupItems(std::string_view(line).substr(std::min(token.size(), line.size())), group);
    return 0;
}

// ---- media level ----

int SdpConverter::parseSdpMedia(SdpMedia* media, std::vector<std::string>* lines,
                                std::vector<std::string>* leftovers, SdpGroup::Type groupType,
                                std::string& groupItem) {
    if (media == nullptr || lines == nullptr || leftovers == nullptr) {
        SDP_LOG(2, "%s:: Parameter is null.", "parseSdpMedia");
        return -4;
    }
    const std::vector<SdpLine> scanned = scanLines(*lines);
    const LineList section = pointersTo(scanned);
    LineList left;
    // The lines not taken so far are handed over even when a strict conversion throws.
    const auto handOver = [&left, leftovers] {
        for (const SdpLine* line : left) {
            leftovers->emplace_back(line->text());
        }
    };
    int result;
    try {
        result = readMediaSection(*media, section.data(), section.data() + section.size(), left, groupType,
                                  groupItem);
    } catch (...) {
        handOver();
        throw;
    }
    handOver();
    return result;
}

int SdpConverter::parseChannelOrder(const std::string& line, SdpMedia& media) {
    return readChannelOrder(SdpLine(line), media);
}

int SdpConverter::parseVideoValues(const std::string& line, SdpMedia& media) {
    return readVideoValues(SdpLine(line), media);
}

// ---- minimum configuration ----

int SdpConverter::checkMinimumCfg(SdpSession* session) {
    if (session == nullptr) {
        SDP_LOG(2, "%s:: Parameter is null.", "checkMinimumCfg");
        return -4;
    }
    bool failed = false;
    if (session->m_protocol_version != 0) {
        SDP_USER_MESSAGE("Version in the SDP should be 0. received %d", session->m_protocol_version);
        failed = true;
    }
    if (session->m_media.empty()) {
        SDP_USER_MESSAGE("Unable to find one media session in the SDP. Check your \"m=\" line.");
        failed = true;
    }
    for (SdpMedia& media : session->m_media) {
        if (media.m_local_ip == 0) {
            media.m_local_ip = session->m_local_ip;
            if (media.m_local_ip == 0) {
                SDP_USER_MESSAGE(
                    "Source IP address is a mandatory field in the SDP. Check your \"a=source-filter\" or "
                    "the "
                    "\"o=\"lines.");
                failed = true;
            }
        }
        if (checkMinimumCfgMedia(media) != 0) {
            failed = true;
        }
    }
    return failed ? -1 : 0;
}

int SdpConverter::checkMinimumCfgMedia(SdpMedia& media) {
    bool failed = false;
    if (media.m_transport_ip == 0) {
        SDP_USER_MESSAGE(
            "Destination IP is a mandatory field in the SDP. Check your \"a=source-filter\" line.");
        failed = true;
    }
    if (!media.m_clock_is_ptp) {
        SDP_USER_MESSAGE("Reference clock must be PTP. Check your \"a=ts-refclk\" line.");
        failed = true;
    }
    if (media.m_ptime == 0 && media.m_type == SdpMedia::AUDIO) {
        SDP_USER_MESSAGE("Packet time is a mandatory field in the SDP. Check your \"a=ptime:\" line.");
        failed = true;
    }
    if (media.m_udp_port == 0) {
        SDP_USER_MESSAGE("UDP port is a mandatory field in the SDP. Check your \"m=audio\" line.");
        failed = true;
    }
    if (media.m_rtp_maps.empty() && media.m_type == SdpMedia::AUDIO) {
        SDP_USER_MESSAGE("Unable to find one rtpmap in the SDP. Check your \"a=rtpmap\" line.");
        failed = true;
    }
    for (const SdpMediaRtpMap& map : media.m_rtp_maps) {
        if (map.m_payload_type == 0) {
            SDP_USER_MESSAGE("Payload type is a mandatory field in the SDP. Check your \"m=audio\" line.");
            failed = true;
        }
        if (map.m_channel_freq == 0) {
            SDP_USER_MESSAGE(
                "Channels frequency is a mandatory field in the SDP. Check your \"a=rtpmap:\" line.");
            failed = true;
        }
        if (map.m_number_channels == 0) {
            SDP_USER_MESSAGE(
                "Number of channels is a mandatory field in the SDP. Check your \"a=rtpmap:\" line.");
            failed = true;
        }
    }
    return failed ? -7 : 0;
}
