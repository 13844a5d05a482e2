// sdptool's refusal reasons, lint and gen as a user runs them: lines and exit status.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "EmulatorProcess.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

std::string sdptool() {
    return binaryPath("tools/sdptool");
}

std::string writeFile(const std::string& dir, const std::string& name, const std::string& text) {
    const std::string path = dir + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

// An ST 2110-30 text without a=mediaclk (line 5 is its media line).
const char* const kNoMediaclk =
    "v=0\r\no=- 1 1 IN IP4 192.0.2.1\r\ns=Mics\r\nt=0 0\r\nm=audio 5004 RTP/AVP 97\r\n"
    "c=IN IP4 239.10.1.1/64\r\na=rtpmap:97 L24/48000/2\r\na=ptime:1\r\n"
    "a=ts-refclk:ptp=IEEE1588-2008:08-00-11-FF-FE-21-E1-B0:127\r\n";

}  // namespace

TEST(SdptoolExplain, EveryRefusalPrintsOneLineWithItsReason) {
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

TEST(SdptoolLint, ReportsFindingsAndExitStatus) {
    const std::string dir = makeTempDir("lint");
    const std::string noMediaclk = writeFile(dir, "no-mediaclk.sdp", kNoMediaclk);
    // The same text complete, with LF line ends.
    const std::string lf = writeFile(
        dir, "lf.sdp", std::regex_replace(kNoMediaclk, std::regex("\r\n"), "\n") + "a=mediaclk:direct=0\n");
    const struct {
        std::vector<std::string> args;
        int status;
        std::string out;  // a line of the output ("" when there is none)
    } kCases[] = {
        {{"--profile", "st2110-30", noMediaclk},
         1,
         noMediaclk + ":5: error: st2110-mediaclk-missing: no a=mediaclk at media or session level (SMPTE ST "
                      "2110-10 §8)\n"},
        {{noMediaclk}, 0, ""},
        {{lf, "--profile", "aes67"}, 0, lf + ":1: warning: sdp-line-end-lf: "},
        {{noMediaclk, "--profile", "st2110"}, 2, ""},
        {{dir + "/none.sdp"}, 2, ""},
        {{}, 2, ""},
        {{"--rules"}, 0, "| `sdp-line-syntax` | error | all | RFC 4566 §5 |"},
    };
    for (const auto& c : kCases) {
        std::vector<std::string> args = {sdptool(), "lint"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const auto result = run(args);
        SCOPED_TRACE(args.size() > 2 ? args[2] : "no argument");
        EXPECT_EQ(result.status, c.status) << result.err;
        if (c.out.empty()) {
            EXPECT_EQ(result.out, "");
        } else {
            EXPECT_NE(result.out.find(c.out), std::string::npos) << result.out;
        }
    }
    const auto json = run({sdptool(), "lint", noMediaclk, "--profile", "st2110-30", "--json"});
    const Json::Value findings = parse(json.out);
    ASSERT_EQ(findings.size(), 1u) << json.out;
    EXPECT_EQ(findings[0]["rule"].asString(), "st2110-mediaclk-missing");
    EXPECT_EQ(findings[0]["line"].asInt(), 5);
    EXPECT_EQ(findings[0]["clause"].asString(), "SMPTE ST 2110-10 §8");
}

TEST(SdptoolGen, RefusesUnusableDocumentsAndWritesCrlf) {
    const std::string dir = makeTempDir("gen");
    const auto empty = run({sdptool(), "gen", writeFile(dir, "empty.json", "{}")});
    EXPECT_EQ(empty.status, 2);
    EXPECT_EQ(empty.out, "");
    EXPECT_EQ(empty.err, dir + "/empty.json: the session document has no media\n");

    const std::string dup = kTestData + "sdp-gen/dup-audio-l24-unnamed.json";
    const auto unnamed = run({sdptool(), "gen", dup});
    EXPECT_EQ(unnamed.status, 2);
    EXPECT_NE(unnamed.err.find("use --name-groups"), std::string::npos) << unnamed.err;
    const auto named = run({sdptool(), "gen", dup, "--name-groups", "--crlf"});
    ASSERT_EQ(named.status, 0) << named.err;
    EXPECT_NE(named.out.find("\r\na=group:DUP S1 S2\r\n"), std::string::npos) << named.out;
    for (size_t at = named.out.find('\n'); at != std::string::npos; at = named.out.find('\n', at + 1)) {
        EXPECT_EQ(named.out[at - 1], '\r') << "LF line end at " << at;
    }

    const auto video = run({sdptool(), "gen", kTestData + "sdp-gen/video-1080p50-no-pm-tp.json"});
    ASSERT_EQ(video.status, 0) << video.err;
    EXPECT_NE(video.err.find("no packing mode, writing ST 2110-20's default PM=2110GPM"), std::string::npos);
    EXPECT_NE(video.out.find("PM=2110GPM; TP=2110TPN;"), std::string::npos) << video.out;

    const auto json = run({sdptool(), "json", kCorpusDir + "st2110-20-1080p50.sdp"});
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_EQ(parse(json.out)["media"][0]["sender-type"].asString(), "2110TPN");
}
