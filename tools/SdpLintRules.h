#pragma once

// The lint rules of `sdptool lint`: one row per rule with its stable id, severity, the
// profiles that enable it, the clause it comes from and its message. This table is the
// only list of rules: the checks name rows by their enumerator, the report and
// docs/sdp-lint.md are written from the rows.

#include <cstddef>
#include <string>

namespace pimav::detail {

enum class LintSeverity { Error, Warning, Info };

// Profiles as bits; a rule whose mask is kLintGeneral runs under every profile and
// without one.
enum LintProfileBit : unsigned {
    kLintGeneral = 0,
    kLintAes67 = 1u << 0,
    kLintSt2110_20 = 1u << 1,
    kLintSt2110_30 = 1u << 2,
    kLintSt2022_7 = 1u << 3,
    kLintDante = 1u << 4,
};

struct LintProfileName {
    const char* name;
    unsigned bit;
};
constexpr LintProfileName kLintProfiles[] = {
    {"aes67", kLintAes67},         {"st2110-20", kLintSt2110_20}, {"st2110-30", kLintSt2110_30},
    {"st2022-7", kLintSt2022_7},   {"dante", kLintDante},
};

constexpr unsigned kLintStrict = kLintAes67 | kLintSt2110_20 | kLintSt2110_30 | kLintSt2022_7 | kLintDante;
constexpr unsigned kLintSt2110 = kLintSt2110_20 | kLintSt2110_30;

// X(enumerator, id, severity, profiles, clause, message)
#define PIMAV_LINT_RULES(X) \
    X(LineSyntax, "sdp-line-syntax", Error, kLintGeneral, "RFC 4566 §5", \
      "line is not <type>=<value> with a one-letter lower-case type") \
    X(LineTypeUnknown, "sdp-line-type-unknown", Error, kLintGeneral, "RFC 4566 §5", \
      "unknown line type: an RFC 4566 parser ignores the whole description") \
    X(LineOrder, "sdp-line-order", Warning, kLintGeneral, "RFC 4566 §5", \
      "line out of the order v o s i u e p c b t r z k a (m i c b k a in a media)") \
    X(RequiredLineMissing, "sdp-required-line-missing", Error, kLintGeneral, "RFC 4566 §5", \
      "a required session line is missing") \
    X(Version, "sdp-version", Error, kLintGeneral, "RFC 4566 §5.1", "v= is not 0") \
    X(OriginSyntax, "sdp-origin-syntax", Error, kLintGeneral, "RFC 4566 §5.2", \
      "o= is not <username> <sess-id> <sess-version> IN IP4|IP6 <address>") \
    X(SessionIdRange, "sdp-session-id-range", Warning, kLintGeneral, "RFC 3264 §5", \
      "session id or version does not fit a 64-bit signed integer") \
    X(NumberLeadingZero, "sdp-number-leading-zero", Warning, kLintGeneral, "RFC 4566 §9", \
      "number with leading zeros: readers of C-style numbers take it as octal") \
    X(SessionNameEmpty, "sdp-session-name-empty", Warning, kLintGeneral, "RFC 4566 §5.3", \
      "s= is empty (a single space stands for no name)") \
    X(ConnectionMissing, "sdp-connection-missing", Error, kLintGeneral, "RFC 4566 §5.7", \
      "media without c= at media or session level") \
    X(ConnectionSyntax, "sdp-connection-syntax", Error, kLintGeneral, "RFC 4566 §5.7", \
      "c= is not IN IP4|IP6 <address>[/<ttl>[/<count>]]") \
    X(ConnectionSessionOnly, "sdp-connection-session-only", Info, kLintGeneral, "RFC 4566 §5.7", \
      "c= only at session level: receivers that read it per media miss it") \
    X(TtlUnicast, "sdp-ttl-unicast", Error, kLintGeneral, "RFC 4566 §5.7", "/TTL on a unicast address") \
    X(TtlMissing, "sdp-ttl-missing", Error, kLintGeneral, "RFC 4566 §5.7", \
      "IPv4 multicast address without /TTL") \
    X(SsmSourceFilterMissing, "sdp-ssm-source-filter-missing", Error, kLintGeneral, "RFC 4570 §3", \
      "source-specific multicast address (232.0.0.0/8) without a=source-filter") \
    X(SourceFilterSyntax, "sdp-source-filter-syntax", Warning, kLintGeneral, "RFC 4570 §3", \
      "a=source-filter: is not ' incl|excl IN IP4|IP6 <destination> <source>...'") \
    X(SourceFilterDestination, "sdp-source-filter-destination", Warning, kLintGeneral, "RFC 4570 §3", \
      "a=source-filter destination differs from the c= address") \
    X(LineEndMixed, "sdp-line-end-mixed", Warning, kLintGeneral, "RFC 4566 §5", "line ends mix CRLF and LF") \
    X(FinalLineEnd, "sdp-final-line-end", Warning, kLintGeneral, "RFC 4566 §5", \
      "last line has no line end: strict readers drop it") \
    X(LineEndLf, "sdp-line-end-lf", Warning, kLintStrict, "RFC 4566 §5", "lines end in LF instead of CRLF") \
    X(RtpmapMissing, "sdp-rtpmap-missing", Error, kLintGeneral, "RFC 4566 §6", \
      "dynamic payload type (96-127) without a=rtpmap") \
    X(EncodingCase, "sdp-encoding-case", Warning, kLintGeneral, "RFC 4855 §3", \
      "encoding name not in its registered case: receivers that compare case-sensitively refuse it") \
    X(FmtpTrailingSemicolon, "sdp-fmtp-trailing-semicolon", Warning, kLintGeneral, "RFC 4566 §6", \
      "format line ends in ';': strict readers see an empty parameter") \
    X(PtimeFractional, "sdp-ptime-fractional", Info, kLintGeneral, "RFC 4566 §6", \
      "fractional a=ptime: readers that take an integer truncate it") \
    X(GmidLowerCase, "sdp-refclk-gmid-lower-case", Warning, kLintGeneral, "RFC 7273 §4.8", \
      "grandmaster id in lower case: EUI-64 is written in upper-case hexadecimal") \
    X(MediaclkOffset, "sdp-mediaclk-offset", Info, kLintGeneral, "RFC 7273 §5.8", \
      "non-zero a=mediaclk:direct= offset: receivers that take direct=0 for granted misplace the stream") \
    X(MediaclkOffsetLarge, "sdp-mediaclk-offset-large", Warning, kLintGeneral, "RFC 7273 §5.8", \
      "a=mediaclk:direct= offset of 2^31 or more: readers of a signed 32-bit value wrap it") \
    X(GroupTagUnmatched, "sdp-group-tag-unmatched", Error, kLintGeneral, "RFC 5888 §5", \
      "a=group: tag without a matching a=mid: line") \
    X(MidDuplicate, "sdp-mid-duplicate", Error, kLintGeneral, "RFC 5888 §4", \
      "a=mid: value used by two media") \
    X(MidNotToken, "sdp-mid-not-token", Error, kLintGeneral, "RFC 5888 §4", \
      "identification tag is not a token") \
    X(Aes67RefclkMissing, "aes67-refclk-missing", Error, kLintAes67, "AES67-2018 §8", \
      "no a=ts-refclk at media or session level") \
    X(Aes67RefclkNotPtp, "aes67-refclk-not-ptp", Error, kLintAes67, "AES67-2018 §8", \
      "reference clock is not ptp=IEEE1588-2008:<grandmaster>|traceable") \
    X(Aes67MediaclkMissing, "aes67-mediaclk-missing", Error, kLintAes67, "AES67-2018 §8", \
      "no a=mediaclk at media or session level") \
    X(Aes67PtimeMissing, "aes67-ptime-missing", Error, kLintAes67, "AES67-2018 §8", "no a=ptime") \
    X(Aes67PtimeValue, "aes67-ptime-value", Error, kLintAes67, "AES67-2018 §7", \
      "packet time is none of 0.125, 0.25, 0.333, 1, 4 ms") \
    X(Aes67Encoding, "aes67-encoding", Error, kLintAes67, "AES67-2018 §7", "encoding is not L16 or L24") \
    X(Aes67SamplingRate, "aes67-sampling-rate", Error, kLintAes67, "AES67-2018 §7", \
      "sampling rate is not 44.1, 48 or 96 kHz") \
    X(Aes67Channels, "aes67-channels", Warning, kLintAes67, "AES67-2018 §7", \
      "more than 8 channels: AES67 receivers need take only 1 to 8") \
    X(St2110RefclkMissing, "st2110-refclk-missing", Error, kLintSt2110, "SMPTE ST 2110-10 §8", \
      "no a=ts-refclk at media or session level") \
    X(St2110MediaclkMissing, "st2110-mediaclk-missing", Error, kLintSt2110, "SMPTE ST 2110-10 §8", \
      "no a=mediaclk at media or session level") \
    X(St2110MediaclkOffset, "st2110-mediaclk-offset", Warning, kLintSt2110, "SMPTE ST 2110-10 §8", \
      "media clock is not a=mediaclk:direct=0") \
    X(St2110_30Encoding, "st2110-30-encoding", Error, kLintSt2110_30, "SMPTE ST 2110-30 §6", \
      "encoding is not L16 or L24") \
    X(St2110_30SamplingRate, "st2110-30-sampling-rate", Error, kLintSt2110_30, "SMPTE ST 2110-30 §6", \
      "sampling rate is not 48 or 96 kHz") \
    X(St2110_30Ptime, "st2110-30-ptime", Error, kLintSt2110_30, "SMPTE ST 2110-30 §7", \
      "packet time is missing or not 1 or 0.125 ms (levels A, B, C)") \
    X(St2110_30Channels, "st2110-30-channels", Error, kLintSt2110_30, "SMPTE ST 2110-30 §7", \
      "too many channels: at most 8 at 1 ms, 64 at 0.125 ms") \
    X(St2110_30ChannelOrder, "st2110-30-channel-order", Error, kLintSt2110_30, "SMPTE ST 2110-30 §6", \
      "channel-order groups do not add up to the rtpmap channel count") \
    X(St2110_20Encoding, "st2110-20-encoding", Error, kLintSt2110_20, "SMPTE ST 2110-20 §7", \
      "video encoding is not raw/90000") \
    X(St2110_20FmtpMissing, "st2110-20-fmtp-missing", Error, kLintSt2110_20, "SMPTE ST 2110-20 §7.2", \
      "no a=fmtp line for the video payload type") \
    X(St2110_20ParameterMissing, "st2110-20-parameter-missing", Error, kLintSt2110_20, \
      "SMPTE ST 2110-20 §7.2", \
      "required format parameter missing") \
    X(St2110_20ParameterValue, "st2110-20-parameter-value", Error, kLintSt2110_20, "SMPTE ST 2110-20 §7.2", \
      "format parameter value not allowed") \
    X(St2110_21SenderType, "st2110-21-sender-type", Error, kLintSt2110_20, "SMPTE ST 2110-21 §8", \
      "sender type TP= missing or not 2110TPN, 2110TPNL or 2110TPW") \
    X(St2022_7GroupMissing, "st2022-7-group-missing", Error, kLintSt2022_7, "RFC 7104 §3", \
      "no a=group:DUP line") \
    X(St2022_7Legs, "st2022-7-legs", Error, kLintSt2022_7, "RFC 7104 §3", \
      "a=group:DUP does not name two legs that are both present") \
    X(St2022_7MidMismatch, "st2022-7-mid-mismatch", Error, kLintSt2022_7, "RFC 5888 §5", \
      "media whose a=mid: is not a tag of the DUP group") \
    X(St2022_7SameAddress, "st2022-7-same-address", Error, kLintSt2022_7, "SMPTE ST 2022-7:2019", \
      "legs share one destination address: the paths cannot be told apart") \
    X(St2022_7LegMismatch, "st2022-7-leg-mismatch", Error, kLintSt2022_7, "SMPTE ST 2022-7:2019", \
      "legs differ in rtpmap, ptime or channel count") \
    X(DanteSamplingRate, "dante-sampling-rate", Error, kLintDante, "Dante AES67 mode", \
      "sampling rate is not 48 kHz") \
    X(DanteEncoding, "dante-encoding", Error, kLintDante, "Dante AES67 mode", "encoding is not L16 or L24") \
    X(DanteChannels, "dante-channels", Error, kLintDante, "Dante AES67 mode", "more than 8 channels") \
    X(DanteMulticast, "dante-multicast", Error, kLintDante, "Dante AES67 mode", \
      "destination is not an IPv4 multicast address") \
    X(DanteReceivePtime, "dante-receive-ptime", Error, kLintDante, "Dante AES67 mode", \
      "packet time is none of 0.125, 0.25, 0.333, 1 ms that Dante receives") \
    X(DanteSendPtime, "dante-send-ptime", Warning, kLintDante, "Dante AES67 mode", \
      "a Dante announcement (a=keywds:Dante) with a packet time other than the 1 ms Dante sends")

#define PIMAV_LINT_ENUMERATOR(name, id, severity, profiles, clause, message) name,
enum class LintRule { PIMAV_LINT_RULES(PIMAV_LINT_ENUMERATOR) };
#undef PIMAV_LINT_ENUMERATOR

struct LintRuleInfo {
    const char* id;
    LintSeverity severity;
    unsigned profiles;
    const char* clause;
    const char* message;
};

const LintRuleInfo& lintRuleInfo(LintRule rule);
size_t lintRuleCount();
const char* lintSeverityName(LintSeverity severity);
// Profile names of a mask ("all" for a general rule), comma separated.
std::string lintProfileNames(unsigned profiles);
// The Markdown table of every rule, one line per rule, as docs/sdp-lint.md holds it.
std::string lintRulesMarkdown();

}  // namespace pimav::detail
