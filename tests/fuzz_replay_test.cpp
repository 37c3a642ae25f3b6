#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "targets.h"

namespace mqf2vxb::fuzz {
namespace {

class FuzzReplay : public testing::TestWithParam<Target> {};

TEST_P(FuzzReplay, KeepsEveryPromise) {
    std::size_t inputs = 0;
    for (const char* const folder : {"corpus", "regressions"}) {
        const auto path = std::filesystem::path(MQF2VXB_FUZZ) / folder / GetParam().name;
        if (!std::filesystem::exists(path)) {
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string input{std::istreambuf_iterator(file), {}};
            EXPECT_NO_THROW(GetParam().run(input)) << entry.path();
            ++inputs;
        }
    }
    EXPECT_GT(inputs, 0U);
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplay, testing::ValuesIn(targets().begin(), targets().end()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace mqf2vxb::fuzz
