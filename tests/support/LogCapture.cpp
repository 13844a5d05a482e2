#include "support/LogCapture.h"

LogCapture::LogCapture(int threshold) : m_previous_threshold(Logger::getInstance()->getThreshold()) {
    ErrorAuxMsg::getInstance()->clear();
    Logger::getInstance()->setThreshold(threshold);
    Logger::getInstance()->setSink([this](int level, const std::string& line) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back(Line{level, line});
    });
}

LogCapture::~LogCapture() {
    Logger::getInstance()->setSink({});
    Logger::getInstance()->setThreshold(m_previous_threshold);
    ErrorAuxMsg::getInstance()->clear();
}

std::vector<std::string> LogCapture::texts() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> out;
    for (const auto& line : m_lines) {
        out.push_back(line.text);
    }
    return out;
}

std::vector<std::string> LogCapture::at(int level) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> out;
    for (const auto& line : m_lines) {
        if (line.level == level) {
            out.push_back(line.text);
        }
    }
    return out;
}

size_t LogCapture::count(const std::string& needle) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    size_t n = 0;
    for (const auto& line : m_lines) {
        if (line.text.find(needle) != std::string::npos) {
            ++n;
        }
    }
    return n;
}
