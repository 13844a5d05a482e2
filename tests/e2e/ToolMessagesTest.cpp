// The tools and the emulator's command line as a user runs them: each row of
// tests/data/tool-messages/cases.txt runs a command line and expects its exit status, its
// whole standard error and, when the row gives one, its standard output or a part of it.

#include <gtest/gtest.h>

#include <chrono>

#include "EmulatorProcess.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

struct Row {
    int line = 0;
    int status = 0;
    std::string stderrText;  // "-": nothing on stderr
    std::vector<std::string> words;
    std::string stdoutPart;  // "": not checked, "-": nothing on stdout, "=TEXT": all of it
};

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

// Lines "STATUS | STDERR | COMMAND[ | STDOUT]"; '#' starts a comment line.
std::vector<Row> readRows(const std::string& path) {
    std::vector<Row> rows;
    std::istringstream in(readText(path));
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        const size_t first = line.find(" | ");
        const size_t second = first == std::string::npos ? first : line.find(" | ", first + 3);
        if (line.empty() || line[0] == '#' || second == std::string::npos) {
            continue;
        }
        const size_t third = line.find(" | ", second + 3);
        rows.push_back({number, std::stoi(line.substr(0, first)), unescaped(line.substr(first + 3, second - first - 3)),
                        commandWords(line.substr(second + 3, third - second - 3)),
                        third == std::string::npos ? "" : unescaped(line.substr(third + 3))});
    }
    return rows;
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
    const std::vector<Row> rows = readRows(kTestData + "tool-messages/cases.txt");
    ASSERT_GT(rows.size(), 20u);
    for (const Row& row : rows) {
        std::vector<std::string> argv;
        for (const std::string& word : row.words) {
            const auto program = programs.find(word);
            argv.push_back(program != programs.end() ? program->second : substitute(word, values));
        }
        const auto start = std::chrono::steady_clock::now();
        const RunResult r = run(argv, 10000);
        const auto ms =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
                .count();
        const std::string expected = row.stderrText == "-" ? "" : substitute(row.stderrText, values) + "\n";
        SCOPED_TRACE("cases.txt:" + std::to_string(row.line));
        EXPECT_EQ(r.status, row.status) << r.err;
        EXPECT_EQ(r.err, expected);
        if (row.stdoutPart == "-" || row.stdoutPart.rfind('=', 0) == 0) {
            EXPECT_EQ(r.out, row.stdoutPart == "-" ? "" : substitute(row.stdoutPart.substr(1), values));
        } else {
            EXPECT_NE(r.out.find(substitute(row.stdoutPart, values)), std::string::npos) << r.out;
        }
        // Nothing here waits for a reply time limit longer than the rows' own --timeout.
        EXPECT_LT(ms, 4000);
    }
}
