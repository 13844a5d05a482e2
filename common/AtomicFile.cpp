#include "common/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace pimav::detail {

namespace {

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
    std::string tmpl = path + ".tmpXXXXXX";
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
