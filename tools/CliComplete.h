#pragma once

// Shell completion taken from a tool's own CLI11 model: `TOOL --complete WORD... CURRENT`
// prints, one a line, the words that can stand at CURRENT after the words before it. The
// bash completion script asks the installed program, so the subcommands, options and
// command names are written once, in the program.

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

}  // namespace pimav::detail
