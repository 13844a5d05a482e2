#pragma once

#include <string>

namespace pimav::detail {

// Writes `text` to `path` so that a reader (or a restart after a crash) sees either the
// old contents or the new ones, never a torn file: the text goes to a temporary file in
// the same directory, which is flushed to disk, renamed over the target, and then the
// directory itself is flushed so that the rename survives a power cut.
// Returns true on success; on failure `error` tells which step failed and the target is
// untouched.
bool writeFileAtomically(const std::string& path, const std::string& text, std::string& error);

// Reads a whole file into `text`. False if it cannot be opened or read.
bool readWholeFile(const std::string& path, std::string& text);

// Creates a directory and its parents (like mkdir -p). True if it exists afterwards.
bool makeDirectories(const std::string& path);

}  // namespace pimav::detail
