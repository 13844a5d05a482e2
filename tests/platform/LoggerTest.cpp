#include <gtest/gtest.h>

#include <string>

#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/platform/Logger.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

TEST(Logger, ThresholdFiltersBeforeFormattingAndDefaultsToFour) {
    EXPECT_EQ(Logger::kDefaultThreshold, 4);
    LogCapture capture(4);
    Logger::log(2, "error %d", 1);
    Logger::log(4, "notice %s", "x");
    Logger::log(5, "state %d", 2);
    Logger::getInstance()->logMessage(7, "trace %s", "y");
    ASSERT_EQ(capture.texts(), (std::vector<std::string>{"error 1", "notice x"}));
    EXPECT_EQ(capture.lines()[0].level, 2);
    EXPECT_FALSE(Logger::isEnabled(5));
    EXPECT_TRUE(Logger::isEnabled(4));
}

TEST(Logger, LongLinesAreNotTruncated) {
    LogCapture capture;
    const std::string big(100000, 'x');
    Logger::log(7, "AVMANAGER JSON API %s:%d:IN\n%s", "f", 12, big.c_str());
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0].text, "AVMANAGER JSON API f:12:IN\n" + big);
}

TEST(Logger, SinkMayLogFromInsideItself) {
    std::vector<std::string> seen;
    Logger::getInstance()->setThreshold(7);
    Logger::getInstance()->setSink([&seen](int, const std::string& line) {
        seen.push_back(line);
        if (seen.size() == 1) {
            Logger::log(2, "nested");
        }
    });
    Logger::log(2, "outer");
    Logger::getInstance()->setSink({});
    Logger::getInstance()->setThreshold(Logger::kDefaultThreshold);
    EXPECT_EQ(seen, (std::vector<std::string>{"outer", "nested"}));
}

TEST(ErrorAuxMsg, CollectsFormattedMessagesInOrder) {
    ErrorAuxMsg::getInstance()->clear();
    ErrorAuxMsg::getInstance()->addMessage("Media %d: %s", 0, "no rtpmap");
    ErrorAuxMsg::getInstance()->addMessage("plain");
    EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(),
              (std::vector<std::string>{"Media 0: no rtpmap", "plain"}));
    ErrorAuxMsg::getInstance()->clear();
    EXPECT_TRUE(ErrorAuxMsg::getInstance()->getMessages().empty());
}

TEST(ConvertJsonToString, RendersSingleLineSortedCompact) {
    const std::vector<std::pair<Json::Value, const char*>> cases = {
        {Json::Value(), "null"},
        {Json::Value(Json::objectValue), "{}"},
        {Json::Value(Json::arrayValue), "[]"},
        {jsonOf(R"({"pause": true, "id": 7})"), R"({"id":7,"pause":true})"},
        {jsonOf(R"({"b": {"x": "y"}, "a": []})"), R"({"a":[],"b":{"x":"y"}})"},
    };
    for (const auto& [value, expected] : cases) {
        Json::Value v = value;
        std::string text = "previous contents";
        IJsonSerializable::convertJsonToString(v, text);
        EXPECT_EQ(text, expected);
    }
}

}  // namespace
