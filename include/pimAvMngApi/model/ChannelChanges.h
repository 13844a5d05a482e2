#pragma once

#include <cstdint>

/// One channel's gain and mute change inside a gain request ("channel-gain", "position",
/// "mute"). Constructed as gain 0, position 255 (the value a request without
/// "position" gives), not muted.
class ChannelChanges {
public:
    ChannelChanges() = default;
    /// A change of `gain` at `position`, muted or not.
    ChannelChanges(double gain, uint32_t position, bool mute)
        : m_gain(gain), m_position(position), m_mute(mute) {}
    ///@{
    /// Copied and assigned member by member.
    ChannelChanges(const ChannelChanges&) = default;
    ChannelChanges& operator=(const ChannelChanges&) = default;
    ///@}
    virtual ~ChannelChanges() {}

    double m_gain = 0.0;        ///< Gain of the channel ("channel-gain").
    uint32_t m_position = 255;  ///< Channel position ("position"); 255 when the request has none.
    bool m_mute = false;        ///< The channel is muted ("mute").
};
