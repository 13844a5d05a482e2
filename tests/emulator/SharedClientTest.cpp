// One AvMngApi shared by several host threads against the emulator served on loopback in
// this process (the case ThreadSanitizer builds watch).

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ServedEmulator.h"
#include "pimAvMngApi/api/AvMngApi.h"

using namespace pimav::detail;

namespace {

// Each thread adds its own senders, reads them back many times, sees them in the id list,
// removes them and sees them gone: every result is checked, so a reply handed to the wrong
// caller or a torn exchange shows up as a mismatch.
TEST(SharedClient, EightThreadsShareOneAvMngApi) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 5;
    constexpr int kReadsPerRound = 28;  // 2 calls each: about 300 calls per thread
    ServedEmulator served;
    zmq::context_t context;
    AvMngApi api;
    api.jsonApi.ipcPort = served.port();
    api.jsonApi.setClientTimeoutMs(30000);
    ASSERT_EQ(api.init(context, "127.0.0.1"), 0);

    std::vector<std::vector<std::string>> faults(kThreads);
    std::vector<int> calls(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            auto& fault = faults[static_cast<size_t>(t)];
            int& n = calls[static_cast<size_t>(t)];
            const auto check = [&](bool ok, const std::string& what) {
                ++n;
                if (!ok) {
                    fault.push_back(what);
                }
            };
            for (int round = 0; round < kRounds; ++round) {
                const std::string name = "thread " + std::to_string(t) + " round " + std::to_string(round);
                SourceApi sender;
                sender.m_name = name;
                AudioSource audio;
                audio.m_codec.setCodecValue(Codec::CODEC_L24);
                sender.m_audio_sources = {audio};
                check(api.addSourceSession(&sender) == 0 && sender.m_session_id != 0, "add " + name);
                const session_id_t id = sender.m_session_id;
                for (int i = 0; i < kReadsPerRound; ++i) {
                    SessionBasicInfo info;
                    check(api.getSessionBasicInfo(id, &info) == 0 && info.m_id == id && info.m_name == name,
                          "basic info of " + name);
                    std::string sdp;
                    check(api.getSessionSdp(id, &sdp) == 0 &&
                              sdp.find("\ns=" + name + "\n") != std::string::npos,
                          "SDP of " + name);
                }
                std::list<unsigned long long> senders;
                std::list<unsigned long long> receivers;
                check(api.getResourceAllocatedIds(senders, receivers) == 0 &&
                          std::find(senders.begin(), senders.end(), id) != senders.end(),
                      "id list with " + name);
                check(api.removeSession(id) == 0, "remove " + name);
                std::string gone;
                check(api.getSessionSdp(id, &gone) == -16, "SDP of removed " + name);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(faults[static_cast<size_t>(t)], std::vector<std::string>()) << "thread " << t;
        EXPECT_EQ(calls[static_cast<size_t>(t)], kRounds * (4 + 2 * kReadsPerRound));
    }
}

}  // namespace
