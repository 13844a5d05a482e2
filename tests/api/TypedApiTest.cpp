// The typed client API against a daemon in the test: each call of tests/data/api/typed-calls.txt
// with the request it sends, the reply it reads, its result, trace and error lines; below,
// what the case file cannot say.

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <map>
#include <stdexcept>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "support/FakeDaemon.h"
#include "support/JsonText.h"
#include "support/KindedJson.h"
#include "support/LogCapture.h"
#include "support/TestData.h"
#include "support/TypedCalls.h"

using namespace pimav::detail;

namespace {

using Lines = std::vector<std::string>;

// An AvMngApi connected over loopback to a daemon of its own, every log line captured.
class TypedApiTest : public ::testing::Test {
protected:
    void SetUp() override {
        api.jsonApi.ipcPort = daemon.port();
        ASSERT_EQ(api.init(context, "127.0.0.1"), 0);
    }

    // The typed layer's trace lines of `method` ("IN" or "OUT"), in order.
    Lines traces(const std::string& method, const std::string& dir) const {
        Lines found;
        for (const std::string& line : log.at(7)) {
            if (line.rfind("AVMANAGER JSON API int AvMngApi::" + method + "(", 0) == 0 &&
                line.find(":" + dir + "\n") != std::string::npos) {
                found.push_back(line);
            }
        }
        return found;
    }

    zmq::context_t context;
    FakeDaemon daemon;
    AvMngApi api;
    LogCapture log{7};
};

TEST_F(TypedApiTest, CallsOfTheCaseFile) {
    TypedCaseHooks hooks;
    hooks.setup = [this](const std::string& key, const std::string& value) {
        if (key == "reply") {
            daemon.replyWith(jsonOf(value));
        } else if (key == "reply-once") {
            daemon.queueReply(jsonOf(value));
        } else if (key == "reply-not-json") {
            daemon.sendNonJson();
        } else {
            return false;
        }
        return true;
    };
    hooks.beforeCall = [this] { daemon.clearRequests(); };
    hooks.expectationKeys = {"command", "request", "in", "out"};
    hooks.afterCall = [this](const DataCase& e, const std::string& method, int result) {
        const auto requests = daemon.requests();
        const bool sent = e.has("command");
        ASSERT_EQ(requests.size(), sent ? 1u : 0u);
        if (sent) {
            EXPECT_EQ(requests[0].commandId, std::stoul(e.get("command")));
            EXPECT_EQ(requests[0].hasDocument, e.has("request"));
        }
        const Lines in = traces(method, "IN");
        if (e.has("request")) {
            EXPECT_EQ(requests[0].documentText, jsonText(jsonOf(e.get("request"))));
        }
        if (e.get("in", e.has("request") ? "1" : "0") == "1") {
            ASSERT_EQ(in.size(), 1u);
            EXPECT_EQ(in[0].substr(in[0].find(":IN\n")), ":IN\n" + requests[0].documentText);
        } else {
            EXPECT_EQ(in, Lines{});
        }
        EXPECT_EQ(traces(method, "OUT").size(), e.get("out", sent && result == 0 ? "1" : "0") == "1" ? 1u : 0u);
    };
    for (const DataCase& c : dataCases("api/typed-calls.txt")) {
        SCOPED_TRACE(c.where + " " + c.title);
        daemon.replyWith(Json::Value(Json::objectValue));
        runTypedCase(c, api, log, hooks);
    }
}

TEST_F(TypedApiTest, SystemClockInfoFillsOnlyTheRecordsGiven) {
    daemon.replyWith(jsonOf(R"({"config":{"ref-type":5},"status":{"current-ref":{"code":2}},
                                "counters":{"cdc":{"current":512}},"smpte-2059":{"locked":true}})"));
    for (int mask = 0; mask < 16; ++mask) {
        SCOPED_TRACE(mask);
        ClockConfig config;
        ClockStatus status;
        ClockCounters counters;
        VtcStatus vtc;
        ASSERT_EQ(api.getSystemClockInfo(mask & 1 ? &config : nullptr, mask & 2 ? &status : nullptr,
                                         mask & 4 ? &counters : nullptr, mask & 8 ? &vtc : nullptr),
                  0);
        EXPECT_EQ(config.getClockRefType() == ClockConfig::CLOCK_REF_AUTO_EXTERNAL, (mask & 1) != 0);
        EXPECT_EQ(status.getCurrentClockReference() == ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE,
                  (mask & 2) != 0);
        EXPECT_EQ(counters.m_current == 512u, (mask & 4) != 0);
        EXPECT_EQ(vtc.m_locked, (mask & 8) != 0);
    }
}

TEST_F(TypedApiTest, SourceInfoReplacesChannelsAndKeepsSourceOnlyFields) {
    Source source;
    source.m_source_ip.set(0x0A000001);
    source.m_media_clk_offset = 5;
    source.m_channels.addChannelEntry(ChannelId(DaifType(), 0, 9));
    source.m_channels.addChannelEntry(ChannelId(DaifType(), 0, 8));
    AncillaryStreamData stream;
    stream.m_channels.addChannelEntry(ChannelId(DaifType(), 0, 1));
    api.getSourceInfo(source, &stream);
    EXPECT_EQ(source.m_channels, stream.m_channels);
    EXPECT_EQ(source.m_dscp, 40);
    EXPECT_EQ(source.m_udp_port, 20000);
    EXPECT_EQ(source.m_source_ip.get(), 0x0A000001u);
    EXPECT_EQ(source.m_media_clk_offset, 5);
    api.getSourceInfo(source, nullptr);
    EXPECT_EQ(log.at(2), Lines{"getSourceInfo:: Parameter is null."});
}

TEST_F(TypedApiTest, GainMethodsSendNothing) {
    EXPECT_EQ(api.setSourceChannelGain(), 0);
    EXPECT_EQ(api.setDestinationChannelGain(), 0);
    EXPECT_EQ(api.getSourceChannelGain(), 0);
    EXPECT_EQ(api.getDestinationChannelGain(), 0);
    EXPECT_EQ(daemon.requestCount(), 0u);
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace
