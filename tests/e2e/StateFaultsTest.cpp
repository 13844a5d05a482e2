// Faults that once made the emulator lose acknowledged state or never start again, each
// replayed against the emulator process and followed by a restart: the daemon starts, and
// what was acknowledged is still there. The command-line refusals of the daemon as well.

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <memory>
#include <sstream>

#include "EmulatorProcess.h"

using namespace pimav::detail;

namespace {

const char* const kSender = R"({"name":"S","audio-sources":[{"channel-list":[{"channel":0}]}]})";

std::string nested(unsigned levels) {
    std::string text;
    for (unsigned i = 1; i < levels; ++i) {
        text += "{\"a\":";
    }
    return text + "{}" + std::string(levels - 1, '}');
}

std::string fileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Runs the rest of its arguments with `dir` mounted read-only in a mount namespace of its
// own: the folder is read-only for root too, and the mount goes away with the process.
std::vector<std::string> readOnlyMount(const std::string& dir) {
    std::vector<std::string> wrapper = {"/usr/bin/unshare"};
    if (::geteuid() != 0) {
        wrapper.emplace_back("--map-root-user");
    }
    wrapper.insert(wrapper.end(),
                   {"--mount", "/bin/sh", "-c", "mount --bind -o ro \"$0\" \"$0\" && exec \"$@\"", dir});
    return wrapper;
}

struct Step {
    unsigned id;
    std::string request;  // "" sends none
    int code;             // 0: answered without an error
};

struct Fault {
    const char* name;
    std::vector<std::string> options;
    bool readOnly;  // the steps run with the state folder mounted read-only
    std::vector<Step> steps;
    // Run before the restart and after it.
    std::function<void(const std::string& dir)> plant;
    std::function<void(const EmulatorProcess&)> check;
};

TEST(StateFaultsTest, NoRequestOrFileStopsTheDaemonOrLosesAcknowledgedState) {
    const std::vector<Fault> faults = {
        {"command 30 with a document nested 990 levels",
         {},
         false,
         {{30, "{\"hdmi\":" + nested(990) + "}", -32}},
         nullptr,
         nullptr},
        {"command 12 with a configuration of the wrong kind, then an unrelated write",
         {},
         false,
         {{12, R"({"sessions":[{"id":7,"kind":"receiver","config":"x"}]})", -13}, {2, kSender, 0}},
         nullptr,
         [](const EmulatorProcess& e) { EXPECT_EQ(e.call(51)["senders"].size(), 2u); }},
        {"command 12 with a number as configuration, then the lists",
         {},
         false,
         {{12, R"({"sessions":[{"id":7,"config":5}]})", -13},
          {5, "", 0},
          {15, R"({"id":1})", 0},
          {50, "", 0}},
         nullptr,
         [](const EmulatorProcess& e) { EXPECT_EQ(e.call(50)["list"].size(), 1u); }},
        {"a sender added and a position saved with the state folder read-only",
         {},
         true,
         {{2, kSender, -30}, {9, R"({"pos":1,"name":"x"})", -30}, {51, "", 0}},
         nullptr,
         [](const EmulatorProcess& e) {
             EXPECT_EQ(e.call(51)["senders"].size(), 1u);
             EXPECT_EQ(e.call(13)["list"].size(), 0u);
         }},
        {"nested input, written compact",
         {},
         false,
         {{30, "{\"hdmi\":" + nested(64) + "}", 0}},
         nullptr,
         [](const EmulatorProcess& e) {
             const std::string text = fileText(e.configDir() + "/running.json");
             EXPECT_EQ(text.find('\n'), std::string::npos) << text.size() << " bytes";
         }},
        {"gains of a removed session",
         {},
         false,
         {{2, kSender, 0},
          {52, R"({"session-id":2,"channel-list":[{"position":0,"channel-gain":0.5,"mute":true}]})", 0},
          {4, R"({"id":2})", 0}},
         nullptr,
         [](const EmulatorProcess& e) {
             EXPECT_EQ(compact(e.call(10)["running"]["settings"]["source-gains"]), "{}");
         }},
        {"sessions beyond --max-sessions",
         {"--max-sessions", "2"},
         false,
         {{2, kSender, 0}, {2, kSender, -31}},
         nullptr,
         [](const EmulatorProcess& e) { EXPECT_EQ(e.call(51)["senders"].size(), 2u); }},
        {"saved files that cannot be read, and a torn write",
         {},
         false,
         {},
         [](const std::string& dir) {
             std::ofstream(dir + "/sdiBiDirConfig3.json")
                 << R"({"name":"deep","running":{"sessions":[],"settings":{"hdmi-pattern":)" + nested(999) +
                        "}}}";
             std::ofstream(dir + "/startup.json") << R"({"startup":"x"})";
             std::ofstream(dir + "/running.json.tmpQ1w2E3") << "{";
         },
         [](const EmulatorProcess& e) {
             EXPECT_EQ(access((e.configDir() + "/sdiBiDirConfig3.json.bad").c_str(), F_OK), 0);
             EXPECT_EQ(access((e.configDir() + "/startup.json.bad").c_str(), F_OK), 0);
             EXPECT_NE(access((e.configDir() + "/running.json.tmpQ1w2E3").c_str(), F_OK), 0);
         }},
    };
    std::vector<std::string> probe = readOnlyMount(makeTempDir("mount-probe"));
    probe.emplace_back("/bin/true");
    const bool canMount = run(probe).status == 0;
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.name);
        if (fault.readOnly && !canMount) {
            std::cout << "[ SKIPPED  ] " << fault.name
                      << ": no read-only bind mount here (unshare refused)\n";
            continue;
        }
        const std::string dir = makeTempDir("faults");
        {
            // What was acknowledged before the fault: one sender.
            EmulatorProcess before(dir);
            ASSERT_TRUE(before.call(2, parse(kSender))["session-id"].isUInt64());
        }
        {
            EmulatorProcess emulator(dir, fault.options,
                                     fault.readOnly ? readOnlyMount(dir) : std::vector<std::string>{});
            for (const Step& step : fault.steps) {
                const Json::Value reply =
                    emulator.call(step.id, step.request.empty() ? Json::Value() : parse(step.request));
                ASSERT_TRUE(reply.isObject()) << "no reply to command " << step.id;
                EXPECT_EQ(reply.get("error", Json::Value()).get("code", 0).asInt(), step.code)
                    << "command " << step.id << ": " << compact(reply).substr(0, 300);
            }
            EXPECT_EQ(emulator.stop(), 0);
        }
        if (fault.plant) {
            fault.plant(dir);
        }
        std::unique_ptr<EmulatorProcess> started;
        try {
            started = std::make_unique<EmulatorProcess>(dir, fault.options);
        } catch (const std::exception& e) {
            ADD_FAILURE() << "the daemon does not start again: " << e.what();
            continue;
        }
        const EmulatorProcess& restarted = *started;
        Json::Value first;
        first["id"] = 1;
        EXPECT_EQ(restarted.call(15, first)["name"].asString(), "S") << "the acknowledged sender is gone";
        if (fault.check) {
            fault.check(restarted);
        }
    }
}

// Usage errors: one line naming the cause on stderr, exit status 2.
TEST(EmulatorUsage, BadOptionsAreRefusedAtStartWithStatusTwo) {
    struct Case {
        std::vector<std::string> args;
        const char* says;
    };
    const std::vector<Case> cases = {
        {{"--advertise", "/nonexistent"}, "/nonexistent"},
        {{"--local-ip", "300.1.1.1"}, "--local-ip"},
        {{"--log-level", "99"}, "--log-level"},
        {{"--max-sessions", "0"}, "--max-sessions"},
        {{"--board", "NOPE"}, "unknown board model NOPE"},
        {{"--frobnicate"}, "--frobnicate"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> argv = {binaryPath("emulator/avmng-emulator"), "--bind", "tcp://127.0.0.1:1",
                                         "--config-dir", makeTempDir("usage")};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        const RunResult result = run(argv, 5000);
        EXPECT_EQ(result.status, 2) << c.args[0] << ": " << result.err;
        EXPECT_NE(result.err.find(c.says), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << "one line: " << result.err;
    }
}

}  // namespace
