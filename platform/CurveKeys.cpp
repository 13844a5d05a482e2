#include "platform/CurveKeys.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zmq.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace pimav::detail {

namespace {

constexpr char kZ85Alphabet[] =
    "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.-:+=^!/*?&<>()[]{}@%$#";
constexpr char kPublicPrefix[] = "public-key=";
constexpr char kSecretPrefix[] = "secret-key=";
// Both forms are far below this; anything larger is not a key file.
constexpr off_t kMaxKeyFileSize = 1024;

std::string systemError(const std::string& path, const char* what) {
    return path + ": " + what + " (" + std::strerror(errno) + ")";
}

std::string octalMode(mode_t mode) {
    char text[8];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode & 07777));
    return text;
}

// Reads a small regular file. A FIFO or device is refused without blocking on it.
KeyStatus readKeyText(const std::string& path, std::string& text, mode_t& mode) {
    KeyStatus status;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        status.error = systemError(path, "cannot open");
        return status;
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        status.error = systemError(path, "cannot read");
    } else if (!S_ISREG(st.st_mode)) {
        status.error = path + ": not a regular file";
    } else if (st.st_size > kMaxKeyFileSize) {
        status.error = path + ": too large for a key file (" + std::to_string(st.st_size) + " bytes)";
    } else {
        mode = st.st_mode;
        text.assign(static_cast<size_t>(st.st_size), '\0');
        const ssize_t got = ::read(fd, text.data(), text.size());
        if (got < 0) {
            status.error = systemError(path, "cannot read");
        }
        text.resize(got < 0 ? 0 : static_cast<size_t>(got));
    }
    ::close(fd);
    return status;
}

// Reads a key file of exactly `count` lines (the last one may lack its newline); `form`
// describes them for the refusal.
KeyStatus readKeyLines(const std::string& path, size_t count, const char* form,
                       std::vector<std::string>& lines, mode_t& mode) {
    std::string text;
    KeyStatus status = readKeyText(path, text, mode);
    size_t start = 0;
    while (status.ok() && start < text.size()) {
        const size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    if (status.ok() && lines.size() != count) {
        status.error = path + ": must hold " + form + ", holds " + std::to_string(lines.size());
    }
    return status;
}

// "public-key=<Z85>" on line `index`: the key, or the error naming the file and line.
bool keyLine(const std::string& path, const std::vector<std::string>& lines, size_t index, const char* prefix,
             std::string& key, std::string& error) {
    const std::string where = path + ": line " + std::to_string(index + 1) + " ";
    if (lines[index].rfind(prefix, 0) != 0) {
        error = where + "must be \"" + prefix + "<40 Z85 characters>\"";
        return false;
    }
    key = lines[index].substr(std::strlen(prefix));
    const std::string problem = z85KeyProblem(key);
    if (!problem.empty()) {
        error = where + "(" + std::string(prefix, std::strlen(prefix) - 1) + "): " + problem;
        return false;
    }
    return true;
}

bool exists(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0;
}

// Creates `path` (it must not exist) with `mode` and writes `text` to disk.
bool writeNewFile(const std::string& path, const std::string& text, mode_t mode, std::string& error) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0) {
        error = systemError(path, "cannot create");
        return false;
    }
    // The exact mode whatever the umask: a secret stays readable by its owner only.
    bool ok = ::fchmod(fd, mode) == 0 &&
              ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && ::fsync(fd) == 0;
    if (!ok) {
        error = systemError(path, "cannot write");
    }
    if (::close(fd) != 0 && ok) {
        error = systemError(path, "cannot write");
        ok = false;
    }
    if (!ok) {
        ::unlink(path.c_str());
    }
    return ok;
}

}  // namespace

bool curveSupported() {
    return zmq_has("curve") != 0;
}

std::string z85KeyProblem(const std::string& text) {
    if (text.size() != kCurveKeyTextSize) {
        return "has " + std::to_string(text.size()) + " characters, a Z85 key has " +
               std::to_string(kCurveKeyTextSize);
    }
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\0' || std::strchr(kZ85Alphabet, text[i]) == nullptr) {
            char shown[8];
            std::snprintf(shown, sizeof shown, "\\x%02x", static_cast<unsigned char>(text[i]));
            const bool printable = text[i] > ' ' && text[i] < 127;
            return "character '" + (printable ? std::string(1, text[i]) : std::string(shown)) +
                   "' at position " + std::to_string(i + 1) + " is not Z85";
        }
    }
    unsigned char bytes[kCurveKeyBytes];
    if (zmq_z85_decode(bytes, text.c_str()) == nullptr) {
        return "is not a valid Z85 value (a 5-character group exceeds 32 bits)";
    }
    return std::string();
}

std::string curveKeyText(const void* bytes, size_t size) {
    if (bytes == nullptr || size != kCurveKeyBytes) {
        return std::string();
    }
    char text[kCurveKeyTextSize + 1];
    if (zmq_z85_encode(text, static_cast<const uint8_t*>(bytes), size) == nullptr) {
        return std::string();
    }
    return std::string(text, kCurveKeyTextSize);
}

KeyStatus generateCurveKeyPair(CurveKeyPair& pair) {
    KeyStatus status;
    char publicKey[kCurveKeyTextSize + 1];
    char secretKey[kCurveKeyTextSize + 1];
    if (!curveSupported() || zmq_curve_keypair(publicKey, secretKey) != 0) {
        status.error = "this libzmq cannot generate CURVE keys (built without CURVE)";
        return status;
    }
    pair.publicKey.assign(publicKey, kCurveKeyTextSize);
    pair.secretKey.assign(secretKey, kCurveKeyTextSize);
    return status;
}

KeyStatus writeCurveKeyFiles(const std::string& basename, const CurveKeyPair& pair) {
    KeyStatus status;
    const std::string pubPath = basename + ".pub";
    const std::string keyPath = basename + ".key";
    for (const std::string* path : {&keyPath, &pubPath}) {
        if (exists(*path)) {
            status.error = *path + ": already exists (key files are never replaced)";
            return status;
        }
    }
    const std::string keyText = kPublicPrefix + pair.publicKey + "\n" + kSecretPrefix + pair.secretKey + "\n";
    if (!writeNewFile(keyPath, keyText, 0600, status.error)) {
        return status;
    }
    if (!writeNewFile(pubPath, pair.publicKey + "\n", 0644, status.error)) {
        ::unlink(keyPath.c_str());
    }
    return status;
}

KeyStatus readCurvePublicKeyFile(const std::string& path, std::string& publicKey) {
    std::vector<std::string> lines;
    mode_t mode = 0;
    KeyStatus status = readKeyLines(path, 1, "one line (the public key in Z85)", lines, mode);
    if (!status.ok()) {
        return status;
    }
    const std::string problem = z85KeyProblem(lines[0]);
    if (!problem.empty()) {
        status.error = path + ": public key " + problem;
        return status;
    }
    publicKey = lines[0];
    return status;
}

KeyStatus readCurveKeyFile(const std::string& path, CurveKeyPair& pair) {
    std::vector<std::string> lines;
    mode_t mode = 0;
    KeyStatus status = readKeyLines(path, 2, "two lines (public-key=, secret-key=)", lines, mode);
    CurveKeyPair read;
    if (!status.ok() || !keyLine(path, lines, 0, kPublicPrefix, read.publicKey, status.error) ||
        !keyLine(path, lines, 1, kSecretPrefix, read.secretKey, status.error)) {
        return status;
    }
    char derived[kCurveKeyTextSize + 1];
    if (zmq_curve_public(derived, read.secretKey.c_str()) != 0) {
        status.error = path + ": this libzmq cannot check CURVE keys (built without CURVE)";
        return status;
    }
    if (read.publicKey != std::string(derived, kCurveKeyTextSize)) {
        status.error = path + ": public-key does not belong to secret-key";
        return status;
    }
    if ((mode & 077) != 0) {
        status.warning =
            path + ": secret key readable by group or others (mode " + octalMode(mode) + "); chmod 600 it";
    }
    pair = std::move(read);
    return status;
}

KeyStatus resolveCurvePublicKey(const std::string& textOrPath, std::string& publicKey) {
    if (exists(textOrPath)) {
        return readCurvePublicKeyFile(textOrPath, publicKey);
    }
    KeyStatus status;
    const std::string problem = z85KeyProblem(textOrPath);
    if (!problem.empty()) {
        status.error = "\"" + textOrPath +
                       "\" is neither an existing .pub file nor a public key in Z85 (it " + problem + ")";
        return status;
    }
    publicKey = textOrPath;
    return status;
}

}  // namespace pimav::detail
