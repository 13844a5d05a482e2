#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"

// Captures every Logger line (all levels) while in scope and clears the user-message
// collector, restoring the default output and threshold afterwards. Lines may arrive from
// several threads; read them once those threads are done.
class LogCapture {
public:
    struct Line {
        int level;
        std::string text;
    };

    explicit LogCapture(int threshold = 7);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<Line>& lines() const { return m_lines; }
    std::vector<std::string> texts() const;
    // Lines of exactly this level, in order.
    std::vector<std::string> at(int level) const;
    // Number of lines that contain `needle`.
    size_t count(const std::string& needle) const;
    bool contains(const std::string& needle) const { return count(needle) > 0; }
    void clear() { m_lines.clear(); }

private:
    int m_previous_threshold;
    std::mutex m_mutex;
    std::vector<Line> m_lines;
};
