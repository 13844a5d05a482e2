#pragma once

#include <json/json.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>
#include <zmq.hpp>

namespace pimav::detail {

// Result code put in the "error" member of a reply to a request that cannot be read
// (wrong number of frames, bad command id frame, text that is not a JSON object).
constexpr int kUnreadableRequest = -13;

// One decoded request: the command id and, when the second frame was not empty, the
// request document (always an object).
struct Request {
    uint32_t commandId = 0;
    bool hasDocument = false;
    Json::Value document;
};

// Thrown by a command handler to answer with {"error": {"code": code, "message": text}}.
class CommandError : public std::runtime_error {
public:
    CommandError(int code, const std::string& message, std::vector<std::string> userMessages = {})
        : std::runtime_error(message), m_code(code), m_user_messages(std::move(userMessages)) {}
    int code() const { return m_code; }
    // Messages meant for the user (SDP or gain refusals), returned in the reply.
    const std::vector<std::string>& userMessages() const { return m_user_messages; }

private:
    int m_code;
    std::vector<std::string> m_user_messages;
};

// Builds the reply document of a refused request:
// {"error": {"code": code, "message": text, "user-messages": [text, ...]}}, the last member
// only when there are user messages.
Json::Value errorReply(int code, const std::string& message,
                       const std::vector<std::string>& userMessages = {});

// Decodes the frames of one request. Frame 1 is the command id as a 4-byte
// little-endian unsigned number, frame 2 the request document as JSON text or empty.
// Throws CommandError(kUnreadableRequest, why) when the frames cannot be read.
Request decodeRequest(const std::vector<std::string>& frames);

// Renders a reply document as compact one-line JSON text.
std::string renderReply(const Json::Value& reply);

// The daemon's end of the link: one ZeroMQ ROUTER socket that speaks the REP envelope
// itself (routing frames up to an empty delimiter, then the request's frames), so that to
// a REQ client it is a REP socket, while a request may also be left unanswered.
class RequestServer {
public:
    // A decoded request in, the reply document out (or CommandError thrown).
    using Handler = std::function<Json::Value(const Request&)>;
    // The request's frames in; fills the reply's frames and returns true, or returns false
    // to leave the request unanswered. At most kKeptFrames frames are kept, the others
    // are passed as empty frames so that their number still shows.
    using FrameHandler =
        std::function<bool(const std::vector<std::string>& request, std::vector<std::string>& reply)>;
    static constexpr size_t kKeptFrames = 3;

    // Binds the socket; throws zmq::error_t when the endpoint cannot be bound.
    RequestServer(zmq::context_t& context, const std::string& endpoint);

    // The endpoint as bound: a wildcard port ("tcp://127.0.0.1:*") reads as the port chosen.
    std::string endpoint() const;

    // Answers requests until `stop` becomes true. The socket is polled with a short
    // time limit so that a stop request (a signal handler setting the flag) is seen
    // within `pollMs` milliseconds; `idle` (when set) runs after every poll round. The
    // handler's exceptions are caught per request and answered with an error reply: the
    // loop never ends because of its input.
    void serve(const std::atomic<bool>& stop, const Handler& handler, const std::function<void()>& idle,
               int pollMs = 100);
    // The same loop with the frames handed over as they are.
    void serveFrames(const std::atomic<bool>& stop, const FrameHandler& handler,
                     const std::function<void()>& idle, int pollMs);

    // Requests handled so far.
    uint64_t requestsServed() const { return m_served; }

    // More work for the loop, done between requests on the same thread.
    using Clock = std::chrono::steady_clock;
    // `onReadable` runs whenever descriptor `fd` (a UDP socket, a pipe) has data: the loop
    // polls it together with its own socket.
    void watch(int fd, std::function<void()> onReadable);
    // The same for another ZeroMQ socket.
    void watch(zmq::socket_t& socket, std::function<void()> onReadable);
    // A timer: `due` says when `fire` next has work (none: nothing planned). The loop's
    // poll ends by then, and `fire` runs with the current time once that time has come.
    void addTimer(std::function<std::optional<Clock::time_point>()> due,
                  std::function<void(Clock::time_point now)> fire);

private:
    struct Watched {
        void* socket;
        int fd;
        std::function<void()> onReadable;
    };
    struct Timer {
        std::function<std::optional<Clock::time_point>()> due;
        std::function<void(Clock::time_point)> fire;
    };

    // Handles the one request that is waiting (if any) within `timeoutMs`.
    void serveOne(const FrameHandler& handler, int timeoutMs);
    // Polls the socket and the watched descriptors for up to `timeoutMs` (less when a timer
    // is due sooner), runs the watchers and the due timers; true when a request is waiting.
    bool pollAll(int timeoutMs);

    zmq::socket_t m_socket;
    uint64_t m_served = 0;
    std::vector<Watched> m_watched;
    std::vector<Timer> m_timers;
};

}  // namespace pimav::detail
