#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/model/DestinationApiSessionSel.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

using session_id_t = uint64_t;

/// The configuration of a receiving session.
///
/// Serialize writes six keys: "session-id" (unsigned 64-bit), "name", "link-offset"
/// (unsigned), "user-sdp", "rem-sid" (DestinationApiSessionSel) and "channel-list"
/// (ChannelList array). The source address and network interface index are not written.
///
/// Deserialize (no reset first) reads those six and also "source-ip" (text stored as
/// given, without any check; default "") and "network-index" (default -1). Missing
/// scalars give 0 or "".
class DestinationApi : public IJsonSerializable {
public:
    DestinationApi() = default;
    ~DestinationApi() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    session_id_t m_session_id = 0;
    DestinationApiSessionSel m_rem_sid;
    ChannelList m_channels;
    std::string m_name;
    uint32_t m_link_offset = 0;
    std::string m_user_sdp;
    std::string m_source_ip;
    int32_t m_network_index = -1;
};
