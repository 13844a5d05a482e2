// The general checks (RFC 4566 and its companions, and what real devices get wrong),
// the report and the `sdptool lint` command.

#include "SdpLint.h"

#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <set>
#include <sstream>
#include <tuple>

#include "UserDocument.h"

namespace pimav::detail {

namespace {

constexpr std::string_view kSessionOrder = "vosiuepcbtrzka";
constexpr std::string_view kMediaOrder = "micbka";

// Encoding names as registered; other spellings differ only in case.
constexpr std::string_view kEncodings[] = {
    "L16",  "L24", "L32", "AM824", "raw",  "smpte291", "SMPTE2022-6", "MP2T",           "H264",
    "H265", "VP8", "VP9", "opus",  "PCMU", "PCMA",     "G722",        "telephone-event"};

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

void checkLineSyntaxAndEnds(const LintText& text, LintReport& report) {
    const LintLine* firstLf = nullptr;
    const LintLine* firstCrLf = nullptr;
    for (const LintLine& line : text.lines()) {
        if (line.type == '\0') {
            report.add(LintRule::LineSyntax, &line,
                       line.text.empty() ? "blank line" : quoted(line.text.substr(0, 20)));
        } else if (kSessionOrder.find(line.type) == std::string_view::npos && line.type != 'm') {
            report.add(LintRule::LineTypeUnknown, &line, std::string(1, line.type) + "=");
        }
        if (line.end == LineEnd::Lf && firstLf == nullptr) {
            firstLf = &line;
        } else if (line.end == LineEnd::CrLf && firstCrLf == nullptr) {
            firstCrLf = &line;
        } else if (line.end == LineEnd::None && !line.text.empty()) {
            report.add(LintRule::FinalLineEnd, &line);
        }
    }
    if (firstLf != nullptr) {
        report.add(LintRule::LineEndLf, firstLf);
    }
    if (firstLf != nullptr && firstCrLf != nullptr) {
        report.add(LintRule::LineEndMixed, std::max(firstLf->number, firstCrLf->number));
    }
}

// The first line of a block that comes before a line of a later kind.
void checkOrder(const LintText& text, const LintBlock& block, std::string_view order, LintReport& report) {
    size_t highest = 0;
    char previous = '\0';
    for (size_t i = block.first; i < block.last; ++i) {
        const LintLine& line = text.lines()[i];
        if (line.type == '\0') {
            continue;
        }
        if (kSessionOrder.find(line.type) == std::string_view::npos && line.type != 'm') {
            continue;  // an unknown type has a rule of its own
        }
        const size_t rank = order.find(line.type);
        const bool repeatedTime = line.type == 't' && previous == 'r';
        if (rank == std::string_view::npos || (rank < highest && !repeatedTime)) {
            const std::string after = std::string(1, order[std::min(highest, order.size() - 1)]) + "=";
            report.add(LintRule::LineOrder, &line,
                       std::string(1, line.type) +
                           (rank == std::string_view::npos ? "= inside a media" : "= after " + after));
            return;
        }
        highest = std::max(highest, rank);
        previous = line.type;
    }
}

void checkSession(const LintText& text, LintReport& report) {
    const LintBlock& session = text.session();
    std::string missing;
    for (const char type : std::string_view("vost")) {
        if (text.field(session, type) == nullptr) {
            missing += missing.empty() ? "" : ", ";
            missing += std::string(1, type) + "=";
        }
    }
    if (!missing.empty()) {
        report.add(LintRule::RequiredLineMissing, size_t{1}, missing);
    }
    if (const LintLine* v = text.field(session, 'v')) {
        if (unsignedNumber(v->value) != uint64_t{0}) {
            report.add(LintRule::Version, v, quoted(v->value));
        } else if (hasLeadingZero(v->value)) {
            report.add(LintRule::NumberLeadingZero, v, "v=" + std::string(v->value));
        }
    }
    if (const LintLine* s = text.field(session, 's'); s != nullptr && s->value.empty()) {
        report.add(LintRule::SessionNameEmpty, s);
    }
    if (const LintLine* b = text.field(session, 'b')) {
        const std::string_view bandwidth = b->value.substr(b->value.find(':') + 1);
        if (hasLeadingZero(bandwidth)) {
            report.add(LintRule::NumberLeadingZero, b, "bandwidth " + std::string(bandwidth));
        }
    }
    const LintLine* o = text.field(session, 'o');
    if (o == nullptr) {
        return;
    }
    const std::vector<std::string_view> fields = splitFields(o->value);
    if (fields.size() != 6 || fields[3] != "IN" || (fields[4] != "IP4" && fields[4] != "IP6") ||
        fields[1].find_first_not_of("0123456789") != std::string_view::npos ||
        fields[2].find_first_not_of("0123456789") != std::string_view::npos) {
        report.add(LintRule::OriginSyntax, o);
        return;
    }
    for (size_t i = 1; i <= 2; ++i) {
        const char* name = i == 1 ? "session id " : "session version ";
        const std::optional<uint64_t> value = unsignedNumber(fields[i]);
        if (!value || *value > static_cast<uint64_t>(INT64_MAX)) {
            report.add(LintRule::SessionIdRange, o, name + std::string(fields[i]));
        }
        if (hasLeadingZero(fields[i])) {
            report.add(LintRule::NumberLeadingZero, o, name + std::string(fields[i]));
        }
    }
}

void checkConnection(const LintText& text, const LintBlock& media, LintReport& report) {
    const LintLine& mline = text.lines()[media.first];
    const LintLine* c = text.connection(media);
    if (c == nullptr) {
        report.add(LintRule::ConnectionMissing, &mline);
        return;
    }
    if (text.field(media, 'c') == nullptr) {
        report.add(LintRule::ConnectionSessionOnly, &mline);
    }
    const LintConnection connection = readConnection(c->value);
    if (!connection.valid) {
        report.add(LintRule::ConnectionSyntax, c, quoted(c->value));
        return;
    }
    const LintAddress& address = connection.address;
    if (address.ipv4 && address.multicast && !connection.hasTtl) {
        report.add(LintRule::TtlMissing, c, std::string(address.address));
    }
    if (!address.multicast && connection.hasTtl) {
        report.add(LintRule::TtlUnicast, c, std::string(address.address));
    }
    const LintLine* filter = text.inherited(media, "source-filter");
    if (filter == nullptr) {
        if (address.ssm) {
            report.add(LintRule::SsmSourceFilterMissing, c, std::string(address.address));
        }
        return;
    }
    const std::string_view value = filter->attributeValue();
    const std::vector<std::string_view> fields = splitFields(value);
    if (value.empty() || value[0] != ' ' || fields.size() < 5 ||
        (fields[0] != "incl" && fields[0] != "excl") || fields[1] != "IN") {
        report.add(LintRule::SourceFilterSyntax, filter);
    }
    if (fields.size() >= 4 && fields[3] != "*" && fields[3] != address.address) {
        report.add(LintRule::SourceFilterDestination, filter,
                   std::string(fields[3]) + " vs c= " + std::string(address.address));
    }
}

void checkFormats(const LintText& text, const LintBlock& media, LintReport& report) {
    const LintLine& mline = text.lines()[media.first];
    const std::vector<std::string_view> fields = splitFields(mline.value);
    if (fields.size() < 4) {
        report.add(LintRule::LineSyntax, &mline, "m= needs <media> <port> <proto> <format>...");
        return;
    }
    if (hasLeadingZero(fields[1].substr(0, fields[1].find('/')))) {
        report.add(LintRule::NumberLeadingZero, &mline, "port " + std::string(fields[1]));
    }
    for (size_t i = 3; i < fields.size(); ++i) {
        if (hasLeadingZero(fields[i])) {
            report.add(LintRule::NumberLeadingZero, &mline, "payload type " + std::string(fields[i]));
        }
        const std::optional<uint64_t> type = unsignedNumber(fields[i]);
        if (fields[2].find("RTP") != std::string_view::npos && type && *type >= 96 && *type <= 127 &&
            rtpMapOf(text, media, fields[i]).line == nullptr) {
            report.add(LintRule::RtpmapMissing, &mline, "payload type " + std::string(fields[i]));
        }
    }
    for (const char* name : {"rtpmap", "fmtp"}) {
        for (const LintLine* line : text.attributes(media, name)) {
            const std::string_view value = line->attributeValue();
            const std::string_view type = value.substr(0, value.find(' '));
            if (hasLeadingZero(type)) {
                report.add(LintRule::NumberLeadingZero, line, "payload type " + std::string(type));
            }
        }
    }
    for (const LintLine* line : text.attributes(media, "rtpmap")) {
        const std::string_view value = line->attributeValue();
        const std::string_view rest = value.substr(std::min(value.size(), value.find(' ') + 1));
        const std::string_view encoding = rest.substr(0, rest.find('/'));
        for (const std::string_view known : kEncodings) {
            if (encoding != known && equalsIgnoreCase(encoding, known)) {
                report.add(LintRule::EncodingCase, line,
                           std::string(encoding) + " (registered " + std::string(known) + ")");
            }
        }
    }
    for (const LintLine* line : text.attributes(media, "fmtp")) {
        const std::string_view value = trimSpaces(line->attributeValue());
        if (!value.empty() && value.back() == ';') {
            report.add(LintRule::FmtpTrailingSemicolon, line);
        }
    }
    if (const LintLine* ptime = text.attribute(media, "ptime")) {
        const std::optional<double> value = decimalNumber(trimSpaces(ptime->attributeValue()));
        if (value && *value != std::floor(*value)) {
            report.add(LintRule::PtimeFractional, ptime,
                       std::string(trimSpaces(ptime->attributeValue())) + " read as " +
                           std::to_string(static_cast<long>(*value)));
        }
    }
}

// ts-refclk and mediaclk lines wherever they are.
void checkClocks(const LintText& text, LintReport& report) {
    const LintBlock all{0, text.lines().size()};
    for (const LintLine* line : text.attributes(all, "ts-refclk")) {
        const std::string_view value = line->attributeValue();
        if (!startsWith(value, "ptp=")) {
            continue;
        }
        const std::vector<std::string_view> parts = splitFields(value.substr(4), ':');
        if (parts.size() >= 2 && parts[1] != "traceable" &&
            parts[1].find_first_of("abcdef") != std::string_view::npos) {
            report.add(LintRule::GmidLowerCase, line, std::string(parts[1]));
        }
    }
    for (const LintLine* line : text.attributes(all, "mediaclk")) {
        const std::string_view value = line->attributeValue();
        if (!startsWith(value, "direct=")) {
            continue;
        }
        const std::string_view offset = value.substr(
            7, value.find(' ') == std::string_view::npos ? std::string_view::npos : value.find(' ') - 7);
        const std::optional<uint64_t> number = unsignedNumber(offset);
        if (number != uint64_t{0}) {
            report.add(LintRule::MediaclkOffset, line, std::string(offset));
        }
        if (!number || *number >= (uint64_t{1} << 31)) {
            report.add(LintRule::MediaclkOffsetLarge, line,
                       std::string(offset) + (!number || *number > UINT32_MAX ? " (beyond 32 bits)" : ""));
        }
    }
}

void checkGroups(const LintText& text, LintReport& report) {
    std::set<std::string_view> mids;
    for (const LintBlock& media : text.media()) {
        const LintLine* mid = text.attribute(media, "mid");
        if (mid == nullptr) {
            continue;
        }
        const std::string_view tag = mid->attributeValue();
        if (!isSdpToken(tag)) {
            report.add(LintRule::MidNotToken, mid, quoted(tag));
        }
        if (!mids.insert(tag).second) {
            report.add(LintRule::MidDuplicate, mid, std::string(tag));
        }
    }
    for (const LintLine* group : text.attributes(text.session(), "group")) {
        const std::string_view value = group->attributeValue();
        const size_t space = value.find(' ');
        const std::string_view tags =
            space == std::string_view::npos ? std::string_view() : value.substr(space + 1);
        if (tags.empty() || tags.back() == ' ' || tags.find("  ") != std::string_view::npos) {
            report.add(LintRule::GroupTagUnmatched, group, "empty tag");
        }
        for (const std::string_view tag : splitFields(tags)) {
            if (!isSdpToken(tag)) {
                report.add(LintRule::MidNotToken, group, quoted(tag));
            }
            if (mids.count(tag) == 0) {
                report.add(LintRule::GroupTagUnmatched, group, std::string(tag));
            }
        }
    }
}

}  // namespace

void LintReport::add(LintRule rule, const LintLine* line, std::string detail) {
    add(rule, line == nullptr ? size_t{1} : line->number, std::move(detail));
}

void LintReport::add(LintRule rule, size_t lineNumber, std::string detail) {
    m_findings.push_back({lineNumber, rule, std::move(detail)});
}

std::vector<LintFinding> LintReport::select(unsigned profiles) const {
    std::vector<LintFinding> out;
    for (const LintFinding& finding : m_findings) {
        const unsigned mask = lintRuleInfo(finding.rule).profiles;
        if (mask == kLintGeneral || (mask & profiles) != 0) {
            out.push_back(finding);
        }
    }
    const auto key = [](const LintFinding& f) { return std::tie(f.line, f.rule, f.detail); };
    std::sort(out.begin(), out.end(),
              [&](const LintFinding& a, const LintFinding& b) { return key(a) < key(b); });
    out.erase(std::unique(out.begin(), out.end(),
                          [&](const LintFinding& a, const LintFinding& b) { return key(a) == key(b); }),
              out.end());
    return out;
}

void lintGeneral(const LintText& text, LintReport& report) {
    checkLineSyntaxAndEnds(text, report);
    checkOrder(text, text.session(), kSessionOrder, report);
    checkSession(text, report);
    for (const LintBlock& media : text.media()) {
        checkOrder(text, media, kMediaOrder, report);
        checkConnection(text, media, report);
        checkFormats(text, media, report);
    }
    checkClocks(text, report);
    checkGroups(text, report);
}

std::vector<LintFinding> lintSdp(std::string text, unsigned profiles) {
    const LintText lines(std::move(text));
    LintReport report;
    lintGeneral(lines, report);
    lintProfiles(lines, report);
    return report.select(profiles);
}

bool lintProfileMask(const std::vector<std::string>& names, unsigned& mask, std::string& unknown) {
    mask = kLintGeneral;
    for (const std::string& name : names) {
        const auto* found = std::find_if(std::begin(kLintProfiles), std::end(kLintProfiles),
                                         [&](const LintProfileName& p) { return name == p.name; });
        if (found == std::end(kLintProfiles)) {
            unknown = name;
            return false;
        }
        mask |= found->bit;
    }
    return true;
}

int runLint(const LintOptions& options, std::ostream& out, std::ostream& err) {
    unsigned profiles = kLintGeneral;
    std::string unknown;
    if (!lintProfileMask(options.profiles, profiles, unknown)) {
        err << "sdptool: unknown profile " << unknown << "\n";
        return 2;
    }
    int status = 0;
    Json::Value all(Json::arrayValue);
    for (const std::string& path : options.files) {
        std::string text;
        std::string error;
        if (!readUserFile(path, text, error)) {
            err << error << "\n";
            status = 2;
            continue;
        }
        for (const LintFinding& finding : lintSdp(std::move(text), profiles)) {
            const LintRuleInfo& rule = lintRuleInfo(finding.rule);
            const std::string message = std::string(rule.message) +
                                        (finding.detail.empty() ? "" : ": " + finding.detail) + " (" +
                                        rule.clause + ")";
            if (rule.severity == LintSeverity::Error && status == 0) {
                status = 1;
            }
            if (options.json) {
                Json::Value item;
                item["file"] = path;
                item["line"] = static_cast<Json::UInt64>(finding.line);
                item["severity"] = lintSeverityName(rule.severity);
                item["rule"] = rule.id;
                item["clause"] = rule.clause;
                item["message"] = message;
                all.append(item);
            } else {
                out << path << ":" << finding.line << ": " << lintSeverityName(rule.severity) << ": "
                    << rule.id << ": " << message << "\n";
            }
        }
    }
    if (options.json) {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "  ";
        builder["emitUTF8"] = true;
        out << Json::writeString(builder, all) << "\n";
    }
    return status;
}

}  // namespace pimav::detail
