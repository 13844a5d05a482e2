// avmng-emulator: a stand-in for the device's AV manager daemon. It answers the 56
// commands of the client library over ZeroMQ on loopback, keeps sessions, advertised
// sessions, saved configurations and device settings, and persists them in a directory
// so that a restart loses nothing. With --sap-* options it also learns and announces
// sessions over SAP (EmulatorSap).

#include <csignal>
#include <cstdlib>
#include <iostream>

#include <CLI/CLI.hpp>

#include "Emulator.h"
#include "EmulatorSap.h"
#include "common/ModuleOption.h"
#include "common/RequestServer.h"
#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/version.h"
#include "platform/CurveKeys.h"

using namespace pimav::detail;

namespace {

std::atomic<bool> g_stop{false};
std::atomic<bool> g_reload{false};

void onStop(int) { g_stop.store(true); }
void onHangUp(int) { g_reload.store(true); }

std::string defaultConfigDir() {
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') {
        return std::string(state) + "/avmng-emulator";
    }
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "/tmp") + "/.local/state/avmng-emulator";
}

// The secret key of a .key file; throws std::runtime_error naming the file and the fault.
std::string readServerKey(const std::string& path) {
    CurveKeyPair pair;
    const KeyStatus status = readCurveKeyFile(path, pair);
    if (!status.ok()) {
        throw std::runtime_error(status.error);
    }
    if (!status.warning.empty()) {
        Logger::log(4, "avmng-emulator: %s", status.warning.c_str());
    }
    return pair.secretKey;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"avmng-emulator: answers the AV manager commands of libpimAvMngApi over ZeroMQ",
                 "avmng-emulator"};
    app.set_version_flag("--version", "avmng-emulator " + std::string(pimAvMngApi::versionString()));
    std::string bind = "tcp://127.0.0.1:5559";
    EmulatorOptions options;
    options.configDir = defaultConfigDir();
    int logLevel = 4;
    app.add_option("--bind", bind, "ZeroMQ endpoint to bind")->capture_default_str();
    app.add_option("--advertise", options.advertiseDir,
                   "folder of .sdp files loaded as advertised sessions (file name = URL)")
        ->check(CLI::ExistingDirectory);
    app.add_option("--config-dir", options.configDir, "folder of saved configurations and running state")
        ->capture_default_str();
    app.add_option("--board", options.board, "board model (JUNIPER, JUNIPER_QH, DAMSON, ...)")
        ->capture_default_str()
        ->check([](const std::string& text) {
            BoardModelType model;
            return boardModelTypeFromString(text, model) ? std::string() : "unknown board model " + text;
        });
    app.add_option("--module", options.module, "bitstream module of the board")
        ->capture_default_str()
        ->check([](const std::string& text) {
            BitstreamType::module_t module;
            return moduleFromOption(text, module) ? std::string() : "unknown board module " + text;
        });
    app.add_option("--local-ip", options.localAddress, "the board's own address")
        ->capture_default_str()
        ->check(CLI::ValidIPV4);
    app.add_option("--log-level", logLevel, "log threshold 0..7")
        ->capture_default_str()
        ->check(CLI::Range(0, 7));
    app.add_option("--max-sessions", options.maxSessions, "sessions the device runs at most")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--max-advertised", options.maxAdvertised, "advertised sessions kept at most")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--max-state-bytes", options.maxStateBytes, "bytes of running state kept at most")
        ->capture_default_str()
        ->check(CLI::Range(size_t{4096}, size_t{1} << 30));
    ServerOptions serverOptions;
    std::string curveSecret;
    std::string curveClients;
    app.add_option("--max-request", serverOptions.maxRequestBytes, "largest request in bytes; larger ones are refused")
        ->check(CLI::Range(size_t{1024}, size_t{1} << 30))
        ->capture_default_str();
    auto* secretOption = app.add_option("--curve-secret", curveSecret, "serve CURVE with this .key file");
    app.add_option("--curve-clients", curveClients, "folder of client .pub keys (readonly/: read-only keys)")
        ->needs(secretOption);
    secretOption->needs(app.get_option("--curve-clients"));
    EmulatorSapOptions sapOptions;
    addSapOptions(app, sapOptions);
    // Usage errors: one line on stderr and exit status 2, as the other tools.
    app.failure_message([](const CLI::App*, const CLI::Error& e) {
        return "avmng-emulator: " + std::string(e.what()) + " (see --help)\n";
    });
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? 0 : 2;
    }

    Logger::getInstance()->setThreshold(logLevel);

    std::signal(SIGINT, onStop);
    std::signal(SIGTERM, onStop);
    std::signal(SIGHUP, onHangUp);
    std::signal(SIGPIPE, SIG_IGN);

    try {
        Emulator emulator(options);
        EmulatorSap sap(emulator, sapOptions);
        zmq::context_t context(1);
        ClientKeys clientKeys;
        if (!curveSecret.empty()) {
            serverOptions.curveSecretKey = readServerKey(curveSecret);
            clientKeys = ClientKeys::load(curveClients);
            serverOptions.clientKeys = &clientKeys;
            Logger::log(4, "avmng-emulator: CURVE with %zu full-access and %zu read-only client keys",
                        clientKeys.count(ClientKeys::Access::Full), clientKeys.count(ClientKeys::Access::ReadOnly));
        }
        raiseDescriptorLimit();
        RequestServer server(context, bind, serverOptions);
        sap.attach(server);
        Logger::log(4, "avmng-emulator: listening on %s (board %s, module %s, state in %s)", bind.c_str(),
                    options.board.c_str(), options.module.c_str(), options.configDir.c_str());
        std::cout << "avmng-emulator ready on " << bind << std::endl;
        server.serve(
            g_stop, [&](const Request& request) { return emulator.handle(request); },
            [&] {
                if (g_reload.exchange(false)) {
                    emulator.reloadAdvertised();
                }
                sap.syncSenders(EmulatorSap::Clock::now());
            });
        sap.withdrawAll();
        Logger::log(4, "avmng-emulator: stopping after %llu requests",
                    static_cast<unsigned long long>(server.requestsServed()));
    } catch (const zmq::error_t& e) {
        std::cerr << "avmng-emulator: cannot serve on " << bind << ": " << e.what() << std::endl;
        return 2;
    } catch (const std::exception& e) {
        std::cerr << "avmng-emulator: " << e.what() << std::endl;
        return 1;
    }
    return 0;
}
