#include "pimAvMngApi/platform/SystemDefaultCfg.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>

namespace {

bool isInterfaceAddr(uint32_t hostOrder) {
    struct ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        return false;
    }
    bool found = false;
    for (struct ifaddrs* it = list; it != nullptr && !found; it = it->ifa_next) {
        if (it->ifa_addr == nullptr || it->ifa_addr->sa_family != AF_INET) {
            continue;
        }
        const auto* in = reinterpret_cast<const struct sockaddr_in*>(it->ifa_addr);
        found = ntohl(in->sin_addr.s_addr) == hostOrder;
    }
    freeifaddrs(list);
    return found;
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
}
