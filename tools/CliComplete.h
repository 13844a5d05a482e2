#pragma once

// What a tool's own CLI11 model says about a command line: the shell completion and the
// usage errors. `TOOL --complete WORD... CURRENT` prints, one a line, the words that can
// stand at CURRENT after the words before it. The bash completion script asks the installed
// program, so the subcommands, options and command names are written once, in the program.

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace pimav::detail {

// Candidates for a positional argument of the subcommand `subcommand`.
using PositionalWords = std::function<std::vector<std::string>(const std::string& subcommand)>;

// True when argv[1] is "--complete"; the candidates starting with the last word are then
// written to `out`. Nothing is written where a file name or a free value is expected, so the
// shell falls back to its own file completion.
bool completeCommandLine(const CLI::App& app, int argc, const char* const* argv, std::ostream& out,
                         const PositionalWords& positional = {});

// Handles a failed parse: help and version are printed as CLI11 does (status 0); any other
// error is one line on `err`, "TOOL: message", with status 2. A word where a subcommand is
// expected that names none gives "unknown command 'WORD'" and the list of subcommands.
int reportParseError(const CLI::App& app, const CLI::ParseError& error, int argc, const char* const* argv,
                     std::ostream& err);

}  // namespace pimav::detail
