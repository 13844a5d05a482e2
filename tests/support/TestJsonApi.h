#pragma once

#include <json/json.h>

#include <string>
#include <vector>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApiJson.h"
#include "support/FakeDaemon.h"

// AvMngApiJson for tests against a FakeDaemon: a short reply limit (3 s unless given; the
// production limit is 150 s), and a one-call set-up that points the endpoint at the daemon.
class TestJsonApi : public AvMngApiJson {
public:
    explicit TestJsonApi(int timeoutMs = 3000) : m_timeout_ms(timeoutMs) {}

    int getClientTimeout() override { return m_timeout_ms; }

    // Sets the port to the daemon's and initialises with host 127.0.0.1.
    int connectTo(zmq::context_t& context, const FakeDaemon& daemon) {
        ipcPort = daemon.port();
        std::string host = "127.0.0.1";
        return init(context, host);
    }

    int m_timeout_ms;
};

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
