#include "RequestServer.h"

#include <memory>

#include "pimAvMngApi/platform/Logger.h"

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
        throw CommandError(kUnreadableRequest,
                           "expected 2 frames (command id, request document), got " + std::to_string(frames.size()));
    }
    const std::string& idFrame = frames[0];
    if (idFrame.size() != 4) {
        throw CommandError(kUnreadableRequest,
                           "command id frame must hold 4 bytes, got " + std::to_string(idFrame.size()));
    }
    Request request;
    const auto* b = reinterpret_cast<const unsigned char*>(idFrame.data());
    request.commandId = static_cast<uint32_t>(b[0]) | (static_cast<uint32_t>(b[1]) << 8) |
                        (static_cast<uint32_t>(b[2]) << 16) | (static_cast<uint32_t>(b[3]) << 24);
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
        throw CommandError(kUnreadableRequest, "request document is not valid JSON: " + errors.substr(0, end));
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

RequestServer::RequestServer(zmq::context_t& context, const std::string& endpoint)
    : m_socket(context, zmq::socket_type::rep) {
    m_socket.set(zmq::sockopt::linger, 0);
    m_socket.bind(endpoint);
}

Json::Value RequestServer::answer(const std::vector<std::string>& frames, const Handler& handler) {
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

bool RequestServer::serveOne(const Handler& handler, int timeoutMs) {
    zmq::pollitem_t items[] = {{m_socket.handle(), 0, ZMQ_POLLIN, 0}};
    int ready = 0;
    try {
        ready = zmq::poll(items, 1, std::chrono::milliseconds(timeoutMs));
    } catch (const zmq::error_t& e) {
        if (e.num() == EINTR) {
            return false;
        }
        throw;
    }
    if (ready <= 0 || (items[0].revents & ZMQ_POLLIN) == 0) {
        return false;
    }
    std::vector<std::string> frames;
    for (;;) {
        zmq::message_t part;
        auto got = m_socket.recv(part, zmq::recv_flags::none);
        if (!got) {
            break;
        }
        // Only the first few frames matter; a flood of frames is counted, not kept.
        if (frames.size() < 3) {
            frames.emplace_back(static_cast<const char*>(part.data()), part.size());
        } else {
            frames.emplace_back();
        }
        if (!part.more()) {
            break;
        }
    }
    const std::string text = renderReply(answer(frames, handler));
    m_socket.send(zmq::buffer(text), zmq::send_flags::none);
    ++m_served;
    return true;
}

void RequestServer::serve(const std::atomic<bool>& stop, const Handler& handler, const std::function<void()>& idle,
                          int pollMs) {
    while (!stop.load()) {
        serveOne(handler, pollMs);
        // After every request as well as every idle poll, so that a steady stream of
        // requests cannot hold back a reload.
        if (idle) {
            idle();
        }
    }
}

}  // namespace pimav::detail
