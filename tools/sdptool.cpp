// sdptool: checks SDP files against the device's minimum configuration, shows the parsed
// session as JSON, writes SDP text from a session document, lints SDP files against the
// standards' profiles, and announces and listens to sessions over SAP.
//
//   sdptool [--board MODEL] [--module MODULE] [-v] check FILE...
//   sdptool [...] json FILE
//   sdptool [...] gen FILE.json [--dante] [--crlf] [--name-groups] [-o OUT]
//   sdptool lint FILE... [--profile aes67|st2110-20|st2110-30|st2022-7|dante]... [--json]
//   sdptool lint --rules
//   sdptool [...] announce FILE... --to ADDR:PORT [...]   (see SdptoolSap.h)
//   sdptool [...] listen --on ADDR:PORT [...]
//
// Exit status: 0 on success; 1 when a file is refused (check), cannot be converted or
// has error findings (lint), or a socket fails; 2 for bad usage or an unreadable or unusable
// file.

#include <fstream>
#include <iostream>
#include <memory>

#include <CLI/CLI.hpp>

#include "CliComplete.h"
#include "SdpExplain.h"
#include "SdpGen.h"
#include "SdpLint.h"
#include "SdptoolSap.h"
#include "SdptoolSupport.h"
#include "UserDocument.h"
#include "common/ModuleOption.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "pimAvMngApi/version.h"

using namespace pimav::detail;

namespace {

std::string render(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    return Json::writeString(builder, value);
}

// Parses one SDP text; a refusal is printed with its reason on one line (the first user
// message, or the parser's own reason) and the further user messages below it. Returns
// the parser's result.
int parseFile(const std::string& path, SdpConverter& converter, bool quietOk, bool verbose) {
    std::string text;
    std::string error;
    if (!readUserFile(path, text, error)) {
        std::cerr << error << std::endl;
        return -2;
    }
    ParserLog log(verbose);
    std::vector<std::string> messages;
    const int rc = checkSdp(converter, text, messages);
    if (rc == 0) {
        if (!quietOk) {
            std::cout << path << ": ok" << std::endl;
        }
        return 0;
    }
    const std::string reason = refusalReason(log.lines(), messages);
    std::cout << path << ": refused (" << rc << ")" << (reason.empty() ? "" : ": " + reason) << std::endl;
    for (size_t i = 1; i < messages.size(); ++i) {
        std::cout << "  " << messages[i] << std::endl;
    }
    return rc;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"sdptool: checks, shows and generates SDP session descriptions", "sdptool"};
    app.set_version_flag("--version", "sdptool " + std::string(pimAvMngApi::versionString()));
    app.set_help_all_flag("--help-all", "Print the help of every subcommand and exit");
    app.require_subcommand(1);
    std::string board;
    std::string module;
    bool verbose = false;
    app.add_option("--board", board, "board model whose rules apply (JUNIPER, MAPLE, LARCH_MADI, ...)");
    app.add_option("--module", module, "video module of the board (MODULE_HDMI_ST2110, SDI-BIDIR-ST2110, ...)");
    app.add_flag("-v,--verbose", verbose, "show the parser's log lines");

    std::vector<std::string> files;
    auto* check = app.add_subcommand("check", "check SDP files against the minimum configuration");
    check->add_option("files", files, "SDP files")->required();
    std::string file;
    auto* json = app.add_subcommand("json", "print the parsed session as JSON");
    json->add_option("file", file, "SDP file")->required();
    GenOptions genOptions;
    auto* gen = app.add_subcommand("gen", "write SDP text from a session document");
    gen->add_option("file", genOptions.file, "JSON session document")->required();
    gen->add_flag("--dante", genOptions.dante,
                  "write the Dante-compatible form (first media, CRLF line ends)");
    gen->add_flag("--crlf", genOptions.crlf, "end lines with CRLF as RFC 4566 does");
    gen->add_flag("--name-groups", genOptions.nameGroups,
                  "name the group tags of media that have none (S1, S2, ...)");
    gen->add_option("-o,--output", genOptions.output, "output file (default: standard output)");
    LintOptions lintOptions;
    bool lintRules = false;
    auto* lint = app.add_subcommand("lint", "report what receivers and standards object to in SDP files");
    lint->add_option("files", lintOptions.files, "SDP files");
    lint->add_option("--profile", lintOptions.profiles,
                     "aes67, st2110-20, st2110-30, st2022-7 or dante (repeatable)")
        ->allow_extra_args(false);
    lint->add_flag("--json", lintOptions.json, "print the findings as a JSON array");
    lint->add_flag("--rules", lintRules, "print the rule table (Markdown) and exit");
    SapSubcommands sap;
    addSapSubcommands(app, sap);

    if (pimav::detail::completeCommandLine(app, argc, argv, std::cout)) {
        return 0;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return reportParseError(app, e, argc, argv, std::cerr);
    }

    if (*lint) {
        if (lintRules) {
            std::cout << lintRulesMarkdown();
            return 0;
        }
        if (lintOptions.files.empty()) {
            std::cerr << "sdptool lint: no SDP file given" << std::endl;
            return 2;
        }
        return runLint(lintOptions, std::cout, std::cerr);
    }
    Logger::getInstance()->setThreshold(verbose ? 7 : 0);
    if (verbose) {
        Logger::getInstance()->setSink([](int level, const std::string& line) {
            std::cerr << "[" << level << "] " << line << "\n";
        });
    }
    if (!board.empty() || !module.empty()) {
        BoardModel model = SystemDefaultCfg::getInstance()->getBoardModel();
        if (!board.empty()) {
            BoardModelType type = model.getModel();
            if (!boardModelTypeFromString(board, type)) {
                std::cerr << "sdptool: unknown board model " << board << std::endl;
                return 2;
            }
            model.setModel(type);
        }
        if (!module.empty()) {
            BitstreamType::module_t value = BitstreamType::MODULE_NA;
            if (!moduleFromOption(module, value)) {
                std::cerr << "sdptool: unknown module " << module << std::endl;
                return 2;
            }
            model.setModule(value);
        }
        SystemDefaultCfg::getInstance()->setBoardModel(model);
    }

    if (*sap.announce) {
        return runAnnounce(sap.announceArgs);
    }
    if (*sap.listen) {
        return runListen(sap.listenArgs);
    }
    if (*check) {
        int status = 0;
        for (const auto& path : files) {
            SdpConverter converter;
            const int rc = parseFile(path, converter, false, verbose);
            if (rc == -2) {
                status = 2;
            } else if (rc != 0 && status == 0) {
                status = 1;
            }
        }
        return status;
    }
    if (*json) {
        SdpConverter converter;
        const int rc = parseFile(file, converter, true, verbose);
        if (rc != 0) {
            return rc == -2 ? 2 : 1;
        }
        SdpSession session;
        converter.getSdpConfig(session);
        Json::Value doc;
        session.Serialize(doc);
        writeMediaExtras(session, doc);
        std::cout << render(doc) << std::endl;
        return 0;
    }
    return runGen(genOptions, std::cout, std::cerr);
}
