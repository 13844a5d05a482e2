// The emulator's advertise folder, end to end: a refresh request or SIGHUP reloads it (how
// its files become advertised sessions is tested in-process).

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "EmulatorProcess.h"

using namespace pimav::detail;

namespace {

// The id of the advertised session with `url`, 0 when the list has none.
uint64_t advertisedId(const EmulatorProcess& emulator, const std::string& url) {
    const Json::Value list = emulator.call(7);
    for (const auto& entry : list["list"]) {
        if (entry["url"].asString() == url) {
            return entry["session-id"].asUInt64();
        }
    }
    return 0;
}

TEST(Advertised, ARefreshRequestOrSighupReloadsTheFolder) {
    const std::string folder = makeTempDir("advertise");
    for (const char* name : {"commentary.sdp", "sap:%2F%2F192.168.1.50:9875%2Fstudio-a.sdp"}) {
        std::ifstream in(sourcePath(std::string("examples/advertised/") + name));
        std::ofstream(folder + "/" + name) << in.rdbuf();
    }
    EmulatorProcess emulator("", {"--advertise", folder});
    ASSERT_NE(advertisedId(emulator, "file:" + folder + "/commentary.sdp"), 0u) << compact(emulator.call(7));

    // A file that goes away is withdrawn on reload, a new one appears; refused files are skipped.
    std::remove((folder + "/commentary.sdp").c_str());
    std::ofstream(folder + "/broken.sdp") << "v=0\r\ns=no origin\r\n";
    std::ifstream in(sourcePath("examples/advertised/rtsp:%2F%2F192.168.1.51:554%2Fcontrol-room.sdp"));
    std::ofstream(folder + "/rtsp:%2F%2F192.168.1.51:554%2Fcontrol-room.sdp") << in.rdbuf();
    // Both ways to reload: a refresh request, and SIGHUP (seen between requests).
    const Json::Value refreshed = emulator.call(7, parse(R"({"refresh":true})"));
    ASSERT_EQ(refreshed["list"].size(), 2u) << compact(refreshed);
    EXPECT_NE(advertisedId(emulator, "rtsp://192.168.1.51:554/control-room"), 0u);
    EXPECT_EQ(advertisedId(emulator, "file:" + folder + "/commentary.sdp"), 0u);

    std::rename((folder + "/sap:%2F%2F192.168.1.50:9875%2Fstudio-a.sdp").c_str(), (folder + "/x.sdp.old").c_str());
    emulator.hangUp();
    Json::Value after;
    for (int i = 0; i < 100 && after["list"].size() != 1; ++i) {
        usleep(20000);
        after = emulator.call(7);
    }
    EXPECT_EQ(after["list"].size(), 1u) << compact(after);
}

}  // namespace
