#pragma once

// The one exchange of the typed client API: a request built from the caller's values or
// records, sent through the JSON layer, and the reply read back, logged the same way by
// every typed method.

#include <json/json.h>

#include <type_traits>

#include "api/AvMngApiTrace.h"
#include "pimAvMngApi/api/AvMngApiJson.h"

namespace pimav::detail {

// The JSON form of a session id.
inline Json::Value idValue(uint64_t id) {
    return Json::Value(static_cast<Json::UInt64>(id));
}

// Where a typed method's log lines come from: its signature in pretty-function form and
// the source line of its exchange.
struct CallSite {
    const char* pretty;
    int line;
};
#define PIMAV_CALL_SITE (pimav::detail::CallSite{__PRETTY_FUNCTION__, __LINE__})

// A reply nothing is read from.
struct NoReply {
    void operator()(Json::Value&) const {}
};

// Steps of an exchange. Each takes the request or reply document; with a `key`, the
// record's form is that member of the document.
template <typename Record>
auto writtenBy(const Record& record, const char* key = nullptr) {
    return [&record, key](Json::Value& request) {
        record.Serialize(key != nullptr ? request[key] : request);
    };
}
template <typename Record>
auto readInto(Record& record, const char* key = nullptr) {
    return [&record, key](Json::Value& reply) {
        record.Deserialize(key != nullptr ? reply[key] : reply);
    };
}
// A request of one member.
inline auto withMember(const char* key, const Json::Value& value) {
    return [key, value](Json::Value& request) { request[key] = value; };
}

// Runs one step that reads or writes records; a throw is logged as a `check` line and
// gives -13. A step may return an int result of its own (a negative one is passed on).
template <typename Step>
int runJsonStep(const CallSite& site, const char* check, const char* doing, Step&& step) {
    try {
        if constexpr (std::is_same_v<decltype(step()), int>) {
            return step();
        } else {
            step();
            return 0;
        }
    } catch (...) {
        logJsonFailure(check, abiSignature(site.pretty).c_str(), site.line, doing);
        return -13;
    }
}

// The tail of every exchange: a negative transport result is logged as a CHK line and
// returned; otherwise `read` takes the reply (TRY_DESERIALIZE on a throw) and the reply
// is traced.
template <typename Read>
int finishExchange(const CallSite& site, int sent, Json::Value& reply, Read&& read) {
    if (sent < 0) {
        logCheckFailure(abiSignature(site.pretty).c_str(), site.line, sent);
        return sent;
    }
    const int rc = runJsonStep(site, "TRY_DESERIALIZE", "deserializing", [&] { return read(reply); });
    if (rc < 0) {
        return rc;
    }
    traceDocument(site.pretty, site.line, "OUT", reply);
    return 0;
}

// A command with a request: `write` fills the request (TRY_SERIALIZE on a throw, and
// nothing is sent), which is traced and sent by `call`.
template <typename Write, typename Read>
int exchange(const CallSite& site, AvMngApiJson& api,
             int (AvMngApiJson::*call)(const Json::Value&, Json::Value&), Write&& write, Read&& read) {
    Json::Value request;
    const int rc = runJsonStep(site, "TRY_SERIALIZE", "serializing", [&] { write(request); });
    if (rc < 0) {
        return rc;
    }
    traceDocument(site.pretty, site.line, "IN", request);
    Json::Value reply;
    return finishExchange(site, (api.*call)(request, reply), reply, read);
}

// A command without a request document.
template <typename Read>
int exchange(const CallSite& site, AvMngApiJson& api, int (AvMngApiJson::*call)(Json::Value&), Read&& read) {
    Json::Value reply;
    return finishExchange(site, (api.*call)(reply), reply, read);
}

}  // namespace pimav::detail

// In a method of AvMngApi: one exchange through the JSON layer's `method`, logged as the
// calling method's.
#define PIMAV_EXCHANGE(method, ...) \
    pimav::detail::exchange(PIMAV_CALL_SITE, jsonApi, &AvMngApiJson::method, __VA_ARGS__)
