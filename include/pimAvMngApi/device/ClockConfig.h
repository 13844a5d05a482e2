#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// The reference that the operator selects for the device's media clock.
///
/// JSON form: {"ref-type": code (int), "ref-str": text of the code, "" when it has none}.
/// Reading takes "ref-type" (default 4) as an unsigned number without a range check;
/// "ref-str" is not read.
class ClockConfig : public IJsonSerializable {
public:
    /// The selectable references, by code.
    enum ClockInterface_en : int32_t {
        CLOCK_REF_AUTO_PTP = 4,       ///< "AUTO - PTP BASED"
        CLOCK_REF_AUTO_EXTERNAL = 5,  ///< "AUTO - EXTERNAL REFERENCE"
    };

    ClockConfig() = default;
    ~ClockConfig() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The selected reference.
    ClockInterface_en getClockRefType() const { return m_clock_ref; }
    /// CLOCK_REF_AUTO_PTP is always taken. CLOCK_REF_AUTO_EXTERNAL is taken only on the
    /// LARCH boards (LARCH_MADI, LARCH_AES1616, LARCH_ANA88) of
    /// SystemDefaultCfg::getBoardModel(). Anything else returns -8, logs nothing and
    /// keeps the reference.
    int setClockReference(ClockInterface_en ref);
    /// Writes the text of `ref`. For a value without a text the output is unchanged and
    /// "Error unsupported case getClockRefTypeStr" is logged at level 2. Returns 0.
    int getClockRefTypeStr(ClockInterface_en ref, std::string& out) const;
    /// The text of the current reference, empty when it has none (the level 2 line of
    /// getClockRefTypeStr is then written).
    std::string getCurrentClockRefTypeStr() const;

    ClockInterface_en m_clock_ref = CLOCK_REF_AUTO_PTP;  ///< The selected reference ("ref-type").
};
