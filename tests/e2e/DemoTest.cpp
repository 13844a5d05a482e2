// scripts/demo beside a daemon it did not start: it leaves that daemon's files as they
// were, stops at once when its port is taken, and otherwise runs on a port of its own.

#include <gtest/gtest.h>

#include <chrono>
#include <map>

#include "EmulatorProcess.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

// The emulator's files in `dir` with their bytes.
std::map<std::string, std::string> filesOf(const std::string& dir) {
    std::map<std::string, std::string> files;
    for (const std::string& name : filesIn(dir, ".json")) {
        files[name] = readText(dir + "/" + name);
    }
    return files;
}

RunResult runDemo(const std::vector<std::string>& environment) {
    std::vector<std::string> argv = {"/usr/bin/env", "AVMNG_DEMO_BUILD=" + binaryPath("")};
    argv.insert(argv.end(), environment.begin(), environment.end());
    argv.push_back(sourcePath("scripts/demo"));
    return run(argv, 60000);
}

}  // namespace

TEST(Demo, NeverTouchesADaemonItDidNotStart) {
    EmulatorProcess foreign;
    Json::Value save;
    save["pos"] = 1;
    save["name"] = "foreign";
    ASSERT_TRUE(foreign.call(9, save).isObject());
    const auto before = filesOf(foreign.configDir());
    ASSERT_EQ(before.count("sdiBiDirConfig1.json"), 1u);
    const Json::Value table = foreign.call(13);

    const std::string port = std::to_string(foreign.port());
    const auto start = std::chrono::steady_clock::now();
    const auto taken = runDemo({"AVMNG_DEMO_PORT=" + port});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(taken.status, 1) << taken.out;
    EXPECT_EQ(taken.err, "demo: avmng-emulator: cannot serve on tcp://127.0.0.1:" + port + ": Address already in use\n");
    EXPECT_EQ(taken.out, "");

    const auto own = runDemo({});
    EXPECT_EQ(own.status, 0) << own.err;
    EXPECT_NE(own.out.find("result             all steps succeeded"), std::string::npos) << own.out;
    EXPECT_EQ(own.out.find("127.0.0.1:" + std::to_string(foreign.port())), std::string::npos) << own.out;

    EXPECT_EQ(filesOf(foreign.configDir()), before);
    EXPECT_EQ(compact(foreign.call(13)), compact(table)) << "the foreign emulator answers as before";
}
