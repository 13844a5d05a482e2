#pragma once

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "Emulator.h"
#include "common/RequestServer.h"

// The emulator answering on a loopback port of its own, from its own thread, with its
// state in a temporary directory.
class ServedEmulator {
public:
    explicit ServedEmulator(const pimav::detail::ServerOptions& serverOptions = {}) {
        std::string dir = "/tmp/pimav-served-XXXXXX";
        m_dir = ::mkdtemp(dir.data());
        pimav::detail::EmulatorOptions options;
        options.configDir = m_dir;
        m_emulator = std::make_unique<pimav::detail::Emulator>(options);
        m_server = std::make_unique<pimav::detail::RequestServer>(m_context, "tcp://127.0.0.1:*", serverOptions);
        const std::string endpoint = m_server->endpoint();
        m_port = static_cast<uint16_t>(std::stoul(endpoint.substr(endpoint.rfind(':') + 1)));
        m_thread = std::thread([this] {
            m_server->serve(
                m_stop, [this](const pimav::detail::Request& r) { return m_emulator->handle(r); }, [] {}, 20);
        });
    }
    ~ServedEmulator() {
        m_stop = true;
        m_thread.join();
        std::filesystem::remove_all(m_dir);
    }
    ServedEmulator(const ServedEmulator&) = delete;
    ServedEmulator& operator=(const ServedEmulator&) = delete;

    uint16_t port() const { return m_port; }

private:
    std::string m_dir;
    zmq::context_t m_context;
    std::unique_ptr<pimav::detail::Emulator> m_emulator;
    std::unique_ptr<pimav::detail::RequestServer> m_server;
    uint16_t m_port = 0;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};
