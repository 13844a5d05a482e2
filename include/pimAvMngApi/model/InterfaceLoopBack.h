#pragma once

#include "pimAvMngApi/model/DaifType.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Loop-back setting of one interface.
///
/// JSON form: {"enable": bool, "interface": {"type": integer, "string": text}}
/// Clients only write it; Deserialize reads the same form back for the side that
/// receives the request ("enable" false, interface 12 "auto" when missing).
class InterfaceLoopBack : public IJsonSerializable {
public:
    InterfaceLoopBack() = default;
    ~InterfaceLoopBack() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    bool m_enable = false;  ///< Loop-back on ("enable").
    DaifType m_interface;   ///< The interface ("interface").
};
