#pragma once

// The minimum check of an SDP text, shared by sdptool's subcommands.

#include <string>
#include <vector>

#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

namespace pimav::detail {

// The library's parser on one SDP text: 0 when it accepts `text`, else its negative code
// with `messages` filled.
inline int checkSdp(SdpConverter& converter, const std::string& text, std::vector<std::string>& messages) {
    ErrorAuxMsg::getInstance()->clear();
    const int rc = converter.parseSdp(text);
    messages = ErrorAuxMsg::getInstance()->getMessages();
    ErrorAuxMsg::getInstance()->clear();
    return rc;
}

}  // namespace pimav::detail
