#include <gtest/gtest.h>

#include <cstdlib>

#include "base/diagnostics.h"
#include "support/memory_files.h"
#include "support/random_model.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/model_text/model_files_writer.h"
#include "vxbtool/shared/in_memory.h"
#include "vxbtool/unpack/unpack_model.h"

namespace vxbtool {
namespace {

using mqf2vxb::VxbFile;
using namespace mqf2vxb::tests;

/// What a VXB file becomes when it is unpacked and converted again.
std::string comesBack(const std::string& bytes) {
    const unpack::UnpackedModel model = unpack::unpackModel(mqf2vxb::readVxb(bytes));
    MemoryFiles files;
    model_text::writeModelFiles(model.text, "", "u", files);
    mqf2vxb::RunOptions options;
    options.imageOutput = !model.withoutImages;
    try {
        return convertInMemory("u.mqf", options, files);
    } catch (const mqf2vxb::Report& report) {
        return report.text();
    }
}

TEST(Unpack, RandomModelsComeBackWordForWord) {
    const char* const seeds = std::getenv("UNPACK_SEEDS");
    const std::uint32_t last = seeds != nullptr ? static_cast<std::uint32_t>(std::atoi(seeds)) : 300;
    for (std::uint32_t seed = 1; seed <= last; ++seed) {
        mqf2vxb::RunOptions options;
        options.imageOutput = seed % 5 != 0;
        const std::string bytes = convertFiles(randomModel(seed), options).outputs.at("m.vxb");
        EXPECT_TRUE(comesBack(bytes) == bytes) << "seed " << seed;
    }
}

}  // namespace
}  // namespace vxbtool
