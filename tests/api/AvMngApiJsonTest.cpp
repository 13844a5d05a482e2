#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApiJson.h"
#include "support/CommandRows.h"
#include "support/FakeDaemon.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"
#include "support/TestJsonApi.h"

namespace {

// The rows with a pass-through method, each with its method; the method's parameter
// list must be the row's shape.
struct PassThrough {
    const CommandRowText& row;
    const PassThroughMethod& method;
};

const std::vector<PassThrough>& passThroughs() {
    static const std::vector<PassThrough> all = [] {
        std::vector<PassThrough> rows;
        for (const CommandRowText& row : commandRows()) {
            if (row.hasMethod()) {
                rows.push_back({row, passThroughOf(row)});
            }
        }
        return rows;
    }();
    return all;
}

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
    const std::string refused = "ClientJsonApi: init failed with -103*";
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

TEST(AvMngApiJson, EveryPassThroughSendsItsIdAndDocumentOverTheWire) {
    ASSERT_EQ(passThroughs().size(), 54u);
    for (const auto& p : passThroughs()) {
        EXPECT_EQ(p.method.shape(), p.row.shape) << p.row.method;
    }
    FakeDaemon daemon;
    daemon.onRequest([](const FakeDaemon::Request& r) {
        Json::Value reply;
        reply["answer-to"] = r.commandId;
        reply["nested"]["list"].append("v");
        return FakeDaemon::Action::reply(reply);
    });
    zmq::context_t ctx;
    TestJsonApi api;
    ASSERT_EQ(api.connectTo(ctx, daemon), 0);
    LogCapture capture;
    for (const auto& p : passThroughs()) {
        Json::Value request;
        request["id"] = Json::UInt64(1000000000000ULL + p.row.id);
        request["name"] = p.row.method;
        Json::Value reply = "old";
        ASSERT_EQ(p.method.call(api, request, reply), 0) << p.row.method;
        EXPECT_EQ(reply["answer-to"].asUInt(), p.row.id) << p.row.method;
        EXPECT_EQ(reply["nested"]["list"][0].asString(), "v") << p.row.method;
    }
    EXPECT_TRUE(capture.at(2).empty());
    const auto seen = daemon.requests();
    ASSERT_EQ(seen.size(), passThroughs().size());
    for (size_t i = 0; i < seen.size(); ++i) {
        const auto& p = passThroughs()[i];
        EXPECT_EQ(seen[i].commandId, p.row.id) << p.row.method;
        EXPECT_EQ(seen[i].frameCount, 2u) << p.row.method;
        EXPECT_EQ(seen[i].hasDocument, p.row.sendsDocument()) << p.row.method;
        if (p.row.sendsDocument()) {
            EXPECT_EQ(seen[i].documentText, "{\"id\":" + std::to_string(1000000000000ULL + p.row.id) +
                                                ",\"name\":\"" + p.row.method + "\"}");
        }
    }
}

TEST(AvMngApiJson, TransportResultsMapToZeroOrTheCodeWithOneChkLine) {
    for (const auto& p : passThroughs()) {
        ScriptedJsonApi api;
        api.result = 3;
        api.replyDocument = jsonOf(R"({"r":1})");
        Json::Value request = jsonOf(R"({"id":5})");
        Json::Value reply;
        LogCapture capture;
        EXPECT_EQ(p.method.call(api, request, reply), 0) << p.row.method;
        EXPECT_EQ(reply, api.replyDocument) << p.row.method;
        ASSERT_EQ(api.sent.size(), 1u);
        EXPECT_EQ(api.sent[0].commandId, p.row.id);
        EXPECT_EQ(api.sent[0].hasPayload, p.row.sendsDocument());
        if (p.row.sendsDocument()) {
            EXPECT_EQ(api.sent[0].payload, request);
        }
        EXPECT_TRUE(capture.lines().empty()) << p.row.method;

        api.result = -7;
        reply = "before";
        EXPECT_EQ(p.method.call(api, request, reply), -7) << p.row.method;
        EXPECT_EQ(reply, Json::Value("before")) << p.row.method;
        EXPECT_EQ(capture.lines().size(), 1u) << p.row.method;
        EXPECT_TRUE(capture.matches(2, {"CHK(" + p.row.signature() + ")::# Error Code -7"})) << p.row.method;
    }
}

// A failed exchange is reported with the description of its command.
TEST(AvMngApiJson, FailureReportNamesTheCommand) {
    FakeDaemon daemon;
    daemon.silentFor(1);
    zmq::context_t ctx;
    TestJsonApi api(250);
    ASSERT_EQ(api.connectTo(ctx, daemon), 0);
    LogCapture capture;
    Json::Value reply;
    EXPECT_EQ(api.removeSession(jsonOf(R"({"id":12})"), reply), ClientJsonApi::kErrTimeout);
    ErrorReport report;
    api.getLastErrorMessage(report);
    EXPECT_EQ(report.code, ClientJsonApi::kErrTimeout);
    EXPECT_EQ(report.commandId, 4u);
    EXPECT_EQ(report.commandDescription, "CFG remove Session");
}

}  // namespace
