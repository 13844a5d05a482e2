// SAP at scale, against the emulator as a process on loopback (a driver, not a Google
// Benchmark): N distinct sessions (default 10,000) are announced at R packets/s (default
// 1,000) to `avmng-emulator --sap-listen 127.0.0.1:0`, while a client polls the typed
// getAdvertisedSessionList without pause. It reports:
//
//  - the packets the emulator received against those sent (its "sap" debug counters);
//  - p50/p99/max of the time from a session's send to the first list reply holding it (the
//    resolution is one list call, which grows with the table);
//  - the emulator's CPU time over the run, and its resident memory with N entries;
//  - the time of one full getAdvertisedSessionList with N entries: typed (the records read
//    back) and through the JSON layer, with the reply's size, and the CPU time it costs the
//    emulator and the typed client (what a loaded machine does not inflate).
//
//   bench_sap_scale [SESSIONS [RATE [--no-poll]]]   (--no-poll: no lists during the fill)

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/platform/Logger.h"
#include "sap/SapPacket.h"
#include "sap/UdpSocket.h"

using namespace pimav::detail;
using Clock = std::chrono::steady_clock;

namespace {

// Loopback addresses only: the emulator's SAP port and a free TCP port for its requests.
constexpr const char* kLoopback = "127.0.0.1";

uint16_t freeTcpPort() {
    UdpEndpoint any;
    UdpEndpoint::parse(std::string(kLoopback) + ":0", any);
    // A UDP port that is free is very likely free for TCP as well.
    return UdpSocket::listen(any).localEndpoint().port;
}

std::string sdpOf(unsigned i) {
    return "v=0\r\no=- " + std::to_string(100000 + i) + " 1 IN IP4 10.1." + std::to_string(i / 250) + "." +
           std::to_string(i % 250 + 1) + "\r\ns=bench " + std::to_string(i) +
           "\r\nt=0 0\r\nm=audio 5004 RTP/AVP 98\r\nc=IN IP4 239.69." + std::to_string(i / 250) + "." +
           std::to_string(i % 250 + 1) +
           "/16\r\na=rtpmap:98 L24/48000/2\r\na=ptime:1\r\na=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0\r\n"
           "a=mediaclk:direct=0\r\n";
}

// Utime + stime of `pid`, in seconds.
double cpuSeconds(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    unsigned long long utime = 0, stime = 0;
    for (int i = 3; i <= 15 && fields >> field; ++i) {
        if (i == 14) {
            utime = std::stoull(field);
        } else if (i == 15) {
            stime = std::stoull(field);
        }
    }
    return static_cast<double>(utime + stime) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

double threadCpuSeconds() {
    timespec ts{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// A line of /proc/PID/status such as "VmRSS:	  123456 kB".
std::string statusLine(pid_t pid, const std::string& key) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(key + ":", 0) == 0) {
            const size_t value = line.find_first_not_of(" \t", key.size() + 1);
            return line.substr(value);
        }
    }
    return "?";
}

double ms(Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); }

double percentile(std::vector<double> values, double p) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, static_cast<size_t>(p * static_cast<double>(values.size())))];
}

}  // namespace

int main(int argc, char** argv) {
    const unsigned sessions = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 10000;
    const double rate = argc > 2 ? std::atof(argv[2]) : 1000;
    // --no-poll: no lists while the sessions arrive, for the cost of listening alone.
    const bool polling = argc <= 3 || std::string(argv[3]) != "--no-poll";
    Logger::getInstance()->setThreshold(1);

    char dir[] = "/tmp/pimav-sap-scale-XXXXXX";
    if (::mkdtemp(dir) == nullptr) {
        return 1;
    }
    const unsigned port = freeTcpPort();
    const std::string bind = "tcp://" + std::string(kLoopback) + ":" + std::to_string(port);
    const pid_t emulator = ::fork();
    if (emulator == 0) {
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, 1);
        const std::string program = std::string(PIMAV_BINARY_DIR) + "/emulator/avmng-emulator";
        // Room for every session: the advertised table is bounded (1,024 entries by default).
        const std::string limit = std::to_string(std::max(sessions, 1u));
        ::execl(program.c_str(), program.c_str(), "--bind", bind.c_str(), "--config-dir", dir, "--sap-listen",
                "127.0.0.1:0", "--max-advertised", limit.c_str(), "--log-level", "1", static_cast<char*>(nullptr));
        _exit(127);
    }

    zmq::context_t context(1);
    AvMngApi api;
    api.jsonApi.ipcPort = port;
    api.jsonApi.setClientTimeoutMs(60000);
    Json::Value debug;
    for (int i = 0; i < 200 && debug["sap"]["listening"].empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        if (api.init(context) == 0) {
            api.jsonApi.getInternalDebugInfo(debug);
        }
    }
    UdpEndpoint to;
    if (!UdpEndpoint::parse(debug["sap"]["listening"][0].asString(), to)) {
        std::cerr << "the emulator did not start" << std::endl;
        ::kill(emulator, SIGKILL);
        return 1;
    }

    std::vector<std::string> packets(sessions);
    for (unsigned i = 0; i < sessions; ++i) {
        SapPacket packet;
        SapOrigin::fromText("10.1." + std::to_string(i / 250) + "." + std::to_string(i % 250 + 1), packet.origin);
        packet.hash = static_cast<uint16_t>(i + 1);
        packet.sdp = sdpOf(i);
        packets[i] = encodeSap(packet);
    }
    std::vector<Clock::time_point> sent(sessions);
    std::vector<Clock::time_point> seen(sessions);
    std::vector<double> pollMs;
    const double cpuBefore = cpuSeconds(emulator);
    const auto start = Clock::now();

    // The client: full lists, one after the other, until every session has been seen.
    std::thread poller([&] {
        AvMngApi client;
        client.jsonApi.ipcPort = port;
        client.jsonApi.setClientTimeoutMs(60000);
        client.init(context);
        unsigned visible = 0;
        std::vector<bool> known(sessions, false);
        for (Json::Value counters; !polling && Clock::now() - start < std::chrono::minutes(5);) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            if (client.jsonApi.getInternalDebugInfo(counters) != 0 ||
                counters["sap"]["packets"].asUInt64() >= sessions) {
                return;
            }
        }
        while (visible < sessions && Clock::now() - start < std::chrono::minutes(5)) {
            AdvSessionsDb db;
            const auto asked = Clock::now();
            if (client.getAdvertisedSessionList(&db) != 0) {
                break;
            }
            const auto answered = Clock::now();
            pollMs.push_back(ms(answered - asked));
            for (const auto& [id, entry] : db.m_entries) {
                const auto i = static_cast<unsigned>(id - 100000);
                if (i < sessions && !known[i]) {
                    known[i] = true;
                    seen[i] = answered;
                    ++visible;
                }
            }
        }
    });

    UdpSocket socket = UdpSocket::connect(to);
    unsigned failed = 0;
    for (unsigned i = 0; i < sessions; ++i) {
        std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(
                                                  std::chrono::duration<double>(i / rate)));
        sent[i] = Clock::now();
        failed += socket.send(packets[i]) ? 0 : 1;
    }
    const auto sendEnd = Clock::now();
    poller.join();
    const double cpuAfter = cpuSeconds(emulator);
    const auto fillEnd = Clock::now();
    const std::string rssAfterFill = statusLine(emulator, "VmRSS");

    std::vector<double> latency;
    std::vector<double> earlyLatency;  // the first tenth, while the lists are short
    for (unsigned i = 0; i < sessions; ++i) {
        if (seen[i] != Clock::time_point()) {
            latency.push_back(ms(seen[i] - sent[i]));
            if (i < sessions / 10) {
                earlyLatency.push_back(latency.back());
            }
        }
    }
    api.jsonApi.getInternalDebugInfo(debug);
    const Json::Value& sap = debug["sap"];

    // One full list, typed and through the JSON layer.
    std::vector<double> typed;
    std::vector<double> json;
    std::vector<double> clientCpu;
    size_t replyBytes = 0;
    const double listCpuBefore = cpuSeconds(emulator);
    for (int i = 0; i < 5; ++i) {
        AdvSessionsDb db;
        auto t = Clock::now();
        const double threadCpu = threadCpuSeconds();
        api.getAdvertisedSessionList(&db);
        clientCpu.push_back(1000 * (threadCpuSeconds() - threadCpu));
        typed.push_back(ms(Clock::now() - t));
        Json::Value reply;
        t = Clock::now();
        api.jsonApi.getAdvertisedSessionList(reply);
        json.push_back(ms(Clock::now() - t));
        Json::StreamWriterBuilder compact;
        compact["indentation"] = "";
        replyBytes = Json::writeString(compact, reply).size();
    }
    const double listCpu = 1000 * (cpuSeconds(emulator) - listCpuBefore) / 10;

    std::printf("sessions announced        %u at %.0f packets/s over %.1f s (%u send failures)\n", sessions, rate,
                std::chrono::duration<double>(sendEnd - start).count(), failed);
    std::printf("packets received          %llu of %u sent; %llu announcements, %llu refused kinds, receive buffer %d B\n",
                static_cast<unsigned long long>(sap["packets"].asUInt64()), sessions,
                static_cast<unsigned long long>(sap["announcements"].asUInt64()),
                static_cast<unsigned long long>(sap["refused"].size()), sap["receive-buffer"].asInt());
    std::printf("advertised entries        %u (heard sessions %llu)\n", static_cast<unsigned>(debug["advertised"].asUInt()),
                static_cast<unsigned long long>(sap["heard-sessions"].asUInt64()));
    std::printf("send to visible           p50 %.1f ms  p99 %.1f ms  max %.1f ms  (%zu sessions seen)\n",
                percentile(latency, 0.5), percentile(latency, 0.99), percentile(latency, 1.0), latency.size());
    std::printf("  first tenth of them     p50 %.1f ms  p99 %.1f ms\n", percentile(earlyLatency, 0.5),
                percentile(earlyLatency, 0.99));
    std::printf("list calls while filling  %zu, p50 %.1f ms, max %.1f ms\n", pollMs.size(), percentile(pollMs, 0.5),
                percentile(pollMs, 1.0));
    std::printf("emulator CPU              %.2f s over %.1f s (%.0f%% of one core)\n", cpuAfter - cpuBefore,
                std::chrono::duration<double>(fillEnd - start).count(),
                100.0 * (cpuAfter - cpuBefore) / std::chrono::duration<double>(fillEnd - start).count());
    std::printf("emulator memory           RSS %s after the fill, %s after the lists below, peak %s\n",
                rssAfterFill.c_str(), statusLine(emulator, "VmRSS").c_str(), statusLine(emulator, "VmHWM").c_str());
    std::printf("full list at %u entries  typed %.1f ms, JSON layer %.1f ms (median of 5), reply %.1f MB\n",
                static_cast<unsigned>(debug["advertised"].asUInt()), percentile(typed, 0.5), percentile(json, 0.5),
                static_cast<double>(replyBytes) / 1e6);
    std::printf("  CPU time of one list    emulator %.1f ms, typed client %.1f ms (median)\n", listCpu,
                percentile(clientCpu, 0.5));

    ::kill(emulator, SIGTERM);
    ::waitpid(emulator, nullptr, 0);
    std::system((std::string("rm -rf ") + dir).c_str());
    return sap["packets"].asUInt64() == sessions ? 0 : 1;
}
