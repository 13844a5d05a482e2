#include "common/RequestServer.h"

#include <algorithm>
#include <memory>

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

// The reply document for one request's frames: the handler's, or an error reply.
Json::Value answer(const std::vector<std::string>& frames, const RequestServer::Handler& handler) {
    uint32_t id = 0;
    try {
        Request request = decodeRequest(frames);
        id = request.commandId;
        return handler(request);
    } catch (const CommandError& e) {
        Logger::log(2, "emulator: command %u refused (%d): %s", id, e.code(), e.what());
        return errorReply(e.code(), e.what(), e.userMessages());
    } catch (const std::exception& e) {
        Logger::log(2, "emulator: command %u failed: %s", id, e.what());
        return errorReply(kUnreadableRequest, std::string("request could not be handled: ") + e.what());
    } catch (...) {
        Logger::log(2, "emulator: command %u failed with an unknown exception", id);
        return errorReply(kUnreadableRequest, "request could not be handled");
    }
}

}  // namespace

RequestServer::RequestServer(zmq::context_t& context, const std::string& endpoint)
    : m_socket(context, zmq::socket_type::router) {
    m_socket.set(zmq::sockopt::linger, 0);
    m_socket.bind(endpoint);
}

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

bool RequestServer::pollAll(int timeoutMs) {
    for (const Timer& timer : m_timers) {
        if (const auto due = timer.due()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now()).count();
            timeoutMs = static_cast<int>(std::clamp<long long>(left, 0, timeoutMs));
        }
    }
    std::vector<zmq::pollitem_t> items = {{m_socket.handle(), 0, ZMQ_POLLIN, 0}};
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
    for (size_t i = 1; ready > 0 && i < items.size(); ++i) {
        if ((items[i].revents & ZMQ_POLLIN) != 0) {
            m_watched[i - 1].onReadable();
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

void RequestServer::serveOne(const FrameHandler& handler, int timeoutMs) {
    if (!pollAll(timeoutMs)) {
        return;
    }
    // Routing frames up to the empty delimiter, then the request's frames.
    std::vector<std::string> envelope;
    std::vector<std::string> frames;
    bool delimited = false;
    bool overlong = false;
    for (;;) {
        zmq::message_t part;
        if (!m_socket.recv(part, zmq::recv_flags::none)) {
            break;
        }
        if (!delimited) {
            delimited = part.size() == 0;
            overlong = overlong || envelope.size() == kMaxEnvelopeFrames;
            if (!overlong) {
                envelope.emplace_back(static_cast<const char*>(part.data()), part.size());
            }
        } else if (frames.size() < kKeptFrames) {
            frames.emplace_back(static_cast<const char*>(part.data()), part.size());
        } else {
            // A flood of frames is counted, not kept.
            frames.emplace_back();
        }
        if (!part.more()) {
            break;
        }
    }
    if (!delimited || overlong) {
        return;  // no REQ envelope: dropped, as a REP socket drops it
    }
    ++m_served;
    std::vector<std::string> reply;
    if (!handler(frames, reply)) {
        return;
    }
    // The reply travels behind the request's envelope.
    std::vector<std::string> message = std::move(envelope);
    message.insert(message.end(), reply.begin(), reply.end());
    for (size_t i = 0; i < message.size(); ++i) {
        m_socket.send(zmq::buffer(message[i]),
                      i + 1 < message.size() ? zmq::send_flags::sndmore : zmq::send_flags::none);
    }
}

void RequestServer::serveFrames(const std::atomic<bool>& stop, const FrameHandler& handler,
                                const std::function<void()>& idle, int pollMs) {
    while (!stop.load()) {
        serveOne(handler, pollMs);
        // After every request as well as every idle poll, so that a steady stream of
        // requests cannot hold back a reload.
        if (idle) {
            idle();
        }
    }
}

void RequestServer::serve(const std::atomic<bool>& stop, const Handler& handler,
                          const std::function<void()>& idle, int pollMs) {
    serveFrames(
        stop,
        [&handler](const std::vector<std::string>& frames, std::vector<std::string>& reply) {
            reply = {renderReply(answer(frames, handler))};
            return true;
        },
        idle, pollMs);
}

}  // namespace pimav::detail
