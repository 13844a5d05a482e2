#pragma once

#include <json/json.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>
#include <zmq.hpp>

#include "common/ClientAccess.h"
#include "common/ConnectionGuard.h"
#include "common/FairQueue.h"

namespace pimav::detail {

// Result codes put in the "error" member of a reply that the daemon's end of the link
// gives itself (docs/emulator.md):
// a request that cannot be read (wrong number of frames, bad command id frame, text that
// is not a JSON object or not UTF-8);
constexpr int kUnreadableRequest = -13;
// a request larger than the request size limit (refused before it is parsed);
constexpr int kRequestTooLarge = -41;
// a request that finds the queue of waiting requests full (its client's share, or all);
constexpr int kServerBusy = -42;
// a state-changing command from a CURVE client whose key may only read.
constexpr int kReadOnlyKey = -43;

// The request size limit unless the daemon is told otherwise.
constexpr size_t kDefaultMaxRequestBytes = size_t{1} << 20;

// One decoded request: the command id and, when the second frame was not empty, the
// request document (always an object).
struct Request {
    uint32_t commandId = 0;
    bool hasDocument = false;
    Json::Value document;
    std::string clientKey;  // CURVE: the client's public key in Z85; empty on a plain link
};

// How the daemon's socket is set up.
struct ServerOptions {
    // Requests (all their frames) above this size are refused with kRequestTooLarge
    // before they are parsed. The socket's ZMQ_MAXMSGSIZE lies kFrameAllowance above it:
    // libzmq drops the connection of a sender of larger frames, without reading them.
    size_t maxRequestBytes = kDefaultMaxRequestBytes;
    static constexpr size_t kFrameAllowance = size_t{64} << 10;
    // CURVE: the daemon's secret key (Z85) and the client keys it accepts (kept by the
    // caller while the server lives). Plain ZeroMQ when the key is empty.
    std::string curveSecretKey;
    const ClientKeys* clientKeys = nullptr;
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
// little-endian unsigned number, frame 2 the request document as JSON text (UTF-8) or
// empty. Throws CommandError(kUnreadableRequest, why) when the frames cannot be read.
Request decodeRequest(const std::vector<std::string>& frames);

// Renders a reply document as compact one-line JSON text.
std::string renderReply(const Json::Value& reply);

// The daemon's end of the link: one ZeroMQ ROUTER socket that speaks the REP envelope
// itself (routing frames up to an empty delimiter, then the request's frames), so that to
// a REQ client it is a REP socket, while a request may also be left unanswered.
//
// Bounded: requests above the size limit are refused unread, each connection queues at
// most kReceiveHighWater messages in libzmq, the requests read and waiting are bounded
// (FairQueue), and connections are kept below the descriptor limit (ConnectionGuard).
// Waiting requests are handled in turn by the handling time their clients have used, so
// that a client sending expensive requests cannot starve the others.
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
    // Messages that libzmq queues per connection before it stops reading from it (a REQ
    // client has one request in flight).
    static constexpr int kReceiveHighWater = 8;
    // Requests of one client that may wait; the requests waiting in all may hold up to
    // kQueuedRequestsOfMaxSize times the request size limit.
    static constexpr size_t kQueuedPerClient = 8;
    static constexpr size_t kQueuedRequestsOfMaxSize = 16;

    // Binds the socket; throws zmq::error_t when the endpoint cannot be bound.
    RequestServer(zmq::context_t& context, const std::string& endpoint, const ServerOptions& options = {});
    ~RequestServer();
    RequestServer(const RequestServer&) = delete;
    RequestServer& operator=(const RequestServer&) = delete;

    // The endpoint as bound: a wildcard port ("tcp://127.0.0.1:*") reads as the port chosen.
    std::string endpoint() const;

    // Answers requests until `stop` becomes true. The socket is polled with a short
    // time limit so that a stop request (a signal handler setting the flag) is seen
    // within `pollMs` milliseconds; `idle` (when set) runs after every poll round. The
    // handler's exceptions are caught per request and answered with an error reply: the
    // loop never ends because of its input. With CURVE, a read-only key is refused the
    // state-changing commands (kReadOnlyKey) and every state change is audited.
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
    using PendingHandler = std::function<bool(const PendingRequest&, std::vector<std::string>& reply)>;

    void serveLoop(const std::atomic<bool>& stop, const PendingHandler& handler, const std::function<void()>& idle,
                   int pollMs);
    // Waits up to `timeoutMs` for the socket (less when a timer is due sooner), answering
    // ZAP and connection events and running the watchers and due timers meanwhile.
    bool pollSockets(int timeoutMs);
    // Reads one waiting request into the queue (or refuses it at once); false when none waits.
    bool receiveOne();
    // Handles the request in turn, unless it waits for others (FairQueue::take).
    void handleNext(const PendingHandler& handler);
    int pollTimeoutMs(int pollMs) const;
    void sendReply(const std::vector<std::string>& envelope, const std::vector<std::string>& reply);
    void refuse(const PendingRequest& request, int code, const std::string& message);
    Json::Value answer(const PendingRequest& pending, const Handler& handler);

    ServerOptions m_options;
    std::unique_ptr<ZapHandler> m_zap;  // before the socket: see ZapHandler
    zmq::socket_t m_socket;
    std::unique_ptr<ConnectionGuard> m_guard;
    FairQueue m_queue;
    FairQueue::Clock::time_point m_retry_at = FairQueue::Clock::time_point::min();
    uint64_t m_served = 0;
    std::vector<Watched> m_watched;
    std::vector<Timer> m_timers;
};

}  // namespace pimav::detail
