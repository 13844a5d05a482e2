#pragma once

// `sdptool lint`: checks an SDP text against RFC 4566 and its companions and, per profile,
// against AES67, SMPTE ST 2110-20/-30, ST 2022-7 and Dante's AES67 mode. It reports
// findings and refuses nothing: it is independent of the library's parser.

#include <iosfwd>
#include <string>
#include <vector>

#include "SdpLintRules.h"
#include "SdpLintText.h"

namespace pimav::detail {

struct LintFinding {
    size_t line = 0;
    LintRule rule = LintRule::LineSyntax;
    std::string detail;  // what this occurrence is about; may be empty
};

// Collects the findings of the checks.
class LintReport {
public:
    void add(LintRule rule, const LintLine* line, std::string detail = {});
    void add(LintRule rule, size_t lineNumber, std::string detail = {});
    // Findings of the rules enabled by `profiles`, by line then rule, without repeats.
    std::vector<LintFinding> select(unsigned profiles) const;

private:
    std::vector<LintFinding> m_findings;
};

void lintGeneral(const LintText& text, LintReport& report);
void lintProfiles(const LintText& text, LintReport& report);

std::vector<LintFinding> lintSdp(std::string text, unsigned profiles);

// Profile names to their mask; false with `unknown` set for a name that is none.
bool lintProfileMask(const std::vector<std::string>& names, unsigned& mask, std::string& unknown);

struct LintOptions {
    std::vector<std::string> files;
    std::vector<std::string> profiles;
    bool json = false;
};

// Lints the files and prints the findings; the exit status: 0 without error findings,
// 1 with one, 2 when a file cannot be read or a profile is unknown.
int runLint(const LintOptions& options, std::ostream& out, std::ostream& err);

}  // namespace pimav::detail
