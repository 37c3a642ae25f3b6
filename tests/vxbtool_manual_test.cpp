#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "support/test_folder.h"

namespace mqf2vxb::tests {
namespace {

/// What the first group of the pattern matches in each line of the text.
std::vector<std::string> found(const std::string& text, const std::string& pattern) {
    const std::regex form(pattern);
    std::vector<std::string> result;
    std::istringstream lines(text);
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_search(line, match, form)) {
            result.push_back(match[1]);
        }
    }
    return result;
}

/// The manual page as it is printed.
std::string manualText() {
    const TestFolder folder;
    return folder.run("sed 's/\\\\-/-/g' '" MQF2VXB_MANUALS "/vxbtool.1'").output;
}

TEST(Manual, HasEveryCommandWithEveryOption) {
    const TestFolder folder;
    const std::string manual = manualText();
    const std::string help = folder.run("'" VXBTOOL_PROGRAM "' --help").output;
    const std::size_t list = help.find("Subcommands:");
    const std::vector<std::string> commands =
        found(help.substr(list, help.find("Examples:") - list), "^  ([a-z]+) ");
    EXPECT_THAT(commands, testing::IsSupersetOf({"convert", "lint", "check", "info", "dump"}));
    for (const std::string& command : commands) {
        EXPECT_THAT(manual, testing::HasSubstr("\n.B " + command + "\n"));
        // A section may tell of two commands: .SH "VXBTOOL LINT AND CHECK"
        std::string name = command;
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return std::toupper(c); });
        std::smatch heading;
        std::string section;
        if (std::regex_search(manual, heading,
                              std::regex(".SH \"VXBTOOL[A-Z ]* " + name + "\\b"))) {
            const auto begin = static_cast<std::size_t>(heading.position());
            section = manual.substr(begin, manual.find(".SH ", begin + 1) - begin);
        }
        const std::string options =
            folder.run("'" VXBTOOL_PROGRAM "' " + command + " --help").output;
        for (const std::string& option : found(options, "^  (-[-A-Za-z]+)")) {
            if (option != "-h") {
                EXPECT_THAT(section, testing::HasSubstr(option)) << command;
            }
        }
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
