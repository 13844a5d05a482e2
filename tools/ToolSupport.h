#pragma once

// Helpers shared by the command-line tools.

#include <fstream>
#include <sstream>
#include <string>

namespace pimav::detail {

// The whole file as bytes; false when it cannot be opened.
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

}  // namespace pimav::detail
