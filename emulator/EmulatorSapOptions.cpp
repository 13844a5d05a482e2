// The --sap-* options of avmng-emulator (docs/emulator.md, "SAP").

#include <CLI/CLI.hpp>

#include "EmulatorSap.h"

namespace pimav::detail {

void addSapOptions(CLI::App& app, EmulatorSapOptions& options) {
    const CLI::Validator endpoint(
        [](std::string& text) {
            UdpEndpoint parsed;
            return UdpEndpoint::parse(text, parsed) ? std::string() : "needs IPv4 ADDR:PORT, not " + text;
        },
        "ADDR:PORT");
    const CLI::Validator address(
        [](std::string& text) {
            IpAddress parsed;
            return parsed.fromString(text) ? std::string() : "needs the interface's IPv4 address, not " + text;
        },
        "IFADDR");
    app.add_option("--sap-listen", options.listen,
                   "learn the sessions announced over SAP to ADDR:PORT (repeatable): a loopback or unicast "
                   "address is bound, a group such as 239.255.255.255:9875 joined")
        ->check(endpoint)
        ->allow_extra_args(false);
    app.add_option("--sap-announce", options.announce,
                   "announce every sender session over SAP to ADDR:PORT (repeatable)")
        ->check(endpoint)
        ->allow_extra_args(false);
    app.add_option("--sap-interface", options.interfaceAddress,
                   "IPv4 address of the interface that joins the groups and sends multicast announcements "
                   "(default: the routing table's choice)")
        ->check(address);
    app.add_option("--sap-timeout", options.timeout,
                   "seconds after which a session not announced again is removed (default: ten of its "
                   "announcement intervals, at least an hour)")
        ->check(CLI::PositiveNumber);
    app.add_option("--sap-interval", options.interval,
                   "seconds between announcements of a sender, before the random factor (default: RFC 2974's "
                   "bandwidth rule, at least 300)")
        ->check(CLI::PositiveNumber);
    app.add_option("--sap-ttl", options.ttl, "multicast TTL of the announcements")
        ->capture_default_str()
        ->check(CLI::Range(1, 255));
}

}  // namespace pimav::detail
