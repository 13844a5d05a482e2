#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
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

constexpr int32_t kThrows = -99;
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
        if (row.after == kThrows) {
            EXPECT_ANY_THROW(readInto(t, row.doc)) << key << " reading " << row.doc;
            continue;
        }
        readInto(t, row.doc);
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
                      {R"({"state":"Undefined"})", 1, 0},
                      {R"({"state":{}})", 1, kThrows},
                      {R"({"state":[1]})", 1, kThrows},
                      {R"([1])", 1, kThrows},
                      {R"("text")", 1, kThrows},
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

TEST(EnumeratedTypes, TributaryAndDaifTables) {
    const std::vector<std::tuple<const char*, int32_t, int32_t>> tributary = {
        {R"({"tributary":{"type":"MULTI-SD"}})", 2, -1},
        {R"({})", 0, -1},
        {R"({"tributary":{"type":"MULTI-2SI","index":3}})", 1, 3},
        {R"({"tributary":{"type":"multi-sd","index":4}})", 1, 4},  // unknown word keeps the code
        {R"({"tributary":{"index":2}})", 0, 2},
    };
    for (const auto& [doc, type, index] : tributary) {
        TributaryType t(1, 7);
        readInto(t, doc);
        EXPECT_EQ(t.get(), type) << doc;
        EXPECT_EQ(t.getIndex(), index) << doc;
    }
    EXPECT_EQ(written(TributaryType(2, 5)), canon(R"({"tributary":{"type":"MULTI-SD","index":5}})"));
    EXPECT_EQ(written(TributaryType(9, 5)), canon(R"({"tributary":{"type":"none","index":5}})"));

    const std::vector<std::pair<const char*, const char*>> daif = {
        {"{}", R"({"type":12,"string":"auto"})"},
        {R"({"type":4,"string":"tdm"})", R"({"type":4,"string":"tdm"})"},
        {R"({"type":"x"})", "throws"},
    };
    for (const auto& [doc, expected] : daif) {
        DaifType d(3, "sdi");
        EXPECT_EQ(readThenWritten(d, doc), canon(expected)) << doc;
    }
}

}  // namespace
