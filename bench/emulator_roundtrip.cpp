// Round trips against the device emulator on loopback TCP, the way avmngctl and host
// programs talk to it: the emulator's request server runs in a thread of this process
// (its state in a temporary directory), the client sends one command per iteration.
//
//  - raw:    a cppzmq REQ socket sending the wire frames by hand (the floor);
//  - json:   AvMngApiJson, the pass-through layer avmngctl's `send` uses;
//  - typed:  AvMngApi, reading the reply into the library's records.
//
// Two commands: getResourceAllocatedIds (a small reply) and getSourceSessionList with
// 8 sender sessions running (a reply of about 8 kB read into SessionStreamList).

#include <benchmark/benchmark.h>
#include <stdlib.h>

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
#include "platform/IpcWire.h"

using namespace pimav::detail;

namespace {

constexpr unsigned kSenders = 8;
constexpr unsigned kPort = 5579;

// The emulator serving on 127.0.0.1:kPort with kSenders sender sessions, until destroyed.
class EmulatorThread {
public:
    EmulatorThread() {
        Logger::getInstance()->setThreshold(1);
        char dir[] = "/tmp/pimav-bench-XXXXXX";
        EmulatorOptions options;
        options.configDir = ::mkdtemp(dir);
        m_dir = options.configDir;
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
        m_server = std::make_unique<RequestServer>(m_context, endpoint());
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

private:
    std::string m_dir;
    zmq::context_t m_context{1};
    std::atomic<bool> m_stop{false};
    std::unique_ptr<Emulator> m_emulator;
    std::unique_ptr<RequestServer> m_server;
    std::thread m_thread;
};

void countRate(benchmark::State& state) {
    state.counters["round_trips_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_Raw(benchmark::State& state) {
    EmulatorThread emulator;
    zmq::context_t context(1);
    zmq::socket_t socket(context, zmq::socket_type::req);
    socket.set(zmq::sockopt::linger, 0);
    socket.connect(EmulatorThread::endpoint());
    const std::string idFrame = encodeCommandId(static_cast<uint32_t>(state.range(0)));
    zmq::message_t reply;
    for (auto _ : state) {
        socket.send(zmq::buffer(idFrame), zmq::send_flags::sndmore);
        socket.send(zmq::const_buffer(nullptr, 0), zmq::send_flags::none);
        if (!socket.recv(reply)) {
            state.SkipWithError("receive failed");
            break;
        }
        benchmark::DoNotOptimize(reply.data());
    }
    countRate(state);
}
BENCHMARK(BM_Raw)->Arg(51)->Arg(5)->UseRealTime();

void BM_JsonLayer(benchmark::State& state) {
    EmulatorThread emulator;
    zmq::context_t context(1);
    AvMngApiJson api;
    api.ipcPort = kPort;
    api.init(context);
    for (auto _ : state) {
        Json::Value reply;
        const int rc = state.range(0) == 51 ? api.getResourceAllocatedIds(reply) : api.getSourceSessionList(reply);
        benchmark::DoNotOptimize(reply);
        if (rc != 0) {
            state.SkipWithError("round trip failed");
            break;
        }
    }
    countRate(state);
}
BENCHMARK(BM_JsonLayer)->Arg(51)->Arg(5)->UseRealTime();

void BM_TypedApi(benchmark::State& state) {
    EmulatorThread emulator;
    zmq::context_t context(1);
    AvMngApi api;
    api.jsonApi.ipcPort = kPort;
    api.init(context);
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
    countRate(state);
}
BENCHMARK(BM_TypedApi)->Arg(51)->Arg(5)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
