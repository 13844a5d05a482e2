#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "pimAvMngApi/model/DaifType.h"
#include "pimAvMngApi/model/RedundantType.h"
#include "pimAvMngApi/model/SessionType.h"
#include "pimAvMngApi/model/State.h"
#include "pimAvMngApi/model/StreamClass.h"
#include "pimAvMngApi/model/StreamType.h"
#include "pimAvMngApi/model/TributaryType.h"
#include "support/JsonText.h"

namespace {

Json::Value parse(const std::string& text) {
    return jsonOf(text);
}
struct ReadRow {
    const char* doc;
    int32_t before;
    int32_t after;
};
struct WriteRow {
    int32_t code;
    const char* word;
};

template <typename T>
void checkType(const char* key, const std::vector<ReadRow>& reads, const std::vector<WriteRow>& writes) {
    for (const auto& row : reads) {
        T t(row.before);
        Json::Value doc = parse(row.doc);
        t.Deserialize(doc);
        EXPECT_EQ(t.get(), row.after) << key << " reading " << row.doc << " from " << row.before;
    }
    for (const auto& row : writes) {
        T t(row.code);
        Json::Value out(Json::objectValue);
        out["other"] = 1;
        t.Serialize(out);
        EXPECT_EQ(out[key].asString(), row.word) << key << " code " << row.code;
        EXPECT_EQ(out["other"].asInt(), 1);
    }
}

TEST(EnumeratedTypes, ReadAndWriteTables) {
    checkType<State>("state",
                     {{R"({"state":"Disabled"})", 1, 0},
                      {R"({"state":""})", 2, 0},
                      {R"({"state":"enabled"})", 1, 0},
                      {R"({})", 2, 0},
                      {R"({"state":5})", 1, 0},
                      {R"({"state":"Enabled"})", 0, 1},
                      {R"({"state":"Paused"})", 0, 2}},
                     {{0, "Disabled"}, {1, "Enabled"}, {2, "Paused"}, {7, "Undefined"}, {-1, "Undefined"}});
    checkType<StreamType>("type",
                          {{R"({"type":"ancillary"})", 1, 1},
                           {R"({"type":"video"})", 1, 2},
                           {R"({"type":"audio"})", 3, 1},
                           {R"({"type":"Audio"})", 2, 2},
                           {R"({})", 3, 3}},
                          {{1, "audio"}, {2, "video"}, {3, "ancillary"}, {0, "undefined"}, {9, "undefined"}});
    checkType<StreamClass>("class",
                           {{R"({"class":"receiver"})", 2, 1},
                            {R"({"class":"sender"})", 1, 2},
                            {R"({"class":"Sender"})", 1, 1},
                            {R"({})", 1, 1}},
                           {{1, "receiver"}, {2, "sender"}, {0, "undefined"}});
    checkType<SessionType>("type",
                           {{R"({"type":"source"})", 0, 1},
                            {R"({"type":"destination"})", 0, 2},
                            {R"({"type":"Source"})", 2, 0},
                            {R"({})", 1, 0}},
                           {{0, "unknown"}, {1, "source"}, {2, "destination"}, {3, "unknown"}});
    checkType<RedundantType>("redundant-type",
                             {{R"({})", 2, 0},
                              {R"({"redundant-type":"none"})", 1, 0},
                              {R"({"redundant-type":"primary"})", 0, 1},
                              {R"({"redundant-type":"secondary"})", 0, 2},
                              {R"({"redundant-type":"Primary"})", 2, 2},
                              {R"({"redundant-type":""})", 1, 1}},
                             {{0, "none"}, {1, "primary"}, {2, "secondary"}, {5, "none"}});
}

TEST(EnumeratedTypes, WrongKindsThrowAndOutOfTableCodesDoNotComeBack) {
    for (const char* doc : {R"({"state":{}})", R"({"state":[1]})", R"([1])", R"("text")"}) {
        State s(1);
        Json::Value v = parse(doc);
        EXPECT_ANY_THROW(s.Deserialize(v)) << doc;
    }
    State s(7);
    Json::Value out;
    s.Serialize(out);
    State back(1);
    back.Deserialize(out);
    EXPECT_EQ(back.get(), 0);
}

TEST(EnumeratedTypes, TributaryReadsTypeAndIndex) {
    struct Row {
        const char* doc;
        int32_t type;
        int32_t index;
    };
    const std::vector<Row> rows = {
        {R"({"tributary":{"type":"MULTI-SD"}})", 2, -1},
        {R"({})", 0, -1},
        {R"({"tributary":{"type":"MULTI-2SI","index":3}})", 1, 3},
        {R"({"tributary":{"type":"multi-sd","index":4}})", 1, 4},  // unknown word keeps the code
        {R"({"tributary":{"index":2}})", 0, 2},
    };
    for (const auto& row : rows) {
        TributaryType t(1, 7);
        Json::Value doc = parse(row.doc);
        t.Deserialize(doc);
        EXPECT_EQ(t.get(), row.type) << row.doc;
        EXPECT_EQ(t.getIndex(), row.index) << row.doc;
    }
    TributaryType t(2, 5);
    Json::Value out;
    t.Serialize(out);
    EXPECT_JSON_EQ(out, R"({"tributary":{"type":"MULTI-SD","index":5}})");
    t.set(9);
    t.Serialize(out);
    EXPECT_EQ(out["tributary"]["type"].asString(), "none");
}

TEST(EnumeratedTypes, DaifTypeDefaultsAndRoundTrip) {
    DaifType d(3, "sdi");
    Json::Value empty = parse("{}");
    d.Deserialize(empty);
    EXPECT_EQ(d.m_type, 12);
    EXPECT_EQ(d.m_string, "auto");
    DaifType w(4, "tdm");
    Json::Value out;
    w.Serialize(out);
    EXPECT_JSON_EQ(out, R"({"type":4,"string":"tdm"})");
    DaifType r;
    r.Deserialize(out);
    EXPECT_EQ(r, w);
    Json::Value bad = parse(R"({"type":"x"})");
    EXPECT_ANY_THROW(r.Deserialize(bad));
}

}  // namespace
