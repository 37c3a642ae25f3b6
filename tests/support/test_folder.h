#pragma once

#include <filesystem>
#include <string>

namespace mqf2vxb::tests {

/// A new folder for one test, removed with it.
class TestFolder {
public:
    TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    ~TestFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    void write(const std::string& name, const std::string& contents) const;
    /// Empty when there is no such file.
    [[nodiscard]] std::string read(const std::string& name) const;

    struct Result {
        int status;          ///< the exit status, or -1 after a signal
        std::string output;  ///< what went to standard output and standard error
    };
    /// Runs a shell command in the folder.
    Result run(const std::string& command) const;

private:
    std::filesystem::path path_;
};

}  // namespace mqf2vxb::tests
