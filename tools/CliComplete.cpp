#include "CliComplete.h"

namespace pimav::detail {

namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

// The option `word` names in `app` ("--port", "--port=5", "-v"), or null.
const CLI::Option* findOption(const CLI::App& app, const std::string& word) {
    const std::string name = word.substr(0, word.find('='));
    for (const CLI::Option* option : app.get_options()) {
        if (option->check_name(name)) {
            return option;
        }
    }
    return nullptr;
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
            const CLI::Option* option = findOption(*scope, word);
            valueExpected =
                option != nullptr && option->get_type_size_min() > 0 && word.find('=') == std::string::npos;
        } else if (const CLI::App* sub = findSubcommand(*scope, word)) {
            scope = sub;
        }
    }
    if (valueExpected) {
        return true;
    }
    std::vector<std::string> candidates;
    if (startsWith(current, "-")) {
        for (const CLI::Option* option : scope->get_options()) {
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
    for (const auto& candidate : candidates) {
        if (startsWith(candidate, current)) {
            out << candidate << "\n";
        }
    }
    return true;
}

}  // namespace pimav::detail
