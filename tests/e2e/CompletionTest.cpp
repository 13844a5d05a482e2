// Shell completion as the bash script asks for it: TOOL --complete WORD... CURRENT.

#include <gtest/gtest.h>

#include "EmulatorProcess.h"

using namespace pimav::detail;

namespace {

struct CompletionCase {
    const char* tool;
    std::vector<std::string> words;  // after --complete; the last one is being completed
    const char* expected;            // the candidates, one a line
};

const CompletionCase kCases[] = {
    {"tools/avmngctl", {"se"}, "send\nsessions\n"},
    // Command names and ids after "send", behind an option and its value.
    {"tools/avmngctl", {"--port", "5", "send", "fileCfgS"}, "fileCfgSaveRunning\nfileCfgSetStartupPos\n"},
    {"tools/avmngctl", {"send", "5"}, "5\n50\n51\n52\n53\n54\n55\n"},
    {"tools/avmngctl", {"--co"}, "--compact\n"},
    // Global options also after the verb.
    {"tools/avmngctl", {"sessions", "--po"}, "--port\n"},
    // A value is expected: nothing, so that the shell completes file names.
    {"tools/avmngctl", {"--host", ""}, ""},
    {"tools/avmngctl", {"add-source", ""}, ""},
    {"tools/sdptool", {""}, "check\njson\ngen\nlint\nannounce\nlisten\n"},
    {"tools/sdptool", {"gen", "x.json", "--d"}, "--dante\n"},
    {"tools/sdptool", {"check", ""}, ""},
};

}  // namespace

TEST(Completion, ListsWhatTheProgramAccepts) {
    for (const auto& c : kCases) {
        std::vector<std::string> argv{binaryPath(c.tool), "--complete"};
        argv.insert(argv.end(), c.words.begin(), c.words.end());
        const auto result = run(argv);
        EXPECT_EQ(result.status, 0) << c.tool << " " << c.words.back();
        EXPECT_EQ(result.out, c.expected) << c.tool << " ... " << c.words.back();
    }
}
