#pragma once

// Log helpers of the typed client API.
//
// Every line of the typed layer names the method by its signature in pretty-function
// form, with std::string spelled as libstdc++'s dual-ABI type "std::__cxx11::string",
// the form the daemon-side tools and existing log parsers know, whatever the compiler
// prints for it. PIMAV_SIGNATURE is picked up by the CHK/TRY macros of ChkLog.h.

#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

// `pretty` with every "std::string" that is not already "std::__cxx11::string" rewritten
// to that form.
std::string abiSignature(const char* pretty);

}  // namespace pimav::detail

#define PIMAV_SIGNATURE (pimav::detail::abiSignature(__PRETTY_FUNCTION__).c_str())

#include "platform/ChkLog.h"

// Request and reply traces at level 7. The document is rendered only when the line
// will be written, so a disabled trace costs one level check.
#define PIMAV_TRACE_DOC(dir, doc)                                                            \
    do {                                                                                     \
        if (Logger::isEnabled(7)) {                                                          \
            std::string pimav_trace_text_;                                                   \
            IJsonSerializable::convertJsonToString((doc), pimav_trace_text_);                \
            Logger::log(7, "AVMANAGER JSON API %s:%d:" dir "\n%s", PIMAV_SIGNATURE, __LINE__, \
                        pimav_trace_text_.c_str());                                          \
        }                                                                                    \
    } while (0)

#define PIMAV_TRACE_IN(doc) PIMAV_TRACE_DOC("IN", doc)
#define PIMAV_TRACE_OUT(doc) PIMAV_TRACE_DOC("OUT", doc)
