#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "base/diagnostics.h"
#include "support/memory_files.h"
#include "support/random_model.h"
#include "vxb/vxb_reader.h"
#include "vxb/word_meaning.h"
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

/// The first word that differs, or the report in the place of the words.
std::string difference(const std::string& bytes, const std::string& again) {
    if (again.starts_with('\n')) {
        return again;
    }
    const VxbFile file = mqf2vxb::readVxb(bytes);
    const VxbFile other = mqf2vxb::readVxb(again);
    const auto [at, otherAt] = std::ranges::mismatch(file.words, other.words);
    const auto offset = static_cast<std::uint32_t>(at - file.words.begin());
    return placeName(file, offset) + ", " + placeName(other, offset);
}

TEST(Unpack, RandomModelsComeBackWordForWord) {
    const char* const seeds = std::getenv("UNPACK_SEEDS");
    const std::uint32_t last = seeds != nullptr ? static_cast<std::uint32_t>(std::atoi(seeds)) : 300;
    for (std::uint32_t seed = 1; seed <= last; ++seed) {
        mqf2vxb::RunOptions options;
        options.imageOutput = seed % 5 != 0;
        const std::string bytes = convertFiles(randomModel(seed), options).outputs.at("m.vxb");
        const std::string again = comesBack(bytes);
        if (again != bytes) {
            std::ofstream("/tmp/d/u/" + std::to_string(seed) + ".vxb") << bytes;
            std::ofstream("/tmp/d/u/" + std::to_string(seed) + ".again.vxb") << again;
            MemoryFileSystem sys(randomModel(seed).files());
            std::system(("mkdir -p /tmp/d/u/" + std::to_string(seed)).c_str());
            for (auto& [n, t] : sys.inputs) std::ofstream("/tmp/d/u/" + std::to_string(seed) + "/" + n) << t;
        }
        EXPECT_TRUE(again == bytes) << "seed " << seed << ": " << difference(bytes, again);
    }
}

}  // namespace
}  // namespace vxbtool
