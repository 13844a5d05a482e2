// Round trips against the device emulator on loopback TCP, the way avmngctl and host
// programs talk to it: the emulator's request server runs in a thread of this process
// (its state in a temporary directory), the client sends one command per iteration.
//
//  - raw:    a cppzmq REQ socket sending the wire frames by hand (the floor);
//  - json:   AvMngApiJson, the pass-through layer avmngctl's `send` uses;
//  - typed:  AvMngApi, reading the reply into the library's records.
//
// Two commands: getResourceAllocatedIds (a small reply) and getSourceSessionList with
// 8 sender sessions running (a reply of about 8 kB read into SessionStreamList). The raw
// and json round trips run plain (second argument 0) and with CURVE (1): encryption and
// the daemon's key check side by side.

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <list>
#include <memory>
#include <string>
#include <thread>

#include "Emulator.h"
#include "common/RequestServer.h"
#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/model/SessionStreamList.h"
#include "pimAvMngApi/platform/Logger.h"
#include "platform/CurveKeys.h"
#include "platform/IpcWire.h"

using namespace pimav::detail;

namespace {

constexpr unsigned kSenders = 8;
constexpr unsigned kPort = 5579;

// The emulator serving on 127.0.0.1:kPort with kSenders sender sessions, until destroyed;
// with `curve`, CURVE for the one client key of clientKeys().
class EmulatorThread {
public:
    explicit EmulatorThread(bool curve = false) {
        Logger::getInstance()->setThreshold(1);
        char dir[] = "/tmp/pimav-bench-XXXXXX";
        EmulatorOptions options;
        options.configDir = ::mkdtemp(dir);
        m_dir = options.configDir;
        ServerOptions serverOptions;
        if (curve) {
            generateCurveKeyPair(m_server_keys);
            generateCurveKeyPair(m_client_keys);
            ::mkdir((m_dir + "/clients").c_str(), 0700);
            writeCurveKeyFiles(m_dir + "/clients/bench", m_client_keys);
            m_client_keys_loaded = ClientKeys::load(m_dir + "/clients");
            serverOptions.curveSecretKey = m_server_keys.secretKey;
            serverOptions.clientKeys = &m_client_keys_loaded;
        }
        m_emulator = std::make_unique<Emulator>(options);
        for (unsigned i = 0; i < kSenders; ++i) {
            Request add;
            add.commandId = 2;
            add.hasDocument = true;
            add.document["name"] = "bench " + std::to_string(i);
            for (unsigned c = 0; c < 2; ++c) {
                Json::Value channel;
                channel["channel"] = 2 * i + c;
                add.document["audio-sources"][0]["channel-list"].append(channel);
            }
            m_emulator->handle(add);
        }
        m_server = std::make_unique<RequestServer>(m_context, endpoint(), serverOptions);
        m_thread = std::thread([this] {
            m_server->serve(m_stop, [this](const Request& r) { return m_emulator->handle(r); }, nullptr, 20);
        });
    }
    ~EmulatorThread() {
        m_stop = true;
        m_thread.join();
        std::system(("rm -rf " + m_dir).c_str());
    }
    EmulatorThread(const EmulatorThread&) = delete;
    EmulatorThread& operator=(const EmulatorThread&) = delete;

    static std::string endpoint() { return "tcp://127.0.0.1:" + std::to_string(kPort); }
    const std::string& serverPublicKey() const { return m_server_keys.publicKey; }
    const CurveKeyPair& clientKeys() const { return m_client_keys; }
    std::string clientKeyFile() const { return m_dir + "/clients/bench.key"; }

private:
    std::string m_dir;
    CurveKeyPair m_server_keys;
    CurveKeyPair m_client_keys;
    ClientKeys m_client_keys_loaded;
    zmq::context_t m_context{1};
    std::atomic<bool> m_stop{false};
    std::unique_ptr<Emulator> m_emulator;
    std::unique_ptr<RequestServer> m_server;
    std::thread m_thread;
};

// CPU time of the whole process (client, emulator thread and ZeroMQ's I/O threads) in
// microseconds: a figure that holds up on a machine busy with other work.
double processCpuMicroseconds() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return 1e6 * static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

// Round trips per second, and the process's CPU time per round trip since `cpuStart`.
void countRate(benchmark::State& state, double cpuStart) {
    state.counters["round_trips_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["process_cpu_us"] = (processCpuMicroseconds() - cpuStart) / static_cast<double>(state.iterations());
}

void BM_Raw(benchmark::State& state) {
    EmulatorThread emulator(state.range(1) != 0);
    zmq::context_t context(1);
    zmq::socket_t socket(context, zmq::socket_type::req);
    socket.set(zmq::sockopt::linger, 0);
    if (state.range(1) != 0) {
        socket.set(zmq::sockopt::curve_serverkey, emulator.serverPublicKey());
        socket.set(zmq::sockopt::curve_publickey, emulator.clientKeys().publicKey);
        socket.set(zmq::sockopt::curve_secretkey, emulator.clientKeys().secretKey);
    }
    socket.connect(EmulatorThread::endpoint());
    const std::string idFrame = encodeCommandId(static_cast<uint32_t>(state.range(0)));
    zmq::message_t reply;
    const double cpuStart = processCpuMicroseconds();
    for (auto _ : state) {
        socket.send(zmq::buffer(idFrame), zmq::send_flags::sndmore);
        socket.send(zmq::const_buffer(nullptr, 0), zmq::send_flags::none);
        if (!socket.recv(reply)) {
            state.SkipWithError("receive failed");
            break;
        }
        benchmark::DoNotOptimize(reply.data());
    }
    countRate(state, cpuStart);
}
BENCHMARK(BM_Raw)->ArgsProduct({{51, 5}, {0, 1}})->UseRealTime();

void BM_JsonLayer(benchmark::State& state) {
    EmulatorThread emulator(state.range(1) != 0);
    zmq::context_t context(1);
    AvMngApiJson api;
    api.ipcPort = kPort;
    if (state.range(1) != 0) {
        api.setCurveKeys(emulator.serverPublicKey(), emulator.clientKeyFile());
    }
    api.init(context);
    const double cpuStart = processCpuMicroseconds();
    for (auto _ : state) {
        Json::Value reply;
        const int rc = state.range(0) == 51 ? api.getResourceAllocatedIds(reply) : api.getSourceSessionList(reply);
        benchmark::DoNotOptimize(reply);
        if (rc != 0) {
            state.SkipWithError("round trip failed");
            break;
        }
    }
    countRate(state, cpuStart);
}
BENCHMARK(BM_JsonLayer)->ArgsProduct({{51, 5}, {0, 1}})->UseRealTime();

void BM_TypedApi(benchmark::State& state) {
    EmulatorThread emulator;
    zmq::context_t context(1);
    AvMngApi api;
    api.jsonApi.ipcPort = kPort;
    api.init(context);
    const double cpuStart = processCpuMicroseconds();
    for (auto _ : state) {
        int rc = 0;
        if (state.range(0) == 51) {
            std::list<unsigned long long> senders;
            std::list<unsigned long long> receivers;
            rc = api.getResourceAllocatedIds(senders, receivers);
            benchmark::DoNotOptimize(senders);
        } else {
            SessionStreamList list;
            rc = api.getSourceSessionList(&list);
            if (rc == 0 && list.m_sessions.size() != kSenders) {
                rc = -1;
            }
        }
        if (rc != 0) {
            state.SkipWithError("round trip failed");
            break;
        }
    }
    countRate(state, cpuStart);
}
BENCHMARK(BM_TypedApi)->Arg(51)->Arg(5)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
