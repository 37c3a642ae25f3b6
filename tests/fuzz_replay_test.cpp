#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "targets.h"

namespace mqf2vxb::fuzz {
namespace {

TEST(FuzzReplay, KeepsEveryPromise) {
    namespace fs = std::filesystem;
    for (const Target& target : targets()) {
        std::size_t inputs = 0;
        for (const char* const folder : {"corpus", "regressions"}) {
            const fs::path path = fs::path(MQF2VXB_FUZZ) / folder / target.name;
            for (const auto& entry :
                 fs::is_directory(path) ? fs::directory_iterator(path) : fs::directory_iterator()) {
                std::ifstream file(entry.path(), std::ios::binary);
                const std::string input{std::istreambuf_iterator(file), {}};
                EXPECT_NO_THROW(target.run(input)) << entry.path();
                ++inputs;
            }
        }
        EXPECT_GT(inputs, 0U) << target.name;
    }
}

}  // namespace
}  // namespace mqf2vxb::fuzz
