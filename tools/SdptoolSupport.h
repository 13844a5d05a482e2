#pragma once

// Helpers shared by sdptool's subcommands: reading a file and the minimum check of an SDP text.

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

namespace pimav::detail {

inline bool readFile(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::ostringstream buffer;
    buffer << in.rdbuf();
    text = buffer.str();
    return true;
}

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
