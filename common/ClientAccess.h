#pragma once

// Who may talk to a CURVE daemon, and what each client may do:
//
//   DIR/*.pub           keys that may send every command
//   DIR/readonly/*.pub  keys that are refused every command that changes state
//
// Any other key is refused at the handshake. The files have the .pub form of
// platform/CurveKeys.h.

#include <map>
#include <string>
#include <zmq.hpp>

namespace pimav::detail {

struct Request;

// The ZAP domain of the daemon's socket.
constexpr char kZapDomain[] = "avmng";

class ClientKeys {
public:
    enum class Access { Full, ReadOnly };

    // Reads the key folder. Throws std::runtime_error naming the file at fault: a .pub file
    // that is not in its form, a key in both folders, or a folder that cannot be read.
    static ClientKeys load(const std::string& dir);

    // The access of a key (Z85 text); nullptr when the key is unknown.
    const Access* find(const std::string& key) const;
    size_t count(Access access) const;

private:
    std::map<std::string, Access> m_keys;
};

// Answers libzmq's authentication requests (ZAP, RFC 27) for the CURVE sockets of its
// context: a known key is let in with its Z85 text as the connection's user id, an unknown
// one is refused (status 400) with an audit line. Its socket is bound at construction, so
// build it before the daemon's socket: without a handler, libzmq lets every key in.
class ZapHandler {
public:
    ZapHandler(zmq::context_t& context, const ClientKeys& keys);

    zmq::pollitem_t pollItem();
    // Answers the requests that are waiting.
    void answerWaiting();

private:
    const ClientKeys& m_keys;
    zmq::socket_t m_socket;
};

// Refuses (CommandError kReadOnlyKey) a state-changing command from a read-only key.
void checkClientAccess(const Request& request, const ClientKeys& keys);

// Logs the audit line of a state-changing command from a CURVE client, with its result
// (0 or the code of the error reply).
void auditRequest(const Request& request, int result);

}  // namespace pimav::detail
