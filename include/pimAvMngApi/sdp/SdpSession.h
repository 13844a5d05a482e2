#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/sdp/SdpMedia.h"
#include "pimAvMngApi/sdp/SdpSessionTime.h"

/// One SDP session description: origin, name, timing and its media descriptions in SDP
/// order. The origin address is IPv4 in host byte order (0: not set).
///
/// JSON keys: "protocol-version", "user-name", "id", "version", "time" {"start",
/// "stop"}, "info", "local-ip", "media" (array, absent when there is no media).
/// Deserialize appends one SdpMedia per element of "media".
class SdpSession : public IJsonSerializable {
public:
    SdpSession() = default;
    /// The declared destructor would suppress the implicit moves; a parse hands its
    /// result over by moving it.
    SdpSession(const SdpSession&) = default;
    SdpSession(SdpSession&&) = default;
    SdpSession& operator=(const SdpSession&) = default;
    SdpSession& operator=(SdpSession&&) = default;
    ~SdpSession() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Writes the session and all its media descriptions to the log at level 6.
    void dump() const;

    uint8_t m_protocol_version = 0;
    std::string m_user_name = "-";
    uint64_t m_session_id = 0;
    uint64_t m_session_version = 0;
    SdpSessionTime m_time;
    std::string m_info;
    uint32_t m_local_ip = 0;
    std::vector<SdpMedia> m_media;
};
