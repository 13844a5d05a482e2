#pragma once

#include <json/json.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <zmq.hpp>

#include "pimAvMngApi/platform/ErrorReport.h"
#include "pimAvMngApi/platform/IpcMsg.h"

namespace pimav::detail {
class LinkMonitor;
}

/// Client end of the request/reply link to the AV manager daemon.
///
/// One ZeroMQ REQ socket, created from the host's context by init() and connected to
/// the endpoint that getIpcConnectAddress() names. sendMessage() performs one complete
/// exchange: it sends the command id and the request document (see docs/wire-protocol.md),
/// waits at most getClientTimeout() milliseconds for the reply and parses the reply
/// document. When an exchange fails half-way (no reply in time, send or receive error)
/// the socket is closed and the next call connects a fresh one, so a REQ socket is never
/// left waiting for a reply that will not come.
///
/// Calls on one object may come from several threads: exchanges are serialised by an
/// internal mutex, and each caller's time limit starts once its turn has come.
///
/// The host's zmq::context_t must outlive this object (the socket is closed in the
/// destructor, with linger 0).
///
/// Settings beyond the hooks (docs/wire-protocol.md): a reply time limit and a reply size
/// limit set by the host, and CURVE encryption. init() reads the environment variables
/// AVMNG_TIMEOUT_MS, AVMNG_CURVE_SERVER_KEY and AVMNG_CURVE_KEYFILE, so that any host
/// program can be configured without code changes; a setter called by the host takes
/// precedence over its variable. Without any of them the client behaves as the hooks say.
class ClientJsonApi {
public:
    /// Transport failure codes. They lie below the library's own result codes (-1 to -23)
    /// so that a caller can tell a transport failure from a refused request.
    static constexpr int kErrNotInitialised = -101;  ///< sendMessage before a successful init
    static constexpr int kErrSocket = -102;          ///< the socket could not be created
    static constexpr int kErrConnect = -103;         ///< the endpoint text was refused
    static constexpr int kErrSendFailed = -104;      ///< the request could not be queued
    static constexpr int kErrTimeout = -105;         ///< no reply within getClientTimeout()
    static constexpr int kErrReceiveFailed = -106;   ///< reading the reply failed
    static constexpr int kErrBadReply = -107;        ///< the reply was not exactly one frame
    static constexpr int kErrReplyNotJson = -108;    ///< the reply frame is not a JSON document
    static constexpr int kErrReplyTooLarge = -109;   ///< the reply exceeded the reply size limit
    static constexpr int kErrCurveKeys = -110;       ///< the CURVE key setting cannot be used
    static constexpr int kErrKeyRefused = -111;      ///< the daemon refused this client's CURVE key

    /// Reply time limit (milliseconds) used by the base hook, and for any hook result <= 0.
    static constexpr int kDefaultClientTimeoutMs = 150000;
    /// Reply size limit (bytes, ZMQ_MAXMSGSIZE of the socket) until setMaxReplyBytes().
    static constexpr int64_t kDefaultMaxReplyBytes = int64_t{64} * 1024 * 1024;

    ClientJsonApi();
    virtual ~ClientJsonApi();
    ClientJsonApi(const ClientJsonApi&) = delete;
    ClientJsonApi& operator=(const ClientJsonApi&) = delete;

    /// Creates the socket from `context` and connects it to getIpcConnectAddress().
    /// May be called again (for example after the endpoint changed): the old socket is
    /// closed first. Returns 0, kErrSocket or kErrConnect.
    int init(zmq::context_t& context);

    /// One request/reply exchange. On success the parsed reply document replaces
    /// `reply` and 0 is returned; on failure `reply` is untouched, a negative code above
    /// is returned, a level 2 line is logged and the failure is kept for
    /// getLastErrorMessage().
    /// A reply that is a refusal, {"error": {"code": N, "message": ...}} with N negative,
    /// replaces `reply` as well (so that its message and user messages can be read) and
    /// N is returned, logged and kept like a transport failure.
    virtual int sendMessage(IpcMsg& msg, Json::Value& reply);

    /// Details of the most recent failure (code 0 and empty texts when there was none).
    /// A later success does not clear them. Always returns 0.
    int getLastErrorMessage(ErrorReport& report);

    /// Hook for the derived class: the endpoint to connect to, "tcp://host:port"; the base
    /// gives an empty text.
    virtual std::string getIpcConnectAddress();
    /// Names command `id` in log lines and error reports; the base writes "command N". Returns 0.
    virtual int getCommandDescription(unsigned int id, std::string& description);
    /// The reply time limit in milliseconds; the base gives kDefaultClientTimeoutMs.
    virtual int getClientTimeout();

    /// Readable text of a transport code ("unknown error" for any other value).
    static const char* describeError(int code);

    /// Reply time limit for this object, in place of getClientTimeout(); 0 or below
    /// returns to the hook. Takes precedence over AVMNG_TIMEOUT_MS.
    void setClientTimeoutMs(int timeoutMs);
    /// The reply time limit the next exchange uses, in milliseconds.
    int clientTimeoutMs();

    /// Largest reply accepted, in bytes (kDefaultMaxReplyBytes until set); 0 or below: no
    /// limit. A larger reply fails the exchange with kErrReplyTooLarge. Applies from the
    /// next exchange on.
    void setMaxReplyBytes(int64_t bytes);

    /// CURVE encryption from the next exchange on. `serverKey` is the daemon's public key,
    /// as the path of an existing .pub file or as its 40 Z85 characters; `keyFile` is the
    /// path of this client's .key file. Both empty: no encryption. Takes precedence over
    /// AVMNG_CURVE_SERVER_KEY / AVMNG_CURVE_KEYFILE. Returns 0, or kErrCurveKeys (logged,
    /// kept for getLastErrorMessage) when the keys cannot be used; every exchange then
    /// fails with kErrCurveKeys until a usable setting is given.
    int setCurveKeys(const std::string& serverKey, const std::string& keyFile);

private:
    int openSocket(const IpcMsg* msg);
    void closeSocket();
    int fail(int code, const IpcMsg* msg, const std::string& detail, const char* step = "init");
    int exchange(IpcMsg& msg, Json::Value& reply);
    int awaitReply(IpcMsg& msg, int timeoutMs, std::chrono::steady_clock::time_point deadline);
    int keyRefused(IpcMsg& msg, int zapStatus);
    int daemonRefusal(const IpcMsg& msg, const Json::Value& reply);
    int timeoutLocked();
    void readEnvironment();
    int applyCurveKeys(const std::string& serverKey, const std::string& keyFile, const char* serverKeySource,
                       const char* keyFileSource);

    std::mutex m_mutex;
    zmq::context_t* m_context = nullptr;
    std::unique_ptr<zmq::socket_t> m_socket;
    std::unique_ptr<pimav::detail::LinkMonitor> m_monitor;  // watches m_socket
    std::string m_endpoint;
    ErrorReport m_last_error;

    int m_timeout_ms = 0;  // 0: the hook's limit
    bool m_timeout_set_by_host = false;
    int64_t m_max_reply_bytes = kDefaultMaxReplyBytes;
    // CURVE keys in Z85 (all empty: plain text), or why the setting cannot be used.
    std::string m_curve_server_key;
    std::string m_curve_public_key;
    std::string m_curve_secret_key;
    std::string m_curve_problem;
    bool m_curve_set_by_host = false;
};
