// Faults only a process shows, each followed by a restart: the daemon starts, and what was
// acknowledged is still there (the request and file faults of the state are tested
// in-process, tests/emulator).

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "EmulatorProcess.h"

using namespace pimav::detail;

namespace {

const char* const kSender = R"({"name":"S","audio-sources":[{"channel-list":[{"channel":0}]}]})";

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
    std::function<void(const EmulatorProcess&)> check;  // after the restart
};

TEST(StateFaultsTest, AReadOnlyFolderOrALimitLosesNoAcknowledgedState) {
    const std::vector<Fault> faults = {
        {"a sender added and a position saved with the state folder read-only",
         {},
         true,
         {{2, kSender, -30}, {9, R"({"pos":1,"name":"x"})", -30}, {51, "", 0}},
         [](const EmulatorProcess& e) {
             EXPECT_EQ(e.call(51)["senders"].size(), 1u);
             EXPECT_EQ(e.call(13)["list"].size(), 0u);
         }},
        {"sessions beyond --max-sessions",
         {"--max-sessions", "2"},
         false,
         {{2, kSender, 0}, {2, kSender, -31}},
         [](const EmulatorProcess& e) { EXPECT_EQ(e.call(51)["senders"].size(), 2u); }},
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
        const EmulatorProcess restarted(dir, fault.options);  // throws when the daemon does not start
        Json::Value first;
        first["id"] = 1;
        EXPECT_EQ(restarted.call(15, first)["name"].asString(), "S") << "the acknowledged sender is gone";
        if (fault.check) {
            fault.check(restarted);
        }
    }
}

}  // namespace
