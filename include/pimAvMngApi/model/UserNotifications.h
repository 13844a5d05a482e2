#pragma once

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Flags the daemon raises for the user interface.
///
/// JSON form: {"running-is-not-saved": bool, "startup-applied": bool}; missing keys read
/// as false. Clients only read it; Serialize writes the same two keys for the side that
/// builds the reply.
class UserNotifications : public IJsonSerializable {
public:
    UserNotifications() = default;
    ~UserNotifications() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The running configuration differs from the saved one.
    bool m_running_is_not_saved = false;
    /// The start-up configuration has been applied.
    bool m_startup_applied = false;
};
