#include "common/RequestServer.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <new>

#include "pimAvMngApi/platform/Logger.h"
#include "platform/IpcWire.h"

namespace pimav::detail {

Json::Value errorReply(int code, const std::string& message, const std::vector<std::string>& userMessages) {
    Json::Value reply(Json::objectValue);
    reply["error"]["code"] = code;
    reply["error"]["message"] = message;
    for (const auto& m : userMessages) {
        reply["error"]["user-messages"].append(m);
    }
    return reply;
}

Request decodeRequest(const std::vector<std::string>& frames) {
    if (frames.size() != 2) {
        throw CommandError(kUnreadableRequest, "expected 2 frames (command id, request document), got " +
                                                   std::to_string(frames.size()));
    }
    Request request;
    if (!decodeCommandId(frames[0].data(), frames[0].size(), request.commandId)) {
        throw CommandError(kUnreadableRequest,
                           "command id frame must hold 4 bytes, got " + std::to_string(frames[0].size()));
    }
    const std::string& text = frames[1];
    if (text.empty()) {
        return request;
    }
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    Json::Value document;
    if (!reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
        auto end = errors.find('\n');
        throw CommandError(kUnreadableRequest,
                           "request document is not valid JSON: " + errors.substr(0, end));
    }
    if (!document.isObject()) {
        throw CommandError(kUnreadableRequest, "request document must be a JSON object");
    }
    const std::string notUtf8 = firstInvalidUtf8(document);
    if (!notUtf8.empty()) {
        throw CommandError(kUnreadableRequest, "request document holds text that is not UTF-8 at " + notUtf8);
    }
    request.hasDocument = true;
    request.document = std::move(document);
    return request;
}

std::string renderReply(const Json::Value& reply) {
    static const Json::StreamWriterBuilder builder = [] {
        Json::StreamWriterBuilder b;
        b["indentation"] = "";
        b["emitUTF8"] = true;
        return b;
    }();
    return Json::writeString(builder, reply);
}

namespace {

// Frames of a request's envelope (routing frames and the delimiter): one routing frame per
// hop, only a few on any real path.
constexpr size_t kMaxEnvelopeFrames = 8;
// Requests read from the socket per round before one is handled.
constexpr int kReadAhead = 64;

// The ZAP handler of a CURVE server; none for a plain one.
std::unique_ptr<ZapHandler> zapHandlerFor(zmq::context_t& context, const ServerOptions& options) {
    if (options.curveSecretKey.empty()) {
        return nullptr;
    }
    if (options.clientKeys == nullptr) {
        throw std::invalid_argument("a CURVE server needs its client keys");
    }
    return std::make_unique<ZapHandler>(context, *options.clientKeys);
}

}  // namespace

RequestServer::RequestServer(zmq::context_t& context, const std::string& endpoint, const ServerOptions& options)
    : m_options(options),
      m_zap(zapHandlerFor(context, options)),
      m_socket(context, zmq::socket_type::router),
      m_queue(kQueuedPerClient, kQueuedRequestsOfMaxSize * options.maxRequestBytes) {
    m_socket.set(zmq::sockopt::linger, 0);
    m_socket.set(zmq::sockopt::maxmsgsize,
                 static_cast<int64_t>(options.maxRequestBytes + ServerOptions::kFrameAllowance));
    m_socket.set(zmq::sockopt::rcvhwm, kReceiveHighWater);
    if (m_zap) {
        m_socket.set(zmq::sockopt::curve_server, true);
        m_socket.set(zmq::sockopt::curve_secretkey, options.curveSecretKey);
        m_socket.set(zmq::sockopt::zap_domain, kZapDomain);
    }
    m_guard = std::make_unique<ConnectionGuard>(context, m_socket, ConnectionGuard::connectionLimit());
    m_socket.bind(endpoint);
}

RequestServer::~RequestServer() = default;

std::string RequestServer::endpoint() const {
    return m_socket.get(zmq::sockopt::last_endpoint);
}

void RequestServer::watch(int fd, std::function<void()> onReadable) {
    m_watched.push_back({nullptr, fd, std::move(onReadable)});
}

void RequestServer::watch(zmq::socket_t& socket, std::function<void()> onReadable) {
    m_watched.push_back({socket.handle(), 0, std::move(onReadable)});
}

void RequestServer::addTimer(std::function<std::optional<Clock::time_point>()> due,
                             std::function<void(Clock::time_point)> fire) {
    m_timers.push_back({std::move(due), std::move(fire)});
}

bool RequestServer::pollSockets(int timeoutMs) {
    for (const Timer& timer : m_timers) {
        if (const auto due = timer.due()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now()).count();
            timeoutMs = static_cast<int>(std::clamp<long long>(left, 0, timeoutMs));
        }
    }
    // The request socket, the connection guard, the ZAP handler (when CURVE), then the
    // watched descriptors and sockets.
    std::vector<zmq::pollitem_t> items = {{m_socket.handle(), 0, ZMQ_POLLIN, 0}, m_guard->pollItem()};
    if (m_zap) {
        items.push_back(m_zap->pollItem());
    }
    const size_t firstWatched = items.size();
    for (const Watched& w : m_watched) {
        items.push_back({w.socket, w.fd, ZMQ_POLLIN, 0});
    }
    int ready = 0;
    try {
        ready = zmq::poll(items.data(), items.size(), std::chrono::milliseconds(timeoutMs));
    } catch (const zmq::error_t& e) {
        if (e.num() != EINTR) {
            throw;
        }
    }
    if (ready > 0) {
        if ((items[1].revents & ZMQ_POLLIN) != 0) {
            m_guard->readEvents();
        }
        if (m_zap && (items[2].revents & ZMQ_POLLIN) != 0) {
            m_zap->answerWaiting();
        }
        for (size_t i = firstWatched; i < items.size(); ++i) {
            if ((items[i].revents & ZMQ_POLLIN) != 0) {
                m_watched[i - firstWatched].onReadable();
            }
        }
    }
    const auto now = Clock::now();
    for (const Timer& timer : m_timers) {
        const auto due = timer.due();
        if (due && *due <= now) {
            timer.fire(now);
        }
    }
    return ready > 0 && (items[0].revents & ZMQ_POLLIN) != 0;
}

bool RequestServer::receiveOne() {
    if ((m_socket.get(zmq::sockopt::events) & ZMQ_POLLIN) == 0) {
        return false;
    }
    // Routing frames up to the empty delimiter, then the request's frames. Every part is
    // read even when it is not kept (or memory runs out), so that the next read starts
    // at the next message.
    PendingRequest request;
    bool delimited = false;
    bool overlong = false;
    bool outOfMemory = false;
    zmq::message_t part;
    for (;;) {
        if (!m_socket.recv(part, zmq::recv_flags::dontwait)) {
            break;
        }
        try {
            if (!delimited) {
                delimited = part.size() == 0;
                overlong = overlong || request.envelope.size() == kMaxEnvelopeFrames;
                if (!overlong) {
                    request.envelope.emplace_back(static_cast<const char*>(part.data()), part.size());
                }
            } else {
                if (request.frames.empty()) {
                    const char* key = zmq_msg_gets(part.handle(), "User-Id");  // null without CURVE
                    request.clientKey = key != nullptr ? key : "";
                    m_guard->noteActivity(zmq_msg_get(part.handle(), ZMQ_SRCFD));
                }
                request.bytes += part.size();
                // A frame beyond the kept ones, or beyond the size limit, is counted, not kept.
                const bool keep = request.frames.size() < kKeptFrames && request.bytes <= m_options.maxRequestBytes;
                request.frames.emplace_back(keep ? std::string(static_cast<const char*>(part.data()), part.size())
                                                 : std::string());
            }
        } catch (const std::bad_alloc&) {
            outOfMemory = true;
        }
        if (!part.more()) {
            break;
        }
    }
    if (!delimited || overlong || request.envelope.empty()) {
        return true;  // no REQ envelope: dropped, as a REP socket drops it
    }
    request.peer = request.envelope.front();
    if (outOfMemory) {
        refuse(request, kUnreadableRequest, "request of " + std::to_string(request.bytes) +
                                                " bytes could not be held in memory");
    } else if (request.bytes > m_options.maxRequestBytes) {
        refuse(request, kRequestTooLarge,
               "request of " + std::to_string(request.bytes) + " bytes is larger than the limit of " +
                   std::to_string(m_options.maxRequestBytes) + " bytes");
    } else {
        const FairQueue::Admission admission = m_queue.push(std::move(request), FairQueue::Clock::now());
        if (admission != FairQueue::Admission::Queued) {
            refuse(request, kServerBusy,
                   admission == FairQueue::Admission::ClientFull
                       ? "this client has " + std::to_string(kQueuedPerClient) + " requests waiting already"
                       : "the requests waiting hold " + std::to_string(m_queue.bytes()) + " bytes already");
        }
    }
    return true;
}

void RequestServer::refuse(const PendingRequest& request, int code, const std::string& message) {
    ++m_served;
    Logger::log(2, "emulator: request refused (%d): %s", code, message.c_str());
    try {
        sendReply(request.envelope, {renderReply(errorReply(code, message))});
    } catch (const std::bad_alloc&) {
        // Nothing left to answer with: the client's time limit tells it.
    }
}

void RequestServer::sendReply(const std::vector<std::string>& envelope, const std::vector<std::string>& reply) {
    // The reply travels behind the request's envelope.
    const size_t count = envelope.size() + reply.size();
    for (size_t i = 0; i < count; ++i) {
        const std::string& frame = i < envelope.size() ? envelope[i] : reply[i - envelope.size()];
        m_socket.send(zmq::buffer(frame), i + 1 < count ? zmq::send_flags::sndmore : zmq::send_flags::none);
    }
}

void RequestServer::handleNext(const PendingHandler& handler) {
    const auto start = FairQueue::Clock::now();
    std::optional<PendingRequest> request = m_queue.take(start, m_retry_at);
    if (!request) {
        return;
    }
    m_retry_at = FairQueue::Clock::time_point::min();
    ++m_served;
    std::vector<std::string> reply;
    bool answered = false;
    try {
        answered = handler(*request, reply);
    } catch (const std::exception& e) {
        Logger::log(2, "emulator: request could not be handled: %s", e.what());
    }
    if (answered) {
        sendReply(request->envelope, reply);
    }
    m_queue.charge(request->peer, FairQueue::Clock::now() - start);
}

int RequestServer::pollTimeoutMs(int pollMs) const {
    if (m_queue.empty()) {
        return pollMs;
    }
    // A request waits for its turn until m_retry_at (or a new request), else none waits.
    const auto now = FairQueue::Clock::now();
    if (m_retry_at <= now) {
        return 0;
    }
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(m_retry_at - now);
    return static_cast<int>(std::min<int64_t>(wait.count(), pollMs));
}

void RequestServer::serveLoop(const std::atomic<bool>& stop, const PendingHandler& handler,
                              const std::function<void()>& idle, int pollMs) {
    while (!stop.load()) {
        try {
            if (pollSockets(pollTimeoutMs(pollMs))) {
                for (int i = 0; i < kReadAhead && receiveOne(); ++i) {
                }
            }
            if (!m_queue.empty()) {
                handleNext(handler);
            }
        } catch (const std::bad_alloc&) {
            // Memory ran out outside a request's own handling (its catch-all answers that):
            // what was being read or answered is lost, the loop goes on.
            try {
                Logger::log(2, "emulator: out of memory while reading or answering a request");
            } catch (...) {
            }
        }
        // After every request as well as every idle poll, so that a steady stream of
        // requests cannot hold back a reload.
        if (idle) {
            idle();
        }
    }
}

void RequestServer::serveFrames(const std::atomic<bool>& stop, const FrameHandler& handler,
                                const std::function<void()>& idle, int pollMs) {
    serveLoop(
        stop,
        [&handler](const PendingRequest& request, std::vector<std::string>& reply) {
            return handler(request.frames, reply);
        },
        idle, pollMs);
}

Json::Value RequestServer::answer(const PendingRequest& pending, const Handler& handler) {
    Request request;
    int result = 0;
    Json::Value reply;
    try {
        request = decodeRequest(pending.frames);
        request.clientKey = pending.clientKey;
        if (m_options.clientKeys != nullptr) {
            checkClientAccess(request, *m_options.clientKeys);
        }
        reply = handler(request);
    } catch (const CommandError& e) {
        Logger::log(2, "emulator: command %u refused (%d): %s", request.commandId, e.code(), e.what());
        result = e.code();
        reply = errorReply(e.code(), e.what(), e.userMessages());
    } catch (const std::exception& e) {
        Logger::log(2, "emulator: command %u failed: %s", request.commandId, e.what());
        result = kUnreadableRequest;
        reply = errorReply(kUnreadableRequest, std::string("request could not be handled: ") + e.what());
    } catch (...) {
        Logger::log(2, "emulator: command %u failed with an unknown exception", request.commandId);
        result = kUnreadableRequest;
        reply = errorReply(kUnreadableRequest, "request could not be handled");
    }
    auditRequest(request, result);
    return reply;
}

void RequestServer::serve(const std::atomic<bool>& stop, const Handler& handler,
                          const std::function<void()>& idle, int pollMs) {
    serveLoop(
        stop,
        [this, &handler](const PendingRequest& request, std::vector<std::string>& reply) {
            try {
                reply = {renderReply(answer(request, handler))};
            } catch (const std::bad_alloc&) {
                reply = {renderReply(errorReply(kUnreadableRequest, "the reply could not be held in memory"))};
            }
            return true;
        },
        idle, pollMs);
}

}  // namespace pimav::detail
