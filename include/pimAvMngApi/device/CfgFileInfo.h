#pragma once

#include <cstdint>
#include <string>

/// One position of the saved configuration file table. A size of 0 means the position
/// holds no saved configuration. The path has no JSON form.
struct CfgFileInfo {
    uint32_t m_size = 0;
    std::string m_path;
    std::string m_name;

    bool operator==(const CfgFileInfo& o) const {
        return m_size == o.m_size && m_path == o.m_path && m_name == o.m_name;
    }
};
