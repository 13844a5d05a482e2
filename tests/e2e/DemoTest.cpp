// scripts/demo beside a daemon it did not start: it leaves that daemon's files as they
// were, stops at once when its port is taken, and otherwise runs on a port of its own.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

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

// A TCP socket listening on a loopback port, as a program that is no ZeroMQ daemon holds it.
class PlainListener {
public:
    PlainListener() : m_fd(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof addr;
        if (::bind(m_fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 || ::listen(m_fd, 1) != 0 ||
            ::getsockname(m_fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
            throw std::runtime_error("cannot listen on loopback");
        }
        m_port = ntohs(addr.sin_port);
    }
    ~PlainListener() { ::close(m_fd); }
    PlainListener(const PlainListener&) = delete;
    PlainListener& operator=(const PlainListener&) = delete;
    int port() const { return m_port; }

private:
    int m_fd;
    int m_port = 0;
};

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

    PlainListener plain;
    for (const int taken : {foreign.port(), plain.port()}) {
        const std::string port = std::to_string(taken);
        const auto start = std::chrono::steady_clock::now();
        const auto r = runDemo({"AVMNG_DEMO_PORT=" + port});
        const auto ms =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
                .count();
        EXPECT_EQ(r.status, 1) << r.out;
        EXPECT_EQ(r.err, "demo: avmng-emulator: cannot serve on tcp://127.0.0.1:" + port +
                             ": Address already in use\n");
        EXPECT_EQ(r.out, "");
        EXPECT_LT(ms, 10000);
    }

    const auto own = runDemo({});
    EXPECT_EQ(own.status, 0) << own.err;
    EXPECT_NE(own.out.find("result             all steps succeeded"), std::string::npos) << own.out;
    EXPECT_EQ(own.out.find("127.0.0.1:" + std::to_string(foreign.port())), std::string::npos) << own.out;

    EXPECT_EQ(filesOf(foreign.configDir()), before);
    EXPECT_EQ(compact(foreign.call(13)), compact(table)) << "the foreign emulator answers as before";
}
