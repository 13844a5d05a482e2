#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApiJson.h"
#include "support/CommandRows.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

// AvMngApiJson whose transport is a script: every message is recorded, and the call
// returns `result`, copying `replyDocument` into the reply unless the result is negative.
class ScriptedJsonApi : public AvMngApiJson {
public:
    struct Sent {
        unsigned int commandId;
        bool hasPayload;
        Json::Value payload;
    };

    int sendMessage(IpcMsg& msg, Json::Value& reply) override {
        sent.push_back(Sent{msg.getCommandId(), msg.hasPayload(), msg.getPayload()});
        if (result >= 0) {
            reply = replyDocument;
        }
        return result;
    }

    int result = 0;
    Json::Value replyDocument{Json::objectValue};
    std::vector<Sent> sent;
};

TEST(AvMngApiJson, DefaultEndpointAndTimeLimit) {
    AvMngApiJson api;
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://127.0.0.1:5559");
    EXPECT_EQ(api.getClientTimeout(), 150000);
    api.ipcPort = 4294967295u;
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://127.0.0.1:4294967295");
}

TEST(AvMngApiJson, InitWithHostReplacesHostOnly) {
    zmq::context_t ctx;
    AvMngApiJson api;
    std::string host = "10.1.2.3";
    EXPECT_EQ(api.init(ctx, host), 0);
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://10.1.2.3:5559");
    std::string empty;
    EXPECT_EQ(api.init(ctx, empty), 0);  // not validated here
    EXPECT_EQ(api.getIpcConnectAddress(), "tcp://:5559");
}

TEST(AvMngApiJson, FailingInitLogsOneChkPerLevelAndKeepsHost) {
    zmq::context_t ctx;
    AvMngApiJson api;
    LogCapture capture;
    std::string host = "bad host";
    EXPECT_EQ(api.init(ctx, host), ClientJsonApi::kErrConnect);
    EXPECT_EQ(api.ipcHost, "bad host");
    const std::string refused = "ClientJsonApi: *";  // the transport's line, checked in tests/platform
    const std::string init = "CHK(int AvMngApiJson::init(zmq::context_t&))::# Error Code -103";
    EXPECT_TRUE(capture.matches(
        2, {refused, init,
            "CHK(int AvMngApiJson::init(zmq::context_t&, std::__cxx11::string&))::# Error Code -103"}))
        << ::testing::PrintToString(capture.at(2));
    capture.clear();
    EXPECT_EQ(api.init(ctx), ClientJsonApi::kErrConnect);
    EXPECT_TRUE(capture.matches(2, {refused, init})) << ::testing::PrintToString(capture.at(2));
}

TEST(AvMngApiJson, CommandDescriptionsForEveryId) {
    AvMngApiJson api;
    ASSERT_EQ(commandRows().size(), Aes67Commands::kCommandCount);
    for (unsigned int id = 0; id < commandRows().size(); ++id) {
        ASSERT_EQ(commandRows()[id].id, id);
        std::string text = "previous contents";
        EXPECT_EQ(api.getCommandDescription(id, text), 0);
        EXPECT_EQ(text, commandRows()[id].description) << id;
        std::string direct;
        Aes67Commands::getCommandNameStr(static_cast<aes67_command_id_t>(id), direct);
        EXPECT_EQ(direct, commandRows()[id].description) << id;
    }
}

TEST(AvMngApiJson, UnknownIdsAppendNotRecognized) {
    AvMngApiJson api;
    for (unsigned int id : {56u, 57u, 1000u, UINT_MAX}) {
        std::string text = "x";
        EXPECT_EQ(api.getCommandDescription(id, text), 0);
        EXPECT_EQ(text, "xnot recognized") << id;
        std::string empty;
        api.getCommandDescription(id, empty);
        EXPECT_EQ(empty, "not recognized");
    }
}

// Each pass-through method sends its row's command, with the request as its document when
// the row has one; a transport result of 0 or more is 0 with the reply, a negative one is
// returned with one CHK line and the reply untouched.
TEST(AvMngApiJson, TransportResultsMapToZeroOrTheCodeWithOneChkLine) {
    size_t methods = 0;
    for (const CommandRowText& row : commandRows()) {
        if (!row.hasMethod()) {
            continue;
        }
        ++methods;
        const PassThroughMethod& method = passThroughOf(row);
        ASSERT_EQ(method.shape(), row.shape) << row.method;
        ScriptedJsonApi api;
        api.result = 3;
        api.replyDocument = jsonOf(R"({"r":1})");
        Json::Value request = jsonOf(R"({"id":5})");
        Json::Value reply;
        LogCapture capture;
        EXPECT_EQ(method.call(api, request, reply), 0) << row.method;
        EXPECT_EQ(reply, api.replyDocument) << row.method;
        ASSERT_EQ(api.sent.size(), 1u);
        EXPECT_EQ(api.sent[0].commandId, row.id);
        EXPECT_EQ(api.sent[0].hasPayload, row.sendsDocument());
        if (row.sendsDocument()) {
            EXPECT_EQ(api.sent[0].payload, request);
        }
        EXPECT_TRUE(capture.lines().empty()) << row.method;

        api.result = -7;
        reply = "before";
        EXPECT_EQ(method.call(api, request, reply), -7) << row.method;
        EXPECT_EQ(reply, Json::Value("before")) << row.method;
        EXPECT_EQ(capture.lines().size(), 1u) << row.method;
        EXPECT_TRUE(capture.matches(2, {"CHK(" + row.signature() + ")::# Error Code -7"})) << row.method;
    }
    EXPECT_EQ(methods, 54u);
}

}  // namespace
