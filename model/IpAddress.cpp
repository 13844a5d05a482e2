#include "pimAvMngApi/model/IpAddress.h"

#include <arpa/inet.h>

#include "pimAvMngApi/platform/Logger.h"

std::string IpAddress::toString() const {
    in_addr addr{};
    addr.s_addr = htonl(m_addr);
    char text[INET_ADDRSTRLEN];
    if (inet_ntop(AF_INET, &addr, text, sizeof(text)) == nullptr) {
        return "0.0.0.0";
    }
    return text;
}

bool IpAddress::fromString(const std::string& text) {
    in_addr addr{};
    if (inet_pton(AF_INET, text.c_str(), &addr) != 1) {
        return false;
    }
    m_addr = ntohl(addr.s_addr);
    return true;
}

void IpAddress::readText(const std::string& text) {
    if (text.empty()) {
        return;
    }
    if (!fromString(text)) {
        Logger::log(2, "Error parsing IP [%s]: invalid IP address", text.c_str());
    }
}

void IpAddress::Deserialize(std::string key, Json::Value& in) {
    readText(in.get(key, "").asString());
}
