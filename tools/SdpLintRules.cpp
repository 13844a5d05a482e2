#include "SdpLintRules.h"
#include "platform/WordTable.h"

namespace pimav::detail {

namespace {

#define PIMAV_LINT_ROW(name, id, severity, profiles, clause, message) \
    {id, LintSeverity::severity, profiles, clause, message},
const LintRuleInfo kRules[] = {PIMAV_LINT_RULES(PIMAV_LINT_ROW)};
#undef PIMAV_LINT_ROW

}  // namespace

const LintRuleInfo& lintRuleInfo(LintRule rule) {
    return kRules[static_cast<size_t>(rule)];
}

size_t lintRuleCount() {
    return sizeof(kRules) / sizeof(kRules[0]);
}

constexpr WordRow<LintSeverity> kLintSeverityNames[] = {
    {LintSeverity::Error, "error"},
    {LintSeverity::Warning, "warning"},
    {LintSeverity::Info, "info"},
};

const char* lintSeverityName(LintSeverity severity) { return wordOf(kLintSeverityNames, severity, "error").data(); }

std::string lintProfileNames(unsigned profiles) {
    if (profiles == kLintGeneral) {
        return "all";
    }
    std::string names;
    for (const auto& profile : kLintProfiles) {
        if ((profiles & profile.bit) != 0) {
            names += names.empty() ? "" : ", ";
            names += profile.name;
        }
    }
    return names;
}

namespace {

// '|' inside a cell would end it.
std::string markdownCell(const char* text) {
    std::string out;
    for (const char* p = text; *p != '\0'; ++p) {
        out += *p == '|' ? "\\|" : std::string(1, *p);
    }
    return out;
}

}  // namespace

std::string lintRulesMarkdown() {
    std::string out = "| rule | severity | profiles | clause | message |\n|---|---|---|---|---|\n";
    for (const LintRuleInfo& rule : kRules) {
        out += std::string("| `") + rule.id + "` | " + lintSeverityName(rule.severity) + " | " +
               lintProfileNames(rule.profiles) + " | " + rule.clause + " | " + markdownCell(rule.message) +
               " |\n";
    }
    return out;
}

}  // namespace pimav::detail
