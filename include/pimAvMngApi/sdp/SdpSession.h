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
    // The declared destructor would suppress the implicit moves; a parse hands its
    // result over by moving it.
    ///@{
    /// Copied and moved member by member.
    SdpSession(const SdpSession&) = default;
    SdpSession(SdpSession&&) = default;
    SdpSession& operator=(const SdpSession&) = default;
    SdpSession& operator=(SdpSession&&) = default;
    ///@}
    ~SdpSession() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Writes the session and all its media descriptions to the log at level 6.
    void dump() const;

    uint8_t m_protocol_version = 0;  ///< Protocol version of the "v=" line ("protocol-version").
    std::string m_user_name = "-";   ///< User name of the "o=" line ("user-name").
    uint64_t m_session_id = 0;       ///< Session id of the "o=" line ("id").
    uint64_t m_session_version = 0;  ///< Session version of the "o=" line ("version").
    SdpSessionTime m_time;           ///< The "t=" line ("time").
    std::string m_info;              ///< Session name, the "s=" line ("info").
    uint32_t m_local_ip = 0;         ///< Origin address of the "o=" line ("local-ip").
    std::vector<SdpMedia> m_media;   ///< The media descriptions in SDP order ("media").
};
