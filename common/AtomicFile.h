#pragma once

#include <cstddef>
#include <string>
#include <vector>

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

// Reads a whole file that must be a regular file of at most `maxBytes` bytes. A FIFO,
// device or folder is refused without being read (it is opened without blocking), and so
// is a longer file, so a reader never waits on a pipe or reads without end.
enum class FileRead { kRead, kAbsent, kRefused };
FileRead readRegularFile(const std::string& path, size_t maxBytes, std::string& text, std::string& error);

// Removes the temporary files that writeFileAtomically leaves in `dir` when the process
// dies in the middle of a write; returns their names.
std::vector<std::string> removeLeftoverTemporaryFiles(const std::string& dir);

// Creates a directory and its parents (like mkdir -p). True if it exists afterwards.
bool makeDirectories(const std::string& path);

}  // namespace pimav::detail
