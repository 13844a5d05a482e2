#pragma once

// CURVE keys and the two key file forms that the client, avmngctl and the emulator share:
//
//   NAME.pub   one line: the public key as 40 Z85 characters
//   NAME.key   mode 0600, two lines: "public-key=<Z85>" and "secret-key=<Z85>"
//
// Readers are strict: anything but these exact forms is refused with a message naming the
// file and the fault. A secret file that group or others may read is accepted with a
// warning.

#include <cstddef>
#include <string>

namespace pimav::detail {

constexpr size_t kCurveKeyBytes = 32;     // a key in binary form
constexpr size_t kCurveKeyTextSize = 40;  // the same key as Z85 text

struct CurveKeyPair {
    std::string publicKey;  // Z85 text
    std::string secretKey;  // Z85 text
};

// Outcome of a key operation: `error` is empty on success; `warning` may accompany a success.
struct KeyStatus {
    std::string error;
    std::string warning;
    bool ok() const { return error.empty(); }
};

// True when this libzmq can do CURVE.
bool curveSupported();

// Why `text` is not a key in Z85 ("has 39 characters, a key has 40", "character '~' at
// position 7 is not Z85", ...); empty when it is one.
std::string z85KeyProblem(const std::string& text);

// Z85 text of a 32-byte binary key (the form ZAP hands over); empty for any other size.
std::string curveKeyText(const void* bytes, size_t size);

KeyStatus generateCurveKeyPair(CurveKeyPair& pair);

// Writes BASENAME.key (mode 0600) and BASENAME.pub. Existing files are never replaced:
// when either exists, nothing is written.
KeyStatus writeCurveKeyFiles(const std::string& basename, const CurveKeyPair& pair);

KeyStatus readCurvePublicKeyFile(const std::string& path, std::string& publicKey);

// Reads a NAME.key file and checks that its public key belongs to its secret key.
KeyStatus readCurveKeyFile(const std::string& path, CurveKeyPair& pair);

// A public key given as the path of an existing .pub file or, failing that, as its 40 Z85
// characters.
KeyStatus resolveCurvePublicKey(const std::string& textOrPath, std::string& publicKey);

}  // namespace pimav::detail
