#include "pimAvMngApi/platform/Logger.h"

#include <cstdio>
#include <vector>

namespace {

// Expands a printf-style format without truncation: one pass into a stack buffer,
// a second pass into an exactly sized string only when the line is longer.
std::string formatLine(const char* fmt, va_list args) {
    char small[512];
    va_list copy;
    va_copy(copy, args);
    const int needed = std::vsnprintf(small, sizeof(small), fmt, copy);
    va_end(copy);
    if (needed < 0) {
        return std::string(fmt);
    }
    if (static_cast<size_t>(needed) < sizeof(small)) {
        return std::string(small, static_cast<size_t>(needed));
    }
    std::string line(static_cast<size_t>(needed), '\0');
    std::vsnprintf(&line[0], line.size() + 1, fmt, args);
    return line;
}

}  // namespace

std::atomic<int> Logger::s_threshold{Logger::kDefaultThreshold};

Logger* Logger::getInstance() {
    static Logger instance;
    return &instance;
}

void Logger::log(int level, const char* fmt, ...) {
    if (!isEnabled(level)) {
        return;
    }
    va_list args;
    va_start(args, fmt);
    getInstance()->vlogMessage(level, fmt, args);
    va_end(args);
}

void Logger::logMessage(int level, const char* fmt, ...) {
    if (level > getThreshold()) {
        return;
    }
    va_list args;
    va_start(args, fmt);
    vlogMessage(level, fmt, args);
    va_end(args);
}

void Logger::vlogMessage(int level, const char* fmt, va_list args) {
    if (level > getThreshold() || fmt == nullptr) {
        return;
    }
    write(level, formatLine(fmt, args));
}

void Logger::setSink(Sink sink) {
    std::shared_ptr<const Sink> next;
    if (sink) {
        next = std::make_shared<const Sink>(std::move(sink));
    }
    std::lock_guard<std::mutex> lock(m_sink_mutex);
    m_sink = std::move(next);
}

void Logger::write(int level, const std::string& line) {
    std::shared_ptr<const Sink> sink;
    {
        std::lock_guard<std::mutex> lock(m_sink_mutex);
        sink = m_sink;
    }
    // The sink runs outside the lock so that it may log or replace itself.
    if (sink) {
        (*sink)(level, line);
        return;
    }
    std::fprintf(stderr, "[%d] %s\n", level, line.c_str());
}
