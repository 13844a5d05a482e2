#include "CliComplete.h"

#include <cstdlib>
#include <set>

namespace pimav::detail {

namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

// The options that can stand in `scope`: its own, and those of the parents it lets the
// words fall through to.
std::vector<const CLI::Option*> optionsIn(const CLI::App& scope) {
    std::vector<const CLI::Option*> options;
    for (const CLI::App* app = &scope; app != nullptr;
         app = app->get_fallthrough() ? app->get_parent() : nullptr) {
        const auto own = app->get_options();
        options.insert(options.end(), own.begin(), own.end());
    }
    return options;
}

// The option `word` names in `scope` ("--port", "--port=5", "-v"), or null.
const CLI::Option* findOption(const CLI::App& scope, const std::string& word) {
    const std::string name = word.substr(0, word.find('='));
    for (const CLI::Option* option : optionsIn(scope)) {
        if (option->check_name(name)) {
            return option;
        }
    }
    return nullptr;
}

bool takesValue(const CLI::Option* option, const std::string& word) {
    return option != nullptr && option->get_type_size_min() > 0 && word.find('=') == std::string::npos;
}

const CLI::App* findSubcommand(const CLI::App& app, const std::string& word) {
    for (const CLI::App* sub : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (sub->get_name() == word) {
            return sub;
        }
    }
    return nullptr;
}

}  // namespace

bool completeCommandLine(const CLI::App& app, int argc, const char* const* argv, std::ostream& out,
                         const PositionalWords& positional) {
    if (argc < 2 || std::string(argv[1]) != "--complete") {
        return false;
    }
    const std::string current = argc > 2 ? argv[argc - 1] : "";
    const CLI::App* scope = &app;
    bool valueExpected = false;
    for (int i = 2; i < argc - 1; ++i) {
        const std::string word = argv[i];
        if (valueExpected) {
            valueExpected = false;
        } else if (startsWith(word, "-")) {
            valueExpected = takesValue(findOption(*scope, word), word);
        } else if (const CLI::App* sub = findSubcommand(*scope, word)) {
            scope = sub;
        }
    }
    if (valueExpected) {
        return true;
    }
    std::vector<std::string> candidates;
    if (startsWith(current, "-")) {
        for (const CLI::Option* option : optionsIn(*scope)) {
            if (option->get_group().empty()) {
                continue;
            }
            for (const auto& name : option->get_lnames()) {
                candidates.push_back("--" + name);
            }
            for (const auto& name : option->get_snames()) {
                candidates.push_back("-" + name);
            }
        }
    } else {
        for (const CLI::App* sub : scope->get_subcommands([](const CLI::App*) { return true; })) {
            if (!sub->get_group().empty()) {
                candidates.push_back(sub->get_name());
            }
        }
        if (scope != &app && positional) {
            const auto words = positional(scope->get_name());
            candidates.insert(candidates.end(), words.begin(), words.end());
        }
    }
    std::set<std::string> written;  // a verb's own --help and the program's are one word
    for (const auto& candidate : candidates) {
        if (startsWith(candidate, current) && written.insert(candidate).second) {
            out << candidate << "\n";
        }
    }
    return true;
}

int reportParseError(const CLI::App& app, const CLI::ParseError& error, int argc, const char* const* argv,
                     std::ostream& err) {
    if (error.get_exit_code() == 0) {
        return app.exit(error);  // --help, --help-all, --version
    }
    std::string message = error.what();
    // A bad value taken from the environment is named by its variable.
    const size_t colon = message.find(": ");
    const CLI::Option* option =
        startsWith(message, "-") ? findOption(app, message.substr(0, colon)) : nullptr;
    const char* fromEnvironment = option != nullptr && !option->get_envname().empty()
                                      ? std::getenv(option->get_envname().c_str())
                                      : nullptr;
    for (int i = 1; i < argc && fromEnvironment != nullptr; ++i) {
        const std::string arg = argv[i];
        if (startsWith(arg, "-") && findOption(app, arg) == option) {
            fromEnvironment = nullptr;  // given on the command line
        }
    }
    if (fromEnvironment != nullptr) {
        message = option->get_envname() + message.substr(colon);
    }
    if (app.get_subcommands().empty()) {
        // The first word that is neither an option nor an option's value stands where the
        // subcommand is expected.
        std::string word;
        for (int i = 1; i < argc && word.empty(); ++i) {
            const std::string arg = argv[i];
            if (startsWith(arg, "-")) {
                i += takesValue(findOption(app, arg), arg) ? 1 : 0;
            } else {
                word = arg;
            }
        }
        std::string names;
        for (const CLI::App* sub : app.get_subcommands([](const CLI::App*) { return true; })) {
            names += (names.empty() ? "" : ", ") + sub->get_name();
        }
        if (!word.empty() && findSubcommand(app, word) == nullptr) {
            message = "unknown command '" + word + "'; the commands are: " + names;
        } else if (word.empty()) {
            message = "a command is required: " + names;
        }
    }
    err << app.get_name() << ": " << message << std::endl;
    return 2;
}

}  // namespace pimav::detail
