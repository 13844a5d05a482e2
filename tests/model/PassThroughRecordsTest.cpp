#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pimAvMngApi/model/AvGlobalCfg.h"
#include "pimAvMngApi/model/ChannelTables.h"
#include "pimAvMngApi/model/SdiVpgData.h"
#include "pimAvMngApi/model/SessionStreamList.h"
#include "pimAvMngApi/model/VideoRefOutputCfg.h"
#include "pimAvMngApi/model/VtcStatus.h"
#include "support/JsonText.h"

namespace {

// One record kind: a factory, a document with every key set away from its default plus
// a key the record does not know, and what a default record writes.
struct Kind {
    std::string name;
    std::function<std::unique_ptr<IJsonSerializable>()> make;
    const char* full;
    const char* defaults;
};

template <typename T>
std::unique_ptr<IJsonSerializable> make() {
    return std::make_unique<T>();
}

const std::vector<Kind>& kinds() {
    static const std::vector<Kind> k = {
        {"AvGlobalCfg", make<AvGlobalCfg>,
         R"({"device-name":"studio-a","mdns":false,"ptp-domain":5,"dscp-audio":46,"dscp-video":34,
             "dscp-ancillary":26,"dscp-ptp":48,"nmos-registry":"http://reg"})",
         R"({"device-name":"","mdns":true,"ptp-domain":0,"dscp-audio":34,"dscp-video":40,
             "dscp-ancillary":40,"dscp-ptp":46})"},
        {"VtcStatus", make<VtcStatus>,
         R"({"locked":true,"domain":3,"master-locking-status":3,"current-local-offset":-37,"jam":{"t":1}})",
         R"({"locked":false,"domain":127,"master-locking-status":0,"current-local-offset":0})"},
        {"VideoRefOutputCfg", make<VideoRefOutputCfg>,
         R"({"enable":false,"source":"external","format":"1080i59.94","offset":-1200,"signal":"tri-level"})",
         R"({"enable":true,"source":"ptp","format":"","offset":0})"},
        {"SdiVpgData", make<SdiVpgData>,
         R"({"port":1,"enable":true,"pattern":"colorbars","video_mode":"720p50","level":"B"})",
         R"({"port":0,"enable":false,"pattern":"","video_mode":"NA"})"},
        {"SessionStreamList", make<SessionStreamList>,
         R"([{"id":18446744073709551615,"id-str":"18446744073709551615","name":"cam 1","version":4,
              "paused":true,"owner":"web","streams":[{"id":7,"name":"a","type":"ancillary","class":"sender",
              "state":"Paused","hw-id":3,"channel-list":[{"interface":{"type":1,"string":"sdi"},
              "interface-index":0,"channel":2}]}]},
             {"id":2,"id-str":"2","name":"","version":0,"paused":false,"streams":[]}])",
         "[]"},
        {"ChannelTables", make<ChannelTables>,
         R"([{"interface":{"type":4,"string":"madi"},"interface-index":1,"num-channels":64,"clock":"int",
              "channels":[{"channel":3,"used":true,"session-id":9,"stream-id":2,"class":"receiver","gain":-3},
                          {"channel":4,"used":false,"session-id":0,"stream-id":0,"class":""}]}])",
         "[]"},
    };
    return k;
}

TEST(PassThroughRecords, FullDocumentRoundTripsWithUnknownKeys) {
    for (const Kind& kind : kinds()) {
        SCOPED_TRACE(kind.name);
        auto record = kind.make();
        readInto(*record, kind.full);
        Json::Value out;
        record->Serialize(out);
        EXPECT_JSON_EQ(out, kind.full);
    }
}

TEST(PassThroughRecords, EmptyOrNullDocumentGivesDefaults) {
    for (const Kind& kind : kinds()) {
        SCOPED_TRACE(kind.name);
        Json::Value fresh;
        kind.make()->Serialize(fresh);
        EXPECT_JSON_EQ(fresh, kind.defaults);

        // Reading an empty document after a full one returns every member to its default
        // and forgets the unknown keys.
        auto record = kind.make();
        readInto(*record, kind.full);
        Json::Value empty = kind.defaults[0] == '[' ? Json::Value() : Json::Value(Json::objectValue);
        record->Deserialize(empty);
        Json::Value out;
        record->Serialize(out);
        EXPECT_JSON_EQ(out, kind.defaults);
    }
}

TEST(PassThroughRecords, WrongKindsThrow) {
    const std::vector<std::pair<size_t, const char*>> cases = {
        {0, R"({"device-name":{}})"}, {0, "[1]"}, {1, R"({"locked":[]})"}, {2, R"({"offset":"x"})"}, {3, "7"},
        {4, R"({"id":1})"}, {4, R"([{"streams":{}}])"}, {4, R"([{"streams":[{"channel-list":{}}]}])"},
        {5, R"({"channels":[]})"}, {5, R"([{"channels":5}])"}, {5, R"([{"channels":[{"used":{}}]}])"},
    };
    for (const auto& [kind, doc] : cases) {
        SCOPED_TRACE(kinds()[kind].name + " " + doc);
        EXPECT_ANY_THROW(readInto(*kinds()[kind].make(), doc));
    }
}

TEST(SessionStreamList, ReadingReplacesKeepsEarlierSessionsOnFailureAndFallsBackToIdText) {
    SessionStreamList list;
    readInto(list, R"([{"id":1},{"id":2}])");
    ASSERT_EQ(list.m_sessions.size(), 2u);

    EXPECT_ANY_THROW(readInto(list, R"([{"id-str":"12345678901234567890","name":"x"},{"name":{}}])"));
    ASSERT_EQ(list.m_sessions.size(), 1u);
    EXPECT_EQ(list.m_sessions.front().m_id, 12345678901234567890ull);
    ASSERT_NE(list.find(12345678901234567890ull), nullptr);
    EXPECT_EQ(list.find(1), nullptr);
}

}  // namespace
