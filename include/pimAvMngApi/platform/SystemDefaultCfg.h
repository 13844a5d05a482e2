#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/model/IpAddress.h"

/// Process-wide defaults of the board this process runs on: its model, the directory of
/// the saved configuration files and its own network addresses.
///
/// Defaults: a MAPLE board (integrated video, so all 22 video formats including the
/// 2160p ones) with no pluggable module (MODULE_NA), and the configuration directory
/// "/etc/aes67/". A host sets the real board at start-up with setBoardModel; tests use
/// the setters to reach every board-dependent path.
///
/// The local addresses are those of the machine's IPv4 interfaces (read with getifaddrs
/// and kept for one second, so addresses that appear later count soon after). Tests can add addresses to
/// them or replace them with a fixed list.
///
/// The setters are meant for start-up and tests: configure before other threads use
/// the defaults.
class SystemDefaultCfg {
public:
    /// The process-wide defaults.
    static SystemDefaultCfg* getInstance();

    /// A copy of the board's record.
    BoardModel getBoardModel() const { return m_board; }
    /// Replaces the board's record.
    void setBoardModel(const BoardModel& board) { m_board = board; }

    /// Writes the configuration directory, ending with "/", into *path. Returns 0, or
    /// -4 for a null pointer.
    int getCfgFilePath(std::string* path) const;
    /// Sets the configuration directory; a "/" is appended when missing.
    void setCfgFilePath(const std::string& path);

    /// True when the address belongs to one of this machine's interfaces (or the test
    /// list). 0 is never local.
    bool isLocalBoardIpAddr(IpAddress addr) const;

    /// Counts `addr` as local in addition to the interface addresses.
    void addLocalIpAddr(IpAddress addr);
    /// Uses exactly `addrs` as the local addresses, ignoring the interfaces.
    void setLocalIpAddrs(const std::vector<IpAddress>& addrs);
    /// Back to the interface addresses only.
    void resetLocalIpAddrs();

    /// Restores every default (board, directory, addresses).
    void resetToDefaults();

    SystemDefaultCfg(const SystemDefaultCfg&) = delete;
    SystemDefaultCfg& operator=(const SystemDefaultCfg&) = delete;

    /// The configuration directory until setCfgFilePath is called.
    static constexpr const char* kDefaultCfgFilePath = "/etc/aes67/";

private:
    SystemDefaultCfg();

    BoardModel m_board;
    std::string m_cfg_file_path;
    std::vector<IpAddress> m_extra_addrs;
    bool m_replace_addrs = false;

    static constexpr std::chrono::seconds kInterfaceRefresh{1};
    bool isInterfaceAddr(uint32_t hostOrder) const;
    mutable std::mutex m_if_mutex;
    mutable std::vector<uint32_t> m_if_addrs;
    mutable std::chrono::steady_clock::time_point m_if_read_at;
    mutable bool m_if_valid = false;
};
