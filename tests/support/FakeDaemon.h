#pragma once

#include <json/json.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include <zmq.hpp>

#include "common/RequestServer.h"

// A daemon for tests: a real ZeroMQ endpoint on loopback, served by its own thread and
// its own context, that records every request and answers from a script.
//
//   FakeDaemon daemon;                        // binds tcp://127.0.0.1:<free port>
//   daemon.replyWith(jsonOf("{\"id\":7}"));   // default answer
//   daemon.queue(FakeDaemon::Action::silent());  // the next request gets no answer
//   (a client sends command 5 to daemon.endpoint())
//   daemon.requests()[0].commandId == 5
//
// The endpoint is the emulator's RequestServer at frame level, which can leave a request
// unanswered and still serve the next one.
//
// Answer of each request, first match wins: the next queued action, the handler set by
// onRequest(), the default reply (an empty object until replyWith() changes it).
class FakeDaemon {
public:
    struct Request {
        uint32_t commandId = 0;    // decoded from frame 1 (0 when frame 1 is not 4 bytes)
        size_t frameCount = 0;     // frames of the request body
        bool hasDocument = false;  // frame 2 present and not empty
        std::string documentText;  // frame 2 as received
        Json::Value document;      // frame 2 parsed; null when empty or not JSON
    };

    struct Action {
        enum class Kind { Reply, Raw, Silent };
        Kind kind = Kind::Reply;
        Json::Value document;             // Reply: sent as compact JSON text
        std::vector<std::string> frames;  // Raw: sent frame by frame as they are

        static Action reply(const Json::Value& document) { return {Kind::Reply, document, {}}; }
        static Action rawFrames(std::vector<std::string> frames) {
            return {Kind::Raw, {}, std::move(frames)};
        }
        static Action silent() { return {Kind::Silent, {}, {}}; }
    };
    using Handler = std::function<Action(const Request&)>;

    // Binds 127.0.0.1 on a free port, or on `port` when not 0 (to restart a daemon on
    // the port a client already uses), with `options` (CURVE keys). Throws zmq::error_t
    // when binding fails.
    explicit FakeDaemon(uint16_t port = 0, const pimav::detail::ServerOptions& options = {});
    ~FakeDaemon();
    FakeDaemon(const FakeDaemon&) = delete;
    FakeDaemon& operator=(const FakeDaemon&) = delete;

    const std::string& endpoint() const { return m_endpoint; }
    uint16_t port() const { return m_port; }

    void replyWith(const Json::Value& document);
    void onRequest(Handler handler);
    void queue(Action action);
    void queueReply(const Json::Value& document) { queue(Action::reply(document)); }
    void sendNonJson() { queue(Action::rawFrames({"this is not JSON"})); }

    std::vector<Request> requests() const;
    size_t requestCount() const;
    void clearRequests();

private:
    bool answerFrames(const std::vector<std::string>& frames, std::vector<std::string>& reply);
    Action answerFor(const Request& request);

    zmq::context_t m_context;
    pimav::detail::RequestServer m_server;
    std::string m_endpoint;
    uint16_t m_port = 0;

    mutable std::mutex m_mutex;
    std::vector<Request> m_requests;
    std::deque<Action> m_script;
    Handler m_handler;
    Json::Value m_default_reply{Json::objectValue};

    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};
