// avmngctl: command-line client of the AV manager daemon (or of avmng-emulator).
//
//   avmngctl [--host H] [--port P] [--timeout MS] [--server-key KEY --key-file FILE] [--compact]
//            send <id|name> [JSON|@file]
//   avmngctl commands
//   avmngctl keygen BASENAME
//   avmngctl sessions | advertised | clock | files | alarms
//   avmngctl add-source FILE.json | add-destination FILE.json
//   avmngctl remove ID | sdp ID | save POS NAME [--startup] | load POS|default
//
// Every exchange goes through the library's JSON layer (AvMngApiJson); the typed verbs
// build their requests from, and read their replies into, the library's records.
// Exit status: 0 on success; 1 when the daemon refused the request or the transport
// failed (one line on stderr with the negative code and its meaning); 2 for bad usage.

#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include <CLI/CLI.hpp>

#include "CliComplete.h"
#include "CtlSupport.h"
#include "common/AtomicFile.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/version.h"
#include "platform/CurveKeys.h"

using namespace pimav::detail;

namespace {


void printReply(const Json::Value& reply, bool compact) { std::cout << renderJson(reply, !compact) << "\n"; }

Json::Value readDocumentArgument(const std::string& arg) {
    if (arg.empty()) {
        return Json::Value();
    }
    std::string text = arg;
    if (arg[0] == '@') {
        if (!readWholeFile(arg.substr(1), text)) {
            throw Failure(2, "cannot read " + arg.substr(1));
        }
    }
    Json::Value doc;
    std::string errors;
    if (!parseJson(text, doc, errors)) {
        throw Failure(2, "request is not valid JSON: " + errors);
    }
    return doc;
}

Json::Value readRecordFile(const std::string& path) {
    std::string text;
    if (!readWholeFile(path, text)) {
        throw Failure(2, "cannot read " + path);
    }
    Json::Value doc;
    std::string errors;
    if (!parseJson(text, doc, errors) || !doc.isObject()) {
        throw Failure(2, path + " does not hold a JSON object" + (errors.empty() ? "" : ": " + errors));
    }
    return doc;
}

// Writes BASENAME.pub and BASENAME.key (mode 0600) for a new CURVE key pair.
void keygen(const std::string& basename) {
    CurveKeyPair pair;
    KeyStatus status = generateCurveKeyPair(pair);
    if (status.ok()) {
        status = writeCurveKeyFiles(basename, pair);
    }
    if (!status.ok()) {
        throw Failure(2, status.error);
    }
    std::cout << "wrote " << basename << ".pub and " << basename << ".key\n";
}

// A failed library call: its code and the detail it reported (Failure adds the code's text).
Failure failureOf(CtlJsonApi& api, int code) {
    ErrorReport report;
    api.getLastErrorMessage(report);
    const std::string known = std::string(ClientJsonApi::describeError(code)) + ": ";
    return Failure(code, report.text.rfind(known, 0) == 0 ? report.text.substr(known.size()) : report.text);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"avmngctl: sends AV manager commands to the daemon and prints the replies", "avmngctl"};
    app.set_version_flag("--version", "avmngctl " + std::string(pimAvMngApi::versionString()));
    app.set_help_all_flag("--help-all", "Print the help of every subcommand and exit");
    app.require_subcommand(1);
    std::string host = "127.0.0.1";
    unsigned port = 5559;
    int timeoutMs = 5000;
    bool compact = false;
    bool verbose = false;
    app.add_option("--host", host, "daemon host")->capture_default_str();
    app.add_option("--port", port, "daemon TCP port")->capture_default_str();
    app.add_option("--timeout", timeoutMs, "reply time limit in milliseconds")
        ->capture_default_str()
        ->check(CLI::PositiveNumber)
        ->envname("AVMNG_TIMEOUT_MS");
    std::string serverKey;
    std::string keyFile;
    app.add_option("--server-key", serverKey, "CURVE: the daemon's public key (Z85 text or a .pub file)")
        ->envname("AVMNG_CURVE_SERVER_KEY");
    app.add_option("--key-file", keyFile, "CURVE: this client's .key file")->envname("AVMNG_CURVE_KEYFILE");
    app.add_flag("--compact", compact, "print replies as one line");
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
        ->required();
    app.add_subcommand("alarms", "show session and global alarms");

    if (completeCommandLine(app, argc, argv, std::cout, [](const std::string& subcommand) {
            return subcommand == "send" ? commandWords() : std::vector<std::string>{};
        })) {
        return 0;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? 0 : 2;
    }

    Logger::getInstance()->setThreshold(verbose ? 7 : 1);
    const std::string verb = app.get_subcommands().front()->get_name();

    try {
        if (verb == "commands") {
            printCommands(std::cout);
            return 0;
        }
        if (verb == "keygen") {
            keygen(keyBase);
            return 0;
        }
        zmq::context_t context(1);
        CtlJsonApi api(host, static_cast<uint32_t>(port), timeoutMs);
        if (!serverKey.empty() || !keyFile.empty()) {
            const int rc = api.setCurveKeys(serverKey, keyFile);
            if (rc < 0) {
                throw failureOf(api, rc);
            }
        }
        const int rc = api.init(context);
        if (rc < 0) {
            throw failureOf(api, rc);
        }
        Json::Value reply;
        if (verb == "send") {
            const int commandId = commandIdOf(command);
            if (commandId < 0) {
                throw Failure(2, "unknown command \"" + command + "\" (see avmngctl commands)");
            }
            Json::Value request = readDocumentArgument(document);
            reply = api.call(static_cast<unsigned>(commandId), request, !document.empty());
            printReply(reply, compact);
        } else if (verb == "sessions") {
            printSessions(api, std::cout);
        } else if (verb == "advertised") {
            printAdvertised(api, std::cout);
        } else if (verb == "add-source") {
            printReply(addSource(api, readRecordFile(file)), compact);
        } else if (verb == "add-destination") {
            printReply(addDestination(api, readRecordFile(file)), compact);
        } else if (verb == "remove") {
            Json::Value request;
            request["id"] = Json::UInt64(id);
            api.call(4, request, true);
            std::cout << "session " << id << " removed\n";
        } else if (verb == "sdp") {
            Json::Value request;
            request["id"] = Json::UInt64(id);
            reply = api.call(0, request, true);
            std::cout << reply.get("sdp", "").asString();
        } else if (verb == "clock") {
            printClock(api, std::cout);
        } else if (verb == "files") {
            printFiles(api, std::cout);
        } else if (verb == "save") {
            Json::Value request;
            request["pos"] = pos;
            request["name"] = name;
            request["startup"] = startup;
            api.call(9, request, true);
            std::cout << "running configuration saved at position " << pos << " [" << name << "]\n";
        } else if (verb == "load") {
            Json::Value request;
            if (loadPos == "default") {
                request["default"] = true;
            } else {
                char* end = nullptr;
                const unsigned long value = std::strtoul(loadPos.c_str(), &end, 10);
                if (loadPos.empty() || *end != '\0') {
                    throw Failure(2, "position must be a number or \"default\"");
                }
                request["pos"] = static_cast<unsigned>(value);
            }
            api.call(11, request, true);
            std::cout << "configuration " << loadPos << " loaded to running\n";
        } else if (verb == "alarms") {
            printAlarms(api, std::cout);
        }
    } catch (const Failure& f) {
        std::cerr << "avmngctl: " << f.what() << std::endl;
        return f.exitStatus();
    } catch (const std::exception& e) {
        std::cerr << "avmngctl: " << e.what() << std::endl;
        return 1;
    }
    return 0;
}
