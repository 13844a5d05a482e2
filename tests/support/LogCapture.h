#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"

// Captures every Logger line (all levels) while in scope and clears the user-message
// collector, restoring the default output and threshold afterwards. Lines may arrive from
// several threads: texts(), at(), count() and clear() may be called while they log;
// lines() only once those threads are done.
// `line` as `pattern` says: "#" stands for a decimal number (a source line), "*" for any
// text, every other character for itself.
inline bool matchesPattern(const char* pattern, const char* line) {
    if (*pattern == '*') {
        return matchesPattern(pattern + 1, line) || (*line != '\0' && matchesPattern(pattern, line + 1));
    }
    if (*pattern == '#') {
        const char* end = line;
        while (*end >= '0' && *end <= '9') {
            ++end;
        }
        return end != line && matchesPattern(pattern + 1, end);
    }
    return *pattern == *line && (*line == '\0' || matchesPattern(pattern + 1, line + 1));
}

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
    // Whether the lines of `level` are, in order, those the patterns describe (see matchesPattern).
    bool matches(int level, const std::vector<std::string>& patterns) const {
        const std::vector<std::string> found = at(level);
        return found.size() == patterns.size() &&
               std::equal(found.begin(), found.end(), patterns.begin(),
                          [](const auto& line, const auto& pattern) {
                              return matchesPattern(pattern.c_str(), line.c_str());
                          });
    }
    void clear() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.clear();
    }

private:
    int m_previous_threshold;
    mutable std::mutex m_mutex;
    std::vector<Line> m_lines;
};
