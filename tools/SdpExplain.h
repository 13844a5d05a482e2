#pragma once

// Why the parser refused an SDP text, in one line, taken from the lines it logged.

#include <string>
#include <vector>

namespace pimav::detail {

struct ParserLogLine {
    int level = 0;
    std::string text;
};

// Records every line the Logger writes while in scope (all levels, so that the parse's
// steps can be told apart); with `echo`, also writes them to stderr as "[level] line".
// Restores the default output and the previous threshold afterwards.
class ParserLog {
public:
    explicit ParserLog(bool echo);
    ~ParserLog();
    ParserLog(const ParserLog&) = delete;
    ParserLog& operator=(const ParserLog&) = delete;

    const std::vector<ParserLogLine>& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

private:
    int m_previous_threshold;
    std::vector<ParserLogLine> m_lines;
};

// The one-line reason of a refusal: the first user message of the minimum check; without
// one, the first error line of the step that refused (a media section, the grouping
// lines) without its "::" decoration, worded as missing where a value is absent. Empty
// when the log holds no error line.
std::string refusalReason(const std::vector<ParserLogLine>& lines,
                          const std::vector<std::string>& userMessages);

}  // namespace pimav::detail
