// Load driver for a running avmng-emulator (loopback only): how fast small requests are
// answered while one peer floods large bodies, and what idle connections cost the daemon.
//
//   bench_emulator_load ENDPOINT rate [CLIENTS SECONDS [FLOOD_BYTES [DEPTH]]]
//       CLIENTS REQ sockets send command 51 (a small request) in a loop for SECONDS;
//       with FLOOD_BYTES one more peer (a DEALER) keeps DEPTH requests of command 5 with a
//       body of that many bytes in flight. Prints the small requests per second, their
//       slowest round trip, and what became of the flood.
//   bench_emulator_load ENDPOINT frame BYTES
//       sends one request whose body frame has BYTES bytes, then times a small request.
//   bench_emulator_load ENDPOINT idle CONNECTIONS SECONDS PID
//       opens CONNECTIONS TCP connections that never speak, then reports the CPU time
//       that process PID used over SECONDS and the round trip of a small request.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <string>
#include <thread>
#include <vector>
#include <zmq.hpp>

#include "platform/IpcWire.h"
#include "support/ProcessCpu.h"

using namespace pimav::detail;
using Clock = std::chrono::steady_clock;

namespace {

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// One small request (command 51) on a fresh REQ socket; seconds until the reply, or -1.
double timedSmallRequest(zmq::context_t& context, const std::string& endpoint, int timeoutMs = 5000) {
    zmq::socket_t socket(context, zmq::socket_type::req);
    socket.set(zmq::sockopt::linger, 0);
    socket.set(zmq::sockopt::rcvtimeo, timeoutMs);
    socket.connect(endpoint);
    const auto start = Clock::now();
    socket.send(zmq::buffer(encodeCommandId(51)), zmq::send_flags::sndmore);
    socket.send(zmq::const_buffer(nullptr, 0), zmq::send_flags::none);
    zmq::message_t reply;
    return socket.recv(reply) ? secondsSince(start) : -1.0;
}

// A JSON object of about `bytes` bytes: {"pad":[0,0,...]}, the costly kind to parse.
std::string paddedBody(size_t bytes) {
    std::string body = "{\"pad\":[0";
    while (body.size() + 4 < bytes) {
        body += ",0";
    }
    return body + "]}";
}

int rate(zmq::context_t& context, const std::string& endpoint, int clients, double seconds, size_t floodBytes,
         int depth) {
    std::atomic<bool> stop{false};
    std::atomic<long> answered{0};
    std::atomic<long> failed{0};
    std::vector<double> slowest(static_cast<size_t>(clients), 0.0);
    std::vector<std::thread> threads;
    for (int c = 0; c < clients; ++c) {
        threads.emplace_back([&, c] {
            zmq::socket_t socket(context, zmq::socket_type::req);
            socket.set(zmq::sockopt::linger, 0);
            socket.set(zmq::sockopt::rcvtimeo, 10000);
            socket.connect(endpoint);
            const std::string id = encodeCommandId(51);
            zmq::message_t reply;
            while (!stop.load()) {
                const auto start = Clock::now();
                socket.send(zmq::buffer(id), zmq::send_flags::sndmore);
                socket.send(zmq::const_buffer(nullptr, 0), zmq::send_flags::none);
                if (!socket.recv(reply)) {
                    ++failed;
                    return;
                }
                slowest[static_cast<size_t>(c)] = std::max(slowest[static_cast<size_t>(c)], secondsSince(start));
                ++answered;
            }
        });
    }
    long floodSent = 0;
    long floodReplies = 0;
    long floodRefused = 0;
    std::thread flooder;
    if (floodBytes > 0) {
        flooder = std::thread([&] {
            zmq::socket_t socket(context, zmq::socket_type::dealer);
            socket.set(zmq::sockopt::linger, 0);
            socket.connect(endpoint);
            const std::string body = paddedBody(floodBytes);
            const std::string id = encodeCommandId(5);
            int inFlight = 0;
            while (!stop.load()) {
                while (inFlight < depth) {
                    socket.send(zmq::const_buffer(nullptr, 0), zmq::send_flags::sndmore);
                    socket.send(zmq::buffer(id), zmq::send_flags::sndmore);
                    socket.send(zmq::buffer(body), zmq::send_flags::none);
                    ++inFlight;
                    ++floodSent;
                }
                zmq::pollitem_t item{socket.handle(), 0, ZMQ_POLLIN, 0};
                if (zmq::poll(&item, 1, std::chrono::milliseconds(100)) <= 0) {
                    continue;
                }
                zmq::message_t part;
                std::string last;
                do {
                    (void)socket.recv(part);
                    last = part.to_string();
                } while (part.more());
                --inFlight;
                ++floodReplies;
                floodRefused += last.find("\"error\"") != std::string::npos ? 1 : 0;
            }
        });
    }
    const auto start = Clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    stop = true;
    for (auto& t : threads) {
        t.join();
    }
    const double elapsed = secondsSince(start);
    if (flooder.joinable()) {
        flooder.join();
    }
    std::printf("small requests: %.0f/s over %d clients, slowest round trip %.1f ms, %ld failed\n",
                static_cast<double>(answered.load()) / elapsed, clients,
                1000.0 * std::accumulate(slowest.begin(), slowest.end(), 0.0,
                                         [](double a, double b) { return std::max(a, b); }),
                failed.load());
    if (floodBytes > 0) {
        std::printf("flood: %ld bodies of %zu bytes sent, %ld answered (%ld of them refusals), %.0f/s\n", floodSent,
                    floodBytes, floodReplies, floodRefused, static_cast<double>(floodReplies) / elapsed);
    }
    return failed.load() == 0 ? 0 : 1;
}

int frame(zmq::context_t& context, const std::string& endpoint, size_t bytes) {
    zmq::socket_t socket(context, zmq::socket_type::req);
    socket.set(zmq::sockopt::linger, 0);
    socket.connect(endpoint);
    std::string body(bytes, ' ');
    body.front() = '{';
    body.back() = '}';
    socket.send(zmq::buffer(encodeCommandId(5)), zmq::send_flags::sndmore);
    socket.send(zmq::buffer(body), zmq::send_flags::none);
    body = std::string();
    const double small = timedSmallRequest(context, endpoint);
    socket.set(zmq::sockopt::rcvtimeo, 20000);
    zmq::message_t reply;
    const bool answered = socket.recv(reply).has_value();
    std::printf("frame of %zu bytes sent; a small request meanwhile took %.1f ms%s; the frame got %s\n", bytes,
                1000.0 * small, small < 0 ? " (no reply)" : "",
                answered ? ("the reply " + reply.to_string().substr(0, 120)).c_str() : "no reply within 20 s");
    return small < 0 ? 1 : 0;
}

int idle(zmq::context_t& context, const std::string& endpoint, int connections, double seconds, int pid) {
    const size_t colon = endpoint.rfind(':');
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(std::stoi(endpoint.substr(colon + 1))));
    inet_pton(AF_INET, endpoint.substr(6, colon - 6).c_str(), &address.sin_addr);
    std::vector<int> fds;
    for (int i = 0; i < connections; ++i) {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        if (fd < 0 || ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            std::printf("connection %d failed\n", i);
            if (fd >= 0) {
                ::close(fd);
            }
            break;
        }
        fds.push_back(fd);
    }
    const double before = cpuSeconds(pid);
    const auto start = Clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    const double used = cpuSeconds(pid) - before;
    const double elapsed = secondsSince(start);
    const double small = timedSmallRequest(context, endpoint);
    std::printf("%zu idle connections: the daemon used %.2f CPU-seconds in %.1f s; a small request took %.1f ms%s\n",
                fds.size(), used, elapsed, 1000.0 * small, small < 0 ? " (no reply)" : "");
    for (int fd : fds) {
        ::close(fd);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    auto arg = [&](size_t i, const char* fallback) { return i < args.size() ? args[i] : std::string(fallback); };
    if (args.size() < 2 || args[0].rfind("tcp://127.", 0) != 0) {
        std::fprintf(stderr, "usage: bench_emulator_load tcp://127.x.y.z:PORT rate|frame|idle ...\n");
        return 2;
    }
    zmq::context_t context(2);
    const std::string& endpoint = args[0];
    if (args[1] == "rate") {
        return rate(context, endpoint, std::stoi(arg(2, "8")), std::stod(arg(3, "5")), std::stoul(arg(4, "0")),
                    std::stoi(arg(5, "4")));
    }
    if (args[1] == "frame") {
        return frame(context, endpoint, std::stoul(arg(2, "268435456")));
    }
    if (args[1] == "idle") {
        return idle(context, endpoint, std::stoi(arg(2, "1100")), std::stod(arg(3, "10")), std::stoi(arg(4, "0")));
    }
    std::fprintf(stderr, "unknown mode %s\n", args[1].c_str());
    return 2;
}
