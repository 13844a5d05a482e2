#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "pimAvMngApi/model/AudioStreamData.h"
#include "pimAvMngApi/model/SessionConnectionInfo.h"
#include "pimAvMngApi/model/SessionType.h"
#include "pimAvMngApi/model/VideoStreamData.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// A running session as the daemon describes it.
///
/// JSON form: {"id", "version" (unsigned 64-bit), "name", "nmos-id",
///             "ptp": {"domain": int, "gmid": text}, "connection": SessionConnectionInfo,
///             "sdp", "audio-streams": [AudioStreamData...], "video-streams": [VideoStreamData...],
///             "type": SessionType word}
/// An empty stream list writes no key. Reading: "ptp" is read only when not empty (else
/// domain and grandmaster keep their values; the domain is truncated to 8 bits);
/// "connection" catches its own errors; both stream lists are replaced by the arrays'
/// elements; "type" unknown or missing gives "unknown".
class SessionConfigData : public IJsonSerializable {
public:
    SessionConfigData() = default;
    ~SessionConfigData() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    uint64_t m_id = 0;                           ///< "id".
    uint64_t m_version = 0;                      ///< "version".
    std::string m_name;                          ///< "name".
    std::string m_nmos_id;                       ///< "nmos-id".
    std::string m_ptp_gmid;                      ///< PTP grandmaster id ("ptp"/"gmid").
    uint8_t m_ptp_domain = 0;                    ///< PTP domain ("ptp"/"domain").
    SessionConnectionInfo m_connection;          ///< Who created the session ("connection").
    std::string m_sdp;                           ///< The session's SDP text ("sdp").
    std::list<AudioStreamData> m_audio_streams;  ///< "audio-streams".
    std::list<VideoStreamData> m_video_streams;  ///< "video-streams".
    SessionType m_type;                          ///< "type".
};
