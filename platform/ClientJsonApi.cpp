#include "pimAvMngApi/platform/ClientJsonApi.h"

#include <cerrno>
#include <chrono>
#include <string>
#include <utility>

#include "pimAvMngApi/platform/Logger.h"
#include "platform/IpcWire.h"

using namespace pimav::detail;

ClientJsonApi::ClientJsonApi() = default;

ClientJsonApi::~ClientJsonApi() {
    closeSocket();
}

int ClientJsonApi::init(zmq::context_t& context) {
    std::lock_guard<std::mutex> lock(m_mutex);
    closeSocket();
    m_context = &context;
    return openSocket(nullptr);
}

std::string ClientJsonApi::getIpcConnectAddress() {
    return std::string();
}

int ClientJsonApi::getCommandDescription(unsigned int id, std::string& description) {
    description = "command " + std::to_string(id);
    return 0;
}

int ClientJsonApi::getClientTimeout() {
    return kDefaultClientTimeoutMs;
}

int ClientJsonApi::getLastErrorMessage(ErrorReport& report) {
    std::lock_guard<std::mutex> lock(m_mutex);
    report = m_last_error;
    return 0;
}

const char* ClientJsonApi::describeError(int code) {
    switch (code) {
        case 0:
            return "success";
        case kErrNotInitialised:
            return "client not initialised";
        case kErrSocket:
            return "cannot create the IPC socket";
        case kErrConnect:
            return "cannot connect to the IPC endpoint";
        case kErrSendFailed:
            return "sending the request failed";
        case kErrTimeout:
            return "no reply within the client timeout";
        case kErrReceiveFailed:
            return "receiving the reply failed";
        case kErrBadReply:
            return "reply is not a single frame";
        case kErrReplyNotJson:
            return "reply is not a JSON document";
        default:
            return "unknown error";
    }
}

int ClientJsonApi::sendMessage(IpcMsg& msg, Json::Value& reply) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_context == nullptr) {
        return fail(kErrNotInitialised, &msg, "init() has not succeeded");
    }
    if (!m_socket) {
        // The previous exchange failed (or init could not connect): start afresh.
        const int rc = openSocket(&msg);
        if (rc < 0) {
            return rc;
        }
    }
    return exchange(msg, reply);
}

int ClientJsonApi::openSocket(const IpcMsg* msg) {
    m_endpoint = getIpcConnectAddress();
    std::unique_ptr<zmq::socket_t> socket;
    try {
        socket = std::make_unique<zmq::socket_t>(*m_context, zmq::socket_type::req);
        socket->set(zmq::sockopt::linger, 0);
    } catch (const zmq::error_t& e) {
        return fail(kErrSocket, msg, e.what());
    }
    try {
        socket->connect(m_endpoint);
    } catch (const zmq::error_t& e) {
        return fail(kErrConnect, msg, "\"" + m_endpoint + "\": " + e.what());
    }
    m_socket = std::move(socket);
    return 0;
}

void ClientJsonApi::closeSocket() {
    if (m_socket) {
        m_socket->close();
        m_socket.reset();
    }
}

int ClientJsonApi::exchange(IpcMsg& msg, Json::Value& reply) {
    int timeoutMs = getClientTimeout();
    if (timeoutMs <= 0) {
        timeoutMs = kDefaultClientTimeoutMs;
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);

    const std::string idFrame = encodeCommandId(msg.getCommandId());
    const std::string document = msg.hasPayload() ? renderDocument(msg.getPayload()) : std::string();
    try {
        m_socket->set(zmq::sockopt::sndtimeo, timeoutMs);
        if (!m_socket->send(zmq::buffer(idFrame), zmq::send_flags::sndmore) ||
            !m_socket->send(zmq::buffer(document), zmq::send_flags::none)) {
            closeSocket();
            return fail(
                kErrTimeout, &msg,
                "request not accepted by " + m_endpoint + " within " + std::to_string(timeoutMs) + " ms");
        }
    } catch (const zmq::error_t& e) {
        closeSocket();
        return fail(kErrSendFailed, &msg, m_endpoint + ": " + e.what());
    }

    // Wait for the reply until the deadline; a signal interrupting the wait does not
    // shorten or extend it.
    for (;;) {
        const auto remaining = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (remaining.count() <= 0) {
            closeSocket();
            return fail(kErrTimeout, &msg,
                        "no reply from " + m_endpoint + " within " + std::to_string(timeoutMs) + " ms");
        }
        zmq::pollitem_t item{m_socket->handle(), 0, ZMQ_POLLIN, 0};
        try {
            zmq::poll(&item, 1, remaining);
        } catch (const zmq::error_t& e) {
            if (e.num() == EINTR) {
                continue;
            }
            closeSocket();
            return fail(kErrReceiveFailed, &msg, m_endpoint + ": " + e.what());
        }
        if ((item.revents & ZMQ_POLLIN) != 0) {
            break;
        }
    }

    zmq::message_t frame;
    size_t frames = 0;
    bool more = true;
    try {
        // Read the whole reply so the socket is ready for the next request even when
        // the reply turns out to be malformed.
        zmq::message_t part;
        while (more) {
            if (!m_socket->recv(part, zmq::recv_flags::dontwait)) {
                closeSocket();
                return fail(kErrReceiveFailed, &msg, m_endpoint + ": reply incomplete");
            }
            more = part.more();
            if (frames++ == 0) {
                frame.move(part);
            }
        }
    } catch (const zmq::error_t& e) {
        closeSocket();
        return fail(kErrReceiveFailed, &msg, m_endpoint + ": " + e.what());
    }
    if (frames != 1) {
        return fail(kErrBadReply, &msg,
                    "reply from " + m_endpoint + " has " + std::to_string(frames) + " frames");
    }
    Json::Value parsed;
    std::string errors;
    if (!parseDocument(frame.data<char>(), frame.size(), parsed, &errors)) {
        return fail(kErrReplyNotJson, &msg,
                    "reply from " + m_endpoint + " (" + std::to_string(frame.size()) + " bytes): " + errors);
    }
    reply = std::move(parsed);
    return daemonRefusal(msg, reply);
}

int ClientJsonApi::daemonRefusal(const IpcMsg& msg, const Json::Value& reply) {
    if (!reply.isObject() || !reply.isMember("error")) {
        return 0;
    }
    const Json::Value& error = reply["error"];
    const Json::Value& code = error.isObject() ? error["code"] : Json::Value::nullSingleton();
    if (!code.isInt() || code.asInt() >= 0) {
        return 0;
    }
    ErrorReport report;
    report.code = code.asInt();
    report.text = "refused by the daemon";
    if (error["message"].isString() && !error["message"].asString().empty()) {
        report.text += ": " + error["message"].asString();
    }
    report.commandId = msg.getCommandId();
    getCommandDescription(report.commandId, report.commandDescription);
    Logger::log(2, "ClientJsonApi: command %u (%s) refused by the daemon with %d, %s", report.commandId,
                report.commandDescription.c_str(), report.code, report.text.c_str());
    m_last_error = std::move(report);
    return m_last_error.code;
}

int ClientJsonApi::fail(int code, const IpcMsg* msg, const std::string& detail) {
    ErrorReport report;
    report.code = code;
    report.text = std::string(describeError(code)) + ": " + detail;
    if (msg != nullptr) {
        report.commandId = msg->getCommandId();
        getCommandDescription(report.commandId, report.commandDescription);
        Logger::log(2, "ClientJsonApi: command %u (%s) failed with %d, %s", report.commandId,
                    report.commandDescription.c_str(), code, report.text.c_str());
    } else {
        Logger::log(2, "ClientJsonApi: init failed with %d, %s", code, report.text.c_str());
    }
    m_last_error = std::move(report);
    return code;
}
