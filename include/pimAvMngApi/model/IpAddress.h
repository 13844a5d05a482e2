#pragma once

#include <cstdint>
#include <string>

#include <json/json.h>

/// An IPv4 address held as a 32-bit number in host byte order (the first byte of the
/// dotted form is the most significant); 0 means not set.
class IpAddress {
public:
    IpAddress() = default;
    /// An address from its host-order number.
    explicit IpAddress(uint32_t hostOrder) : m_addr(hostOrder) {}

    /// The address in host byte order.
    uint32_t get() const { return m_addr; }
    /// Sets the address from a host-order number.
    void set(uint32_t hostOrder) { m_addr = hostOrder; }
    /// True when the address is not 0.
    bool isSet() const { return m_addr != 0; }

    /// Dotted-quad text; 0 gives "0.0.0.0".
    std::string toString() const;

    /// Parses dotted-quad text. Returns false (and keeps the value) when the text is not
    /// a valid IPv4 address.
    bool fromString(const std::string& text);

    /// The reading rule of every record that holds an address: empty text keeps the
    /// value; invalid text logs "Error parsing IP [%s]: invalid IP address" at level 2
    /// and keeps the value.
    void readText(const std::string& text);

    /// Reads in[key] as text (empty when missing) and applies readText to it. A value
    /// of the wrong JSON kind (object, array) makes jsoncpp throw.
    void Deserialize(std::string key, Json::Value& in);

    ///@{
    /// Compare the host-order numbers.
    bool operator==(const IpAddress& other) const { return m_addr == other.m_addr; }
    bool operator!=(const IpAddress& other) const { return m_addr != other.m_addr; }
    bool operator<(const IpAddress& other) const { return m_addr < other.m_addr; }
    ///@}

private:
    uint32_t m_addr = 0;
};
