#include "common/AtomicFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>

namespace pimav::detail {

namespace {

// The temporary file of a write is the target's path with this suffix, its X's replaced
// by mkstemp.
constexpr char kTemporarySuffix[] = ".tmpXXXXXX";
constexpr size_t kRandomLetters = 6;

std::string directoryOf(const std::string& path) {
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return ".";
    }
    if (slash == 0) {
        return "/";
    }
    return path.substr(0, slash);
}

bool writeAll(int fd, const std::string& text) {
    const char* data = text.data();
    size_t left = text.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, data, left);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        data += n;
        left -= static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

bool writeFileAtomically(const std::string& path, const std::string& text, std::string& error) {
    const std::string dir = directoryOf(path);
    std::string tmpl = path + kTemporarySuffix;
    int fd = ::mkstemp(&tmpl[0]);
    if (fd < 0) {
        error = "cannot create temporary file for " + path + ": " + std::strerror(errno);
        return false;
    }
    const std::string tmp = tmpl;
    auto fail = [&](const char* step) {
        error = std::string(step) + " " + tmp + ": " + std::strerror(errno);
        if (fd >= 0) {
            ::close(fd);
        }
        ::unlink(tmp.c_str());
        return false;
    };
    if (::fchmod(fd, 0644) != 0) {
        return fail("cannot set mode of");
    }
    if (!writeAll(fd, text)) {
        return fail("cannot write");
    }
    if (::fsync(fd) != 0) {
        return fail("cannot flush");
    }
    if (::close(fd) != 0) {
        fd = -1;
        return fail("cannot close");
    }
    fd = -1;
    if (::rename(tmp.c_str(), path.c_str()) != 0) {
        return fail("cannot rename");
    }
    const int dirfd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY);
    if (dirfd >= 0) {
        // The rename is done; a directory that cannot be flushed (some file systems
        // refuse) does not undo it.
        ::fsync(dirfd);
        ::close(dirfd);
    }
    return true;
}

bool readWholeFile(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::ostringstream buffer;
    buffer << in.rdbuf();
    if (in.bad()) {
        return false;
    }
    text = buffer.str();
    return true;
}

FileRead readRegularFile(const std::string& path, size_t maxBytes, std::string& text, std::string& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT) {
            return FileRead::kAbsent;
        }
        error = std::strerror(errno);
        return FileRead::kRefused;
    }
    struct stat st {};
    std::string contents;
    if (::fstat(fd, &st) != 0) {
        error = std::strerror(errno);
    } else if (!S_ISREG(st.st_mode)) {
        error = "not a regular file";
    } else if (static_cast<uint64_t>(st.st_size) > maxBytes) {
        error = "larger than " + std::to_string(maxBytes) + " bytes";
    } else {
        // Read one byte past the limit, so that a file growing meanwhile is caught too.
        char buffer[65536];
        while (contents.size() <= maxBytes) {
            const ssize_t n = ::read(fd, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR) {
                continue;
            }
            if (n < 0) {
                error = std::strerror(errno);
                break;
            }
            if (n == 0) {
                break;
            }
            contents.append(buffer, static_cast<size_t>(n));
        }
        if (error.empty() && contents.size() > maxBytes) {
            error = "larger than " + std::to_string(maxBytes) + " bytes";
        }
    }
    ::close(fd);
    if (!error.empty()) {
        return FileRead::kRefused;
    }
    text = std::move(contents);
    return FileRead::kRead;
}

std::vector<std::string> removeLeftoverTemporaryFiles(const std::string& dir) {
    const std::string marker(kTemporarySuffix, sizeof(kTemporarySuffix) - 1 - kRandomLetters);
    std::vector<std::string> removed;
    DIR* d = ::opendir(dir.c_str());
    if (d == nullptr) {
        return removed;
    }
    while (const dirent* entry = ::readdir(d)) {
        const std::string name = entry->d_name;
        const size_t tail = marker.size() + kRandomLetters;
        if (name.size() > tail && name.compare(name.size() - tail, marker.size(), marker) == 0 &&
            ::unlink((dir + "/" + name).c_str()) == 0) {
            removed.push_back(name);
        }
    }
    ::closedir(d);
    return removed;
}

bool makeDirectories(const std::string& path) {
    if (path.empty()) {
        return false;
    }
    std::string partial;
    size_t pos = 0;
    while (pos != std::string::npos) {
        pos = path.find('/', pos + 1);
        partial = path.substr(0, pos);
        if (partial.empty()) {
            continue;
        }
        if (::mkdir(partial.c_str(), 0755) != 0 && errno != EEXIST) {
            return false;
        }
    }
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace pimav::detail
