#include "support/FakeDaemon.h"

#include "platform/IpcWire.h"

using namespace pimav::detail;

FakeDaemon::FakeDaemon(uint16_t port, const ServerOptions& options)
    : m_context(1),
      m_server(m_context,
               port == 0 ? std::string("tcp://127.0.0.1:*") : "tcp://127.0.0.1:" + std::to_string(port),
               options) {
    m_endpoint = m_server.endpoint();
    m_port = static_cast<uint16_t>(std::stoul(m_endpoint.substr(m_endpoint.rfind(':') + 1)));
    m_thread = std::thread([this] {
        m_server.serveFrames(
            m_stop, [this](const auto& frames, auto& reply) { return answerFrames(frames, reply); }, nullptr,
            10);
    });
}

FakeDaemon::~FakeDaemon() {
    m_stop = true;
    m_thread.join();
}

void FakeDaemon::replyWith(const Json::Value& document) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_default_reply = document;
}

void FakeDaemon::onRequest(Handler handler) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_handler = std::move(handler);
}

void FakeDaemon::queue(Action action) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_script.push_back(std::move(action));
}

std::vector<FakeDaemon::Request> FakeDaemon::requests() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

size_t FakeDaemon::requestCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests.size();
}

void FakeDaemon::clearRequests() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.clear();
}

FakeDaemon::Action FakeDaemon::answerFor(const Request& request) {
    Handler handler;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_script.empty()) {
            Action next = std::move(m_script.front());
            m_script.pop_front();
            return next;
        }
        if (!m_handler) {
            return Action::reply(m_default_reply);
        }
        handler = m_handler;
    }
    // The handler runs without the lock so that it may inspect the daemon.
    return handler(request);
}

bool FakeDaemon::answerFrames(const std::vector<std::string>& frames, std::vector<std::string>& reply) {
    Request request;
    request.frameCount = frames.size();
    if (request.frameCount >= 1) {
        decodeCommandId(frames[0].data(), frames[0].size(), request.commandId);
    }
    if (request.frameCount >= 2) {
        request.documentText = frames[1];
        request.hasDocument = !request.documentText.empty();
        parseDocument(request.documentText.data(), request.documentText.size(), request.document);
    }
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_requests.push_back(request);
    }

    Action action = answerFor(request);
    if (action.kind == Action::Kind::Silent) {
        return false;
    }
    reply = action.kind == Action::Kind::Reply ? std::vector<std::string>{renderDocument(action.document)}
                                               : std::move(action.frames);
    return true;
}
