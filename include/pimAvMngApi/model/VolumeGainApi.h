#pragma once

#include <cstdint>
#include <vector>

#include "pimAvMngApi/model/ChannelChanges.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// A channel-gain request: an optional session id and per-channel changes. Commands:
/// 52 talker gains, 53 listener gains, 54 read source gains, 55 read listener gains.
///
/// JSON form: {"session-id": unsigned 64-bit (only when not 0),
///             "channel-list": [{"channel-gain": real, "mute": bool, "position": unsigned}, ...]
///             (only when there are changes)}
///
/// Deserialize reads "session-id" unless the record was built with noSessionId = true
/// (listener requests name no session) or the value is empty; when "channel-list" is an
/// array its elements are appended ("channel-gain" 0, "mute" false, "position" 255 when
/// missing) and "GainApi ----- Message Deserialized" goes to the log (level 4) and to the
/// user messages. Values of the wrong kind make jsoncpp throw; earlier changes stay.
class VolumeGainApi : public IJsonSerializable {
public:
    ///@{
    /// The gain command ids: set talker gains, set listener gains, read source gains, read listener gains.
    static constexpr unsigned int kSetTalkerGain = 52;
    static constexpr unsigned int kSetListenerGain = 53;
    static constexpr unsigned int kGetSourceGain = 54;
    static constexpr unsigned int kGetListenerGain = 55;
    ///@}

    /// A request; `noSessionId` for listener requests, which name no session.
    explicit VolumeGainApi(bool noSessionId = false) : m_no_session_id(noSessionId) {}
    ~VolumeGainApi() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Checks a request document for a gain command; returns 0 or -13. Every rejection
    /// is logged at level 2 and added to the user messages with the same text:
    ///  - 52, 54 without "session-id": "Must specify the session-ID for this command";
    ///  - other commands than 52, 53, 55 then pass;
    ///  - 52, 53, 55 whose "channel-list" is missing or not an array: "The 'channel-list'
    ///    node is either missing or isn't an array." and -13 (the request cannot be
    ///    applied without its channels);
    ///  - 55 with an empty array: "The 'channel-list' array is empty.";
    ///  - 52, 53: the first element lacking a field gives "Every channel specified must
    ///    contain all 3 fields [channel-gain, position, mute]" then "Channel [%d] specified
    ///    is missing a field."; a non-number gain, a non-integer position or a non-bool
    ///    mute gives its own message naming the element's index.
    /// The request is not changed.
    static int Validate(Json::Value& request, unsigned int command);

    std::vector<ChannelChanges> m_changes;  ///< The channel changes ("channel-list"), in array order.
    uint64_t m_session_id = 0;              ///< "session-id"; 0 for none.
    bool m_no_session_id = false;           ///< Deserialize does not read "session-id".
};
