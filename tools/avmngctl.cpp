// avmngctl: command-line client of the AV manager daemon (or of avmng-emulator).
//
//   avmngctl [OPTIONS] send <id|name> [JSON|@file]
//   avmngctl [OPTIONS] commands | keygen BASENAME
//   avmngctl [OPTIONS] sessions | advertised | clock | files | alarms
//   avmngctl [OPTIONS] add-source FILE.json | add-destination FILE.json
//   avmngctl [OPTIONS] remove ID | sdp ID | save POS NAME [--startup] | load POS|default
//
//   OPTIONS (before or after the verb): --host H --port P --timeout MS (defaults from
//   AVMNG_HOST, AVMNG_PORT, AVMNG_TIMEOUT_MS), --server-key KEY --key-file FILE, -j/--json,
//   --compact, -q/--quiet, -v.
//
// Every exchange goes through the library's JSON layer (AvMngApiJson); the typed verbs
// build their requests from, and read their replies into, the library's records.
// Exit status: 0 on success; 1 when the daemon refused the request or the transport
// failed (one line on stderr with the negative code and its meaning); 2 for bad usage or
// an unusable input (file, document, host name).

#include <netdb.h>
#include <sys/socket.h>

#include <climits>
#include <cstdio>
#include <iostream>

#include <CLI/CLI.hpp>

#include "CliComplete.h"
#include "CtlSupport.h"
#include "UserDocument.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/version.h"
#include "platform/CurveKeys.h"

using namespace pimav::detail;

namespace {

// A whole number from `min` to `max`, refused with a message that says so.
CLI::Validator wholeNumber(long long min, long long max) {
    const std::string range = std::to_string(min) + " to " + std::to_string(max);
    return CLI::Validator(
        [=](std::string& text) {
            char* end = nullptr;
            errno = 0;
            const long long value = std::strtoll(text.c_str(), &end, 10);
            if (text.empty() || *end != '\0' || errno != 0 || value < min || value > max) {
                return "must be a whole number from " + range + ", not " + text;
            }
            return std::string();
        },
        range);
}

// The daemon's host as --host gives it: a name or address, also written "tcp://HOST".
// A port or another transport is refused; a name that does not resolve is refused at
// once (the client would otherwise wait out its time limit on a link that never comes up).
std::string daemonHost(const std::string& given) {
    std::string text = given;
    const std::string scheme = "tcp://";
    if (text.rfind(scheme, 0) == 0) {
        text.erase(0, scheme.size());
    } else if (text.find("://") != std::string::npos) {
        throw Failure(2, "--host: " + given +
                             ": the daemon is reached over tcp:// only; give its host name or address");
    }
    const size_t colon = text.find(':');
    if (colon != std::string::npos && text.find(':', colon + 1) == std::string::npos) {
        throw Failure(2, "--host: " + given + ": give the port with --port, not in the host");
    }
    if (text.empty()) {
        throw Failure(2, "--host: empty host name");
    }
    addrinfo hints{};
    hints.ai_family = AF_INET;  // the client's ZeroMQ socket speaks IPv4
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int rc = ::getaddrinfo(text.c_str(), nullptr, &hints, &found);
    if (rc != 0) {
        throw Failure(2, "cannot resolve host '" + text + "': " + ::gai_strerror(rc));
    }
    ::freeaddrinfo(found);
    return text;
}

Json::Value requestArgument(const std::string& arg) {
    if (arg.empty()) {
        return Json::Value();
    }
    std::string text = arg;
    std::string source = "request";
    std::string error;
    if (arg[0] == '@') {
        source = arg.substr(1);
        if (!readUserFile(source, text, error)) {
            throw Failure(2, error);
        }
    }
    Json::Value doc;
    if (!parseJsonText(text, doc, error)) {
        throw Failure(2, source + ": not valid JSON: " + error);
    }
    return doc;
}

Json::Value jsonObjectFile(const std::string& path) {
    Json::Value doc;
    std::string error;
    if (!readJsonObjectFile(path, doc, error)) {
        throw Failure(2, error);
    }
    return doc;
}

// Writes BASENAME.pub and BASENAME.key (mode 0600) for a new CURVE key pair.
VerbOutput keygen(const std::string& basename) {
    CurveKeyPair pair;
    KeyStatus status = generateCurveKeyPair(pair);
    if (status.ok()) {
        status = writeCurveKeyFiles(basename, pair);
    }
    if (!status.ok()) {
        throw Failure(2, status.error);
    }
    VerbOutput output;
    output.json["public"] = basename + ".pub";
    output.json["secret"] = basename + ".key";
    output.text = "wrote " + basename + ".pub and " + basename + ".key\n";
    return output;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"avmngctl: sends AV manager commands to the daemon and prints the replies", "avmngctl"};
    app.set_version_flag("--version", "avmngctl " + std::string(pimAvMngApi::versionString()));
    app.set_help_all_flag("--help-all", "Print the help of every subcommand and exit");
    app.require_subcommand(1);
    // The verbs pass the options they do not know to the program: global options may
    // stand before or after the verb.
    app.fallthrough();
    std::string host = "127.0.0.1";
    unsigned port = 5559;
    int timeoutMs = 5000;
    bool json = false;
    bool compact = false;
    bool quiet = false;
    bool verbose = false;
    app.add_option("--host", host, "daemon host name or address (tcp://HOST is taken as HOST)")
        ->capture_default_str()
        ->envname("AVMNG_HOST");
    app.add_option("--port", port, "daemon TCP port")
        ->capture_default_str()
        ->check(wholeNumber(1, 65535))
        ->envname("AVMNG_PORT");
    app.add_option("--timeout", timeoutMs, "reply time limit in milliseconds")
        ->capture_default_str()
        ->check(wholeNumber(1, INT_MAX))
        ->envname("AVMNG_TIMEOUT_MS");
    std::string serverKey;
    std::string keyFile;
    app.add_option("--server-key", serverKey, "CURVE: the daemon's public key (Z85 text or a .pub file)")
        ->envname("AVMNG_CURVE_SERVER_KEY");
    app.add_option("--key-file", keyFile, "CURVE: this client's .key file")->envname("AVMNG_CURVE_KEYFILE");
    app.add_flag("-j,--json", json, "print the result of any verb as a JSON document");
    app.add_flag("--compact", compact, "print JSON on one line");
    app.add_flag("-q,--quiet", quiet, "print nothing: the exit status tells the result");
    app.add_flag("-v,--verbose", verbose, "show the library's log lines");

    std::string command;
    std::string document;
    auto* send = app.add_subcommand("send", "send any command with an optional JSON request");
    send->add_option("command", command, "command id, method name or enum name")->required();
    send->add_option("request", document, "request document as JSON text or @file");

    app.add_subcommand("commands", "list the command ids with their descriptions");
    std::string keyBase;
    app.add_subcommand("keygen", "write a new CURVE key pair to BASENAME.pub and BASENAME.key")
        ->add_option("basename", keyBase, "path without the extension")
        ->required();
    app.add_subcommand("sessions", "list sender and receiver sessions");
    app.add_subcommand("advertised", "list advertised sessions");
    std::string file;
    app.add_subcommand("add-source", "add a sender session from a SourceApi document")
        ->add_option("file", file, "JSON file")
        ->required();
    app.add_subcommand("add-destination", "add a receiver session from a DestinationApi document")
        ->add_option("file", file, "JSON file")
        ->required();
    unsigned long long id = 0;
    app.add_subcommand("remove", "remove a session")->add_option("id", id, "session id")->required();
    app.add_subcommand("sdp", "print the SDP of a session")->add_option("id", id, "session id")->required();
    app.add_subcommand("clock", "show the system clock configuration, status and counters");
    app.add_subcommand("files", "show the saved configuration table");
    unsigned pos = 0;
    std::string name;
    bool startup = false;
    auto* save = app.add_subcommand("save", "save the running configuration");
    save->add_option("pos", pos, "position 0..9")->required();
    save->add_option("name", name, "configuration name")->required();
    save->add_flag("--startup", startup, "also select it as start-up configuration");
    std::string loadPos;
    app.add_subcommand("load", "load a saved configuration (or \"default\") to running")
        ->add_option("pos", loadPos, "position 0..10 or default")
        ->required()
        ->check(CLI::Validator(
            [](std::string& text) {
                return text == "default" || wholeNumber(0, UINT_MAX)(text).empty()
                           ? std::string()
                           : "must be a position number or \"default\", not " + text;
            },
            "POS|default"));
    app.add_subcommand("alarms", "show session and global alarms");

    if (completeCommandLine(app, argc, argv, std::cout, [](const std::string& subcommand) {
            return subcommand == "send" ? commandWords() : std::vector<std::string>{};
        })) {
        return 0;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return reportParseError(app, e, argc, argv, std::cerr);
    }

    Logger::getInstance()->setThreshold(verbose && !quiet ? 7 : 1);
    const std::string verb = app.get_subcommands().front()->get_name();
    const Warn warn = [quiet](const std::string& warning) {
        if (!quiet) {
            std::cerr << "avmngctl: " << warning << std::endl;
        }
    };
    VerbOutput output;
    try {
        if (verb == "commands") {
            output = commandList();
        } else if (verb == "keygen") {
            output = keygen(keyBase);
        } else {
            // Every other verb talks to the daemon; its input is checked before the link is made.
            const std::string daemon = daemonHost(host);
            const Json::Value request = verb == "send" ? requestArgument(document) : Json::Value();
            const Json::Value userDocument =
                verb.rfind("add-", 0) == 0 ? jsonObjectFile(file) : Json::Value();
            zmq::context_t context(1);
            CtlJsonApi api(daemon, static_cast<uint32_t>(port), timeoutMs);
            if (!serverKey.empty() || !keyFile.empty()) {
                const int rc = api.setCurveKeys(serverKey, keyFile);
                if (rc < 0) {
                    throw api.failure(rc);
                }
            }
            const int rc = api.init(context);
            if (rc < 0) {
                throw api.failure(rc);
            }
            Json::Value body;
            if (verb == "send") {
                const int commandId = commandIdOf(command);
                if (commandId < 0) {
                    throw Failure(2, "send: unknown daemon command '" + command + "' (see avmngctl commands)");
                }
                body = request;
                output.json = api.call(static_cast<unsigned>(commandId), body, !document.empty());
            } else if (verb == "sessions") {
                output = sessions(api);
            } else if (verb == "advertised") {
                output = advertised(api);
            } else if (verb == "add-source") {
                output = addSource(api, userDocument, file, warn);
            } else if (verb == "add-destination") {
                output = addDestination(api, userDocument, file, warn);
            } else if (verb == "remove") {
                body["id"] = Json::UInt64(id);
                api.call(4, body, true);
                output.json["removed"] = Json::UInt64(id);
                output.text = "session " + std::to_string(id) + " removed\n";
            } else if (verb == "sdp") {
                body["id"] = Json::UInt64(id);
                const Json::Value reply = api.call(0, body, true);
                output.json["id"] = Json::UInt64(id);
                output.json["sdp"] = reply.get("sdp", "").asString();
                output.text = output.json["sdp"].asString();
            } else if (verb == "clock") {
                output = clock(api);
            } else if (verb == "files") {
                output = files(api);
            } else if (verb == "save") {
                body["pos"] = pos;
                body["name"] = name;
                body["startup"] = startup;
                api.call(9, body, true);
                output.json["saved"] = pos;
                output.json["name"] = name;
                output.json["startup"] = startup;
                output.text =
                    "running configuration saved at position " + std::to_string(pos) + " [" + name + "]\n";
            } else if (verb == "load") {
                if (loadPos == "default") {
                    body["default"] = true;
                    output.json["loaded"] = "default";
                } else {
                    body["pos"] = static_cast<unsigned>(std::stoul(loadPos));
                    output.json["loaded"] = body["pos"];
                }
                api.call(11, body, true);
                output.text = "configuration " + loadPos + " loaded to running\n";
            } else if (verb == "alarms") {
                output = alarms(api);
            }
        }
    } catch (const Failure& f) {
        if (!quiet) {
            std::cerr << "avmngctl: " << f.what() << std::endl;
        }
        return f.exitStatus();
    } catch (const std::exception& e) {
        if (!quiet) {
            std::cerr << "avmngctl: " << e.what() << std::endl;
        }
        return 1;
    }
    if (quiet) {
        return 0;
    }
    if (json || !output.text) {
        std::cout << renderJson(output.json, !compact) << "\n";
    } else {
        std::cout << *output.text;
    }
    return 0;
}
