#pragma once

// Reading a whole input file of a command-line tool, bytes as they are.

#include <fstream>
#include <sstream>
#include <string>

namespace pimav::detail {

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
