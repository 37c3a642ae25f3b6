#include "support/session.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace mqf2vxb::tests {

TestFolder::Result runIn(const TestFolder& folder, const std::string& command) {
    const auto programs = std::filesystem::path(VXBTOOL_PROGRAM).parent_path().string();
    return folder.run("PATH='" + programs + "':$PATH; " + command);
}

void expectSession(const TestFolder& folder, const std::string& name) {
    std::ifstream session(name);
    std::string command, expected, actual;
    for (std::string line; std::getline(session, line);) {
        if (!line.starts_with("$ ")) {
            expected += line + "\n";
            continue;
        }
        EXPECT_EQ(actual, expected) << command;
        command = line.substr(2);
        const TestFolder::Result result = runIn(folder, command);
        const std::string status = "[" + std::to_string(result.status) + "]\n";
        actual = result.output + (result.status != 0 ? status : "");
        expected.clear();
    }
    EXPECT_EQ(actual, expected) << command;
    EXPECT_NE(command, "");
}

}  // namespace mqf2vxb::tests
