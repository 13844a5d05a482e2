#pragma once

// The board module as the programs' command lines name it.

#include <string>

#include "pimAvMngApi/device/BitstreamType.h"

namespace pimav::detail {

// The enumerator name of a module ("MODULE_SDI_BIDIR_ST2110"): "MODULE_" and the module's
// word with '_' for '-'. The emulator keeps this form for its file prefixes.
std::string moduleOptionName(BitstreamType::module_t module);

// The module a text names: its enumerator name or its word ("SDI-BIDIR-ST2110"). False for
// any other text, `module` then untouched.
bool moduleFromOption(const std::string& text, BitstreamType::module_t& module);

}  // namespace pimav::detail
