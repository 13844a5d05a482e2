#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "pimAvMngApi/model/StreamData.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

using session_id_t = uint64_t;

/// The short description of one session, with the streams it runs.
///
/// JSON form written: {"id", "version", "name", "remote-sid" (unsigned 64-bit),
///   "remote-sid-str" (its decimal text), "ptp-domain" (int), "rtsp-url", "ptp-gmid"}.
/// The stream list is not written.
///
/// Reading: the scalar keys with 0 / "" when missing ("remote-sid-str" is not read); then
/// each element of "session-list" becomes an AudioStreamData when its "type" is "audio"
/// and a VideoStreamData otherwise, and is appended (the list is not emptied, so reading
/// a document twice doubles it).
///
/// The record owns the stream records in m_streams and deletes them (null entries are
/// skipped). Copying makes a deep copy of every stream record, keeping its kind; moving
/// hands the records over.
class SessionBasicInfo : public IJsonSerializable {
public:
    SessionBasicInfo() = default;
    ///@{
    /// Copies are deep: every stream record is copied with its kind. Moves hand the records over.
    SessionBasicInfo(const SessionBasicInfo& other);
    SessionBasicInfo(SessionBasicInfo&& other) noexcept;
    SessionBasicInfo& operator=(const SessionBasicInfo& other);
    SessionBasicInfo& operator=(SessionBasicInfo&& other) noexcept;
    ///@}
    ~SessionBasicInfo() override;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Deletes every stream record and empties the list.
    void clearStreams();

    session_id_t m_id = 0;             ///< "id".
    uint64_t m_version = 0;            ///< "version".
    std::string m_name;                ///< "name".
    std::list<StreamData*> m_streams;  ///< The streams of the session ("session-list"), owned by the record.
    std::string m_rtsp_url;            ///< "rtsp-url".
    uint64_t m_remote_sid = 0;         ///< "remote-sid".
    std::string m_ptp_gmid;            ///< PTP grandmaster id ("ptp-gmid").
    uint32_t m_ptp_domain = 0;         ///< "ptp-domain".
};
