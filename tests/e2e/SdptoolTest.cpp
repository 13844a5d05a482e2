// sdptool as a process, where one row of tests/data/tool-messages/cases.txt cannot say it:
// the line of every refused corpus file, the parser's log with -v, and json's output read
// back by gen.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "EmulatorProcess.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

std::string sdptool() { return binaryPath("tools/sdptool"); }

}  // namespace

TEST(Sdptool, EveryRefusalPrintsOneLineWithItsReason) {
    std::vector<std::string> args = {sdptool(), "check"};
    for (const std::string& name : corpusFiles()) {
        args.push_back(kCorpusDir + name);
    }
    const auto result = run(args);
    EXPECT_EQ(result.status, 1);
    const std::regex refusal(R"(.*\.sdp: refused \(-?[0-9]+\): \S.*)");
    size_t refused = 0;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) {
        if (line.find(": refused (") != std::string::npos) {
            ++refused;
            EXPECT_TRUE(std::regex_match(line, refusal)) << line;
        }
    }
    EXPECT_GT(refused, 10u);

    const std::string gstreamer = kTestData + "sdp-explain/gstreamer-framerate-attribute.sdp";
    const auto verbose = run({sdptool(), "-v", "check", gstreamer});
    EXPECT_EQ(verbose.status, 1);
    EXPECT_NE(verbose.out.find(": refused (-1): SDP fmtp line: exactframerate is missing"),
              std::string::npos);
    EXPECT_NE(verbose.err.find("[7] ::Frame rate found::0"), std::string::npos) << verbose.err;
    EXPECT_NE(verbose.err.find("[2] ::Format found but framerate is not supported"), std::string::npos);
}

TEST(Sdptool, JsonOutputIsReadByGen) {
    const auto json = run({sdptool(), "json", sourcePath("examples/advertised/commentary.sdp")});
    ASSERT_EQ(json.status, 0) << json.err;
    const std::string doc = makeTempDir("gen") + "/session.json";
    std::ofstream(doc) << json.out;
    const auto gen = run({sdptool(), "gen", doc});
    ASSERT_EQ(gen.status, 0) << gen.err;
    EXPECT_NE(gen.out.find("m=audio 5006"), std::string::npos) << gen.out;
}
