#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "pimAvMngApi/platform/Logger.h"

/// Collects the messages meant for the end user (SDP refusals, gain-request refusals)
/// so that the process answering a request can hand them back in its reply.
class ErrorAuxMsg {
public:
    /// The process-wide collector.
    static ErrorAuxMsg* getInstance();

    /// Appends one message formatted like printf; a null format adds nothing. Thread-safe.
    void addMessage(const char* fmt, ...) PIMAV_PRINTF_FORMAT(2, 3);

    /// A copy of the messages, oldest first.
    std::vector<std::string> getMessages() const;
    /// Forgets every message.
    void clear();

    ErrorAuxMsg(const ErrorAuxMsg&) = delete;
    ErrorAuxMsg& operator=(const ErrorAuxMsg&) = delete;

private:
    ErrorAuxMsg() = default;

    mutable std::mutex m_mutex;
    std::vector<std::string> m_messages;
};
