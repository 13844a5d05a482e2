#include "SdpExplain.h"

#include <iostream>

#include "pimAvMngApi/platform/Logger.h"

namespace pimav::detail {

namespace {

// Level of the parser's error lines; level 3 holds optional values it did not find.
constexpr int kErrorLevel = 2;

bool startsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

bool isError(const ParserLogLine& line) {
    return line.level <= kErrorLevel;
}

// Lines the parser writes while it reads one media section's format line, and the ones
// that end a media section or the parse.
const char* const kSectionStart = "splitting vector";
const char* const kCheckFailed = "CHK(";
const char* const kException = "SDP PARSE threw exception";
const char* const kNoFormat = "::Stream is video, but no valid video format found.";
const char* const kNoRtpMap = "::Stream is video, but not valid type .";
const char* const kNotRaw = "::Stream is video, but not valid type ";
const char* const kCodecRead = "::Codec found::";
const char* const kFormatRead = "::Format found::";
const char* const kRateNotSupported = "::Format found but framerate is not supported: <";
const char* const kRateLineRead = "::Frame rate found::0";

// The first format-line error of the section, or the values read from a complete one.
std::string formatReason(const std::vector<ParserLogLine>& lines, size_t start, size_t terminal) {
    bool formatRead = false;
    std::string values;
    bool rateLine = false;
    for (size_t i = start; i < terminal; ++i) {
        rateLine = rateLine || lines[i].text == kRateLineRead;
    }
    for (size_t i = start; i < terminal; ++i) {
        const std::string& text = lines[i].text;
        if (isError(lines[i]) && startsWith(text, kRateNotSupported) &&
            text.find("framerate=") == std::string::npos) {
            return std::string("SDP fmtp line: exactframerate is missing from the format line") +
                   (rateLine ? " (the rate of a=framerate: is not read)" : "");
        }
        if (isError(lines[i]) &&
            (startsWith(text, "SDP fmtp line:") || startsWith(text, "::Format found but"))) {
            return text;
        }
        formatRead = formatRead || text == kFormatRead;
        if (formatRead && startsWith(text, "\t ")) {
            const size_t colon = text.find(':');
            const size_t value = text.find_first_not_of(' ', colon + 1);
            values += (values.empty() ? "" : ", ") + text.substr(2, colon - 2) + " " +
                      (value == std::string::npos ? "" : text.substr(value));
        }
    }
    if (!formatRead) {
        return std::string(kNoFormat) +
               " The format line (a=fmtp: with sampling, width, height, exactframerate, "
               "depth, colorimetry) is missing";
    }
    return std::string(kNoFormat) + " Read: " + values;
}

}  // namespace

ParserLog::ParserLog(bool echo) : m_previous_threshold(Logger::getInstance()->getThreshold()) {
    Logger::getInstance()->setThreshold(Logger::LOG_DEBUG);
    Logger::getInstance()->setSink([this, echo](int level, const std::string& line) {
        m_lines.push_back({level, line});
        if (echo) {
            std::cerr << "[" << level << "] " << line << "\n";
        }
    });
}

ParserLog::~ParserLog() {
    Logger::getInstance()->setSink({});
    Logger::getInstance()->setThreshold(m_previous_threshold);
}

std::string refusalReason(const std::vector<ParserLogLine>& lines,
                          const std::vector<std::string>& userMessages) {
    if (!userMessages.empty()) {
        return userMessages.front();
    }
    // The refusing step ends at the first failed check, or at the exception.
    size_t end = lines.size();
    for (size_t i = 0; i < lines.size(); ++i) {
        if (isError(lines[i]) && (startsWith(lines[i].text, kCheckFailed) || lines[i].text == kException)) {
            end = lines[i].text == kException ? i + 1 : i;
            break;
        }
    }
    size_t terminal = end;
    size_t start = 0;
    for (size_t i = 0; i < end; ++i) {
        if (isError(lines[i])) {
            terminal = i;
        }
    }
    if (terminal == end) {
        return {};
    }
    for (size_t i = 0; i < terminal; ++i) {
        if (startsWith(lines[i].text, kSectionStart)) {
            start = i;
        }
    }
    std::string reason = lines[terminal].text;
    if (reason == kNoFormat) {
        reason = formatReason(lines, start, terminal);
    } else if (reason == kNoRtpMap) {
        reason = "Stream is video, but its a=rtpmap line is missing";
    } else if (startsWith(reason, kNotRaw)) {
        // The check reads the section's first RTP map.
        for (size_t i = start; i < terminal; ++i) {
            if (startsWith(lines[i].text, kCodecRead)) {
                reason += " (a=rtpmap encoding " + lines[i].text.substr(std::string(kCodecRead).size()) + ")";
                break;
            }
        }
    } else if (reason == kException) {
        reason +=
            ": a value that must be a number (packet time, width, height, depth, frame rate, interlace) "
            "is not one";
    }
    return startsWith(reason, "::") ? reason.substr(2) : reason;
}

}  // namespace pimav::detail
