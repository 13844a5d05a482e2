// Hostile traffic against the emulator process, one kind per row: afterwards the daemon
// still runs and answers a small request at once.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

#include "EmulatorProcess.h"
#include "platform/IpcWire.h"
#include "support/ProcessCpu.h"

using namespace pimav::detail;

namespace {

// Sanitizer builds reserve far more address space than a limit of 1 GiB leaves.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const std::vector<ChildLimit> kOneGibAddressSpace;
#else
const std::vector<ChildLimit> kOneGibAddressSpace = {{RLIMIT_AS, rlim_t{1} << 30}};
#endif

zmq::context_t& context() {
    static zmq::context_t ctx(1);
    return ctx;
}

zmq::socket_t connected(const EmulatorProcess& emulator, zmq::socket_type type) {
    zmq::socket_t socket(context(), type);
    socket.set(zmq::sockopt::linger, 0);
    socket.connect(emulator.endpoint());
    return socket;
}

std::string sendOversizedFrames(const EmulatorProcess& emulator) {
    // Three at once: libzmq's buffers and a copy of one request do not fit in 1 GiB. The
    // frames share one buffer (sent without copying).
    std::string body(size_t{256} << 20, ' ');
    std::vector<zmq::socket_t> senders;
    for (int i = 0; i < 3; ++i) {
        senders.push_back(connected(emulator, zmq::socket_type::req));
        senders.back().send(zmq::buffer(encodeCommandId(5)), zmq::send_flags::sndmore);
        senders.back().send(zmq::message_t(body.data(), body.size(), nullptr, nullptr), zmq::send_flags::none);
    }
    // The daemon drops these connections without a reply; the frames had time to arrive.
    zmq::message_t reply;
    senders.front().set(zmq::sockopt::rcvtimeo, 1000);
    return senders.front().recv(reply) ? "a reply to a frame above the limit: " + reply.to_string() : "";
}

std::string floodWithLargeBodies(const EmulatorProcess& emulator) {
    // One client keeps 4 bodies of 1 MB in flight, another sends small requests one after
    // the other: the small ones must not wait their turn behind each large one (200 small
    // replies come before the third large one).
    zmq::socket_t flooder = connected(emulator, zmq::socket_type::dealer);
    zmq::socket_t small = connected(emulator, zmq::socket_type::req);
    std::string body = "{\"pad\":[0";  // 1 MB, costly to parse for its size
    while (body.size() < 1000000) {
        body += ",0";
    }
    body += "]}";
    auto sendLarge = [&] {
        flooder.send(zmq::str_buffer(""), zmq::send_flags::sndmore);
        flooder.send(zmq::buffer(encodeCommandId(5)), zmq::send_flags::sndmore);
        flooder.send(zmq::buffer(body), zmq::send_flags::none);
    };
    auto sendSmall = [&] {
        small.send(zmq::buffer(encodeCommandId(51)), zmq::send_flags::sndmore);
        small.send(zmq::str_buffer(""), zmq::send_flags::none);
    };
    for (int i = 0; i < 4; ++i) {
        sendLarge();
    }
    sendSmall();
    int largeReplies = 0;
    int smallReplies = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (smallReplies < 200 && largeReplies < 3 && std::chrono::steady_clock::now() < deadline) {
        zmq::pollitem_t items[] = {{flooder.handle(), 0, ZMQ_POLLIN, 0}, {small.handle(), 0, ZMQ_POLLIN, 0}};
        zmq::poll(items, 2, std::chrono::milliseconds(100));
        zmq::message_t part;
        if ((items[0].revents & ZMQ_POLLIN) != 0) {
            while (flooder.recv(part) && part.more()) {
            }
            ++largeReplies;
            sendLarge();
        }
        if ((items[1].revents & ZMQ_POLLIN) != 0) {
            (void)small.recv(part);
            ++smallReplies;
            sendSmall();
        }
    }
    if (smallReplies < 200) {
        return std::to_string(smallReplies) + " small replies beside " + std::to_string(largeReplies) + " large ones";
    }
    return "";
}

std::string holdIdleConnections(EmulatorProcess& emulator) {
    // More connections than the daemon's 128 descriptors, none of them saying a word.
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(emulator.port()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::vector<int> idle;
    for (int i = 0; i < 200; ++i) {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        if (fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
            idle.push_back(fd);
        } else if (fd >= 0) {
            ::close(fd);
        }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const double before = cpuSeconds(emulator.pid());
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const double used = cpuSeconds(emulator.pid()) - before;
    const bool answered = !emulator.call(51, Json::Value(), 3000).isNull();
    for (int fd : idle) {
        ::close(fd);
    }
    if (used > 0.075 || !answered) {
        return std::to_string(idle.size()) + " idle connections: " + std::to_string(used) +
               " CPU-seconds in 0.5 s, a new client " + (answered ? "answered" : "not answered");
    }
    return "";
}

struct TransportFault {
    const char* fault;
    std::vector<ChildLimit> limits;
    // Sends the hostile traffic; says what went wrong, or nothing.
    std::function<std::string(EmulatorProcess&)> provoke;
};

}  // namespace

TEST(TransportFaults, TheDaemonSurvivesAndAnswersOthers) {
    const std::vector<TransportFault> faults = {
        {"frames of 256 MB in 1 GiB of address space", kOneGibAddressSpace, sendOversizedFrames},
        {"a stream of 1 MB bodies in 1 GiB of address space", kOneGibAddressSpace, floodWithLargeBodies},
        {"idle connections beyond the descriptor limit", {{RLIMIT_NOFILE, 128}}, holdIdleConnections},
    };
    for (const TransportFault& row : faults) {
        EmulatorProcess emulator("", {}, {}, row.limits);
        EXPECT_EQ(row.provoke(emulator), "") << row.fault;
        if (!emulator.alive()) {
            ADD_FAILURE() << row.fault << ": the emulator has ended";
            continue;
        }
        EXPECT_TRUE(emulator.call(51)["senders"].isArray()) << row.fault;
    }
}
