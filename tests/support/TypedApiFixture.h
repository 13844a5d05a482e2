#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApi.h"
#include "support/FakeDaemon.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

// An AvMngApi connected over loopback to a FakeDaemon of its own, with every log line
// captured.
class TypedApiTest : public ::testing::Test {
protected:
    void SetUp() override {
        api.jsonApi.ipcPort = daemon.port();
        ASSERT_EQ(api.init(context, "127.0.0.1"), 0);
    }

    // Trace lines of the typed layer in one direction ("IN" or "OUT"), in order.
    std::vector<std::string> traces(const std::string& dir) const {
        std::vector<std::string> found;
        for (const std::string& line : log.at(7)) {
            if (line.rfind("AVMANAGER JSON API int AvMngApi::", 0) == 0 &&
                line.find(":" + dir + "\n") != std::string::npos) {
                found.push_back(line);
            }
        }
        return found;
    }

    // Level 2 lines that begin with `prefix`.
    size_t errors(const std::string& prefix) const {
        size_t n = 0;
        for (const std::string& line : log.at(2)) {
            n += line.rfind(prefix, 0) == 0 ? 1 : 0;
        }
        return n;
    }

    // One method as the daemon sees it: its command, its request document (empty: none)
    // and whether an OUT trace follows. The request text is taken before the call, since
    // some methods read the reply back into the record that made the request.
    struct Shape {
        const char* name;
        std::function<int(AvMngApi&)> run;
        unsigned command;
        std::function<std::string()> request;
        const char* reply = "{}";
        bool out = true;
    };

    void checkShapes(const std::vector<Shape>& shapes) {
        for (const Shape& s : shapes) {
            SCOPED_TRACE(std::string(s.name) + " command " + std::to_string(s.command));
            log.clear();
            daemon.clearRequests();
            daemon.replyWith(jsonOf(s.reply));
            const std::string expected = s.request ? s.request() : "";
            ASSERT_EQ(s.run(api), 0);
            const auto requests = daemon.requests();
            ASSERT_EQ(requests.size(), 1u);
            EXPECT_EQ(requests[0].commandId, s.command);
            EXPECT_EQ(requests[0].hasDocument, !expected.empty());
            const std::string method = std::string("AvMngApi::") + s.name + "(";
            if (!expected.empty()) {
                EXPECT_JSON_EQ(requests[0].document, expected);
                ASSERT_EQ(traces("IN").size(), 1u);
                EXPECT_NE(traces("IN")[0].find(method), std::string::npos);
                EXPECT_NE(traces("IN")[0].find(":IN\n" + jsonText(requests[0].document)), std::string::npos);
            } else {
                EXPECT_TRUE(traces("IN").empty());
            }
            ASSERT_EQ(traces("OUT").size(), s.out ? 1u : 0u);
            if (s.out) {
                EXPECT_NE(traces("OUT")[0].find(method), std::string::npos);
            }
            EXPECT_TRUE(log.at(2).empty());
        }
    }

    zmq::context_t context;
    FakeDaemon daemon;
    AvMngApi api;
    LogCapture log{7};
};

// Request text makers for Shape rows.
inline std::function<std::string()> doc(const char* text) {
    return [text] { return std::string(text); };
}
// The record's own JSON form, optionally under `key`.
inline std::function<std::string()> form(const IJsonSerializable& record, const char* key = nullptr) {
    return [&record, key] {
        Json::Value v;
        record.Serialize(key != nullptr ? v[key] : v);
        return jsonText(v);
    };
}

// A record whose Serialize throws, standing in for any request record.
template <typename Record>
class ThrowingRecord : public Record {
public:
    void Serialize(Json::Value&) const override { throw std::runtime_error("cannot serialize"); }
};
