#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// The video I/O module fitted to a board.
///
/// JSON form: {"module": text}. Texts written: "SDI-TR04", "SDI-ST2110", "HDMI-ST2110",
/// "SDI-BIDIR-ST2110", and "NA" for MODULE_NA or any other value. Reading accepts each
/// text in exactly upper or exactly lower case; any other text, and a missing key, give
/// MODULE_NA.
class BitstreamType : public IJsonSerializable {
public:
    /// The modules, by code.
    enum module_t : int32_t {
        MODULE_SDI_TR04 = 0,
        MODULE_SDI_ST2110 = 1,
        MODULE_HDMI_ST2110 = 2,
        MODULE_SDI_BIDIR_ST2110 = 3,
        MODULE_NA = 4,
    };

    BitstreamType() = default;
    /// A value holding `module`.
    explicit BitstreamType(module_t module) : m_module(module) {}
    ~BitstreamType() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The module.
    module_t getModule() const { return m_module; }
    /// Sets the module; any value is kept as given.
    void setModule(module_t module) { m_module = module; }

    /// The text of the module ("NA" for MODULE_NA and any value outside the table).
    std::string toString() const { return toString(m_module); }
    /// The text of `module` by the same rule.
    static std::string toString(module_t module);
    /// The module of a text by the reading rule above.
    static module_t fromString(const std::string& text);

    ///@{
    /// Values are equal when their modules are.
    bool operator==(const BitstreamType& o) const { return m_module == o.m_module; }
    bool operator!=(const BitstreamType& o) const { return m_module != o.m_module; }
    ///@}

    module_t m_module = MODULE_NA;  ///< The module ("module").
};
