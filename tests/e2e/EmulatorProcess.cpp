#include "EmulatorProcess.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <thread>
#include <zmq.hpp>

#include "platform/IpcWire.h"

namespace pimav::detail {

namespace {

zmq::context_t& context() {
    static zmq::context_t ctx(1);
    return ctx;
}

int waitStatus(int status) {
    if (WIFEXITED(status)) {
        return WEXITSTATUS(status);
    }
    if (WIFSIGNALED(status)) {
        return 128 + WTERMSIG(status);
    }
    return -1;
}

// Sends `signal` to `pid` and reaps it; the exit status. `pid` is -1 afterwards.
int signalAndReap(pid_t& pid, int signal) {
    ::kill(pid, signal);
    int status = 0;
    ::waitpid(pid, &status, 0);
    pid = -1;
    return waitStatus(status);
}

// In a forked child: becomes the program argv[0] with its arguments.
[[noreturn]] void execArgv(const std::vector<std::string>& argv) {
    std::vector<char*> args;
    for (const auto& a : argv) {
        args.push_back(const_cast<char*>(a.c_str()));
    }
    args.push_back(nullptr);
    ::execv(args[0], args.data());
    _exit(127);
}

}  // namespace

std::string binaryPath(const std::string& relative) { return std::string(PIMAV_BINARY_DIR) + "/" + relative; }

std::string sourcePath(const std::string& relative) { return std::string(PIMAV_SOURCE_DIR) + "/" + relative; }

std::string makeTempDir(const std::string& tag) {
    const char* base = std::getenv("TMPDIR");
    std::string tmpl = std::string(base != nullptr && base[0] != '\0' ? base : "/tmp") + "/pimav-" + tag + "-XXXXXX";
    if (::mkdtemp(&tmpl[0]) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    return tmpl;
}

ReservedPort::ReservedPort() : m_fd(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = 0;
    socklen_t len = sizeof addr;
    if (m_fd < 0 || ::bind(m_fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
        ::getsockname(m_fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
        throw std::runtime_error("no free loopback port");
    }
    m_port = ntohs(addr.sin_port);
}

ReservedPort::~ReservedPort() { ::close(m_fd); }

int freeLoopbackPort() { return ReservedPort().port(); }

pid_t spawn(const std::vector<std::string>& argv, int& outFd, int& errFd) {
    int outPipe[2];
    int errPipe[2];
    if (::pipe(outPipe) != 0 || ::pipe(errPipe) != 0) {
        throw std::runtime_error("pipe failed");
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(outPipe[1], 1);
        ::dup2(errPipe[1], 2);
        ::close(outPipe[0]);
        ::close(errPipe[0]);
        execArgv(argv);
    }
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    outFd = outPipe[0];
    errFd = errPipe[0];
    return pid;
}

RunResult run(const std::vector<std::string>& argv, int timeoutMs) {
    Background program(argv);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (program.readSome(deadline)) {
    }
    RunResult result;
    result.status = program.finish(std::chrono::steady_clock::now() >= deadline ? SIGKILL : 0);
    result.out = program.text(0);
    result.err = program.text(1);
    return result;
}

Background::~Background() {
    stop();
    for (int fd : m_fds) {
        if (fd >= 0) {
            ::close(fd);
        }
    }
}

bool Background::readSome(std::chrono::steady_clock::time_point deadline) {
    pollfd fds[2] = {{m_fds[0], POLLIN, 0}, {m_fds[1], POLLIN, 0}};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if ((m_fds[0] < 0 && m_fds[1] < 0) || left.count() <= 0) {
        return false;
    }
    const int ready = ::poll(fds, 2, static_cast<int>(left.count()));
    if (ready <= 0) {
        return ready == 0 || errno == EINTR;  // at the deadline, the next call says so
    }
    for (int i = 0; i < 2; ++i) {
        if (m_fds[i] >= 0 && (fds[i].revents & (POLLIN | POLLHUP)) != 0) {
            char buffer[4096];
            const ssize_t n = ::read(m_fds[i], buffer, sizeof buffer);
            if (n > 0) {
                m_text[i].append(buffer, static_cast<size_t>(n));
            } else {
                ::close(m_fds[i]);
                m_fds[i] = -1;
            }
        }
    }
    return true;
}

bool Background::waitForLines(int stream, size_t lines, int timeoutMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (std::count(m_text[stream].begin(), m_text[stream].end(), '\n') < static_cast<long>(lines)) {
        if (!readSome(deadline)) {
            return false;
        }
    }
    return true;
}

int Background::finish(int signal) {
    if (m_pid > 0) {
        const int status = signalAndReap(m_pid, signal);
        m_status = signal == SIGKILL ? -1 : status;
    }
    return m_status;
}

int Background::stop() {
    if (m_pid > 0) {
        m_status = signalAndReap(m_pid, SIGTERM);
    }
    return m_status;
}

EmulatorProcess::EmulatorProcess(std::string configDir, std::vector<std::string> extraArgs,
                                 std::vector<std::string> wrapper, std::vector<ChildLimit> limits)
    : m_config_dir(configDir.empty() ? makeTempDir("emu") : std::move(configDir)),
      m_extra(std::move(extraArgs)),
      m_wrapper(std::move(wrapper)),
      m_limits(std::move(limits)) {
    start();
}

bool EmulatorProcess::alive() {
    int status = 0;
    if (m_pid > 0 && ::waitpid(m_pid, &status, WNOHANG) == m_pid) {
        m_pid = -1;
    }
    return m_pid > 0;
}

EmulatorProcess::~EmulatorProcess() {
    if (m_pid > 0) {
        stop();
    }
}

std::string EmulatorProcess::endpoint() const { return "tcp://127.0.0.1:" + std::to_string(m_port); }

bool EmulatorProcess::listening() const {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = htons(static_cast<uint16_t>(m_port));
    const bool connected = fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
    if (fd >= 0) {
        ::close(fd);
    }
    return connected;
}

void EmulatorProcess::start() {
    // A plain client cannot talk to a CURVE daemon: then listening is all that shows.
    const bool curve = std::find(m_extra.begin(), m_extra.end(), "--curve-secret") != m_extra.end();
    for (int attempt = 0; attempt < 5; ++attempt) {
        m_port = freeLoopbackPort();
        std::vector<std::string> argv = {binaryPath("emulator/avmng-emulator"), "--bind", endpoint(), "--config-dir",
                                         m_config_dir, "--log-level", "1"};
        argv.insert(argv.end(), m_extra.begin(), m_extra.end());
        argv.insert(argv.begin(), m_wrapper.begin(), m_wrapper.end());
        m_pid = ::fork();
        if (m_pid == 0) {
            const int null = ::open("/dev/null", O_WRONLY);
            ::dup2(null, 1);
            for (const ChildLimit& limit : m_limits) {
                const rlimit value{limit.value, limit.value};
                ::setrlimit(limit.resource, &value);
            }
            execArgv(argv);
        }
        for (int i = 0; i < 100; ++i) {
            int status = 0;
            if (::waitpid(m_pid, &status, WNOHANG) == m_pid) {
                m_pid = -1;
                break;  // did not start (port taken meanwhile?): try another port
            }
            if (curve ? listening() : !call(51, Json::Value(), 200).isNull()) {
                return;
            }
            if (curve) {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
        }
        if (m_pid > 0) {
            kill9();
        }
    }
    throw std::runtime_error("the emulator did not start");
}

int EmulatorProcess::stop() {
    m_socket.reset();
    return m_pid > 0 ? signalAndReap(m_pid, SIGTERM) : -1;
}

void EmulatorProcess::kill9() {
    m_socket.reset();
    if (m_pid > 0) {
        signalAndReap(m_pid, SIGKILL);
    }
}

void EmulatorProcess::hangUp() { ::kill(m_pid, SIGHUP); }

std::string EmulatorProcess::callRaw(const std::vector<std::string>& frames, int timeoutMs) const {
    if (!m_socket) {
        m_socket = std::make_unique<zmq::socket_t>(context(), zmq::socket_type::req);
        m_socket->set(zmq::sockopt::linger, 0);
        m_socket->connect(endpoint());
    }
    m_socket->set(zmq::sockopt::rcvtimeo, timeoutMs);
    for (size_t i = 0; i < frames.size(); ++i) {
        m_socket->send(zmq::buffer(frames[i]), i + 1 < frames.size() ? zmq::send_flags::sndmore : zmq::send_flags::none);
    }
    zmq::message_t reply;
    if (!m_socket->recv(reply, zmq::recv_flags::none)) {
        m_socket.reset();
        return "";
    }
    return reply.to_string();
}

Json::Value EmulatorProcess::call(unsigned id, const Json::Value& request, int timeoutMs) const {
    const std::string text =
        callRaw({encodeCommandId(id), request.isNull() ? std::string() : compact(request)}, timeoutMs);
    return text.empty() ? Json::Value() : parse(text);
}

std::string compact(const Json::Value& value) { return renderDocument(value); }

Json::Value parse(const std::string& text) {
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors)) {
        return Json::Value();
    }
    return value;
}

}  // namespace pimav::detail
