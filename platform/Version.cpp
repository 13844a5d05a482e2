#include "pimAvMngApi/version.h"

namespace pimAvMngApi {

const char* versionString() {
    return PIMAV_VERSION_STRING;
}

}  // namespace pimAvMngApi
