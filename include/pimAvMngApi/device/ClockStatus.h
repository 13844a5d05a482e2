#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// Lock state of the system clock and of its reference interface, and the reference in
/// use.
///
/// setClockInterfaceStatus keeps the system clock LOCKED exactly when the interface is
/// LOCKED and logs each change at level 5. Deserialize takes the codes as they come.
///
/// JSON form: {"system": {"code", "string"}, "interface": {"code", "string"},
/// "current-ref": {"code", "string"}}, codes as ints and their texts. Reading takes
/// each "code" as an unsigned number (defaults 1, 2 and 0); the texts are not read.
class ClockStatus : public IJsonSerializable {
public:
    /// States of the system clock, by code.
    enum ClockStatus_en : int32_t {
        SYSTEM_CLOCK_LOCKED = 0,   ///< "LOCKED"
        SYSTEM_CLOCK_FREERUN = 1,  ///< "FREERUN", also the text of any other value
    };
    /// States of the reference interface, by code.
    enum ClockInterfaceStatus_en : int32_t {
        INTERFACE_CLOCK_LOCKED = 0,     ///< "LOCKED"
        INTERFACE_CLOCK_ACQUIRING = 1,  ///< "ACQUIRING", also the text of any other value
        INTERFACE_CLOCK_FAIL = 2,       ///< "FAIL"
    };
    /// The references the clock can follow, by code.
    enum ClockCurrentRef_en : int32_t {
        CURRENT_REF_INTERNAL_OSCILLATOR = 0,  ///< "INTERNAL OSCILLATOR"
        CURRENT_REF_PTP_SLAVE = 1,            ///< "PTP SLAVE", also the text of any other value
        CURRENT_REF_EXTERNAL_REFERENCE = 2,   ///< "EXTERNAL REFERENCE"
    };

    ClockStatus() = default;
    ~ClockStatus() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Copies both states out: 0, or -4 (logged, nothing written) for a null pointer.
    int getClockStatus(ClockStatus_en* system, ClockInterfaceStatus_en* iface) const;
    /// Sets the interface state and the system state that follows from it, logging
    /// "System clock changed from %s to %s" and then "Interface clock changed from %s
    /// to %s" (level 5) for whichever changed. Returns 0.
    int setClockInterfaceStatus(ClockInterfaceStatus_en status);
    /// The reference in use.
    ClockCurrentRef_en getCurrentClockReference() const { return m_current_ref; }
    /// Logs "Clock reference changed from %d to %d" (level 5) when the value changes.
    /// Returns 0.
    int setCurrentClockReference(ClockCurrentRef_en ref);

    ///@{
    /// Write the text of `status` into `out`. Return 0.
    int getSystemClockStr(ClockStatus_en status, std::string& out) const;
    int getInterfaceClockStr(ClockInterfaceStatus_en status, std::string& out) const;
    ///@}
    ///@{
    /// The texts of the current system state, interface state and reference.
    std::string getCurrentSystemClockStr() const;
    std::string getCurrentInterfaceClockStr() const;
    std::string getCurrentReferenceClockStr() const;
    ///@}

    ///@{
    /// The texts of a system state, an interface state and a reference code; a value outside the enumeration
    /// gets the text noted there.
    static std::string systemClockText(int32_t status);
    static std::string interfaceClockText(int32_t status);
    static std::string currentRefText(int32_t ref);
    ///@}

    ClockStatus_en m_system_status = SYSTEM_CLOCK_FREERUN;  ///< System clock state ("system").
    /// Reference interface state ("interface").
    ClockInterfaceStatus_en m_interface_status = INTERFACE_CLOCK_FAIL;
    /// Reference in use ("current-ref").
    ClockCurrentRef_en m_current_ref = CURRENT_REF_INTERNAL_OSCILLATOR;
};
