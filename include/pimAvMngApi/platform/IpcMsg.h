#pragma once

#include <json/json.h>

/// One request to the AV manager daemon: a command id and, for most commands,
/// a JSON request document.
class IpcMsg {
public:
    /// A request without a document (the reply-only form).
    explicit IpcMsg(unsigned int commandId) : m_command_id(commandId) {}
    /// A request carrying `payload`.
    IpcMsg(unsigned int commandId, const Json::Value& payload)
        : m_command_id(commandId), m_has_payload(true), m_payload(payload) {}

    /// The command id.
    unsigned int getCommandId() const { return m_command_id; }
    /// True when the request carries a document.
    bool hasPayload() const { return m_has_payload; }
    /// The request document (null when there is none).
    const Json::Value& getPayload() const { return m_payload; }

private:
    unsigned int m_command_id;
    bool m_has_payload = false;
    Json::Value m_payload;
};
