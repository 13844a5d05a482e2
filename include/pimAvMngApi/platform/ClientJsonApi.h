#pragma once

#include <json/json.h>

#include <memory>
#include <mutex>
#include <string>
#include <zmq.hpp>

#include "pimAvMngApi/platform/ErrorReport.h"
#include "pimAvMngApi/platform/IpcMsg.h"

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

    /// Reply time limit (milliseconds) used by the base hook, and for any hook result <= 0.
    static constexpr int kDefaultClientTimeoutMs = 150000;

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

private:
    int openSocket(const IpcMsg* msg);
    void closeSocket();
    int fail(int code, const IpcMsg* msg, const std::string& detail);
    int exchange(IpcMsg& msg, Json::Value& reply);
    int daemonRefusal(const IpcMsg& msg, const Json::Value& reply);

    std::mutex m_mutex;
    zmq::context_t* m_context = nullptr;
    std::unique_ptr<zmq::socket_t> m_socket;
    std::string m_endpoint;
    ErrorReport m_last_error;
};
