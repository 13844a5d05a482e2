#include "pimAvMngApi/platform/ClientJsonApi.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <string>
#include <utility>

#include "pimAvMngApi/platform/Logger.h"
#include "platform/CurveKeys.h"
#include "platform/IpcWire.h"
#include "platform/LinkMonitor.h"

using namespace pimav::detail;

namespace {

// Settings a host program takes from its environment at init (docs/wire-protocol.md).
constexpr char kTimeoutVariable[] = "AVMNG_TIMEOUT_MS";
constexpr char kServerKeyVariable[] = "AVMNG_CURVE_SERVER_KEY";
constexpr char kKeyFileVariable[] = "AVMNG_CURVE_KEYFILE";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// A time limit in milliseconds: a decimal number from 1 to INT_MAX, nothing else.
bool parseTimeoutMs(const std::string& text, int& timeoutMs) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos || text.size() > 10) {
        return false;
    }
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    if (value < 1 || value > INT_MAX) {
        return false;
    }
    timeoutMs = static_cast<int>(value);
    return true;
}

}  // namespace

ClientJsonApi::ClientJsonApi() = default;

ClientJsonApi::~ClientJsonApi() {
    closeSocket();
}

int ClientJsonApi::init(zmq::context_t& context) {
    std::lock_guard<std::mutex> lock(m_mutex);
    closeSocket();
    m_context = &context;
    readEnvironment();
    return openSocket(nullptr);
}

void ClientJsonApi::readEnvironment() {
    if (!m_timeout_set_by_host) {
        const std::string text = environment(kTimeoutVariable);
        m_timeout_ms = 0;
        if (!text.empty() && !parseTimeoutMs(text, m_timeout_ms)) {
            Logger::log(2, "ClientJsonApi: %s=\"%s\" ignored: not a time limit in milliseconds (1 to %d)",
                        kTimeoutVariable, text.c_str(), INT_MAX);
        }
    }
    if (!m_curve_set_by_host) {
        applyCurveKeys(environment(kServerKeyVariable), environment(kKeyFileVariable), kServerKeyVariable,
                       kKeyFileVariable);
    }
}

void ClientJsonApi::setClientTimeoutMs(int timeoutMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_timeout_ms = std::max(timeoutMs, 0);
    m_timeout_set_by_host = true;
}

int ClientJsonApi::clientTimeoutMs() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return timeoutLocked();
}

int ClientJsonApi::timeoutLocked() {
    if (m_timeout_ms > 0) {
        return m_timeout_ms;
    }
    const int hook = getClientTimeout();
    return hook > 0 ? hook : kDefaultClientTimeoutMs;
}

void ClientJsonApi::setMaxReplyBytes(int64_t bytes) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_max_reply_bytes = bytes > 0 ? bytes : -1;
    closeSocket();  // the limit is a socket option: the next exchange opens a socket with it
}

int ClientJsonApi::setCurveKeys(const std::string& serverKey, const std::string& keyFile) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_curve_set_by_host = true;
    closeSocket();
    const int rc = applyCurveKeys(serverKey, keyFile, "server key", "key file");
    return rc < 0 ? fail(rc, nullptr, m_curve_problem, "setCurveKeys") : 0;
}

int ClientJsonApi::applyCurveKeys(const std::string& serverKey, const std::string& keyFile,
                                  const char* serverKeySource, const char* keyFileSource) {
    m_curve_server_key.clear();
    m_curve_public_key.clear();
    m_curve_secret_key.clear();
    m_curve_problem.clear();
    if (serverKey.empty() && keyFile.empty()) {
        return 0;
    }
    if (!curveSupported()) {
        m_curve_problem = "this libzmq has no CURVE support";
    } else if (serverKey.empty() || keyFile.empty()) {
        m_curve_problem = std::string(serverKey.empty() ? serverKeySource : keyFileSource) +
                          " missing: CURVE needs " + serverKeySource + " and " + keyFileSource;
    } else {
        const KeyStatus server = resolveCurvePublicKey(serverKey, m_curve_server_key);
        CurveKeyPair own;
        const KeyStatus client = server.ok() ? readCurveKeyFile(keyFile, own) : KeyStatus{};
        if (!server.ok()) {
            m_curve_problem = std::string(serverKeySource) + ": " + server.error;
        } else if (!client.ok()) {
            m_curve_problem = std::string(keyFileSource) + ": " + client.error;
        } else {
            if (!client.warning.empty()) {
                Logger::log(4, "ClientJsonApi: %s: %s", keyFileSource, client.warning.c_str());
            }
            m_curve_public_key = own.publicKey;
            m_curve_secret_key = own.secretKey;
            Logger::log(5, "ClientJsonApi: CURVE with server key %s, client key %s",
                        m_curve_server_key.c_str(), m_curve_public_key.c_str());
            return 0;
        }
    }
    m_curve_server_key.clear();
    return kErrCurveKeys;
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
        case kErrReplyTooLarge:
            return "reply exceeds the size limit";
        case kErrCurveKeys:
            return "CURVE keys cannot be used";
        case kErrKeyRefused:
            return "the daemon refused this client's key";
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
    if (!m_curve_problem.empty()) {
        return fail(kErrCurveKeys, msg, m_curve_problem);
    }
    std::unique_ptr<zmq::socket_t> socket;
    std::unique_ptr<LinkMonitor> monitor;
    try {
        socket = std::make_unique<zmq::socket_t>(*m_context, zmq::socket_type::req);
        socket->set(zmq::sockopt::linger, 0);
        socket->set(zmq::sockopt::maxmsgsize, m_max_reply_bytes);
        if (!m_curve_server_key.empty()) {
            socket->set(zmq::sockopt::curve_serverkey, m_curve_server_key);
            socket->set(zmq::sockopt::curve_publickey, m_curve_public_key);
            socket->set(zmq::sockopt::curve_secretkey, m_curve_secret_key);
        }
        monitor = std::make_unique<LinkMonitor>(*m_context, *socket);
    } catch (const zmq::error_t& e) {
        return fail(kErrSocket, msg, e.what());
    }
    try {
        socket->connect(m_endpoint);
    } catch (const zmq::error_t& e) {
        monitor.reset();
        return fail(kErrConnect, msg, "\"" + m_endpoint + "\": " + e.what());
    }
    m_socket = std::move(socket);
    m_monitor = std::move(monitor);
    return 0;
}

void ClientJsonApi::closeSocket() {
    m_monitor.reset();  // stops watching before the socket goes
    if (m_socket) {
        m_socket->close();
        m_socket.reset();
    }
}

// Ends an exchange whose connection the daemon refused at its authentication (ZAP).
int ClientJsonApi::keyRefused(IpcMsg& msg, int zapStatus) {
    closeSocket();
    return fail(kErrKeyRefused, &msg,
                m_endpoint + " refused the client key " + m_curve_public_key + " (ZAP status " +
                    std::to_string(zapStatus) + ")");
}

// Waits until the reply is readable or the deadline passes; a signal interrupting the
// wait does not shorten or extend it. The socket's connection events are read meanwhile:
// a link that this client dropped (a reply above the size limit) or a key that the daemon
// refused ends the wait at once.
int ClientJsonApi::awaitReply(IpcMsg& msg, int timeoutMs, std::chrono::steady_clock::time_point deadline) {
    using namespace std::chrono;
    for (;;) {
        const auto now = steady_clock::now();
        const auto droppedAt = m_monitor->droppedByClientAt();
        if (droppedAt && *droppedAt <= now) {
            closeSocket();
            return fail(kErrReplyTooLarge, &msg,
                        "the link to " + m_endpoint + " was dropped while the reply arrived (" +
                            (m_max_reply_bytes > 0 ? "limit " + std::to_string(m_max_reply_bytes) + " bytes"
                                                   : "no size limit: the reply broke the framing") +
                            ")");
        }
        if (const int status = m_monitor->keyRefusal(); status != 0) {
            return keyRefused(msg, status);
        }
        if (deadline <= now) {
            const int handshakeFailures = m_monitor->handshakeFailures();
            closeSocket();
            std::string detail =
                "no reply from " + m_endpoint + " within " + std::to_string(timeoutMs) + " ms";
            if (handshakeFailures > 0) {
                detail +=
                    "; " + std::to_string(handshakeFailures) + " failed handshake(s)" +
                    (m_curve_server_key.empty() ? "" : ": wrong server key, or the client key is refused");
            }
            return fail(kErrTimeout, &msg, detail);
        }
        const auto wakeUp = droppedAt ? std::min(deadline, *droppedAt) : deadline;
        // Rounded up so that the loop never spins on a sub-millisecond remainder.
        const auto wait = ceil<milliseconds>(wakeUp - now);
        zmq::pollitem_t items[] = {{m_socket->handle(), 0, ZMQ_POLLIN, 0}, m_monitor->pollItem()};
        try {
            zmq::poll(items, 2, wait);
            if ((items[1].revents & ZMQ_POLLIN) != 0) {
                m_monitor->readEvents();
            }
        } catch (const zmq::error_t& e) {
            if (e.num() == EINTR) {
                continue;
            }
            closeSocket();
            return fail(kErrReceiveFailed, &msg, m_endpoint + ": " + e.what());
        }
        if ((items[0].revents & ZMQ_POLLIN) != 0) {
            return 0;
        }
    }
}

int ClientJsonApi::exchange(IpcMsg& msg, Json::Value& reply) {
    const int timeoutMs = timeoutLocked();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);

    const std::string idFrame = encodeCommandId(msg.getCommandId());
    const std::string document = msg.hasPayload() ? renderDocument(msg.getPayload()) : std::string();
    try {
        m_monitor->beginExchange();
        m_socket->set(zmq::sockopt::sndtimeo, timeoutMs);
        // The REQ socket takes the request only while it has a connection (made or being
        // made). A daemon that refuses this client's key ends the connection for good, and
        // that may happen before this request: the wait for the socket to take the request
        // therefore watches the link's events too.
        bool taken = false;
        while (!(taken = m_socket->send(zmq::buffer(idFrame), zmq::send_flags::sndmore | zmq::send_flags::dontwait)
                             .has_value())) {
            if (const int status = m_monitor->keyRefusal(); status != 0) {
                return keyRefused(msg, status);
            }
            const auto now = std::chrono::steady_clock::now();
            if (deadline <= now) {
                break;
            }
            zmq::pollitem_t items[] = {{m_socket->handle(), 0, ZMQ_POLLOUT, 0}, m_monitor->pollItem()};
            try {
                zmq::poll(items, 2, std::chrono::ceil<std::chrono::milliseconds>(deadline - now));
            } catch (const zmq::error_t& e) {
                if (e.num() != EINTR) {
                    throw;
                }
            }
            if ((items[1].revents & ZMQ_POLLIN) != 0) {
                m_monitor->readEvents();
            }
        }
        if (!taken || !m_socket->send(zmq::buffer(document), zmq::send_flags::none)) {
            closeSocket();
            return fail(
                kErrTimeout, &msg,
                "request not accepted by " + m_endpoint + " within " + std::to_string(timeoutMs) + " ms");
        }
    } catch (const zmq::error_t& e) {
        closeSocket();
        return fail(kErrSendFailed, &msg, m_endpoint + ": " + e.what());
    }
    const int rc = awaitReply(msg, timeoutMs, deadline);
    if (rc < 0) {
        return rc;
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

int ClientJsonApi::fail(int code, const IpcMsg* msg, const std::string& detail, const char* step) {
    ErrorReport report;
    report.code = code;
    report.text = std::string(describeError(code)) + ": " + detail;
    if (msg != nullptr) {
        report.commandId = msg->getCommandId();
        getCommandDescription(report.commandId, report.commandDescription);
        Logger::log(2, "ClientJsonApi: command %u (%s) failed with %d, %s", report.commandId,
                    report.commandDescription.c_str(), code, report.text.c_str());
    } else {
        Logger::log(2, "ClientJsonApi: %s failed with %d, %s", step, code, report.text.c_str());
    }
    m_last_error = std::move(report);
    return code;
}
