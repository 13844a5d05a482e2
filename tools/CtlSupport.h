#pragma once

// Pieces of avmngctl: the client subclass with the user's endpoint and time limit, the
// command-name table, and the verbs, each giving a JSON document and its text form.

#include <json/json.h>

#include <functional>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

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

    // The failure of a library call that returned `code`, with the detail it reported.
    Failure failure(int code);
};

// What a verb prints: `json` with --json; otherwise `text`, written from `json` (none: the
// JSON document itself).
struct VerbOutput {
    Json::Value json;
    std::optional<std::string> text;
};

// Command id of a decimal number, a method name (getSessionSdp) or an enum name
// (AES67_GET_SESSION_SDP); -1 when unknown.
int commandIdOf(const std::string& text);
// The words commandIdOf accepts: every id, and the method name of each command that has one.
std::vector<std::string> commandWords();
// [{"id", "method" (null for none), "enum", "description"}].
VerbOutput commandList();

std::string renderJson(const Json::Value& value, bool pretty);

// Typed verbs; their JSON shapes are listed in README.md.
VerbOutput sessions(CtlJsonApi& api);
VerbOutput advertised(CtlJsonApi& api);
// Takes a one-line warning to show.
using Warn = std::function<void(const std::string&)>;
// `document` is the user's SourceApi or DestinationApi document, read from `source` (a
// file name for the messages); members the record ignores are named in a warning before
// the request is sent.
VerbOutput addSource(CtlJsonApi& api, const Json::Value& document, const std::string& source,
                     const Warn& warn);
VerbOutput addDestination(CtlJsonApi& api, const Json::Value& document, const std::string& source,
                          const Warn& warn);
VerbOutput clock(CtlJsonApi& api);
VerbOutput files(CtlJsonApi& api);
VerbOutput alarms(CtlJsonApi& api);

}  // namespace pimav::detail
