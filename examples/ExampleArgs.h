#pragma once

// Where the example host programs find the AV manager: --host/--port on the command line,
// else the AVMNG_HOST and AVMNG_PORT environment variables, else 127.0.0.1:5559 (the
// device's own daemon, or avmng-emulator on a development machine).

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include "pimAvMngApi/version.h"

struct ExampleArgs {
    // True when the one argument is --version: prints the program's name and the version of
    // the library it runs with, as every installed program does.
    static bool printVersion(int argc, char** argv) {
        if (argc != 2 || std::string(argv[1]) != "--version") {
            return false;
        }
        const std::string path = argv[0];
        std::cout << path.substr(path.find_last_of('/') + 1) << " " << pimAvMngApi::versionString() << "\n";
        return true;
    }

    std::string host = "127.0.0.1";
    unsigned port = 5559;
    // Every other "--key value" pair, for the program's own options.
    std::map<std::string, std::string> options;

    // False on a lone option, an option without "--" or a port outside 1..65535.
    bool parse(int argc, char** argv) {
        if (const char* h = std::getenv("AVMNG_HOST")) {
            host = h;
        }
        if (const char* p = std::getenv("AVMNG_PORT")) {
            port = static_cast<unsigned>(std::strtoul(p, nullptr, 10));
        }
        for (int i = 1; i < argc; i += 2) {
            const std::string key = argv[i];
            if (i + 1 >= argc || key.rfind("--", 0) != 0) {
                return false;
            }
            const std::string value = argv[i + 1];
            if (key == "--host") {
                host = value;
            } else if (key == "--port") {
                port = static_cast<unsigned>(std::strtoul(value.c_str(), nullptr, 10));
            } else {
                options[key.substr(2)] = value;
            }
        }
        return port > 0 && port < 65536;
    }

    std::string get(const std::string& key, const std::string& fallback) const {
        auto it = options.find(key);
        return it != options.end() ? it->second : fallback;
    }
};
