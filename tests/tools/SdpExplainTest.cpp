// The one-line reason of every refusal: each file of the SDP corpus and of
// tests/data/sdp-explain against tests/data/sdp-explain/reasons.txt.

#include <gtest/gtest.h>

#include <map>

#include "SdpExplain.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "support/TestData.h"

using namespace pimav::detail;

TEST(SdpExplain, EveryRefusalHasItsReason) {
    std::map<std::string, std::string> reasons;  // path below tests/data -> reason
    for (const DataRow& row : dataRows("sdp-explain/reasons.txt")) {
        reasons[row.fields[0]] = row.fields[1];
    }
    std::vector<std::string> paths;
    for (const std::string& name : corpusFiles()) {
        paths.push_back("sdp-corpus/" + name);
    }
    for (const std::string& name : filesIn(kTestData + "sdp-explain/", ".sdp")) {
        paths.push_back("sdp-explain/" + name);
    }
    const int threshold = Logger::getInstance()->getThreshold();
    size_t refused = 0;
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        SdpConverter converter;
        ErrorAuxMsg::getInstance()->clear();
        std::string reason;
        {
            ParserLog log(false);
            if (converter.parseSdp(dataText(path)) != 0) {
                ++refused;
                reason = refusalReason(log.lines(), ErrorAuxMsg::getInstance()->getMessages());
                EXPECT_FALSE(reason.empty());
            }
        }
        ErrorAuxMsg::getInstance()->clear();
        const auto expected = reasons.find(path);
        EXPECT_EQ(reason, expected == reasons.end() ? "" : expected->second);
    }
    EXPECT_EQ(refused, reasons.size()) << "a refused file of the table is missing";
    EXPECT_EQ(Logger::getInstance()->getThreshold(), threshold) << "the log threshold is not restored";
}
