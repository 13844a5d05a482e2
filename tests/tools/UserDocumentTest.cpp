// A user's document held against the record that reads it: the member at fault when the
// record cannot read it, and the members it ignores, learnt from the record itself.

#include <gtest/gtest.h>

#include "SdpGen.h"
#include "UserDocument.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/SourceApi.h"

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
    const struct {
        const RecordRoundTrip* record;
        std::string doc;
        std::string unreadable;
        std::string unknown;  // paths, space separated
    } cases[] = {
        {&source,
         R"({"name":"s","audio-sources":[{"codec":"L24","ptime":1000,"channel-list":[{"channel":0}]}]})", "",
         ""},
        {&source, R"({"audio-sources":[]})", "", ""},
        // A leaf, a list and a record of the wrong kind, at any depth.
        {&source, R"({"audio-sources":[{"ptime":"1ms"}]})",
         R"(member "audio-sources[0].ptime": a number expected, found a string)", ""},
        {&source, R"({"audio-sources":[{},{"channel-list":{"channel":0}}]})",
         R"(member "audio-sources[1].channel-list": an array expected, found an object)", ""},
        {&destination, R"({"rem-sid":5})", R"(member "rem-sid": an object expected, found a number)", ""},
        // A list the record would pass over without complaint is still of the wrong kind.
        {&source, R"({"audio-sources":7})", R"(member "audio-sources": an array expected, found a number)",
         ""},
        {&session, R"({"media":{"type":"AUDIO"}})", R"(member "media": an array expected, found an object)",
         ""},
        // Two faults in one record: one of them is named.
        {&source, R"({"audio-sources":[{"ptime":"x","channel-freq":"y"}]})",
         R"(member "audio-sources[0].ptime": a number expected, found a string)", ""},
        // The right kind, a value out of range: the reader's own reason.
        {&destination, R"({"rem-sid":{"id":-5}})",
         R"(member "rem-sid.id": -5 cannot be read (LargestInt out of UInt64 range))", ""},
        // Ignored members at any depth; members read but not written back are not ignored.
        {&source, R"({"nmae":"x","audio-sources":[{"chanel-freq":1,"channel-list":[{"chanel":1}]}]})", "",
         "audio-sources[0].chanel-freq audio-sources[0].channel-list[0].chanel nmae"},
        {&destination,
         R"({"source-ip":"10.0.0.1","network-index":1,"rem-sid":{"nmos":{"sender":"a"}},"foo":1})", "",
         "foo"},
        // The tool's own keys of a session document are members; a misspelt one is not.
        {&session, R"({"media":[{"type":"VIDEO","packing-mode":"2110BPM","packing_mode":"2110GPM"}]})", "",
         "media[0].packing_mode"},
    };
    for (const auto& c : cases) {
        const Json::Value doc = parsed(c.doc);
        EXPECT_EQ(unreadableMember(doc, *c.record), c.unreadable) << c.doc;
        EXPECT_EQ(joined(unknownMembers(doc, *c.record)), c.unknown) << c.doc;
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
