// sdptool: checks SDP files against the device's minimum configuration, shows the parsed
// session as JSON, and writes SDP text from a session document.
//
//   sdptool [--board MODEL] [--module MODULE] [-v] check FILE...
//   sdptool [...] json FILE
//   sdptool [...] gen FILE.json [--dante] [-o OUT]
//
// Exit status: 0 on success; 1 when a file is refused (check) or cannot be converted;
// 2 for bad usage or an unreadable file.

#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include <CLI/CLI.hpp>

#include "CliComplete.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "pimAvMngApi/version.h"

namespace {

bool readFile(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::ostringstream buffer;
    buffer << in.rdbuf();
    text = buffer.str();
    return true;
}

std::string render(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    return Json::writeString(builder, value);
}

// Accepts the module's enumerator name (MODULE_SDI_BIDIR_ST2110) or its word
// (SDI-BIDIR-ST2110).
bool moduleFromText(const std::string& text, BitstreamType::module_t& module) {
    static const struct {
        const char* name;
        BitstreamType::module_t value;
    } kModules[] = {
        {"MODULE_SDI_TR04", BitstreamType::MODULE_SDI_TR04},
        {"MODULE_SDI_ST2110", BitstreamType::MODULE_SDI_ST2110},
        {"MODULE_HDMI_ST2110", BitstreamType::MODULE_HDMI_ST2110},
        {"MODULE_SDI_BIDIR_ST2110", BitstreamType::MODULE_SDI_BIDIR_ST2110},
        {"MODULE_NA", BitstreamType::MODULE_NA},
    };
    for (const auto& m : kModules) {
        if (text == m.name || text == BitstreamType::toString(m.value)) {
            module = m.value;
            return true;
        }
    }
    return false;
}

// Parses one SDP text; prints the user messages of a refusal. Returns the parser's result.
int parseFile(const std::string& path, SdpConverter& converter, bool quietOk) {
    std::string text;
    if (!readFile(path, text)) {
        std::cerr << path << ": cannot read" << std::endl;
        return -2;
    }
    ErrorAuxMsg::getInstance()->clear();
    const int rc = converter.parseSdp(text);
    const auto messages = ErrorAuxMsg::getInstance()->getMessages();
    ErrorAuxMsg::getInstance()->clear();
    if (rc == 0) {
        if (!quietOk) {
            std::cout << path << ": ok" << std::endl;
        }
        return 0;
    }
    std::cout << path << ": refused (" << rc << ")" << std::endl;
    for (const auto& m : messages) {
        std::cout << "  " << m << std::endl;
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
    bool dante = false;
    std::string output;
    auto* gen = app.add_subcommand("gen", "write SDP text from a session document");
    gen->add_option("file", file, "JSON session document")->required();
    gen->add_flag("--dante", dante, "write the Dante-compatible form (first media, CRLF line ends)");
    gen->add_option("-o,--output", output, "output file (default: standard output)");

    if (pimav::detail::completeCommandLine(app, argc, argv, std::cout)) {
        return 0;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? 0 : 2;
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
            if (!moduleFromText(module, value)) {
                std::cerr << "sdptool: unknown module " << module << std::endl;
                return 2;
            }
            model.setModule(value);
        }
        SystemDefaultCfg::getInstance()->setBoardModel(model);
    }

    if (*check) {
        int status = 0;
        for (const auto& path : files) {
            SdpConverter converter;
            const int rc = parseFile(path, converter, false);
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
        const int rc = parseFile(file, converter, true);
        if (rc != 0) {
            return rc == -2 ? 2 : 1;
        }
        SdpSession session;
        converter.getSdpConfig(session);
        Json::Value doc;
        session.Serialize(doc);
        std::cout << render(doc) << std::endl;
        return 0;
    }
    // gen
    std::string text;
    if (!readFile(file, text)) {
        std::cerr << file << ": cannot read" << std::endl;
        return 2;
    }
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value doc;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &doc, &errors) || !doc.isObject()) {
        std::cerr << file << ": not a JSON session document " << errors << std::endl;
        return 2;
    }
    SdpSession session;
    try {
        session.Deserialize(doc);
    } catch (const std::exception& e) {
        std::cerr << file << ": session document cannot be read: " << e.what() << std::endl;
        return 1;
    }
    SdpConverter converter;
    std::string sdp;
    int rc = converter.setSdpConfig(session);
    if (rc == 0) {
        rc = dante ? converter.generateDanteSdp(sdp) : converter.getSdpString(&sdp);
    }
    if (rc != 0) {
        std::cerr << file << ": SDP generation failed (" << rc << ")" << std::endl;
        return 1;
    }
    if (output.empty()) {
        std::cout << sdp;
        return 0;
    }
    std::ofstream out(output, std::ios::binary);
    out << sdp;
    if (!out) {
        std::cerr << output << ": cannot write" << std::endl;
        return 2;
    }
    return 0;
}
