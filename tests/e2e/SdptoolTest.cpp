// sdptool as a process: exit status and output for success and failure.

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include "EmulatorProcess.h"

using namespace pimav::detail;


namespace {

std::string sdptool() { return binaryPath("tools/sdptool"); }

std::string writeFile(const std::string& dir, const std::string& name, const std::string& text) {
    const std::string path = dir + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

size_t countLines(const std::string& text) { return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')); }

const char* const kBadSdp = "v=0\r\no=- 5 5 IN IP4 10.0.0.1\r\ns=no destination\r\nt=0 0\r\n"
                            "m=audio 5004 RTP/AVP 96\r\na=rtpmap:96 L24/48000/2\r\na=ptime:1\r\n";

}  // namespace

TEST(Sdptool, CheckReportsOkOrTheUserMessages) {
    const auto good = run({sdptool(), "check", sourcePath("examples/advertised/commentary.sdp")});
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_NE(good.out.find("commentary.sdp: ok"), std::string::npos) << good.out;

    const std::string dir = makeTempDir("sdp");
    const std::string bad = writeFile(dir, "bad.sdp", kBadSdp);
    const auto mixed = run({sdptool(), "check", sourcePath("examples/advertised/commentary.sdp"), bad});
    EXPECT_EQ(mixed.status, 1);
    EXPECT_NE(mixed.out.find("bad.sdp: refused (-1)"), std::string::npos) << mixed.out;
    EXPECT_NE(mixed.out.find("Destination IP is a mandatory field in the SDP. Check your \"a=source-filter\" line."),
              std::string::npos)
        << mixed.out;
    EXPECT_NE(mixed.out.find("Reference clock must be PTP."), std::string::npos) << mixed.out;
    EXPECT_EQ(run({sdptool(), "check", dir + "/missing.sdp"}).status, 2);
    EXPECT_EQ(run({sdptool(), "--board", "NOPE", "check", bad}).status, 2);
}

TEST(Sdptool, JsonAndGenRoundTrip) {
    const auto json = run({sdptool(), "json", sourcePath("examples/advertised/commentary.sdp")});
    ASSERT_EQ(json.status, 0) << json.err;
    const Json::Value session = parse(json.out);
    ASSERT_EQ(session["media"].size(), 1u) << json.out;
    EXPECT_EQ(session["info"].asString(), "Commentary mono");

    const std::string dir = makeTempDir("gen");
    const std::string doc = writeFile(dir, "session.json", json.out);
    const auto gen = run({sdptool(), "gen", doc});
    ASSERT_EQ(gen.status, 0) << gen.err;
    EXPECT_NE(gen.out.find("m=audio 5006"), std::string::npos) << gen.out;
    const std::string regenerated = writeFile(dir, "again.sdp", gen.out);
    EXPECT_EQ(run({sdptool(), "check", regenerated}).status, 0);

    const auto dante = run({sdptool(), "gen", doc, "--dante"});
    ASSERT_EQ(dante.status, 0) << dante.err;
    EXPECT_NE(dante.out.find("\r\n"), std::string::npos);
    EXPECT_EQ(run({sdptool(), "gen", writeFile(dir, "bad.json", "[1,2")}).status, 2);
}

TEST(Sdptool, VerboseShowsTheParserLog) {
    const auto quiet = run({sdptool(), "check", sourcePath("examples/advertised/commentary.sdp")});
    const auto verbose = run({sdptool(), "-v", "check", sourcePath("examples/advertised/commentary.sdp")});
    EXPECT_TRUE(quiet.err.empty()) << quiet.err;
    EXPECT_GT(countLines(verbose.err), 3u);
}
