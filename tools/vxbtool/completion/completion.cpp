#include "vxbtool/completion/completion.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <fmt/ranges.h>

#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

constexpr const char* bashScript = R"(# Completion of vxbtool for bash
_vxbtool_files() {{
    local extension
    mapfile -t COMPREPLY < <(
        compgen -d -- "$current"
        for extension in "$@"; do
            compgen -f -X "!*.$extension" -- "$current"
        done
    )
}}
_vxbtool() {{
    local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}}
    local command=${{COMP_WORDS[1]}} words=
    COMPREPLY=()
    if [[ $COMP_CWORD == 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--help --version {}" -- "$current")
        return
    fi
    case $command:$previous in
{}    esac
    if [[ -z $words && $current == -* ]]; then
        case $command in
{}        esac
    elif [[ -z $words ]]; then
        case $command in
{}        esac
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}}
complete -o filenames -o bashdefault -F _vxbtool vxbtool
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

constexpr const char* fishScript = R"(# Completion of vxbtool for fish
complete -c vxbtool -f
complete -c vxbtool -n __fish_use_subcommand -l help -d 'Print help'
complete -c vxbtool -n __fish_use_subcommand -l version -d 'Print the version'
{})";

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

/// What may stand behind an option.
enum class ValueKind : std::uint8_t { none, any, choice, file, folder };

struct Value {
    ValueKind kind = ValueKind::none;
    std::vector<std::string> choices;
};

/// The words that an option takes, as its check describes them: "{bash,zsh}".
std::vector<std::string> choicesOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t open = type.find('{');
    const std::size_t end = type.find('}', open);
    std::vector<std::string> choices;
    if (open != std::string::npos && end != std::string::npos) {
        choices = CLI::detail::split(type.substr(open + 1, end - open - 1), ',');
    }
    return choices;
}

Value valueOf(const CLI::Option& option) {
    if (option.get_items_expected_max() == 0) {
        return {};
    }
    if (std::vector<std::string> choices = choicesOf(option); !choices.empty()) {
        return {ValueKind::choice, std::move(choices)};
    }
    const std::string& text = option.get_option_text();
    return {text == "FILE"  ? ValueKind::file
            : text == "DIR" ? ValueKind::folder
                            : ValueKind::any,
            {}};
}

/// The extensions of the files that a command reads.
std::vector<std::string> extensionsOf(const CLI::App& command) {
    std::vector<std::string> extensions;
    const bool takesModels = command.get_option_no_throw("--base") != nullptr;  // its files' folder
    if (takesModels) {
        extensions.emplace_back("mqf");
    }
    for (const CLI::Option* option : command.get_options()) {
        const std::string name = option->get_name(true);
        if (name == "FILE" || name == "OLD") {
            extensions.emplace_back("vxb");
        }
        if (name == "MODEL" && !takesModels) {
            extensions.insert(extensions.end(),
                              {"glb", "gltf", "fbx", "obj", "dae", "blend", "3ds", "ply", "stl"});
        }
        if (name == "PICTURE") {
            extensions.insert(extensions.end(),
                              {"png", "jpg", "jpeg", "tga", "bmp", "gif", "psd", "ppm", "pgm"});
        }
    }
    return extensions;
}

std::vector<std::string> positionalChoices(const CLI::App& command) {
    std::vector<std::string> choices;
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_positional()) {
            for (std::string& choice : choicesOf(*option)) {
                choices.push_back(std::move(choice));
            }
        }
    }
    return choices;
}

std::string bashCompletion(const CLI::App& app) {
    std::vector<std::string> commands;
    std::string values, options, files;
    for (const CLI::App* command : shownCommands(app)) {
        const std::string& name = command->get_name();
        commands.push_back(name);
        std::vector<std::string> all;
        for (const CLI::Option* option : command->get_options()) {
            const std::vector<std::string> names = namesOf(*option);
            all.insert(all.end(), names.begin(), names.end());
            std::vector<std::string> patterns(names.size());
            std::transform(
                names.begin(), names.end(), patterns.begin(),
                [&](const std::string& each) { return fmt::format("{}:{}", name, each); });
            const auto add = [&](const std::string& action) {
                values += fmt::format("    {})\n        {}\n        ;;\n",
                                      fmt::join(patterns, " | "), action);
            };
            const Value value = valueOf(*option);
            if (names.empty() || value.kind == ValueKind::none) {
                continue;
            }
            switch (value.kind) {
            case ValueKind::choice:
                add(fmt::format("words=\"{}\"", fmt::join(value.choices, " ")));
                break;
            case ValueKind::file:
                add("mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n        return");
                break;
            case ValueKind::folder:
                add("mapfile -t COMPREPLY < <(compgen -d -- \"$current\")\n        return");
                break;
            default: add("return"); break;
            }
        }
        options += fmt::format("        {}) words=\"{}\" ;;\n", name, fmt::join(all, " "));
        const std::vector<std::string> choices = positionalChoices(*command);
        files += choices.empty()
                     ? fmt::format("        {}) _vxbtool_files {} ;;\n", name,
                                   fmt::join(extensionsOf(*command), " "))
                     : fmt::format("        {}) mapfile -t COMPREPLY < <(compgen -W \"{}\" -- "
                                   "\"$current\") ;;\n",
                                   name, fmt::join(choices, " "));
    }
    return fmt::format(bashScript, fmt::join(commands, " "), values, options, files);
}

/// For a place between single quotes.
std::string fishText(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\'' || c == '\\') {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

std::string fishCompletion(const CLI::App& app) {
    std::string lines;
    for (const CLI::App* command : shownCommands(app)) {
        lines += fmt::format("complete -c vxbtool -n __fish_use_subcommand -a {} -d '{}'\n",
                             command->get_name(), fishText(command->get_description()));
        const std::string start = fmt::format(
            "complete -c vxbtool -n '__fish_seen_subcommand_from {}'", command->get_name());
        for (const CLI::Option* option : command->get_options()) {
            if (option->get_positional()) {
                continue;
            }
            std::string names;
            for (const std::string& name : option->get_snames()) {
                names += " -s " + name;
            }
            for (const std::string& name : option->get_lnames()) {
                names += " -l " + name;
            }
            const Value value = valueOf(*option);
            std::string action;
            switch (value.kind) {
            case ValueKind::none: break;
            case ValueKind::any: action = " -x"; break;
            case ValueKind::choice:
                action = fmt::format(" -x -a '{}'", fmt::join(value.choices, " "));
                break;
            case ValueKind::file: action = " -r -F"; break;
            case ValueKind::folder: action = " -x -a '(__fish_complete_directories)'"; break;
            }
            lines += fmt::format("{}{}{} -d '{}'\n", start, names, action,
                                 fishText(option->get_description()));
        }
        for (const std::string& extension : extensionsOf(*command)) {
            lines += fmt::format("{} -a '(__fish_complete_suffix .{})'\n", start, extension);
        }
        for (const std::string& choice : positionalChoices(*command)) {
            lines += fmt::format("{} -a {}\n", start, choice);
        }
    }
    return fmt::format(fishScript, lines);
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

std::string zshAction(const Value& value) {
    switch (value.kind) {
    case ValueKind::none: return "";
    case ValueKind::choice: return fmt::format(":value:({})", fmt::join(value.choices, " "));
    case ValueKind::folder: return ":folder:_files -/";
    case ValueKind::file: return ":file:_files";
    default: return ":value:";
    }
}

std::string zshCompletion(const CLI::App& app) {
    std::string commands, cases;
    for (const CLI::App* command : shownCommands(app)) {
        commands +=
            fmt::format("    '{}:{}'\n", command->get_name(), zshText(command->get_description()));
        cases += fmt::format("{})\n    _arguments", command->get_name());
        for (const CLI::Option* option : command->get_options()) {
            const std::string action = zshAction(valueOf(*option));
            for (const std::string& name : namesOf(*option)) {
                cases += fmt::format(" \\\n        '{}[{}]{}'", name,
                                     zshText(option->get_description()), action);
            }
        }
        const std::vector<std::string> choices = positionalChoices(*command);
        const std::string argument =
            choices.empty()
                ? fmt::format("*:file:_files -g \"*.({})\"", fmt::join(extensionsOf(*command), "|"))
                : fmt::format("1:value:({})", fmt::join(choices, " "));
        cases += fmt::format(" \\\n        '{}'\n    ;;\n", argument);
    }
    return fmt::format(zshScript, commands, cases);
}

}  // namespace

void addCompletion(CLI::App& app, Session& /*session*/) {
    CLI::App* command =
        app.add_subcommand("completion", "Print a script for the completion of command lines");
    const auto shell = std::make_shared<std::string>();
    command->add_option("SHELL", *shell, "bash, zsh or fish")
        ->option_text(" ")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->footer("Example:\n  source <(vxbtool completion bash)");
    command->callback([shell, &app] {
        printText(*shell == "zsh"    ? zshCompletion(app)
                  : *shell == "fish" ? fishCompletion(app)
                                     : bashCompletion(app));
    });
}

}  // namespace vxbtool
