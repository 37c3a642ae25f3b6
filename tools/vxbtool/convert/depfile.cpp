#include "vxbtool/convert/depfile.h"

#include "base/diagnostics.h"

namespace vxbtool {
namespace {

std::string escaped(const std::string& name) {
    std::string text;
    std::size_t backslashes = 0;  // directly before the current character
    for (const char c : name) {
        if (c == '\n') {
            mqf2vxb::notCorrectData({name}, "a depfile cannot hold a name with a line feed");
        }
        if (c == ' ' || c == '\t' || c == '#') {
            // Backslashes before these characters would escape each other.
            text.append(backslashes + 1, '\\');
        } else if (c == ':') {
            text += '\\';
        } else if (c == '$') {
            text += '$';
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
