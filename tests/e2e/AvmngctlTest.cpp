// avmngctl as a process: exit status and output for success and failure.

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include "EmulatorProcess.h"

using e2e::EmulatorProcess;
using e2e::run;

namespace {

std::string ctl() { return e2e::binaryPath("tools/avmngctl"); }

std::vector<std::string> ctlArgs(const EmulatorProcess& emulator, std::vector<std::string> rest) {
    std::vector<std::string> argv = {ctl(), "--port", std::to_string(emulator.port()), "--timeout", "3000"};
    argv.insert(argv.end(), rest.begin(), rest.end());
    return argv;
}

std::string writeFile(const std::string& dir, const std::string& name, const std::string& text) {
    const std::string path = dir + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

size_t countLines(const std::string& text) { return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')); }

}  // namespace

TEST(Avmngctl, CommandsListsAllIdsWithoutADaemon) {
    const auto r = run({ctl(), "commands"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(countLines(r.out), 56u);
    EXPECT_NE(r.out.find("55  getDestinationChannelGain"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("GET get gain of channels on Listener XC"), std::string::npos);
    EXPECT_NE(r.out.find("42  -"), std::string::npos);
}

TEST(Avmngctl, SendByIdOrNamePrintsTheReply) {
    EmulatorProcess emulator;
    const auto pretty = run(ctlArgs(emulator, {"send", "51"}));
    ASSERT_EQ(pretty.status, 0) << pretty.err;
    EXPECT_GT(countLines(pretty.out), 1u);
    EXPECT_TRUE(e2e::parse(pretty.out)["senders"].isArray());
    for (const char* name : {"getResourceAllocatedIds", "AES67_GET_RESOURCE_ALLOCATED_IDS"}) {
        const auto compact = run(ctlArgs(emulator, {"--compact", "send", name}));
        ASSERT_EQ(compact.status, 0) << compact.err;
        EXPECT_EQ(compact.out, "{\"receivers\":[],\"senders\":[]}\n");
    }
    const std::string dir = e2e::makeTempDir("ctl");
    const std::string request = writeFile(dir, "req.json", "{\"pos\":4,\"name\":\"from file\"}");
    ASSERT_EQ(run(ctlArgs(emulator, {"send", "9", "@" + request})).status, 0);
    const auto files = run(ctlArgs(emulator, {"files"}));
    EXPECT_NE(files.out.find("from file"), std::string::npos) << files.out;
}

TEST(Avmngctl, FailuresGiveOneLineAndANonZeroStatus) {
    EmulatorProcess emulator;
    struct Case {
        std::vector<std::string> args;
        int status;
        const char* text;
    };
    const std::vector<Case> cases = {
        {{"send", "4", "{\"id\":999}"}, 1, "error -16 (no such entry or no free position)"},
        {{"send", "15", "{\"id\":0}"}, 1, "error -14"},
        {{"send", "4", "{not json"}, 2, "request is not valid JSON"},
        {{"send", "nosuchcommand"}, 2, "unknown command"},
        {{"send", "56"}, 2, "unknown command"},
        {{"remove", "12345"}, 1, "error -16"},
        {{"load", "11"}, 1, "error -8"},
        {{"load", "5"}, 1, "error -16"},
        {{"add-source", "/nonexistent.json"}, 2, "cannot read"},
    };
    for (const auto& c : cases) {
        const auto r = run(ctlArgs(emulator, c.args));
        EXPECT_EQ(r.status, c.status) << c.args[0] << " " << r.err;
        EXPECT_NE(r.err.find(c.text), std::string::npos) << r.err;
        EXPECT_EQ(countLines(r.err), 1u) << r.err;
    }
}

TEST(Avmngctl, NoDaemonFailsWithinItsTimeout) {
    const int port = e2e::freeLoopbackPort();
    const auto start = std::chrono::steady_clock::now();
    const auto r = run({ctl(), "--port", std::to_string(port), "--timeout", "300", "send", "51"}, 10000);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("error -105"), std::string::npos) << r.err;
    EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count(), 5000);
}

