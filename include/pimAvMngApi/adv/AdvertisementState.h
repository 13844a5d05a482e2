#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// State of an advertisement, JSON key "status".
///
///   0 OK     "OK"     the advertisement is current
///   1 STALE  "Stale"  withdrawn while a local receiver still uses the session
///   other    "Undefined" (written only)
///
/// Reading: "Stale" gives STALE, any other text (and a missing key) gives OK.
class AdvertisementState : public IJsonSerializable {
public:
    /// The state codes.
    enum AdvertisementState_en : int32_t { OK = 0, STALE = 1 };

    AdvertisementState() = default;
    /// Implicit on purpose, so that a code can be passed where a state is expected:
    /// entry.setStatus(AdvertisementState::STALE).
    AdvertisementState(int32_t state) : m_state(state) {}  // NOLINT(google-explicit-constructor)
    ~AdvertisementState() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The state code.
    int32_t getState() const { return m_state; }
    /// Sets the state code; any value is kept as given.
    void setState(int32_t state) { m_state = state; }

    /// "OK", "Stale" or "Undefined".
    std::string toString() const;
    /// The reading rule: "Stale" gives STALE, anything else OK.
    void fromString(const std::string& text);

    ///@{
    /// States are equal when their codes are.
    bool operator==(const AdvertisementState& other) const { return m_state == other.m_state; }
    bool operator!=(const AdvertisementState& other) const { return m_state != other.m_state; }
    ///@}

    int32_t m_state = OK;  ///< The state code (OK, STALE, or any other value read as "Undefined").
};
