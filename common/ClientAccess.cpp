#include "common/ClientAccess.h"

#include <dirent.h>

#include <cerrno>
#include <cstring>

#include <memory>
#include <stdexcept>
#include <vector>

#include "api/CommandTable.h"
#include "common/RequestServer.h"
#include "pimAvMngApi/platform/Logger.h"
#include "platform/CurveKeys.h"

namespace pimav::detail {

namespace {

constexpr char kReadOnlyFolder[] = "readonly";
constexpr char kZapVersion[] = "1.0";

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The names of the *.pub files in `dir`; a missing folder holds none when `optional`.
std::vector<std::string> publicKeyFiles(const std::string& dir, bool optional) {
    std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(dir.c_str()), ::closedir);
    if (!folder) {
        if (optional && errno == ENOENT) {
            return {};
        }
        throw std::runtime_error(dir + ": cannot read the client key folder (" + std::strerror(errno) + ")");
    }
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(folder.get())) {
        if (endsWith(entry->d_name, ".pub")) {
            names.push_back(dir + "/" + entry->d_name);
        }
    }
    return names;
}

const char* accessName(ClientKeys::Access access) {
    return access == ClientKeys::Access::Full ? "full access" : "read-only";
}

std::string commandName(uint32_t id) {
    std::string name;
    Aes67Commands::getCommandNameStr(static_cast<aes67_command_id_t>(id), name);
    return name;
}

}  // namespace

ClientKeys ClientKeys::load(const std::string& dir) {
    ClientKeys keys;
    std::map<std::string, std::string> files;  // key -> the file it came from
    for (const Access access : {Access::Full, Access::ReadOnly}) {
        const bool readOnly = access == Access::ReadOnly;
        for (const std::string& path : publicKeyFiles(readOnly ? dir + "/" + kReadOnlyFolder : dir, readOnly)) {
            std::string key;
            const KeyStatus status = readCurvePublicKeyFile(path, key);
            if (!status.ok()) {
                throw std::runtime_error(status.error);
            }
            const auto [it, added] = files.emplace(key, path);
            if (!added && keys.m_keys[key] != access) {
                throw std::runtime_error(path + ": the key of " + it->second + " cannot be read-only and not");
            }
            keys.m_keys[key] = access;
        }
    }
    return keys;
}

const ClientKeys::Access* ClientKeys::find(const std::string& key) const {
    const auto it = m_keys.find(key);
    return it != m_keys.end() ? &it->second : nullptr;
}

size_t ClientKeys::count(Access access) const {
    size_t n = 0;
    for (const auto& entry : m_keys) {
        n += entry.second == access ? 1 : 0;
    }
    return n;
}

ZapHandler::ZapHandler(zmq::context_t& context, const ClientKeys& keys)
    : m_keys(keys), m_socket(context, zmq::socket_type::rep) {
    m_socket.set(zmq::sockopt::linger, 0);
    m_socket.bind("inproc://zeromq.zap.01");
}

zmq::pollitem_t ZapHandler::pollItem() {
    return zmq::pollitem_t{m_socket.handle(), 0, ZMQ_POLLIN, 0};
}

void ZapHandler::answerWaiting() {
    // A request: version, request id, domain, address, routing id, mechanism, credentials.
    std::vector<zmq::message_t> frames;
    for (;;) {
        frames.clear();
        do {
            frames.emplace_back();
            if (!m_socket.recv(frames.back(), zmq::recv_flags::dontwait)) {
                return;
            }
        } while (frames.back().more());
        const bool curve = frames.size() == 7 && frames[5].to_string_view() == "CURVE";
        const std::string key = curve ? curveKeyText(frames[6].data(), frames[6].size()) : std::string();
        const std::string address = frames.size() > 3 ? frames[3].to_string() : std::string();
        const ClientKeys::Access* access = key.empty() ? nullptr : m_keys.find(key);
        if (access == nullptr) {
            Logger::log(2, "emulator: audit: client %s from %s refused: %s", key.empty() ? "-" : key.c_str(),
                        address.c_str(), curve ? "unknown key" : "not a CURVE handshake");
        } else {
            Logger::log(5, "emulator: audit: client %s from %s accepted (%s)", key.c_str(), address.c_str(),
                        accessName(*access));
        }
        const std::string requestId = frames.size() > 1 ? frames[1].to_string() : std::string();
        const std::vector<std::string> reply = {
            kZapVersion, requestId, access != nullptr ? "200" : "400", access != nullptr ? "OK" : "unknown key",
            access != nullptr ? key : std::string(), std::string()};
        for (size_t i = 0; i < reply.size(); ++i) {
            m_socket.send(zmq::buffer(reply[i]), i + 1 < reply.size() ? zmq::send_flags::sndmore
                                                                         : zmq::send_flags::none);
        }
    }
}

void checkClientAccess(const Request& request, const ClientKeys& keys) {
    if (request.clientKey.empty() || !commandChangesState(request.commandId)) {
        return;
    }
    const ClientKeys::Access* access = keys.find(request.clientKey);
    if (access == nullptr || *access == ClientKeys::Access::ReadOnly) {
        throw CommandError(kReadOnlyKey, "command " + std::to_string(request.commandId) + " (" +
                                             commandName(request.commandId) +
                                             ") changes state: this client's key may only read");
    }
}

void auditRequest(const Request& request, int result) {
    if (request.clientKey.empty() || !commandChangesState(request.commandId)) {
        return;
    }
    Logger::log(4, "emulator: audit: client %s command %u (%s) result %d", request.clientKey.c_str(),
                request.commandId, commandName(request.commandId).c_str(), result);
}

}  // namespace pimav::detail
