#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "pimAvMngApi/api/AvMngApiJson.h"
#include "platform/CurveKeys.h"

// CURVE keys for a daemon and its clients in a temporary folder: NAME.key and NAME.pub for
// "server", "full", "readonly" and "unknown", and the daemon's client folder "clients"
// holding full.pub and readonly/readonly.pub ("unknown" is in none).
class CurveKeyFolder {
public:
    CurveKeyFolder() {
        std::string dir = "/tmp/pimav-curve-XXXXXX";
        if (::mkdtemp(dir.data()) == nullptr) {
            throw std::runtime_error("mkdtemp failed");
        }
        m_dir = dir;
        std::filesystem::create_directories(m_dir + "/clients/readonly");
        for (const char* name : {"server", "full", "readonly", "unknown"}) {
            pimav::detail::CurveKeyPair pair;
            if (!pimav::detail::generateCurveKeyPair(pair).ok() ||
                !pimav::detail::writeCurveKeyFiles(path(name), pair).ok()) {
                throw std::runtime_error("cannot write CURVE keys in " + m_dir);
            }
        }
        std::filesystem::copy_file(path("full.pub"), path("clients/full.pub"));
        std::filesystem::copy_file(path("readonly.pub"), path("clients/readonly/readonly.pub"));
    }
    ~CurveKeyFolder() { std::filesystem::remove_all(m_dir); }
    CurveKeyFolder(const CurveKeyFolder&) = delete;
    CurveKeyFolder& operator=(const CurveKeyFolder&) = delete;

    std::string path(const std::string& name) const { return m_dir + "/" + name; }
    // The public key (Z85) of NAME.
    std::string publicKey(const std::string& name) const {
        std::string key;
        pimav::detail::readCurvePublicKeyFile(path(name + ".pub"), key);
        return key;
    }

    // A client of the daemon on 127.0.0.1:`port` with the keys of NAME, initialised in
    // `context`, with a time limit of 20 s.
    std::unique_ptr<AvMngApiJson> client(const std::string& name, int port, zmq::context_t& context) const {
        auto api = std::make_unique<AvMngApiJson>();
        api->ipcPort = static_cast<uint32_t>(port);
        api->setClientTimeoutMs(20000);
        api->setCurveKeys(path("server.pub"), path(name + ".key"));
        std::string host = "127.0.0.1";
        if (api->init(context, host) != 0) {
            throw std::runtime_error("cannot set up the client " + name);
        }
        return api;
    }

private:
    std::string m_dir;
};
