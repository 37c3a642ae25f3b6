#include "vxbtool/convert/depfile.h"

#include <string_view>

#include "base/diagnostics.h"

namespace vxbtool {
namespace {

/// Whether a character stands for itself in a depfile. Of the others Ninja ends a name at some,
/// and Make takes some for syntax: it would assign a variable at "=", run what follows ";" and look
/// for other files at "[".
bool standsForItself(char c) {
    constexpr std::string_view marks = R"(!()+,-./@\]_{}~)";
    const auto byte = static_cast<unsigned char>(c);
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           byte >= 0x80 || marks.find(c) != std::string_view::npos;
}

/// Whether a name as a whole means something to Make: a special target such as ".PHONY", a suffix
/// rule, a user's home folder or a member of an archive.
bool meansSomethingToMake(std::string_view name) {
    const bool special = name.starts_with('.') && name.find('/') == std::string_view::npos;
    const bool member = name.ends_with(')') && name.find('(') != std::string_view::npos;
    return special || member || name.starts_with('~');
}

[[noreturn]] void cannotBeHeld(const std::string& name) {
    mqf2vxb::notCorrectData({name}, "Make and Ninja cannot both read this name in a depfile");
}

std::string escaped(const std::string& name) {
    // At the end of a name these would escape or be taken for what separates names.
    if (name.empty() || meansSomethingToMake(name) ||
        std::string_view(" :\\").find(name.back()) != std::string_view::npos) {
        cannotBeHeld(name);
    }
    std::string text;
    std::size_t backslashes = 0;  // directly before the current character
    for (const char c : name) {
        if (c == ' ') {
            // Backslashes before a blank escape each other.
            text.append(backslashes + 1, '\\');
        } else if ((c == ':' || c == '#') && backslashes == 0) {
            text += '\\';
        } else if (c == '$' && backslashes == 0) {
            text += '$';
        } else if (!standsForItself(c)) {
            cannotBeHeld(name);
        }
        text += c;
        backslashes = c == '\\' ? backslashes + 1 : 0;
    }
    return text;
}

}  // namespace

std::string depfileText(const std::string& output, std::span<const std::string> inputs) {
    std::string text = escaped(output) + ":";
    std::string emptyRules;
    for (const std::string& input : inputs) {
        const std::string name = escaped(input);
        text += " \\\n  " + name;
        emptyRules += "\n" + name + ":\n";
    }
    return text + "\n" + emptyRules;
}

}  // namespace vxbtool
