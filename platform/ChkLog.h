#pragma once

// Internal log helpers of the client API layers. Each macro writes its line with the
// enclosing function's pretty-function signature and the source line of the check,
// so every layer reports a failure the same way.

#include "pimAvMngApi/platform/Logger.h"

// The signature text of the lines; a layer may define its own spelling before
// including this header.
#ifndef PIMAV_SIGNATURE
#define PIMAV_SIGNATURE __PRETTY_FUNCTION__
#endif

namespace pimav::detail {

// "CHK(<signature>)::<line> Error Code <code>" at level 2: a call gave a negative result.
inline void logCheckFailure(const char* signature, int line, int code) {
    Logger::log(2, "CHK(%s)::%d Error Code %d", signature, line, code);
}

// "<check>(<signature>)::<line> Error <doing> JSON" at level 2: a record's Serialize
// ("TRY_SERIALIZE", "serializing") or Deserialize ("TRY_DESERIALIZE", "deserializing") threw.
inline void logJsonFailure(const char* check, const char* signature, int line, const char* doing) {
    Logger::log(2, "%s(%s)::%d Error %s JSON", check, signature, line, doing);
}

}  // namespace pimav::detail

// Evaluates `expr` (an int result); a negative result is logged as a CHK line and
// returned from the enclosing function.
#define PIMAV_CHK(expr)                                                                   \
    do {                                                                                  \
        const int pimav_chk_result_ = (expr);                                             \
        if (pimav_chk_result_ < 0) {                                                      \
            pimav::detail::logCheckFailure(PIMAV_SIGNATURE, __LINE__, pimav_chk_result_); \
            return pimav_chk_result_;                                                     \
        }                                                                                 \
    } while (0)

// Runs a record's Serialize or Deserialize inside a catch-all; a throw is logged and
// gives -13.
#define PIMAV_TRY_JSON(check, doing, stmt)                                          \
    do {                                                                            \
        try {                                                                       \
            stmt;                                                                   \
        } catch (...) {                                                             \
            pimav::detail::logJsonFailure(check, PIMAV_SIGNATURE, __LINE__, doing); \
            return -13;                                                             \
        }                                                                           \
    } while (0)
#define PIMAV_TRY_SERIALIZE(stmt) PIMAV_TRY_JSON("TRY_SERIALIZE", "serializing", stmt)
#define PIMAV_TRY_DESERIALIZE(stmt) PIMAV_TRY_JSON("TRY_DESERIALIZE", "deserializing", stmt)

// A null pointer argument: logged with the bare operation name, gives -4.
#define PIMAV_CHK_NULL(ptr, name)                            \
    do {                                                     \
        if ((ptr) == nullptr) {                              \
            Logger::log(2, "%s:: Parameter is null.", name); \
            return -4;                                       \
        }                                                    \
    } while (0)
