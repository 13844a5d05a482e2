#pragma once

// Runs avmng-emulator as a child process on a free loopback port, for end-to-end tests,
// and speaks the raw wire protocol to it.

#include <json/json.h>
#include <sys/resource.h>
#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>
#include <zmq.hpp>

namespace pimav::detail {

std::string binaryPath(const std::string& relative);  // below the build directory
std::string sourcePath(const std::string& relative);  // below the source directory

// A fresh empty directory under the system's temporary folder.
std::string makeTempDir(const std::string& tag);

// A TCP port on 127.0.0.1 that nothing listens on at the time of the call.
int freeLoopbackPort();

// A loopback port kept bound, without listening, while the object lives: a connection to
// it is refused at once, and no other program (another test's daemon) can take it.
class ReservedPort {
public:
    ReservedPort();
    ~ReservedPort();
    ReservedPort(const ReservedPort&) = delete;
    ReservedPort& operator=(const ReservedPort&) = delete;
    int port() const { return m_port; }

private:
    int m_fd = -1;
    int m_port = 0;
};

struct RunResult {
    int status = -1;  // exit status, or 128 + signal
    std::string out;
    std::string err;
};

// Starts a program with its standard output and error on pipes, whose reading ends go to
// `outFd` and `errFd`; returns its pid.
pid_t spawn(const std::vector<std::string>& argv, int& outFd, int& errFd);

// Runs a program to its end with a time limit (killed after it), capturing its output.
RunResult run(const std::vector<std::string>& argv, int timeoutMs = 20000);

// A program running beside the test, whose output is read while it runs.
class Background {
public:
    explicit Background(const std::vector<std::string>& argv) : m_pid(spawn(argv, m_fds[0], m_fds[1])) {}
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    // Reads until `stream` (0 out, 1 err) holds `lines` lines; false after `timeoutMs`.
    bool waitForLines(int stream, size_t lines, int timeoutMs);
    const std::string& text(int stream) const { return m_text[stream]; }

    // Reads what is there, waiting until `deadline` at most; false once both streams are
    // closed or the deadline has passed.
    bool readSome(std::chrono::steady_clock::time_point deadline);

    // SIGTERM and wait; the exit status. What it wrote can still be read.
    int stop();
    // Sends `signal` (0: none) and waits; the exit status, -1 after SIGKILL.
    int finish(int signal);

private:
    int m_fds[2] = {-1, -1};  // before m_pid, which the constructor fills together with them
    pid_t m_pid = -1;
    int m_status = -1;
    std::string m_text[2];
};

// A resource limit (soft and hard) for a child process: {RLIMIT_AS, 1 << 30}, ...
struct ChildLimit {
    int resource;
    rlim_t value;
};

class EmulatorProcess {
public:
    // Starts the emulator with its state in `configDir` (a new temporary directory when
    // empty) and `extraArgs`, through `wrapper` (a command line that ends by running the
    // rest of its arguments) when given, under `limits`; waits until it answers (with
    // --curve-secret, which the plain call() cannot pass, until it listens).
    explicit EmulatorProcess(std::string configDir = "", std::vector<std::string> extraArgs = {},
                             std::vector<std::string> wrapper = {}, std::vector<ChildLimit> limits = {});
    ~EmulatorProcess();
    EmulatorProcess(const EmulatorProcess&) = delete;
    EmulatorProcess& operator=(const EmulatorProcess&) = delete;

    int port() const { return m_port; }
    std::string endpoint() const;
    const std::string& configDir() const { return m_config_dir; }
    pid_t pid() const { return m_pid; }
    bool running() const { return m_pid > 0; }
    // False once the process has ended (by itself or killed); reaps it then.
    bool alive();

    // SIGTERM and wait; returns the exit status (128 + signal when killed).
    int stop();
    // SIGKILL and wait, as a crash would.
    void kill9();
    // SIGHUP (reload the advertise folder).
    void hangUp();

    // One exchange of the raw wire protocol: frame 1 the id (4 bytes little-endian),
    // frame 2 the compact JSON text (empty when `request` is null). Returns the parsed
    // reply (null on timeout).
    Json::Value call(unsigned id, const Json::Value& request = Json::Value(), int timeoutMs = 5000) const;
    // Sends arbitrary frames and returns the reply text ("" on timeout).
    std::string callRaw(const std::vector<std::string>& frames, int timeoutMs = 5000) const;

private:
    void start();
    bool listening() const;

    std::string m_config_dir;
    std::vector<std::string> m_extra;
    std::vector<std::string> m_wrapper;
    std::vector<ChildLimit> m_limits;
    // One REQ socket reused across calls; dropped after a timeout so that the next call
    // starts a fresh exchange.
    mutable std::unique_ptr<zmq::socket_t> m_socket;
    int m_port = 0;
    pid_t m_pid = -1;
};

std::string compact(const Json::Value& value);
Json::Value parse(const std::string& text);

}  // namespace pimav::detail
