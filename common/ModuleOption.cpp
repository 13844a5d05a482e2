#include "common/ModuleOption.h"

#include <algorithm>

namespace pimav::detail {

std::string moduleOptionName(BitstreamType::module_t module) {
    std::string name = "MODULE_" + BitstreamType::toString(module);
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

bool moduleFromOption(const std::string& text, BitstreamType::module_t& module) {
    for (int32_t code = BitstreamType::MODULE_SDI_TR04; code <= BitstreamType::MODULE_NA; ++code) {
        const auto candidate = static_cast<BitstreamType::module_t>(code);
        if (text == moduleOptionName(candidate) || text == BitstreamType::toString(candidate)) {
            module = candidate;
            return true;
        }
    }
    return false;
}

}  // namespace pimav::detail
