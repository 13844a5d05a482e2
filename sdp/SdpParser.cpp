// SDP text -> SdpSession: the text is split into scanned lines (SdpLines.h), the lines
// are grouped into the session part and the media sections, and the rules
// (SdpSessionRules.cpp, SdpMediaRules.cpp, SdpFmtpRules.cpp) give them their meaning. The
// minimum check (SdpMinimumCheck.cpp) decides whether the result is usable.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "pimAvMngApi/sdp/SdpConverter.h"
#include "platform/ChkLog.h"
#include "sdp/SdpLog.h"
#include "sdp/SdpNumbers.h"
#include "sdp/SdpRules.h"

using namespace pimav::detail;

// ---- lenient conversions ----

unsigned int SdpConverter::parseUnsigned(const std::string& text) {
    return lenientUnsigned<unsigned int>(text);
}

unsigned long long SdpConverter::parseUnsigned64(const std::string& text) {
    return lenientUnsigned<unsigned long long>(text);
}

// ---- the whole text ----

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

    std::vector<SdpLine> lines = scanText(text);
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

// ---- the steps, on lines given one by one ----

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
