#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

// CPU time (user and system) that process `pid` has used so far, in seconds, from
// /proc/PID/stat; 0 when the process is gone.
inline double cpuSeconds(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    const std::string stat((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // utime and stime are the 12th and 13th fields after the parenthesised name.
    std::istringstream fields(stat.substr(std::min(stat.rfind(')') + 1, stat.size())));
    std::string skip;
    for (int i = 0; i < 11; ++i) {
        fields >> skip;
    }
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return static_cast<double>(user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}
