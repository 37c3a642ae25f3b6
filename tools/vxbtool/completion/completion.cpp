#include "vxbtool/completion/completion.h"

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <fmt/ranges.h>

#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

constexpr const char* bashScript = R"(# Completion of vxbtool for bash
_vxbtool() {{
    local current=${{COMP_WORDS[COMP_CWORD]}} words=
    case $COMP_CWORD:${{COMP_WORDS[1]}} in
    1:*) words="--help --version {}" ;;
{}    esac
    COMPREPLY=()
    if [[ $COMP_CWORD == 1 || $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    fi
}}
complete -o default -F _vxbtool vxbtool
)";

constexpr const char* zshScript = R"(#compdef vxbtool
# Completion of vxbtool for zsh
local -a commands
commands=(
{})
if ((CURRENT == 2)); then
    _describe command commands
    return
fi
local command=$words[2]
shift words
((CURRENT--))
case $command in
{}esac
)";

/// Those that "--help" lists.
std::vector<const CLI::App*> shownCommands(const CLI::App& app) {
    return app.get_subcommands(
        [](const CLI::App* command) { return !command->get_group().empty(); });
}

/// "-o", "--scale" and so on.
std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

std::string bashCompletion(const CLI::App& app) {
    std::vector<std::string> commands;
    std::string cases;
    for (const CLI::App* command : shownCommands(app)) {
        commands.push_back(command->get_name());
        std::vector<std::string> options;
        for (const CLI::Option* option : command->get_options()) {
            for (const std::string& name : namesOf(*option)) {
                options.push_back(name);
            }
        }
        cases += fmt::format("    *:{}) words=\"{}\" ;;\n", command->get_name(),
                             fmt::join(options, " "));
    }
    return fmt::format(bashScript, fmt::join(commands, " "), cases);
}

/// For a place between single quotes where zsh gives brackets and colons a meaning.
std::string zshText(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\'') {
            escaped += "'\\'";
        } else if (c == '[' || c == ']' || c == ':' || c == '\\') {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

std::string zshCompletion(const CLI::App& app) {
    std::string commands, cases;
    for (const CLI::App* command : shownCommands(app)) {
        commands +=
            fmt::format("    '{}:{}'\n", command->get_name(), zshText(command->get_description()));
        cases += fmt::format("{})\n    _arguments", command->get_name());
        for (const CLI::Option* option : command->get_options()) {
            const bool takesValue = option->get_items_expected_max() > 0;
            for (const std::string& name : namesOf(*option)) {
                cases +=
                    fmt::format(" \\\n        '{}[{}]{}'", name, zshText(option->get_description()),
                                takesValue ? ":value:_files" : "");
            }
        }
        cases += " \\\n        '*:file:_files'\n    ;;\n";
    }
    return fmt::format(zshScript, commands, cases);
}

}  // namespace

void addCompletion(CLI::App& app, Session& /*session*/) {
    CLI::App* command =
        app.add_subcommand("completion", "Print a script for the completion of command lines");
    const auto shell = std::make_shared<std::string>();
    command->add_option("SHELL", *shell, "bash or zsh")
        ->option_text(" ")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh"}));
    command->footer("Example:\n  source <(vxbtool completion bash)");
    command->callback(
        [shell, &app] { printText(*shell == "zsh" ? zshCompletion(app) : bashCompletion(app)); });
}

}  // namespace vxbtool
