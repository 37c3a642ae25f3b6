#include "support/test_folder.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include <sys/wait.h>

namespace mqf2vxb::tests {

namespace fs = std::filesystem;

TestFolder::TestFolder() {
    std::string name = (fs::temp_directory_path() / "mqf2vxb-XXXXXX").string();
    path_ = mkdtemp(name.data());
}

TestFolder::~TestFolder() { fs::remove_all(path_); }

void TestFolder::write(const std::string& name, const std::string& contents) const {
    fs::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << contents;
}

std::string TestFolder::read(const std::string& name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TestFolder::Result TestFolder::run(const std::string& command) const {
    const std::string inFolder = "exec 2>&1; cd '" + path_.string() + "' && " + command;
    std::string output;
    std::FILE* pipe = popen(inFolder.c_str(), "r");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        output.push_back(static_cast<char>(c));
    }
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

}  // namespace mqf2vxb::tests
