#pragma once

#include <cstdint>
#include <string>

/// One position of the saved configuration file table. A size of 0 means the position
/// holds no saved configuration. The path has no JSON form.
struct CfgFileInfo {
    uint32_t m_size = 0;  ///< Size of the saved file in bytes; 0 for an empty position ("size").
    std::string m_path;   ///< Path of the file; it has no JSON form.
    std::string m_name;   ///< Name that the user gave the configuration ("name").

    /// Positions are equal when size, path and name are.
    bool operator==(const CfgFileInfo& o) const {
        return m_size == o.m_size && m_path == o.m_path && m_name == o.m_name;
    }
};
