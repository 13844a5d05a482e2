#include "pimAvMngApi/platform/SystemDefaultCfg.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>

namespace {

std::vector<uint32_t> readInterfaceAddrs() {
    std::vector<uint32_t> addrs;
    struct ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        return addrs;
    }
    for (struct ifaddrs* it = list; it != nullptr; it = it->ifa_next) {
        if (it->ifa_addr == nullptr || it->ifa_addr->sa_family != AF_INET) {
            continue;
        }
        const auto* in = reinterpret_cast<const struct sockaddr_in*>(it->ifa_addr);
        addrs.push_back(ntohl(in->sin_addr.s_addr));
    }
    freeifaddrs(list);
    return addrs;
}

}  // namespace

SystemDefaultCfg* SystemDefaultCfg::getInstance() {
    static SystemDefaultCfg instance;
    return &instance;
}

SystemDefaultCfg::SystemDefaultCfg() {
    resetToDefaults();
}

void SystemDefaultCfg::resetToDefaults() {
    m_board = BoardModel(MAPLE, BitstreamType::MODULE_NA);
    m_cfg_file_path = kDefaultCfgFilePath;
    resetLocalIpAddrs();
}

int SystemDefaultCfg::getCfgFilePath(std::string* path) const {
    if (path == nullptr) {
        return -4;
    }
    *path = m_cfg_file_path;
    return 0;
}

void SystemDefaultCfg::setCfgFilePath(const std::string& path) {
    m_cfg_file_path = path;
    if (m_cfg_file_path.empty() || m_cfg_file_path.back() != '/') {
        m_cfg_file_path += '/';
    }
}

bool SystemDefaultCfg::isLocalBoardIpAddr(IpAddress addr) const {
    if (!addr.isSet()) {
        return false;
    }
    if (std::find(m_extra_addrs.begin(), m_extra_addrs.end(), addr) != m_extra_addrs.end()) {
        return true;
    }
    return !m_replace_addrs && isInterfaceAddr(addr.get());
}

bool SystemDefaultCfg::isInterfaceAddr(uint32_t hostOrder) const {
    // Listing the interfaces costs tens of microseconds, and the advertised-sessions table
    // asks once per advertisement: keep the list for a short while.
    std::lock_guard<std::mutex> lock(m_if_mutex);
    const auto now = std::chrono::steady_clock::now();
    if (!m_if_valid || now - m_if_read_at > kInterfaceRefresh) {
        m_if_addrs = readInterfaceAddrs();
        m_if_read_at = now;
        m_if_valid = true;
    }
    return std::find(m_if_addrs.begin(), m_if_addrs.end(), hostOrder) != m_if_addrs.end();
}

void SystemDefaultCfg::addLocalIpAddr(IpAddress addr) {
    m_extra_addrs.push_back(addr);
}

void SystemDefaultCfg::setLocalIpAddrs(const std::vector<IpAddress>& addrs) {
    m_extra_addrs = addrs;
    m_replace_addrs = true;
}

void SystemDefaultCfg::resetLocalIpAddrs() {
    m_extra_addrs.clear();
    m_replace_addrs = false;
    std::lock_guard<std::mutex> lock(m_if_mutex);
    m_if_valid = false;
}
