// What sdptool gen writes and what the emulator serves for a sender, read by another
// receiver: ffprobe (FFmpeg) when it is installed.
// "-sdp_flags custom_io" makes ffprobe take the RTP packets from its (empty) input instead of
// opening sockets, so it reads the description and sends or joins nothing; the documents
// use loopback addresses all the same.

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
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

// The streams ffprobe reads from the SDP file at `path`.
std::vector<std::string> probe(const std::string& ffprobe, const std::string& path) {
    const auto r = run({ffprobe, "-v", "error", "-sdp_flags", "custom_io", "-show_entries",
                        "stream=codec_type,codec_name,sample_rate,channels,width,height,avg_frame_rate",
                        "-of", "json", path},
                       10000);
    EXPECT_EQ(r.status, 0) << r.err;
    return streamsOf(parse(r.out));
}

}  // namespace

// What sdptool gen writes for the documents of tests/data/sdp-gen, and what the emulator
// serves (command 0) for the sample senders of examples/documents, one audio, one video.
TEST(SdpInterop, FfprobeReadsWhatGenWritesAndWhatTheEmulatorServes) {
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
        EXPECT_EQ(probe(ffprobe, sdp), e.streams);
    }
    EmulatorProcess emulator;
    const struct {
        const char* document;
        std::vector<std::string> streams;
    } senders[] = {
        {"sender.json", {"pcm_s24be:48000:8"}},
        {"sender-video.json", {"bitpacked:1920x1080:50/1"}},
    };
    for (const auto& s : senders) {
        SCOPED_TRACE(s.document);
        Json::Value id;
        id["id"] = emulator.call(2, parse(readText(sourcePath("examples/documents/") + s.document)))["session-id"];
        const std::string sdp = emulator.call(0, id)["sdp"].asString();
        const std::string path = dir + "/" + id["id"].asString() + ".sdp";
        std::ofstream(path, std::ios::binary) << sdp;
        EXPECT_EQ(probe(ffprobe, path), s.streams) << sdp;
    }
}
