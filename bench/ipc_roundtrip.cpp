// One request/reply round trip on loopback TCP against an in-process REP responder:
// through AvMngApiJson (framing, JSON rendering and parsing, time-limit poll, mutex), and as
// a raw cppzmq REQ/REP exchange of the same bytes. The difference is the client library's
// own cost per call.

#include <benchmark/benchmark.h>

#include <json/json.h>

#include <cstdint>
#include <string>
#include <thread>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApiJson.h"
#include "platform/IpcWire.h"

using namespace pimav::detail;

namespace {

const std::string kReply = R"({"id":12,"name":"session-12","result":0})";

// A REP socket in its own thread and context, answering every request with kReply until
// it is destroyed.
class Responder {
public:
    Responder() : m_socket(m_context, zmq::socket_type::rep) {
        m_socket.set(zmq::sockopt::linger, 0);
        m_socket.bind("tcp://127.0.0.1:*");
        const std::string endpoint = m_socket.get(zmq::sockopt::last_endpoint);
        m_endpoint = endpoint;
        m_port = static_cast<uint32_t>(std::stoul(endpoint.substr(endpoint.rfind(':') + 1)));
        m_thread = std::thread([this] { run(); });
    }
    ~Responder() {
        m_context.shutdown();  // wakes the thread with ETERM
        m_thread.join();
        m_socket.close();
    }
    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;

    const std::string& endpoint() const { return m_endpoint; }
    uint32_t port() const { return m_port; }

private:
    void run() {
        try {
            zmq::message_t part;
            for (;;) {
                do {
                    (void)m_socket.recv(part);
                } while (part.more());
                m_socket.send(zmq::buffer(kReply), zmq::send_flags::none);
            }
        } catch (const zmq::error_t&) {
            // context shut down
        }
    }

    zmq::context_t m_context;
    zmq::socket_t m_socket;
    std::string m_endpoint;
    uint32_t m_port = 0;
    std::thread m_thread;
};

void BM_PassThroughRoundTrip(benchmark::State& state) {
    Responder responder;
    zmq::context_t context;
    AvMngApiJson api;
    api.ipcPort = responder.port();
    if (api.init(context) != 0) {
        state.SkipWithError("init failed");
        return;
    }
    Json::Value request;
    request["id"] = 12;
    for (auto _ : state) {
        Json::Value reply;
        if (api.removeSession(request, reply) != 0) {
            state.SkipWithError("round trip failed");
            break;
        }
        benchmark::DoNotOptimize(reply);
    }
}
BENCHMARK(BM_PassThroughRoundTrip)->UseRealTime();

void BM_RawZmqRoundTrip(benchmark::State& state) {
    Responder responder;
    zmq::context_t context;
    zmq::socket_t socket(context, zmq::socket_type::req);
    socket.set(zmq::sockopt::linger, 0);
    socket.connect(responder.endpoint());
    const std::string idFrame = encodeCommandId(AES67_REMOVE_SESSION);
    const std::string document = R"({"id":12})";
    zmq::message_t reply;
    for (auto _ : state) {
        socket.send(zmq::buffer(idFrame), zmq::send_flags::sndmore);
        socket.send(zmq::buffer(document), zmq::send_flags::none);
        if (!socket.recv(reply)) {
            state.SkipWithError("receive failed");
            break;
        }
        benchmark::DoNotOptimize(reply.data());
    }
}
BENCHMARK(BM_RawZmqRoundTrip)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
