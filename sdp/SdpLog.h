#pragma once

// Log helpers of the SDP parser.

#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"

// A parser log line. Most are traces below the default threshold: checking the level
// here leaves a disabled line at one load instead of a call with its arguments.
#define SDP_LOG(level, ...)                  \
    do {                                     \
        if (Logger::isEnabled(level)) {      \
            Logger::log(level, __VA_ARGS__); \
        }                                    \
    } while (0)

// A message for the user: logged at level 2 and kept for the reply to the user.
#define SDP_USER_MESSAGE(...)                                \
    do {                                                     \
        Logger::getInstance()->logMessage(2, __VA_ARGS__);   \
        ErrorAuxMsg::getInstance()->addMessage(__VA_ARGS__); \
    } while (0)

// printf arguments of a view: "%.*s" stops at a NUL just as "%s" of the line's C string.
#define SDP_VIEW(view) static_cast<int>((view).size()), (view).data()
