// Cost of one typed call over loopback ZeroMQ, with the level 7 request/reply traces
// disabled (the production threshold) and enabled (every document rendered and handed
// to a sink that drops it).

#include <benchmark/benchmark.h>

#include <atomic>
#include <string>
#include <thread>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/platform/Logger.h"
#include "platform/IpcWire.h"

using namespace pimav::detail;

namespace {

// A responder that answers every request with the same reply document.
class Responder {
public:
    explicit Responder(const Json::Value& reply) : m_socket(m_context, zmq::socket_type::rep) {
        m_socket.set(zmq::sockopt::rcvtimeo, 100);
        m_socket.bind("tcp://127.0.0.1:*");
        const std::string endpoint = m_socket.get(zmq::sockopt::last_endpoint);
        m_port = static_cast<unsigned>(std::stoul(endpoint.substr(endpoint.rfind(':') + 1)));
        m_reply = renderDocument(reply);
        m_thread = std::thread([this] { serve(); });
    }
    ~Responder() {
        m_stop = true;
        m_thread.join();
    }
    unsigned port() const { return m_port; }

private:
    void serve() {
        while (!m_stop) {
            zmq::message_t frame;
            if (!m_socket.recv(frame)) {
                continue;
            }
            while (m_socket.get(zmq::sockopt::rcvmore)) {
                (void)m_socket.recv(frame);
            }
            m_socket.send(zmq::buffer(m_reply));
        }
    }

    zmq::context_t m_context;
    zmq::socket_t m_socket;
    unsigned m_port = 0;
    std::string m_reply;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

Json::Value basicInfoReply() {
    Json::Value reply;
    reply["id"] = 12;
    reply["name"] = "bench session";
    for (int i = 0; i < 4; ++i) {
        Json::Value s;
        s["type"] = i == 0 ? "video" : "audio";
        s["id"] = i + 1;
        s["ipv4"]["transport"] = "239.1.1." + std::to_string(i + 1);
        for (unsigned c = 0; c < 8; ++c) {
            s["channel-list"][c]["channel"] = c;
        }
        reply["session-list"].append(s);
    }
    return reply;
}

void runBasicInfo(benchmark::State& state, bool traced) {
    Responder responder(basicInfoReply());
    zmq::context_t context;
    AvMngApi api;
    api.jsonApi.ipcPort = responder.port();
    api.init(context, "127.0.0.1");
    Logger::getInstance()->setSink([](int, const std::string&) {});
    Logger::getInstance()->setThreshold(traced ? 7 : 4);
    for (auto _ : state) {
        SessionBasicInfo info;
        if (api.getSessionBasicInfo(12, &info) != 0) {
            state.SkipWithError("exchange failed");
            break;
        }
        benchmark::DoNotOptimize(info.m_streams.size());
    }
    Logger::getInstance()->setThreshold(Logger::kDefaultThreshold);
    Logger::getInstance()->setSink({});
}

void BM_GetSessionBasicInfo_TraceOff(benchmark::State& state) { runBasicInfo(state, false); }
void BM_GetSessionBasicInfo_TraceOn(benchmark::State& state) { runBasicInfo(state, true); }

BENCHMARK(BM_GetSessionBasicInfo_TraceOff)->UseRealTime();
BENCHMARK(BM_GetSessionBasicInfo_TraceOn)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
