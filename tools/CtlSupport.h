#pragma once

// Pieces of avmngctl: the client subclass with the user's endpoint and time limit, the
// command-name table, and the typed verbs.

#include <json/json.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/AtomicFile.h"
#include "pimAvMngApi/api/AvMngApiJson.h"

namespace pimav::detail {

// A failed verb: the one-line message and the exit status (1 for a refused request or a
// transport failure, 2 for bad usage).
class Failure : public std::runtime_error {
public:
    // `code` negative: a result code, printed with its meaning; exit status 1.
    // `code` 2: bad usage, exit status 2.
    Failure(int code, const std::string& detail);
    int exitStatus() const { return m_status; }

private:
    int m_status;
};

// Meaning of a library or transport result code.
std::string describeCode(int code);

// The JSON layer with the endpoint and reply time limit taken from the command line.
class CtlJsonApi : public AvMngApiJson {
public:
    CtlJsonApi(const std::string& host, uint32_t port, int timeoutMs);
    int init(zmq::context_t& context);

    // Sends command `id` through its pass-through method (ids 1 and 42, which have none,
    // through the transport directly). Throws Failure on a transport failure or when the
    // reply carries an "error" member; returns the reply.
    Json::Value call(unsigned id, Json::Value& request, bool hasRequest);
};

// Command id of a decimal number, a method name (getSessionSdp) or an enum name
// (AES67_GET_SESSION_SDP); -1 when unknown.
int commandIdOf(const std::string& text);
// The words commandIdOf accepts: every id, and the method name of each command that has one.
std::vector<std::string> commandWords();
void printCommands(std::ostream& out);

std::string renderJson(const Json::Value& value, bool pretty);
bool parseJson(const std::string& text, Json::Value& doc, std::string& errors);

// Typed verbs.
void printSessions(CtlJsonApi& api, std::ostream& out);
void printAdvertised(CtlJsonApi& api, std::ostream& out);
Json::Value addSource(CtlJsonApi& api, const Json::Value& document);
Json::Value addDestination(CtlJsonApi& api, const Json::Value& document);
void printClock(CtlJsonApi& api, std::ostream& out);
void printFiles(CtlJsonApi& api, std::ostream& out);
void printAlarms(CtlJsonApi& api, std::ostream& out);

}  // namespace pimav::detail
