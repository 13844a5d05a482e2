// What sdptool gen writes, read by another receiver: ffprobe (FFmpeg) when it is installed.
// "-sdp_flags custom_io" makes ffprobe take the RTP packets from its (empty) input instead of
// opening sockets, so it reads the description and sends or joins nothing; the documents
// use loopback addresses all the same.

#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>

#include "EmulatorProcess.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

std::string findProgram(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::istringstream dirs(path == nullptr ? "/usr/bin" : path);
    for (std::string dir; std::getline(dirs, dir, ':');) {
        const std::string candidate = dir + "/" + name;
        if (!dir.empty() && ::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
    }
    return {};
}

// codec:rate:channels for audio, codec:WIDTHxHEIGHT:frame rate for video.
std::vector<std::string> streamsOf(const Json::Value& probe) {
    std::vector<std::string> out;
    for (const Json::Value& s : probe["streams"]) {
        if (s["codec_type"].asString() == "audio") {
            out.push_back(s["codec_name"].asString() + ":" + s["sample_rate"].asString() + ":" +
                          std::to_string(s["channels"].asInt()));
        } else {
            out.push_back(s["codec_name"].asString() + ":" + std::to_string(s["width"].asInt()) + "x" +
                          std::to_string(s["height"].asInt()) + ":" + s["avg_frame_rate"].asString());
        }
    }
    return out;
}

}  // namespace

TEST(SdpInterop, FfprobeReadsWhatGenWrites) {
    const std::string ffprobe = findProgram("ffprobe");
    if (ffprobe.empty()) {
        GTEST_SKIP() << "ffprobe is not installed (Debian package ffmpeg): interop with FFmpeg not tested";
    }
    const std::string dir = makeTempDir("interop");
    const std::vector<GenExpectation> documents = genExpectations();
    ASSERT_FALSE(documents.empty());
    for (const GenExpectation& e : documents) {
        SCOPED_TRACE(e.document);
        const std::string sdp = dir + "/" + e.document + ".sdp";
        const auto gen = run({binaryPath("tools/sdptool"), "gen", kTestData + "sdp-gen/" + e.document,
                              "--crlf", "--name-groups", "-o", sdp});
        ASSERT_EQ(gen.status, 0) << gen.err;
        const auto probe =
            run({ffprobe, "-v", "error", "-sdp_flags", "custom_io", "-show_entries",
                 "stream=codec_type,codec_name,sample_rate,channels,width,height,avg_frame_rate", "-of",
                 "json", sdp},
                10000);
        ASSERT_EQ(probe.status, 0) << probe.err;
        EXPECT_EQ(streamsOf(parse(probe.out)), e.streams) << probe.out;
    }
}
