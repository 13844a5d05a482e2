#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/adv/AdvertisementState.h"
#include "pimAvMngApi/model/IpAddress.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/sdp/SdpSession.h"

using session_id_t = uint64_t;

/// One session that another device advertises: the URL the advertisement came from,
/// the SDP text as received and its parsed form, the advertising host, whether a
/// local receiver uses the session and whether the advertisement is still current.
///
/// The entry has no id of its own: its id is the session id of the SDP "o=" line.
///
/// JSON form (Serialize, in this order): "session-id" (unsigned 64-bit),
/// "session-id-str" (the id as decimal text), "url", "host" {"ip", "address":
/// "local"|"remote"}, "sdp-raw", "inuse" (bool), "status" ("OK"|"Stale"|"Undefined"),
/// "session" (SdpSession object). The host port has no JSON form, and reading never
/// derives the host fields from "url".
class AdvSessionEntry : public IJsonSerializable {
public:
    AdvSessionEntry() = default;
    ///@{
    /// Copied and moved member by member.
    AdvSessionEntry(const AdvSessionEntry&) = default;
    AdvSessionEntry(AdvSessionEntry&&) = default;
    AdvSessionEntry& operator=(const AdvSessionEntry&) = default;
    AdvSessionEntry& operator=(AdvSessionEntry&&) = default;
    ///@}
    ~AdvSessionEntry() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The session id of the SDP "o=" line, which is the entry's id.
    session_id_t getSessionId() const { return m_session.m_session_id; }
    /// The address of the advertising host, taken from the URL.
    IpAddress getHostIp() const { return m_host_ip; }
    /// The port of the URL (0 when it has none).
    unsigned short getHostPort() const { return m_host_port; }
    /// True when the advertising host is this device.
    bool isHostLocal() const { return m_host_is_local; }

    /// Marks whether a local receiver uses the session. Returns 0.
    int setInUse(bool inUse) {
        m_in_use = inUse;
        return 0;
    }
    /// True while a local receiver uses the session.
    bool isInUse() const { return m_in_use; }

    /// Sets the advertisement state (OK or STALE). Returns 0.
    int setStatus(AdvertisementState state) {
        m_status.m_state = state.m_state;
        return 0;
    }
    /// The advertisement state.
    AdvertisementState getStatus() const { return m_status; }

    /// Copies the SDP text as received into `sdp`. Returns 0.
    int getSdp(std::string& sdp) const {
        sdp = m_sdp;
        return 0;
    }
    /// Stores the SDP text as received; the parsed session is not touched. Returns 0.
    int setSdp(const std::string& sdp) {
        m_sdp = sdp;
        return 0;
    }

    /// Stores `url` and derives the host address, port and locality from its
    /// "scheme://a.b.c.d:port/path" form:
    ///  - no "//": only the URL is stored;
    ///  - the host text runs from after "//" to the next ':' (or the end); text that is
    ///    no IPv4 address is logged at level 2 and leaves the address unchanged;
    ///  - the locality is asked of the platform for the address held afterwards;
    ///  - the port text lies strictly between that ':' and the next '/'; it is read like
    ///    std::stoi with automatic base (decimal, 0x hexadecimal, leading 0 octal) and
    ///    its low 16 bits are kept; without a '/' the port keeps its value.
    /// A port text that holds no number (or overflows int) throws std::invalid_argument
    /// (std::out_of_range), and the URL is then not stored. Returns 0.
    int setSourceUrl(const std::string& url);
    /// The URL the advertisement came from.
    std::string getSourceUrl() const { return m_source_url; }

    /// Copies the parsed session into `session`. Returns 0.
    int getSession(SdpSession& session) const {
        session = m_session;
        return 0;
    }
    /// Stores a copy of the parsed session (and with it the entry's id). Returns 0.
    int setSession(SdpSession& session) {
        m_session = session;
        return 0;
    }

    bool m_in_use = false;         ///< A local receiver uses the session ("inuse").
    AdvertisementState m_status;   ///< OK, or STALE once withdrawn while in use ("status").
    std::string m_source_url;      ///< Where the advertisement came from ("url").
    IpAddress m_host_ip;           ///< Address of the advertising host ("host"/"ip").
    uint16_t m_host_port = 0;      ///< Port of the URL; it has no JSON form.
    bool m_host_is_local = false;  ///< The advertising host is this device ("host"/"address").
    SdpSession m_session;          ///< The parsed SDP ("session").
    std::string m_sdp;             ///< The SDP text as received ("sdp-raw").
};
