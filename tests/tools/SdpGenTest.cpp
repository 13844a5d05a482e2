// sdptool gen below the command line: the session completed for receivers, the tidied
// text, the tool's own JSON keys, and lint-clean output for the documents of tests/data/sdp-gen.

#include <gtest/gtest.h>

#include "SdpGen.h"
#include "SdpLint.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

Json::Value parseJson(const std::string& text) {
    Json::Value doc;
    std::istringstream in(text);
    in >> doc;
    return doc;
}

const char* const kAudio =
    R"({"type": "AUDIO", "udp": 5004, "ptime": 1.0, "transport-ip": "239.1.1.1", "group": "%G",
        "rtpmap": [{"payload-type": 96, "codec": "L24", "channel-freq": 48000, "number-channels": 2}]})";
const char* const kVideo =
    R"({"type": "VIDEO", "udp": 5000, "transport-ip": "239.1.1.2", %X
        "video": {"name": "1080p50", "depth": 10, "sampling": "YCbCr-4:2:2", "colorimetry": "BT709"},
        "rtpmap": [{"payload-type": 96, "codec": "raw", "channel-freq": 90000}]})";

std::string media(const char* pattern, const std::string& fill) {
    std::string text = pattern;
    const size_t at = text.find('%');
    return text.replace(at, 2, fill);
}

std::string session(const std::vector<std::string>& media) {
    std::string text = R"({"user-name": "-", "media": [)";
    for (size_t i = 0; i < media.size(); ++i) {
        text += (i == 0 ? "" : ",") + media[i];
    }
    return text + "]}";
}

}  // namespace

TEST(SdpGen, CompletesTheSessionOrRefusesIt) {
    const struct {
        const char* name;
        std::string doc;
        bool nameGroups;
        int status;
        std::vector<std::string> wanted;  // in the text, or in the error when refused
        size_t notices;
    } kCases[] = {
        {"no media", "{}", false, 2, {"the session document has no media"}, 0},
        {"no user name", R"({"media": [)" + media(kAudio, "") + "]}", false, 0, {"o=- 0 0 IN IP4"}, 1},
        {"unnamed legs", session({media(kAudio, ""), media(kAudio, "")}), false, 2, {"--name-groups"}, 0},
        {"generated names",
         session({media(kAudio, ""), media(kAudio, "")}),
         true,
         0,
         {"a=group:DUP S1 S2\n", "a=mid:S1\n", "a=mid:S2\n"},
         0},
        {"a generated name skips a given one",
         session({media(kAudio, ""), media(kAudio, "S1")}),
         true,
         0,
         {"a=group:DUP S2 S1\n"},
         0},
        {"one name twice",
         session({media(kAudio, "a"), media(kAudio, "a")}),
         true,
         2,
         {"'a' is used twice"},
         0},
        {"a name that is no token",
         session({media(kAudio, "a b"), media(kAudio, "c")}),
         true,
         2,
         {"'a b' is not a token"},
         0},
        {"video defaults", session({media(kVideo, "")}), false, 0, {"PM=2110GPM; TP=2110TPN; SSN="}, 2},
        {"video keys",
         session({media(kVideo, R"("packing-mode": "2110BPM", "sender-type": "2110TPW",)")}),
         false,
         0,
         {"PM=2110BPM; TP=2110TPW; SSN=ST2110-20:2017\n"},
         0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.name);
        GenOptions options;
        options.nameGroups = c.nameGroups;
        const GenResult result = generateForReceivers(parseJson(c.doc), options);
        EXPECT_EQ(result.status, c.status) << result.error;
        EXPECT_EQ(result.notices.size(), c.notices);
        for (const std::string& wanted : c.wanted) {
            EXPECT_NE((c.status == 0 ? result.sdp : result.error).find(wanted), std::string::npos) << wanted;
        }
    }
}

TEST(SdpGen, TidiesTheTextForReceivers) {
    const struct {
        const char* in;
        bool crlf;
        const char* out;
    } kCases[] = {
        {"a=fmtp:96 sampling=RGB; depth=8; \n", false, "a=fmtp:96 sampling=RGB; depth=8\n"},
        {"a=fmtp:96 channel-order=SMPTE2110.(ST)\n", false, "a=fmtp:96 channel-order=SMPTE2110.(ST)\n"},
        {"c=IN IP4 192.0.2.1/32\nc=IN IP4 239.1.1.1/32\n", false,
         "c=IN IP4 192.0.2.1\nc=IN IP4 239.1.1.1/32\n"},
        {"v=0\nt=0 0\n", true, "v=0\r\nt=0 0\r\n"},
        {"v=0\r\nt=0 0\r\n", false, "v=0\r\nt=0 0\r\n"},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(tidyForReceivers(c.in, c.crlf), c.out) << c.in;
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
        const Json::Value doc = parseJson(readText(kTestData + "sdp-gen/" + e.document));
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

        // Without --crlf the line ends are all that differs.
        options.crlf = false;
        const std::vector<LintFinding> lf = lintSdp(generateForReceivers(doc, options).sdp, profiles);
        ASSERT_EQ(lf.size(), 1u);
        EXPECT_EQ(lf[0].rule, LintRule::LineEndLf);
    }
}
