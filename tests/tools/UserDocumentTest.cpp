// A user's document held against the record that reads it (tests/data/tools/user-documents.tsv):
// the member at fault when the record cannot read it, and the members it ignores, learnt from
// the record itself.

#include <gtest/gtest.h>

#include <map>

#include "SdpGen.h"
#include "UserDocument.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/SourceApi.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

Json::Value parsed(const std::string& text) {
    Json::Value doc;
    std::string error;
    EXPECT_TRUE(parseJsonText(text, doc, error)) << text << ": " << error;
    return doc;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

}  // namespace

TEST(UserDocument, NamesTheMemberAtFaultAndTheMembersIgnored) {
    const RecordRoundTrip source = roundTripOf<SourceApi>();
    const RecordRoundTrip destination = roundTripOf<DestinationApi>();
    const RecordRoundTrip session = sessionRoundTrip();
    const std::map<std::string, const RecordRoundTrip*> records = {
        {"source", &source}, {"destination", &destination}, {"session", &session}};
    for (const DataRow& row : dataRows("tools/user-documents.tsv")) {
        const std::vector<std::string>& f = row.fields;
        SCOPED_TRACE(row.where);
        const Json::Value doc = parsed(f[1]);
        EXPECT_EQ(unreadableMember(doc, *records.at(f[0])), f[2] == "-" ? "" : f[2]);
        EXPECT_EQ(joined(unknownMembers(doc, *records.at(f[0]))), f[3] == "-" ? "" : f[3]);
    }
}

TEST(UserDocument, JsonErrorsAreOneLineWithEveryMessage) {
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
        {R"({"a":1,"b":[1,2})", "line 1, column 16: Missing ',' or ']' in array declaration"},
        {R"({"a":1,"a":2})", "line 1, column 8: Duplicate key: 'a'"},
        {"",
         "line 1, column 1: Syntax error: value, object or array expected.; line 1, column 1: A valid JSON "
         "document must be either an array or an object value."},
    };
    for (const auto& c : cases) {
        Json::Value doc;
        std::string error;
        EXPECT_FALSE(parseJsonText(c.text, doc, error)) << c.text;
        EXPECT_EQ(error, c.error);
    }
}
