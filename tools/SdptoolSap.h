#pragma once

// sdptool's SAP subcommands:
//
//   sdptool announce FILE... --to ADDR:PORT [--interval S] [--count N] [--delete]
//                    [--ttl N] [--interface IFADDR] [--compress] [--origin ADDR]
//   sdptool listen --on ADDR:PORT [--interface IFADDR] [--json] [--seconds S]

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace pimav::detail {

struct SapAnnounceArgs {
    std::vector<std::string> files;
    std::string to;
    double interval = 0;  // seconds; 0: RFC 2974's bandwidth rule
    unsigned count = 0;   // announcements per file; 0: until interrupted
    bool remove = false;
    int ttl = 15;
    std::string interfaceAddress;
    bool compress = false;
    std::string origin;  // default: the source address the route to --to picks
};

struct SapListenArgs {
    std::string on;
    std::string interfaceAddress;
    bool json = false;
    double seconds = 0;  // 0: until interrupted
};

struct SapSubcommands {
    CLI::App* announce = nullptr;
    CLI::App* listen = nullptr;
    SapAnnounceArgs announceArgs;
    SapListenArgs listenArgs;
};

// Registers both subcommands on `app`; their arguments land in `commands`.
void addSapSubcommands(CLI::App& app, SapSubcommands& commands);

// Exit status: 0 done; 1 a socket could not be set up or a packet not sent; 2 bad usage or
// an unreadable file.
int runAnnounce(const SapAnnounceArgs& args);
int runListen(const SapListenArgs& args);

}  // namespace pimav::detail
