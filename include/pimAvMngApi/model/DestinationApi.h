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

    session_id_t m_session_id = 0;       ///< The receiving session's id ("session-id").
    DestinationApiSessionSel m_rem_sid;  ///< The remote stream received ("rem-sid").
    ChannelList m_channels;              ///< Local channels fed by the stream ("channel-list").
    std::string m_name;                  ///< "name".
    uint32_t m_link_offset = 0;          ///< Receive delay ("link-offset").
    std::string m_user_sdp;              ///< SDP text given by the user ("user-sdp").
    std::string m_source_ip;             ///< Source address as read ("source-ip"); not written.
    int32_t m_network_index = -1;        ///< Network interface ("network-index", -1 for none); not written.
};
