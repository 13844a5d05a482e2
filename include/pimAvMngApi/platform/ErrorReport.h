#pragma once

#include <string>

/// Details of the last failed exchange of a ClientJsonApi: the negative code,
/// a readable text, and the command that was being sent.
struct ErrorReport {
    int code = 0;
    std::string text;
    unsigned int commandId = 0;
    std::string commandDescription;
};
