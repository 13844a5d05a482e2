#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/VolumeGainApi.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

TEST(DestinationApi, DefaultsAndAsymmetricReadWrite) {
    DestinationApi d;
    EXPECT_EQ(written(d), canon(R"({"session-id":0,"name":"","link-offset":0,"user-sdp":"",
        "rem-sid":{"id":0,"media-idx":0,"payload-type":98,"nmos":{"sender":"","receiver":""}},"channel-list":[]})"));

    readInto(d, R"({"session-id":18446744073709551615,"name":"rx","link-offset":4000000000,
        "user-sdp":"v=0","rem-sid":{"id":7,"media-idx":258,"payload-type":300,"nmos":{"sender":"s","receiver":"r"}},
        "channel-list":[{"channel":3}],"source-ip":"not an address","network-index":2})");
    EXPECT_EQ(d.m_source_ip, "not an address");
    EXPECT_EQ(d.m_network_index, 2);
    EXPECT_EQ(written(d), canon(R"({"session-id":18446744073709551615,"name":"rx","link-offset":4000000000,
        "user-sdp":"v=0","rem-sid":{"id":7,"media-idx":2,"payload-type":44,"nmos":{"sender":"s","receiver":"r"}},
        "channel-list":[{"interface":{"type":12,"string":"auto"},"interface-index":0,"channel":3}]})"));
}

TEST(DestinationApi, RemoteSelectionReadingTable) {
    struct Row {
        const char* doc;
        const char* expected;  // nullptr: throws
    };
    const std::vector<Row> rows = {
        {R"({"rem-sid":{}})",
         R"({"id":0,"media-idx":0,"payload-type":0,"nmos":{"sender":"s0","receiver":"r0"}})"},
        {R"({})", R"({"id":0,"media-idx":0,"payload-type":0,"nmos":{"sender":"s0","receiver":"r0"}})"},
        {R"({"rem-sid":{"nmos":{}}})",
         R"({"id":0,"media-idx":0,"payload-type":0,"nmos":{"sender":"s0","receiver":"r0"}})"},
        {R"({"rem-sid":{"nmos":{"sender":"x"}}})",
         R"({"id":0,"media-idx":0,"payload-type":0,"nmos":{"sender":"x","receiver":""}})"},
        {R"({"rem-sid":{"payload-type":96,"id":5}})",
         R"({"id":5,"media-idx":0,"payload-type":96,"nmos":{"sender":"s0","receiver":"r0"}})"},
        {R"({"rem-sid":{"nmos":"x"}})", nullptr},
        {R"({"rem-sid":{"id":-1}})", nullptr},
        {R"({"rem-sid":[1]})", nullptr},
        {R"({"channel-list":{}})", nullptr},
        {R"({"network-index":"2"})", nullptr},
    };
    for (const Row& row : rows) {
        DestinationApi d;
        d.m_rem_sid.m_nmos_sender = "s0";
        d.m_rem_sid.m_nmos_receiver = "r0";
        d.m_network_index = 4;
        if (row.expected == nullptr) {
            EXPECT_ANY_THROW(readInto(d, row.doc)) << row.doc;
            continue;
        }
        readInto(d, row.doc);
        EXPECT_EQ(written(d.m_rem_sid), canon(row.expected)) << row.doc;
        EXPECT_EQ(d.m_network_index, -1);
    }
}

TEST(VolumeGainApi, SerializeAndDeserialize) {
    VolumeGainApi empty;
    EXPECT_EQ(written(empty), "null");

    LogCapture capture;
    VolumeGainApi api;
    Json::Value doc =
        jsonOf(R"({"session-id":12,"channel-list":[{"channel-gain":-3.5,"mute":true,"position":1},{}]})");
    api.Deserialize(doc);
    api.Deserialize(doc);
    EXPECT_EQ(api.m_session_id, 12u);
    ASSERT_EQ(api.m_changes.size(), 4u);
    EXPECT_EQ(api.m_changes[1].m_position, 255u);
    EXPECT_EQ(api.m_changes[1].m_gain, 0.0);
    EXPECT_EQ(capture.at(4), std::vector<std::string>(2, "GainApi ----- Message Deserialized"));
    EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(),
              std::vector<std::string>(2, "GainApi ----- Message Deserialized"));
    api.m_changes.resize(1);
    EXPECT_EQ(written(api),
              canon(R"({"session-id":12,"channel-list":[{"channel-gain":-3.5,"mute":true,"position":1}]})"));

    capture.clear();
    VolumeGainApi listener(true);
    readInto(listener, R"({"session-id":5,"channel-list":{}})");
    EXPECT_EQ(listener.m_session_id, 0u);
    EXPECT_TRUE(capture.lines().empty());
    readInto(api, R"({"session-id":[],"channel-list":[]})");
    EXPECT_EQ(api.m_session_id, 12u);
    EXPECT_EQ(capture.count("GainApi ----- Message Deserialized"), 1u);

    VolumeGainApi partial(true);
    EXPECT_ANY_THROW(readInto(partial, R"({"channel-list":[{"position":3},{"channel-gain":"loud"}]})"));
    EXPECT_EQ(partial.m_changes.size(), 1u);
}

TEST(VolumeGainApi, ValidateTable) {
    const char* kSessionMsg = "Must specify the session-ID for this command";
    const char* kListMsg = "The 'channel-list' node is either missing or isn't an array.";
    const char* kFieldsMsg =
        "Every channel specified must contain all 3 fields [channel-gain, position, mute]";
    struct Row {
        unsigned command;
        const char* request;
        int result;
        std::vector<std::string> messages;
    };
    const std::vector<Row> rows = {
        {54, R"({"session-id":1,"channel-list":"junk"})", 0, {}},
        {54, R"({"channel-list":[]})", -13, {kSessionMsg}},
        {52, R"({"channel-list":[]})", -13, {kSessionMsg}},
        {52, R"([])", -13, {kSessionMsg}},
        {53, R"({"channel-list":[{"channel-gain":1,"position":2,"mute":false}]})", 0, {}},
        {53, R"({"channel-list":[]})", 0, {}},
        {52, R"({"session-id":1,"channel-list":[]})", 0, {}},
        {52,
         R"({"session-id":1,"channel-list":[{"channel-gain":1.5,"position":2.0,"mute":true},{"channel-gain":1,"position":2}]})",
         -13,
         {kFieldsMsg, "Channel [1] specified is missing a field."}},
        {53, R"({"channel-list":["x"]})", -13, {kFieldsMsg, "Channel [0] specified is missing a field."}},
        {53,
         R"({"channel-list":[{"channel-gain":"1","position":2,"mute":false}]})",
         -13,
         {"'channel-gain' field at node '0' isn't a floating point number."}},
        {53,
         R"({"channel-list":[{"channel-gain":1,"position":2,"mute":false},{"channel-gain":1,"position":2.5,"mute":false}]})",
         -13,
         {"'position' field at node '1' isn't an integer number."}},
        {53,
         R"({"channel-list":[{"channel-gain":1,"position":4294967295,"mute":false}]})",
         -13,
         {"'position' field at node '0' isn't an integer number."}},
        {53,
         R"({"channel-list":[{"channel-gain":1,"position":-2,"mute":0}]})",
         -13,
         {"'mute' field at node '0' isn't a boolean value."}},
        {55, R"({"channel-list":[]})", -13, {"The 'channel-list' array is empty."}},
        {55, R"({"channel-list":["a","b"]})", 0, {}},
        {55, R"({})", -13, {kListMsg}},
        {53, R"({"channel-list":{"a":1}})", -13, {kListMsg}},
        {52, R"({"session-id":1})", -13, {kListMsg}},
        {50, R"(7)", 0, {}},
    };
    for (const Row& row : rows) {
        LogCapture capture;
        Json::Value request = jsonOf(row.request);
        const Json::Value before = request;
        EXPECT_EQ(VolumeGainApi::Validate(request, row.command), row.result)
            << row.command << " " << row.request;
        EXPECT_EQ(capture.at(2), row.messages) << row.request;
        EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(), row.messages) << row.request;
        EXPECT_EQ(request, before);
    }
}

}  // namespace
