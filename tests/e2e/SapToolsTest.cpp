// sdptool announce and listen as processes, on loopback: what a listener prints for two
// announcements (one compressed), a deletion and a packet it refuses.

#include <gtest/gtest.h>

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <sstream>
#include <stdexcept>

#include "EmulatorProcess.h"
#include "sap/UdpSocket.h"

using namespace pimav::detail;

namespace {

std::string sdptool() {
    return binaryPath("tools/sdptool");
}
std::string corpus(const std::string& name) {
    return sourcePath("tests/data/sdp-corpus/" + name);
}

// A program running beside the test, whose output is read while it runs.
class Background {
public:
    explicit Background(const std::vector<std::string>& argv) : m_pid(spawn(argv, m_fds[0], m_fds[1])) {}
    ~Background() {
        stop();
        ::close(m_fds[0]);
        ::close(m_fds[1]);
    }

    // Reads until `stream` (0 out, 1 err) holds `lines` lines; false after `timeoutMs`.
    bool waitForLines(int stream, size_t lines, int timeoutMs) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (std::count(m_text[stream].begin(), m_text[stream].end(), '\n') < static_cast<long>(lines)) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            pollfd ready{m_fds[stream], POLLIN, 0};
            if (left.count() <= 0 || ::poll(&ready, 1, static_cast<int>(left.count())) <= 0) {
                return false;
            }
            char buffer[4096];
            const ssize_t n = ::read(m_fds[stream], buffer, sizeof buffer);
            if (n <= 0) {
                return false;
            }
            m_text[stream].append(buffer, static_cast<size_t>(n));
        }
        return true;
    }
    const std::string& text(int stream) const { return m_text[stream]; }

    // SIGTERM and wait; the exit status.
    int stop() {
        if (m_pid <= 0) {
            return m_status;
        }
        ::kill(m_pid, SIGTERM);
        int status = 0;
        ::waitpid(m_pid, &status, 0);
        m_pid = -1;
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return m_status;
    }

private:
    int m_fds[2] = {-1, -1};  // before m_pid, which the constructor fills together with them
    pid_t m_pid = -1;
    int m_status = -1;
    std::string m_text[2];
};

}  // namespace

TEST(SapTools, ListenPrintsWhatAnnounceSends) {
    UdpEndpoint endpoint;
    ASSERT_TRUE(UdpEndpoint::parse("127.0.0.1:0", endpoint));
    endpoint.port = UdpSocket::listen(endpoint).localEndpoint().port;  // a free UDP port
    const std::string on = endpoint.toString();

    Background listen({sdptool(), "listen", "--on", on, "--json", "--seconds", "60"});
    ASSERT_TRUE(listen.waitForLines(1, 1, 10000)) << listen.text(1);
    EXPECT_EQ(listen.text(1), "sdptool: listening on " + on + "\n");

    const std::string audio = corpus("st2110-30-l24-48k-8ch-1ms-ttl128-framecount.sdp");
    const std::string remote = corpus("aes67-l16-48k-1ms-sap-remote-source.sdp");
    EXPECT_EQ(run({sdptool(), "announce", audio, "--to", on, "--count", "1"}).status, 0);
    EXPECT_EQ(run({sdptool(), "announce", remote, "--to", on, "--count", "1", "--compress"}).status, 0);
    EXPECT_EQ(run({sdptool(), "announce", audio, "--to", on, "--delete"}).status, 0);
    UdpSocket::connect(endpoint).send("\x20");
    ASSERT_TRUE(listen.waitForLines(0, 4, 10000)) << listen.text(0);
    EXPECT_EQ(listen.stop(), 0);

    std::istringstream lines(listen.text(0));
    std::vector<Json::Value> heard;
    for (std::string line; std::getline(lines, line);) {
        heard.push_back(parse(line));
    }
    ASSERT_EQ(heard.size(), 4u) << listen.text(0);
    struct Expected {
        const char* type;
        const char* name;
        bool compressed;
    };
    const Expected expected[] = {
        {"announce", "ST2110-30A", false},
        {"announce", "ALSA Source 2", true},
        {"delete", "ST2110-30A", false},
    };
    for (size_t i = 0; i < 3; ++i) {
        const Json::Value& h = heard[i];
        EXPECT_EQ(h["type"].asString(), expected[i].type) << compact(h);
        EXPECT_EQ(h["name"].asString(), expected[i].name) << compact(h);
        EXPECT_EQ(h["compressed"].asBool(), expected[i].compressed) << compact(h);
        EXPECT_EQ(h["origin"].asString(), "127.0.0.1");
        EXPECT_EQ(h["url"].asString(), "sap://" + on + "/" + h["hash"].asString());
        EXPECT_TRUE(h["sdp-ok"].asBool()) << compact(h);
    }
    EXPECT_EQ(heard[2]["hash"], heard[0]["hash"]);  // the deletion names the announcement
    EXPECT_NE(heard[1]["hash"], heard[0]["hash"]);
    EXPECT_EQ(compact(heard[3]), "{\"from\":\"" + heard[3]["from"].asString() +
                                     "\",\"reason\":\"truncated\",\"type\":\"refused\"}");
}

TEST(SapTools, RefusesBadArgumentsBeforeSending) {
    const std::string audio = corpus("st2110-30-l24-48k-8ch-1ms-ttl128-framecount.sdp");
    const std::vector<std::vector<std::string>> rows = {
        {"announce", audio, "--to", "127.0.0.1"},
        {"announce", "/nonexistent/a.sdp", "--to", "127.0.0.1:9"},
        {"announce", audio, "--to", "127.0.0.1:9", "--interface", "eth0"},
        {"announce", audio, "--to", "127.0.0.1:9", "--origin", "host"},
        {"listen", "--on", "127.0.0.1:x"},
    };
    for (auto row : rows) {
        row.insert(row.begin(), sdptool());
        const auto result = run(row);
        EXPECT_EQ(result.status, 2) << row[1] << " " << row[3] << ": " << result.err;
    }
    const auto quiet = run({sdptool(), "listen", "--on", "127.0.0.1:0", "--seconds", "0.1"});
    EXPECT_EQ(quiet.status, 0) << quiet.err;
    EXPECT_EQ(quiet.out, "");
}
