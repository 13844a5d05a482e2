#pragma once

#include <atomic>
#include <cstdarg>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#if defined(__GNUC__)
#define PIMAV_PRINTF_FORMAT(fmt_index, first_arg) __attribute__((format(printf, fmt_index, first_arg)))
#else
#define PIMAV_PRINTF_FORMAT(fmt_index, first_arg)
#endif

/// Process-wide log sink with printf-style formatting.
///
/// Levels follow syslog numbering: 2 errors and refused input, 3 missing optional
/// values, 4 notices, 5 state changes, 6 dumps, 7 step-by-step traces. A line whose
/// level is above the threshold is dropped before its format is expanded, so a
/// disabled trace costs one relaxed atomic load.
class Logger {
public:
    /// Syslog level numbers.
    enum logDebugLevel_t {
        LOG_EMERGENCY = 0,
        LOG_ALERT = 1,
        LOG_CRITICAL = 2,
        LOG_ERROR = 3,
        LOG_WARNING = 4,
        LOG_NOTICE = 5,
        LOG_INFO = 6,
        LOG_DEBUG = 7,
    };

    /// Receives every line that passes the threshold. The line carries no trailing newline.
    using Sink = std::function<void(int level, const std::string& line)>;

    /// The threshold until setThreshold is called: notices and more severe lines pass.
    static constexpr int kDefaultThreshold = 4;

    /// The process-wide logger.
    static Logger* getInstance();

    /// Same as getInstance()->logMessage(...).
    static void log(int level, const char* fmt, ...) PIMAV_PRINTF_FORMAT(2, 3);

    /// Writes one line formatted like printf when `level` passes the threshold.
    void logMessage(int level, const char* fmt, ...) PIMAV_PRINTF_FORMAT(3, 4);
    /// Same as logMessage with the arguments as a va_list.
    void vlogMessage(int level, const char* fmt, va_list args);

    /// True when a line of this level would be written. Callers use it to skip
    /// expensive argument preparation (rendering a JSON document, for example).
    static bool isEnabled(int level) { return level <= s_threshold.load(std::memory_order_relaxed); }

    /// Lines with a level above `level` are dropped from now on.
    void setThreshold(int level) { s_threshold.store(level, std::memory_order_relaxed); }
    /// The current threshold.
    int getThreshold() const { return s_threshold.load(std::memory_order_relaxed); }

    /// Replaces the output. An empty function restores the default output: stderr, one
    /// line per message, prefixed with the level tag "[N] ".
    void setSink(Sink sink);

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

private:
    Logger() = default;
    void write(int level, const std::string& line);

    /// Held outside the one instance so that isEnabled, inlined at every call site,
    /// is a single load.
    static std::atomic<int> s_threshold;
    std::mutex m_sink_mutex;
    std::shared_ptr<const Sink> m_sink;
};
