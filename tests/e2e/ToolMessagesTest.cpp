// The tools and the emulator's command line as a user runs them: each row of
// tests/data/tool-messages/cases.txt runs a command line and expects its exit status, its
// whole standard error and, when the row gives one, its standard output or a part of it.

#include <gtest/gtest.h>

#include <chrono>

#include "EmulatorProcess.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

// Words separated by spaces; '...' keeps spaces in one word.
std::vector<std::string> commandWords(const std::string& text) {
    std::vector<std::string> out;
    std::string word;
    bool quoted = false;
    bool any = false;
    for (const char c : text) {
        if (c == '\'') {
            quoted = !quoted;
            any = true;
        } else if (c == ' ' && !quoted) {
            if (any) {
                out.push_back(word);
            }
            word.clear();
            any = false;
        } else {
            word += c;
            any = true;
        }
    }
    if (any) {
        out.push_back(word);
    }
    return out;
}

std::string substitute(std::string text, const std::map<std::string, std::string>& values) {
    for (const auto& [key, value] : values) {
        for (size_t at = text.find(key); at != std::string::npos; at = text.find(key, at + value.size())) {
            text.replace(at, key.size(), value);
        }
    }
    return text;
}

}  // namespace

TEST(ToolMessages, EachBadInputGivesOneLineAndTheDocumentedStatus) {
    EmulatorProcess emulator("", {"--advertise", sourcePath("examples/advertised")});
    const ReservedPort nobodyListens;
    const std::map<std::string, std::string> values = {
        {"{data}", kTestData + "tool-messages"},
        {"{tests}", kTestData.substr(0, kTestData.size() - 1)},
        {"{adv}", sourcePath("examples/advertised")},
        {"{examples}", sourcePath("examples/documents")},
        {"{tmp}", makeTempDir("messages")},
        {"{port}", std::to_string(emulator.port())},
        {"{free}", std::to_string(nobodyListens.port())},
    };
    const std::map<std::string, std::string> programs = {
        {"avmngctl", binaryPath("tools/avmngctl")},
        {"sdptool", binaryPath("tools/sdptool")},
        {"avmng-emulator", binaryPath("emulator/avmng-emulator")},
        {"env", "/usr/bin/env"},
    };
    const std::vector<DataRow> rows = dataRows("tool-messages/cases.txt");
    ASSERT_GT(rows.size(), 20u);
    for (const DataRow& row : rows) {
        SCOPED_TRACE(row.where);
        ASSERT_GE(row.fields.size(), 3u);
        const std::string stderrText = unescaped(row.fields[1]);
        const std::string stdoutPart = row.fields.size() > 3 ? unescaped(row.fields[3]) : "";
        std::vector<std::string> argv;
        for (const std::string& word : commandWords(row.fields[2])) {
            const auto program = programs.find(word);
            argv.push_back(program != programs.end() ? program->second : substitute(word, values));
        }
        const auto start = std::chrono::steady_clock::now();
        const RunResult r = run(argv, 10000);
        // Nothing here waits for a reply time limit longer than the rows' own --timeout.
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
        EXPECT_EQ(r.status, std::stoi(row.fields[0])) << r.err;
        EXPECT_EQ(r.err, stderrText == "-" ? "" : substitute(stderrText, values) + "\n");
        if (stdoutPart == "-" || stdoutPart.rfind('=', 0) == 0) {
            EXPECT_EQ(r.out, stdoutPart == "-" ? "" : substitute(stdoutPart.substr(1), values));
        } else {
            EXPECT_NE(r.out.find(substitute(stdoutPart, values)), std::string::npos) << r.out;
        }
    }
}
