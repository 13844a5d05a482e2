#pragma once

// Helpers shared by the command-line tools.

#include <fstream>
#include <sstream>
#include <string>

namespace pimav::detail {

// Reads a whole input file, bytes as they are; false when it cannot be opened.
inline bool readWholeFile(const std::string& path, std::string& text) {
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
