#pragma once

// Log helpers of the typed client API.
//
// Every line of the typed layer names the method by its signature in pretty-function
// form, with std::string spelled as libstdc++'s dual-ABI type "std::__cxx11::string",
// the form the daemon-side tools and existing log parsers know, whatever the compiler
// prints for it. PIMAV_SIGNATURE is picked up by the CHK/TRY macros of ChkLog.h.

#include <json/json.h>

#include <string>

#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

// `pretty` with every "std::string" that is not already "std::__cxx11::string" rewritten
// to that form.
std::string abiSignature(const char* pretty);

// Writes "AVMANAGER JSON API <signature>:<line>:<direction>\n<document as one line>" at
// level 7.
void writeTrace(const char* pretty, int line, const char* direction, const Json::Value& document);

// Request ("IN") and reply ("OUT") traces. The document is rendered only when level 7 is
// enabled, so a disabled trace costs one level check.
inline void traceDocument(const char* pretty, int line, const char* direction, const Json::Value& document) {
    if (Logger::isEnabled(7)) {
        writeTrace(pretty, line, direction, document);
    }
}

}  // namespace pimav::detail

#define PIMAV_SIGNATURE (pimav::detail::abiSignature(__PRETTY_FUNCTION__).c_str())

#include "platform/ChkLog.h"

#define PIMAV_TRACE_IN(doc) pimav::detail::traceDocument(__PRETTY_FUNCTION__, __LINE__, "IN", (doc))
#define PIMAV_TRACE_OUT(doc) pimav::detail::traceDocument(__PRETTY_FUNCTION__, __LINE__, "OUT", (doc))
