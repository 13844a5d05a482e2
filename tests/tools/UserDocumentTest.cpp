// A user's document held against the record that reads it (tests/data/tools/user-documents.tsv):
// the member at fault when the record cannot read it, and the members it ignores, learnt from
// the record itself.

#include <gtest/gtest.h>

#include <map>

#include "SdpGen.h"
#include "UserDocument.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/SourceApi.h"
#include "support/JsonText.h"
#include "support/TestData.h"

using namespace pimav::detail;

TEST(UserDocument, NamesTheMemberAtFaultAndTheMembersIgnored) {
    const RecordRoundTrip source = roundTripOf<SourceApi>();
    const RecordRoundTrip destination = roundTripOf<DestinationApi>();
    const RecordRoundTrip session = sessionRoundTrip();
    const std::map<std::string, const RecordRoundTrip*> records = {
        {"source", &source}, {"destination", &destination}, {"session", &session}};
    for (const DataRow& row : dataRows("tools/user-documents.tsv")) {
        const std::vector<std::string>& f = row.fields;
        SCOPED_TRACE(row.where);
        const Json::Value doc = jsonOf(f[1]);
        EXPECT_EQ(unreadableMember(doc, *records.at(f[0])), f[2] == "-" ? "" : f[2]);
        EXPECT_EQ(unknownMembers(doc, *records.at(f[0])), words(f[3] == "-" ? "" : f[3]));
    }
}

TEST(UserDocument, JsonErrorsAreOneLineWithEveryMessage) {
    for (const DataRow& row : dataRows("tools/json-errors.tsv")) {
        Json::Value doc;
        std::string error;
        EXPECT_FALSE(parseJsonText(row.fields[0] == "-" ? "" : row.fields[0], doc, error)) << row.where;
        EXPECT_EQ(error, row.fields[1]) << row.where;
    }
}
