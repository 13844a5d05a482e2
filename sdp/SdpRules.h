#pragma once

// The rules that give the scanned lines of an SDP text their meaning: the session rules
// and grouping lines (SdpSessionRules.cpp) and the media rules (SdpMediaRules.cpp,
// SdpFmtpRules.cpp).

#include <string_view>
#include <vector>

#include "pimAvMngApi/sdp/SdpGroup.h"
#include "pimAvMngApi/sdp/SdpMedia.h"
#include "pimAvMngApi/sdp/SdpSession.h"
#include "sdp/SdpLines.h"

namespace pimav::detail {

// ---- session level ----

// Splits the items of a grouping line (the text after its semantics) into the group.
void splitGroupItems(std::string_view items, SdpGroup& group);
// Reads the grouping lines (DUP, MULTI-2SI, MULTI-SD); -7 for a PHASED group.
int readGroups(const std::vector<SdpLine>& lines, SdpGroup& group);
// The session-level rules; lines that none takes are appended to `ignored`.
void readSessionLines(SdpSession& session, const LineList& lines, std::vector<std::string_view>& ignored);

// ---- media level ----

// True for a line that belongs to a media description wherever it stands: a connection,
// clock-domain, reference-clock or source-filter line.
bool hasMediaToken(const SdpLine& line);
// One media section, lines [first, last); lines that no rule takes are appended to
// `leftovers`. 0, -1 (a check of the section failed), -7 (a MULTI group media
// identification that is no integer).
int readMediaSection(SdpMedia& media, const SdpLine* const* first, const SdpLine* const* last,
                     LineList& leftovers, SdpGroup::Type groupType, std::string_view groupItem);
// 1 when the line carried an ST 2110-30 channel order (consumed), else 0.
int readChannelOrder(const SdpLine& line, SdpMedia& media);
// 1 when the line was taken as an ST 2110-20 format line (consumed), else 0.
int readVideoValues(const SdpLine& line, SdpMedia& media);

}  // namespace pimav::detail
