// The linter over small texts per profile (tests/data/sdp-lint/<profile>.txt), over the
// SDP corpus (tests/data/sdp-lint/corpus.txt), and its rule table against the docs.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "SdpLint.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

// The case's text with the line ends its options ask for (CRLF by default).
std::string textOf(const DataCase& c) {
    const std::vector<std::string> options = words(c.get("options"));
    const auto has = [&](const std::string& word) {
        return std::find(options.begin(), options.end(), word) != options.end();
    };
    std::istringstream in(c.get("text"));
    std::string text;
    for (std::string line; std::getline(in, line);) {
        const bool lf = has("lf") || (has("lf-lines:") &&
                                      has(std::to_string(std::count(text.begin(), text.end(), '\n') + 1)));
        text += line + (in.peek() == EOF && has("no-final-eol") ? "" : lf ? "\n" : "\r\n");
    }
    return text;
}

std::vector<std::string> findings(std::string text, const std::vector<std::string>& profiles) {
    unsigned mask = 0;
    std::string unknown;
    EXPECT_TRUE(lintProfileMask(profiles, mask, unknown)) << unknown;
    std::vector<std::string> out;
    for (const LintFinding& finding : lintSdp(std::move(text), mask)) {
        out.push_back(std::string(lintRuleInfo(finding.rule).id) + "@" + std::to_string(finding.line));
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::vector<std::string> sorted(std::vector<std::string> items) {
    std::sort(items.begin(), items.end());
    return items;
}

const char* const kCaseFiles[] = {"general", "aes67", "st2110-20", "st2110-30", "st2022-7", "dante"};

// Corpus lines: "<file> <profile,...|-> <rule@line>...".
struct CorpusExpectation {
    std::vector<std::string> profiles;
    std::vector<std::string> expected;
};
std::map<std::string, CorpusExpectation> corpusExpectations() {
    std::map<std::string, CorpusExpectation> out;
    for (const DataRow& row : dataRows("sdp-lint/corpus.txt")) {
        std::vector<std::string> fields = words(row.fields[0]);
        std::replace(fields[1].begin(), fields[1].end(), ',', ' ');
        out[fields[0]] = {fields[1] == "-" ? std::vector<std::string>{} : words(fields[1]),
                          {fields.begin() + 2, fields.end()}};
    }
    return out;
}

}  // namespace

TEST(SdpLint, EveryCaseHasItsFindings) {
    for (const std::string profile : kCaseFiles) {
        const std::vector<DataCase> cases = dataCases("sdp-lint/" + profile + ".txt");
        ASSERT_FALSE(cases.empty()) << profile;
        for (const DataCase& c : cases) {
            SCOPED_TRACE(c.where + " " + c.title);
            EXPECT_EQ(
                findings(textOf(c), profile == "general" ? std::vector<std::string>{} : std::vector{profile}),
                sorted(words(c.get("expect"))));
        }
    }
}

TEST(SdpLint, CorpusFilesHaveTheirFindings) {
    const auto expectations = corpusExpectations();
    const std::vector<std::string> files = corpusFiles();
    ASSERT_FALSE(files.empty());
    for (const std::string& name : files) {
        SCOPED_TRACE(name);
        const auto e = expectations.find(name);
        ASSERT_NE(e, expectations.end()) << "no expectation for a new corpus file";
        EXPECT_EQ(findings(readText(kCorpusDir + name), e->second.profiles), sorted(e->second.expected));
    }
    EXPECT_EQ(files.size(), expectations.size()) << "an expected corpus file is missing";
}

TEST(SdpLint, RuleTableIsDocumented) {
    EXPECT_NE(readText(std::string(PIMAV_SOURCE_DIR) + "/docs/sdp-lint.md").find(lintRulesMarkdown()),
              std::string::npos)
        << "docs/sdp-lint.md differs from `sdptool lint --rules`";
}
