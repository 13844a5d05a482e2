// SDP text -> SdpSession: splitting, grouping lines, session-level and media-level
// rules, and the minimum-configuration check.

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/ChkLog.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "sdp/SdpBoard.h"
#include "sdp/SdpText.h"

namespace {

const std::string::size_type npos = std::string::npos;

// A message for the user: logged at level 2 and kept for the reply to the user.
#define SDP_USER_MESSAGE(...)                                      \
    do {                                                           \
        Logger::getInstance()->logMessage(2, __VA_ARGS__);         \
        ErrorAuxMsg::getInstance()->addMessage(__VA_ARGS__);       \
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
    while (p != end && sdptext::isSpace(*p)) {
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
        if (value > (max - digit) / base) {
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

unsigned int toUnsigned(const std::string& text, size_t begin, size_t end = npos) {
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
            Logger::log(2, "trying to convert to integer a empty string. That is bad.");
            return 0;
        case Conversion::Invalid:
            if (Logger::isEnabled(2)) {
                Logger::log(2, "trying to convert to integer invalid value: %s", text.substr(begin, end - begin).c_str());
            }
            return 0;
        case Conversion::OutOfRange:
            if (Logger::isEnabled(2)) {
                Logger::log(2, "trying to convert to integer out of range: %s", text.substr(begin, end - begin).c_str());
            }
            return 0;
    }
    return 0;
}

unsigned long long toUnsigned64(const std::string& text, size_t begin, size_t end = npos) {
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
            Logger::log(2, "trying to convert to long long with an empty string. That is bad.");
            return 0;
        case Conversion::Invalid:
            if (Logger::isEnabled(2)) {
                Logger::log(2, "trying to convert to long long invalid value: %s",
                            text.substr(begin, end - begin).c_str());
            }
            return 0;
        case Conversion::OutOfRange:
            if (Logger::isEnabled(2)) {
                Logger::log(2, "trying to convert to long long out of range: %s",
                            text.substr(begin, end - begin).c_str());
            }
            return 0;
    }
    return 0;
}

// Formatted stream extraction of an unsigned 64-bit decimal number: white space is
// skipped, a sign is accepted (a minus wraps), no digit gives 0, overflow gives the
// largest value.
unsigned long long extractUnsigned64(const std::string& text, size_t begin, size_t end) {
    while (begin < end && sdptext::isSpace(text[begin])) {
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

bool contains(const std::string& line, const char* token) { return line.find(token) != npos; }

// Value of an fmtp key: from the end of the key to the next ";" searched from the key,
// or to the end of the line.
enum class FmtpKey { Missing, AtLineEnd, Found };

FmtpKey fmtpValue(const std::string& line, const std::string& key, std::string& value) {
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

}  // namespace

// ---- lenient conversions ----

unsigned int SdpConverter::parseUnsigned(const std::string& text) { return toUnsigned(text, 0); }

unsigned long long SdpConverter::parseUnsigned64(const std::string& text) { return toUnsigned64(text, 0); }

// ---- session level ----

int SdpConverter::parseSdp(const std::string& text) {
    try {
        const int result = parseSdpInternal(text);
        Logger::log(6, "SDP PARSE returned %d", result);
        return result;
    } catch (...) {
        Logger::log(2, "SDP PARSE threw exception");
        return -7;
    }
}

int SdpConverter::parseSdpInternal(const std::string& text) {
    SdpSession session;
    Logger::log(7, "SDP:: generating from SDP String format");

    std::vector<std::string> lines;
    lines.reserve(32);
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == npos) {
            end = text.size();
        }
        if (end > start) {
            lines.emplace_back(text, start, end - start);
        }
        start = end + 1;
    }
    Logger::log(7, "SDP:: incoming SDP was split into %d lines", static_cast<int>(lines.size()));

    SdpGroup group;
    PIMAV_CHK(parseGroups(lines, group));

    std::vector<std::string> sessionLines;
    std::vector<std::string> mediaLines;
    std::vector<size_t> boundaries;
    std::vector<std::string> leftoverLines;
    std::vector<std::string> ignoredLines;
    sessionLines.reserve(lines.size());
    mediaLines.reserve(lines.size());
    int mediaCount = 0;
    for (std::string& line : lines) {
        const size_t cut = line.find_first_of("\n\r");
        if (cut != npos) {
            line.erase(cut);
        }
        if (contains(line, "m=")) {
            Logger::log(7, "::Media found::%d", static_cast<int>(mediaLines.size()));
            if (mediaCount > 0) {
                boundaries.push_back(mediaLines.size());
            }
            ++mediaCount;
            mediaLines.push_back(std::move(line));
        } else if (mediaCount > 0) {
            mediaLines.push_back(std::move(line));
        } else if (group.m_items.empty() && isMediaLine(line)) {
            mediaLines.push_back(std::move(line));
        } else {
            sessionLines.push_back(std::move(line));
        }
    }
    boundaries.push_back(mediaLines.size());
    Logger::log(6, "::We have found %d Media session in this sdp", mediaCount);

    parseSdpSession(&session, &sessionLines, &ignoredLines);

    session.m_media.reserve(static_cast<size_t>(mediaCount));
    std::string noItem;
    for (int k = 1; k <= mediaCount; ++k) {
        const size_t first = (k == 1) ? 0 : boundaries[static_cast<size_t>(k) - 2];
        const size_t last = boundaries[static_cast<size_t>(k) - 1];
        Logger::log(7, "splitting vector [%d - %d]", static_cast<int>(first), static_cast<int>(last));
        std::vector<std::string> section(std::make_move_iterator(mediaLines.begin() + static_cast<long>(first)),
                                         std::make_move_iterator(mediaLines.begin() + static_cast<long>(last)));
        SdpMedia media;
        if (static_cast<size_t>(k) > group.m_items.size()) {
            PIMAV_CHK(parseSdpMedia(&media, &section, &leftoverLines, group.m_type, noItem));
        } else {
            PIMAV_CHK(parseSdpMedia(&media, &section, &leftoverLines, group.m_type,
                                    group.m_items[static_cast<size_t>(k) - 1]));
        }
        session.m_media.push_back(std::move(media));
    }

    parseSdpSession(&session, &leftoverLines, &ignoredLines);

    if (Logger::isEnabled(4)) {
        for (const std::string& line : ignoredLines) {
            Logger::log(4, "Ignored line:[%s]", line.c_str());
        }
    }

    PIMAV_CHK(checkMinimumCfg(&session));

    m_session = std::move(session);
    m_sdp = text;
    return 0;
}

int SdpConverter::parseSdpSession(SdpSession* session, std::vector<std::string>* lines,
                                  std::vector<std::string>* ignored) {
    if (session == nullptr || lines == nullptr || ignored == nullptr) {
        Logger::log(2, "%s:: Parameter is null.", "parseSdpSession");
        return -4;
    }
    for (std::string& line : *lines) {
        size_t at;
        if ((at = line.find("v=")) != npos) {
            session->m_protocol_version = static_cast<uint8_t>(toUnsigned(line, at + 2));
            Logger::log(7, "::Version found::%d", session->m_protocol_version);
        } else if ((at = line.find("o=")) != npos) {
            const size_t userBegin = at + 2;
            const size_t userEnd = line.find(' ', userBegin);
            session->m_user_name.assign(line, userBegin, userEnd == npos ? npos : userEnd - userBegin);
            Logger::log(7, "::User name found::%s", session->m_user_name.c_str());
            if (userEnd == npos) {
                continue;
            }
            const size_t idBegin = userEnd + 1;
            const size_t idEnd = line.find(' ', idBegin);
            session->m_session_id = extractUnsigned64(line, idBegin, idEnd == npos ? line.size() : idEnd);
            Logger::log(7, "::Session id found::%llu", static_cast<unsigned long long>(session->m_session_id));
            if (idEnd == npos) {
                continue;
            }
            const size_t versionBegin = idEnd + 1;
            const size_t versionEnd = line.find(' ', versionBegin);
            if (versionEnd != npos) {
                session->m_session_version = toUnsigned64(line, versionBegin, versionEnd);
                Logger::log(7, "::Session version found::%llu",
                            static_cast<unsigned long long>(session->m_session_version));
            }
            const size_t ip = line.find("IN IP4 ", versionBegin);
            if (ip != npos) {
                const std::string address = line.substr(ip + 7);
                if (sdptext::parseIp(address.c_str(), session->m_local_ip)) {
                    Logger::log(7, "::Source IP found [%s]", address.c_str());
                } else {
                    Logger::log(2, "Error parsing IP [%s]: invalid IP address", address.c_str());
                    Logger::log(5, "::Source IP found but it is invalid: [%s]", address.c_str());
                }
            }
        } else if ((at = line.find("s=")) != npos) {
            session->m_info.assign(line, at + 2, npos);
            Logger::log(7, "::Description found::%s", session->m_info.c_str());
        } else if ((at = line.find("t=")) != npos) {
            const size_t startBegin = at + 2;
            const size_t space = line.find(' ', startBegin);
            session->m_time.m_start = toUnsigned(line, startBegin, space);
            session->m_time.m_stop = (space == npos) ? 0 : toUnsigned(line, space + 1);
            Logger::log(7, "::start time %d Stop time %d", session->m_time.m_start, session->m_time.m_stop);
        } else {
            ignored->push_back(line);
        }
    }
    return 0;
}

bool SdpConverter::isMediaLine(const std::string& line) {
    return contains(line, "c=IN IP4 ") || contains(line, "a=clock-domain:") || contains(line, "a=ts-refclk:") ||
           contains(line, "a=source-filter");
}

int SdpConverter::parseGroups(std::vector<std::string>& lines, SdpGroup& group) {
    static const std::string kDup = "a=group:DUP ";
    static const std::string kMulti2si = std::string("a=group:") + "MULTI-2SI" + " ";
    static const std::string kMultiSd = std::string("a=group:") + "MULTI-SD" + " ";
    static const std::string kPhased = std::string("a=group:") + "PHASED" + " ";
    bool multiSeen = false;
    for (std::string& line : lines) {
        if (line.find("a=group:") == npos) {
            continue;  // none of the tokens below can match
        }
        size_t at;
        if (!multiSeen && (at = line.find(kDup)) != npos) {
            group.m_type = SdpGroup::GROUP_DUP;
            std::string token = kDup;
            getGroups(token, static_cast<unsigned int>(at), line, group);
        }
        if ((at = line.find(kMulti2si)) != npos) {
            group.m_type = SdpGroup::GROUP_MULTI_2SI;
            std::string token = kMulti2si;
            getGroups(token, static_cast<unsigned int>(at), line, group);
            multiSeen = true;
        }
        if ((at = line.find(kMultiSd)) != npos) {
            group.m_type = SdpGroup::GROUP_MULTI_SD;
            std::string token = kMultiSd;
            getGroups(token, static_cast<unsigned int>(at), line, group);
            multiSeen = true;
        }
        if (line.find(kPhased) != npos) {
            Logger::log(2, "Group %s not supported", "PHASED");
            return -7;
        }
    }
    return 0;
}

int SdpConverter::getGroups(std::string& token, unsigned int position, std::string& line, SdpGroup& group) {
    (void)position;  // grouping lines begin with their token
    std::string items = line.substr(token.size() < line.size() ? token.size() : line.size());
    Logger::log(6, "SDP:: found group in SDP %s", items.c_str());
    size_t begin = 0;
    size_t space;
    while ((space = items.find(' ', begin)) != npos) {
        group.m_items.push_back(sdptext::trim(items, begin, space));
        Logger::log(7, "SDP:: parsed group item %s", group.m_items.back().c_str());
        begin = space + 1;
    }
    group.m_items.push_back(sdptext::trim(items, begin));
    Logger::log(7, "SDP:: parsed last group item %s", group.m_items.back().c_str());
    return 0;
}

// ---- media level ----

int SdpConverter::parseSdpMedia(SdpMedia* media, std::vector<std::string>* lines,
                                std::vector<std::string>* leftovers, SdpGroup::Type groupType,
                                std::string& groupItem) {
    if (media == nullptr || lines == nullptr || leftovers == nullptr) {
        Logger::log(2, "%s:: Parameter is null.", "parseSdpMedia");
        return -4;
    }
    for (std::string& line : *lines) {
        bool consumed = false;
        size_t at;

        // First stage: four independent tests.
        if ((at = line.find("m=")) != npos) {
            consumed = true;
            const size_t typeBegin = at + 2;
            const size_t typeEnd = line.find(' ', typeBegin);
            const size_t typeLen = (typeEnd == npos ? line.size() : typeEnd) - typeBegin;
            const std::string typeField = line.substr(typeBegin, typeLen);
            media->m_type = SdpMedia::NOT_RECOGNIZED;
            if (typeField.find("audio") != npos) {
                media->m_type = SdpMedia::AUDIO;
            }
            if (typeField.find("video") != npos) {
                media->m_type = SdpMedia::VIDEO;
            }
            Logger::log(7, "::Media Type found::%d", static_cast<int>(media->m_type));
            if (typeEnd != npos) {
                const size_t portBegin = typeEnd + 1;
                const size_t portEnd = line.find(' ', portBegin);
                media->m_udp_port = toUnsigned(line, portBegin, portEnd);
                Logger::log(7, "::UDP port found::%d", media->m_udp_port);
                if (portEnd != npos) {
                    const size_t protoBegin = portEnd + 1;
                    const size_t protoEnd = line.find(' ', protoBegin);
                    if (protoEnd != npos) {
                        media->m_protocol.assign(line, protoBegin, protoEnd - protoBegin);
                        Logger::log(7, "::Protocol found::%s", media->m_protocol.c_str());
                        media->m_payload_types.clear();
                        size_t fieldBegin = protoEnd + 1;
                        for (;;) {
                            const size_t fieldEnd = line.find(' ', fieldBegin);
                            const uint8_t payloadType = static_cast<uint8_t>(toUnsigned(line, fieldBegin, fieldEnd));
                            media->m_payload_types.push_back(payloadType);
                            Logger::log(7, "::[Media] Found payload type [%d]", payloadType);
                            if (fieldEnd == npos) {
                                break;
                            }
                            fieldBegin = fieldEnd + 1;
                        }
                        Logger::log(7, "::%d RTP map(s) expected::", static_cast<int>(media->m_payload_types.size()));
                    }
                }
            }
        }
        if ((at = line.find("a=rtpmap:")) != npos) {
            consumed = true;
            SdpMediaRtpMap map;
            const size_t ptBegin = at + 9;
            const size_t ptEnd = line.find(' ', ptBegin);
            map.m_payload_type = static_cast<uint8_t>(toUnsigned(line, ptBegin, ptEnd));
            Logger::log(7, "::[RTP map] Payload type found::%d", map.m_payload_type);
            const size_t nameBegin = (ptEnd == npos) ? line.size() : ptEnd + 1;
            const size_t slash1 = line.find('/', nameBegin);
            const std::string name = line.substr(nameBegin, slash1 == npos ? npos : slash1 - nameBegin);
            Logger::log(7, "::Codec found::%s", name.c_str());
            if (map.m_codec.setCodec(name) < 0) {
                Logger::log(5, "::Codec not recognized, using %s as standard::%s", map.m_codec.toString().c_str(),
                            name.c_str());
            }
            const size_t rateBegin = (slash1 == npos) ? line.size() : slash1 + 1;
            const size_t slash2 = (slash1 == npos) ? npos : line.find('/', rateBegin);
            map.m_channel_freq = toUnsigned(line, rateBegin, slash2);
            Logger::log(7, "::Sampling frequency found::%d", map.m_channel_freq);
            if (sdpboard::isAudioCodec(map.m_codec)) {
                if (slash2 == npos) {
                    // No channel field: the whole line is no number.
                    Logger::log(2, "trying to convert to integer invalid value: %s", line.c_str());
                    map.m_number_channels = 0;
                } else {
                    map.m_number_channels = static_cast<uint16_t>(toUnsigned(line, slash2 + 1));
                }
            } else {
                map.m_number_channels = 1;
            }
            Logger::log(7, "::Number of channels found::%d", map.m_number_channels);
            media->m_rtp_maps.push_back(std::move(map));
        }
        if ((at = line.find("a=framecount:")) != npos) {
            consumed = true;
            media->m_number_samples = static_cast<uint8_t>(toUnsigned(line, at + 13));
            Logger::log(7, "::Number of samples found::%d", media->m_number_samples);
        }
        if ((at = line.find("a=ptime:")) != npos) {
            consumed = true;
            media->m_ptime = std::stof(line.substr(at + 8));
            Logger::log(7, "::Packet time found::%4.3f", static_cast<double>(media->m_ptime));
        }

        // Second stage: the first token found decides.
        if ((at = line.find("i=")) != npos) {
            media->m_info.assign(line, at + 2, npos);
            Logger::log(7, "::Description found::%s", media->m_info.c_str());
        } else if ((at = line.find("a=mid:")) != npos) {
            media->m_group = sdptext::trim(line, at + 6);
            if (groupType == SdpGroup::GROUP_MULTI_2SI || groupType == SdpGroup::GROUP_MULTI_SD) {
                bool integer = true;
                try {
                    (void)std::stoi(media->m_group);
                } catch (const std::exception&) {
                    integer = false;
                }
                if (!integer) {
                    Logger::log(2, "Media identification in group is invalid and needs to be an integer: %s",
                                media->m_group.c_str());
                    return -7;
                }
            }
            media->m_group_type = groupType;
            Logger::log(7, "::Group found::%s", media->m_group.c_str());
        } else if ((at = line.find("a=ts-refclk:")) != npos) {
            const size_t sourceBegin = at + 12;
            const size_t equals = line.find('=', sourceBegin);
            const size_t sourceEnd = (equals == npos) ? line.size() : equals;
            if (line.substr(sourceBegin, sourceEnd - sourceBegin).find("ptp") == npos) {
                if (Logger::isEnabled(2)) {
                    Logger::log(2, "::Clock reference is not PTP!! we do not support that yet.::%s",
                                line.substr(sourceBegin, sourceEnd - sourceBegin).c_str());
                }
            } else {
                media->m_clock_is_ptp = true;
                const size_t colon1 = (equals == npos) ? npos : line.find(':', equals);
                if (colon1 != npos) {
                    const size_t colon2 = line.find(':', colon1 + 1);
                    media->m_ptp_gm_id.assign(line, colon1 + 1, colon2 == npos ? npos : colon2 - colon1 - 1);
                    for (char& c : media->m_ptp_gm_id) {
                        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                    }
                    Logger::log(7, "::GM ID found::%s", media->m_ptp_gm_id.c_str());
                    if (colon2 != npos) {
                        const size_t domainBegin = colon2 + 1;
                        if (line.find("domain-nmbr", domainBegin) != npos) {
                            const size_t eq = line.find('=', domainBegin);
                            media->m_ptp_domain =
                                static_cast<uint8_t>(toUnsigned(line, eq == npos ? line.size() : eq + 1));
                            Logger::log(7, "::[AES67-2015]Ptp domain found::%d", media->m_ptp_domain);
                        } else {
                            media->m_ptp_domain = static_cast<uint8_t>(toUnsigned(line, domainBegin));
                            Logger::log(7, "::[AES67-2013]Ptp domain found::%d", media->m_ptp_domain);
                        }
                    }
                }
            }
        } else if ((at = line.find("c=IN IP4 ")) != npos) {
            const size_t addressBegin = at + 9;
            const size_t slash = line.find('/', addressBegin);
            const std::string address = line.substr(addressBegin, slash == npos ? npos : slash - addressBegin);
            Logger::log(7, "::Destination IP found::%s", address.c_str());
            if (!sdptext::parseIp(address.c_str(), media->m_transport_ip)) {
                Logger::log(2, "Error parsing IP [%s]: invalid IP address", address.c_str());
                Logger::log(5, "::Destination IP found but it is invalid: [%s]", address.c_str());
            }
            if (slash != npos) {
                media->m_ttl = static_cast<uint8_t>(toUnsigned(line, slash + 1));
                Logger::log(7, "::TTL found::%d", media->m_ttl);
            }
        } else if ((at = line.find("a=source-filter")) != npos) {
            const size_t ip4 = line.find("IP4 ");
            if (ip4 != npos) {
                const size_t destBegin = ip4 + 4;
                const size_t space = line.find(' ', destBegin);
                const std::string destination = line.substr(destBegin, space == npos ? npos : space - destBegin);
                const std::string source = (space == npos) ? std::string() : line.substr(space + 1);
                if (sdptext::parseIp(destination.c_str(), media->m_transport_ip)) {
                    if (Logger::isEnabled(7)) {
                        Logger::log(7, "::Destination IP found::%s", sdptext::IpText(media->m_transport_ip).c_str());
                    }
                } else {
                    Logger::log(2, "Error parsing IP [%s]: invalid IP address", destination.c_str());
                    Logger::log(5, "::Destination IP found but it is invalid: [%s]", destination.c_str());
                }
                if (sdptext::parseIp(source.c_str(), media->m_local_ip)) {
                    if (Logger::isEnabled(7)) {
                        Logger::log(7, "::Source IP found::%s", sdptext::IpText(media->m_local_ip).c_str());
                    }
                } else {
                    Logger::log(2, "Error parsing IP [%s]: invalid IP address", source.c_str());
                    Logger::log(5, "::Source IP found but it is invalid: [%s]", source.c_str());
                }
            }
        } else if ((at = line.find("a=mediaclk:")) != npos) {
            const size_t equals = line.find('=', at + 11);
            media->m_media_clock = toUnsigned(line, equals == npos ? line.size() : equals + 1);
            Logger::log(7, "::Media clock found::%d", media->m_media_clock);
        } else if ((at = line.find("a=clock-domain:")) != npos) {
            const size_t space = line.find(' ', at + 15);
            if (space != npos) {
                media->m_ptp_domain = static_cast<uint8_t>(toUnsigned(line, space + 1));
                Logger::log(7, "::clock-domain found::%d", media->m_ptp_domain);
            }
        } else if (parseChannelOrder(line, *media) == 0 && parseVideoValues(line, *media) == 0 && !consumed) {
            leftovers->push_back(line);
        }
    }

    if (media->m_type == SdpMedia::VIDEO) {
        const char* wanted = sdpboard::isDamsonTr04() ? "SMPTE2022-6" : "raw";
        const std::string codec = media->m_rtp_maps.empty() ? std::string() : media->m_rtp_maps[0].m_codec.toString();
        if (media->m_rtp_maps.empty() || codec != wanted) {
            Logger::log(2, "::Stream is video, but not valid type %s.", codec.c_str());
            return -1;
        }
        if (media->m_video.checkVideoDetailConsistency() < 0) {
            Logger::log(2, "::Stream is video, but no valid video format found.");
            return -1;
        }
        if (Logger::isEnabled(7)) {
            Logger::log(7, "::Video Format found ::%s", media->m_video.toString().c_str());
        }
    }
    if (!groupItem.empty() && groupItem != media->m_group) {
        Logger::log(2, "::Group (%s) delimiting the media type does not match the order set in a=group::DUP (%s)",
                    media->m_group.c_str(), groupItem.c_str());
        return -1;
    }
    return 0;
}

int SdpConverter::parseChannelOrder(const std::string& line, SdpMedia& media) {
    static const std::string kOrder = "channel-order=SMPTE2110.(";
    if (line.size() < 7 || line.find("a=fmtp:") == npos) {
        return 0;
    }
    const size_t at = line.find(kOrder, 7);
    if (at == npos) {
        return 0;
    }
    Logger::log(7, "::channel-order under a=fmtp found::%s", line.c_str());
    size_t begin = at + kOrder.size();
    size_t comma;
    while ((comma = line.find(',', begin)) != npos) {
        media.m_channel_order.push_back(sdptext::trim(line, begin, comma));
        begin = comma + 1;
    }
    const size_t close = line.find(')', begin);
    media.m_channel_order.push_back(sdptext::trim(line, begin, close));
    if (Logger::isEnabled(7)) {
        Logger::log(7, "::the following audio groups were found:");
        for (const std::string& group : media.m_channel_order) {
            Logger::log(7, "  %s", group.c_str());
        }
    }
    return 1;
}

int SdpConverter::parseVideoValues(const std::string& line, SdpMedia& media) {
    if (line.find("a=fmtp:") == npos) {
        if (line.find("a=framerate:") != npos) {
            // The rate written on this line is not taken over; a later fmtp line sets it.
            media.m_video.setVideoFrameRate(0);
            Logger::log(7, "::Frame rate found::%d", 0);
            return 1;
        }
        return 0;
    }

    struct Key {
        const char* key;
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
    std::string value;
    for (size_t i = 0; i < sizeof(kKeys) / sizeof(kKeys[0]); ++i) {
        const Key& key = kKeys[i];
        switch (fmtpValue(line, key.key, value)) {
            case FmtpKey::Missing:
                Logger::log(key.optional ? 3 : 2, "%s", key.missing);
                malformed = malformed || !key.optional;
                continue;
            case FmtpKey::AtLineEnd:
                Logger::log(2, "%s", key.invalid);
                malformed = true;
                continue;
            case FmtpKey::Found:
                break;
        }
        switch (i) {
            case 0:
                width = std::stoi(value);
                break;
            case 1:
                height = std::stoi(value);
                break;
            case 2:
                media.m_depth = static_cast<uint32_t>(std::stoi(value));
                break;
            case 3:
                media.m_colorimetry = value;
                break;
            case 4:
                media.m_packing_mode = value;
                break;
            case 5:
                media.m_sender_type = value;
                break;
            default:
                media.m_sampling = value;
                break;
        }
    }

    bool interlaced = line.find("interlace") != npos;
    if (line.find("interlace=") != npos) {
        switch (fmtpValue(line, "interlace=", value)) {
            case FmtpKey::AtLineEnd:
                Logger::log(2, "SDP fmtp line: interlace is invalid");
                malformed = true;
                break;
            case FmtpKey::Found:
                interlaced = std::stoi(value) != 0;
                break;
            case FmtpKey::Missing:
                break;
        }
    }

    int frameRate = 0;
    if (line.find("exactframerate=") != npos) {
        Logger::log(6, "framerate found under a=fmtp as exactframerate");
        if (fmtpValue(line, "exactframerate=", value) == FmtpKey::AtLineEnd) {
            Logger::log(2, "SDP fmtp line: exactframerate is invalid");
            value.clear();
        }
        const size_t slash = value.find('/');
        if (slash != npos) {
            const float numerator = std::stof(value.substr(0, slash));
            const float denominator = std::stof(value.substr(slash + 1));
            Logger::log(7, "framerate found %f/%f", static_cast<double>(numerator), static_cast<double>(denominator));
            frameRate = saturatingInt(numerator / denominator);
        } else {
            frameRate = std::stoi(value);
            Logger::log(7, "framerate found %d", frameRate);
        }
    } else if (line.find("framerate=") != npos) {
        Logger::log(6, "framerate found under a=fmtp as framerate");
        if (fmtpValue(line, "framerate=", value) == FmtpKey::AtLineEnd) {
            Logger::log(2, "SDP fmtp line: framerate is invalid");
            malformed = true;
        } else {
            frameRate = std::stoi(value);
        }
    }

    if (malformed) {
        Logger::log(2, "::Format found but it is malformed: <%s>", line.c_str());
        return 1;
    }

    media.m_video.setVideoWidth(static_cast<unsigned int>(width));
    media.m_video.setVideoHeight(static_cast<unsigned int>(height));
    media.m_video.setVideoInterlace(interlaced);
    if (Logger::isEnabled(7)) {
        Logger::log(7, "::Format found::");
        Logger::log(7, "\t width:         %d", width);
        Logger::log(7, "\t height:        %d", height);
        Logger::log(7, "\t interlace:     %s", interlaced ? "true" : "false");
        Logger::log(7, "\t depth:         %d", media.m_depth);
        Logger::log(7, "\t colorimetry:   %s", media.m_colorimetry.c_str());
        Logger::log(7, "\t sampling:      %s", media.m_sampling.c_str());
        Logger::log(7, "\t framerate:     %d", frameRate);
    }
    if (media.m_video.setVideoFrameRate(frameRate) < 0) {
        Logger::log(2, "::Format found but framerate is not supported: <%s>", line.c_str());
        return 0;
    }
    return 1;
}

// ---- minimum configuration ----

int SdpConverter::checkMinimumCfg(SdpSession* session) {
    if (session == nullptr) {
        Logger::log(2, "%s:: Parameter is null.", "checkMinimumCfg");
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
                    "Source IP address is a mandatory field in the SDP. Check your \"a=source-filter\" or the "
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
        SDP_USER_MESSAGE("Destination IP is a mandatory field in the SDP. Check your \"a=source-filter\" line.");
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
            SDP_USER_MESSAGE("Channels frequency is a mandatory field in the SDP. Check your \"a=rtpmap:\" line.");
            failed = true;
        }
        if (map.m_number_channels == 0) {
            SDP_USER_MESSAGE("Number of channels is a mandatory field in the SDP. Check your \"a=rtpmap:\" line.");
            failed = true;
        }
    }
    return failed ? -7 : 0;
}
