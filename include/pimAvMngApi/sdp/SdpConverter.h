#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pimAvMngApi/sdp/SdpGroup.h"
#include "pimAvMngApi/sdp/SdpMedia.h"
#include "pimAvMngApi/sdp/SdpSession.h"

/// Converts between the SDP text of an AES67 / SMPTE ST 2110 / ST 2022-6 stream and an
/// SdpSession.
///
/// Parsing is tolerant: lines are recognised by a token found anywhere in them, bad
/// numbers become 0 with a logged message, unknown lines are logged and skipped, and a
/// final check of the minimum configuration decides whether the text is usable. Its
/// refusals are logged at level 2 and also collected by ErrorAuxMsg for the user.
/// Generation writes the text that this parser reads back into the same session.
///
/// The converter keeps the last successfully parsed or generated text and session; a
/// failed parse leaves both unchanged. One thread at a time.
class SdpConverter {
public:
    SdpConverter() = default;
    ~SdpConverter() = default;

    // ---- parsing ----

    /// 0 (session and text replaced), -1 (a check failed), -7 (unsupported group,
    /// non-integer MULTI media identification, or an exception while parsing).
    int parseSdp(const std::string& text);
    /// The parse itself, without the exception guard: exceptions propagate.
    int parseSdpInternal(const std::string& text);
    /// Applies the session-level rules ("v=", "o=", "s=", "t=") to `lines`; lines that
    /// no rule takes are appended to `ignored`. -4 for a null pointer.
    int parseSdpSession(SdpSession* session, std::vector<std::string>* lines, std::vector<std::string>* ignored);
    /// True when the line holds a connection, clock-domain, reference-clock or
    /// source-filter attribute.
    bool isMediaLine(const std::string& line);
    /// Reads the grouping lines (DUP, MULTI-2SI, MULTI-SD); -7 for a PHASED group.
    int parseGroups(std::vector<std::string>& lines, SdpGroup& group);
    /// Splits one grouping line, which begins with `token`, into the group's items.
    int getGroups(std::string& token, unsigned int position, std::string& line, SdpGroup& group);
    /// Reads one media section; lines it does not take are appended to `leftovers`.
    /// 0, -1 (a check of the section failed), -4 (null pointer), -7 (a MULTI group
    /// media identification that is no integer).
    int parseSdpMedia(SdpMedia* media, std::vector<std::string>* lines, std::vector<std::string>* leftovers,
                      SdpGroup::Type groupType, std::string& groupItem);
    /// 1 when the line carried an ST 2110-30 channel order (consumed), else 0.
    int parseChannelOrder(const std::string& line, SdpMedia& media);
    /// 1 when the line was taken as an ST 2110-20 format line (consumed), else 0.
    int parseVideoValues(const std::string& line, SdpMedia& media);
    /// 0 when the session is usable, -1 when not (all problems reported), -4 for null.
    int checkMinimumCfg(SdpSession* session);
    /// 0 when the media description is usable, -7 when not.
    int checkMinimumCfgMedia(SdpMedia& media);

    ///@{
    /// Lenient conversions with strtoul / strtoull semantics (base 0: "0x" hexadecimal,
    /// leading "0" octal, conversion stops at the first foreign character). Empty,
    /// non-numeric and out-of-range texts give 0 and a level-2 message.
    static unsigned int parseUnsigned(const std::string& text);
    static unsigned long long parseUnsigned64(const std::string& text);
///@}

    // ---- access and generation ----

    /// Replaces *out with the stored text; -4 for null.
    int getSdpString(std::string* out) const;
    /// Copies the stored session into `out`.
    int getSdpConfig(SdpSession& out) const;
    /// Stores `session` and generates its text.
    int setSdpConfig(SdpSession& session);
    /// Stores a copy of *session and generates its text; -4 for null.
    int generateSdp(SdpSession* session);
    /// Generates the text of the stored session and stores it; the first negative result
    /// of a media description, else 0. A text field that would be written with a CR, LF
    /// or NUL in it (which would end its line) gives -1, a level-2 log line naming the
    /// field and an empty stored text.
    int generateSdpString();
    /// Appends the session lines ("v=", "o=", "s=", "t=", and "a=group:DUP" with two or
    /// more media descriptions). Returns 0, or -1 (nothing appended) when a field written
    /// there holds a CR, LF or NUL.
    int generateSdpHeader(std::string& out);
    /// Appends the lines of one media description; `isDup` adds its media identification
    /// for the DUP group; -1 (nothing appended) when a field written there holds a CR,
    /// LF or NUL.
    int generateSessionMedia(std::string& out, SdpMedia& media, bool isDup);
    /// Appends the "a=rtpmap:" line of `map`. Returns 0.
    int generateSessionMediaRtpMap(std::string& out, SdpMediaRtpMap& map);
    /// Replaces `out` with the Dante-compatible text (CRLF line ends) of the first media
    /// description and its first RTP map; -1 and `out` empty when there is none, or when a
    /// field written there holds a CR, LF or NUL.
    int generateDanteSdp(std::string& out);
    /// Stores a hand-written text (up to its first NUL) without parsing it.
    int generateManualSessionSdp(std::string& text);

private:
    std::string m_sdp;
    SdpSession m_session;
};
