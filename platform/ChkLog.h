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

// Evaluates `expr` (an int result); a negative result is logged as a CHK line at
// level 2 and returned from the enclosing function.
#define PIMAV_CHK(expr)                                                                              \
    do {                                                                                             \
        const int pimav_chk_result_ = (expr);                                                        \
        if (pimav_chk_result_ < 0) {                                                                 \
            Logger::log(2, "CHK(%s)::%d Error Code %d", PIMAV_SIGNATURE, __LINE__, pimav_chk_result_); \
            return pimav_chk_result_;                                                                \
        }                                                                                            \
    } while (0)

// Runs a record's Serialize inside a catch-all; a throw is logged and gives -13.
#define PIMAV_TRY_SERIALIZE(stmt)                                                                   \
    do {                                                                                            \
        try {                                                                                       \
            stmt;                                                                                   \
        } catch (...) {                                                                             \
            Logger::log(2, "TRY_SERIALIZE(%s)::%d Error serializing JSON", PIMAV_SIGNATURE, __LINE__); \
            return -13;                                                                             \
        }                                                                                           \
    } while (0)

// Runs a record's Deserialize inside a catch-all; a throw is logged and gives -13.
#define PIMAV_TRY_DESERIALIZE(stmt)                                                                 \
    do {                                                                                            \
        try {                                                                                       \
            stmt;                                                                                   \
        } catch (...) {                                                                             \
            Logger::log(2, "TRY_DESERIALIZE(%s)::%d Error deserializing JSON", PIMAV_SIGNATURE, \
                        __LINE__);                                                                  \
            return -13;                                                                             \
        }                                                                                           \
    } while (0)

// A null pointer argument: logged with the bare operation name, gives -4.
#define PIMAV_CHK_NULL(ptr, name)                      \
    do {                                               \
        if ((ptr) == nullptr) {                        \
            Logger::log(2, "%s:: Parameter is null.", name); \
            return -4;                                 \
        }                                              \
    } while (0)
