// sdptool gen below the command line: the session completed for receivers, the tidied
// text, the tool's own JSON keys, and lint-clean output for the documents of tests/data/sdp-gen.

#include <gtest/gtest.h>

#include "SdpGen.h"
#include "SdpLint.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

TEST(SdpGen, CompletesTheSessionOrRefusesIt) {
    const std::vector<DataCase> cases = dataCases("sdp-gen/cases.txt");
    ASSERT_FALSE(cases.empty());
    for (const DataCase& c : cases) {
        SCOPED_TRACE(c.where + " " + c.title);
        GenOptions options;
        options.nameGroups = c.get("option") == "name-groups";
        const GenResult result = generateForReceivers(jsonOf(c.get("session")), options);
        EXPECT_EQ(result.status, std::stoi(c.get("status"))) << result.error;
        EXPECT_EQ(result.notices.size(), std::stoul(c.get("notices")));
        for (std::string wanted : c.all("holds")) {
            wanted = unescaped(wanted);
            EXPECT_NE((result.status == 0 ? result.sdp : result.error).find(wanted), std::string::npos)
                << wanted;
        }
    }
}

TEST(SdpGen, TidiesTheTextForReceivers) {
    for (const DataRow& row : dataRows("sdp-gen/tidy.tsv")) {
        EXPECT_EQ(tidyForReceivers(unescaped(row.fields[0]), row.fields[1] == "yes"),
                  unescaped(row.fields[2]))
            << row.where;
    }
}

TEST(SdpGen, ToolKeysAreWrittenOnlyWhenSet) {
    SdpSession session;
    session.m_media.resize(2);
    session.m_media[1].m_packing_mode = "2110GPM";
    Json::Value plain;
    session.Serialize(plain);
    Json::Value extended = plain;
    writeMediaExtras(session, extended);
    EXPECT_EQ(extended["media"][0], plain["media"][0]);
    EXPECT_EQ(extended["media"][1]["packing-mode"].asString(), "2110GPM");
    EXPECT_FALSE(extended["media"][1].isMember("sender-type"));

    SdpSession read;
    read.Deserialize(extended);
    readMediaExtras(extended, read);
    EXPECT_EQ(read.m_media[1].m_packing_mode, "2110GPM");
    EXPECT_EQ(read.m_media[0].m_packing_mode, "");
}

TEST(SdpGen, WrittenTextPassesLintAndTheParser) {
    const std::vector<GenExpectation> documents = genExpectations();
    ASSERT_FALSE(documents.empty());
    for (const GenExpectation& e : documents) {
        SCOPED_TRACE(e.document);
        unsigned profiles = 0;
        std::string unknown;
        ASSERT_TRUE(lintProfileMask(e.profiles, profiles, unknown)) << unknown;
        GenOptions options;
        options.nameGroups = true;
        options.crlf = true;
        const Json::Value doc = jsonOf(dataText("sdp-gen/" + e.document));
        const GenResult crlf = generateForReceivers(doc, options);
        ASSERT_EQ(crlf.status, 0) << crlf.error;
        for (const LintFinding& finding : lintSdp(crlf.sdp, profiles)) {
            ADD_FAILURE() << finding.line << ": " << lintRuleInfo(finding.rule).id << ": " << finding.detail
                          << "\n"
                          << crlf.sdp;
        }
        SdpConverter converter;
        LogCapture log;
        EXPECT_EQ(converter.parseSdp(crlf.sdp), 0) << crlf.sdp;
    }
}
