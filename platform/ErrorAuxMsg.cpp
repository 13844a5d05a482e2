#include "pimAvMngApi/platform/ErrorAuxMsg.h"

#include <cstdarg>
#include <cstdio>

ErrorAuxMsg* ErrorAuxMsg::getInstance() {
    static ErrorAuxMsg instance;
    return &instance;
}

void ErrorAuxMsg::addMessage(const char* fmt, ...) {
    if (fmt == nullptr) {
        return;
    }
    va_list args;
    va_start(args, fmt);
    va_list copy;
    va_copy(copy, args);
    const int needed = std::vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    std::string message;
    if (needed > 0) {
        message.resize(static_cast<size_t>(needed));
        std::vsnprintf(&message[0], message.size() + 1, fmt, args);
    }
    va_end(args);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_messages.push_back(std::move(message));
}

std::vector<std::string> ErrorAuxMsg::getMessages() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_messages;
}

void ErrorAuxMsg::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_messages.clear();
}
