#pragma once

#include <string>

/// Details of the last failed exchange of a ClientJsonApi: the negative code,
/// a readable text, and the command that was being sent.
struct ErrorReport {
    int code = 0;                    ///< The negative result code; 0 when nothing failed.
    std::string text;                ///< What went wrong, for a log line or a user.
    unsigned int commandId = 0;      ///< The command id of the failed exchange.
    std::string commandDescription;  ///< The command's description as getCommandDescription gives it.
};
