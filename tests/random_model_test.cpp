#include "support/random_model.h"

#include <gtest/gtest.h>

#include <set>

#include "reader/vxb_reader.h"

namespace mqf2vxb::tests {
namespace {

TEST(RandomModels, ReadBackWithoutAnError) {
    std::set<PrimitiveTypeCode> codes;
    for (std::uint32_t seed = 1; seed <= 400; ++seed) {
        const ModelFiles model = randomModel(seed);
        const Conversion done = convertFiles(model, withHex());
        ASSERT_EQ(done.report, "") << "seed " << seed;
        const VxbFile file = readVxb(done.outputs.at("m.vxb"));
        for (const Finding& found : file.findings.kept()) {
            EXPECT_NE(found.kind->severity, Severity::error)
                << "seed " << seed << ": " << found.line();
        }
        EXPECT_EQ(file.words, between(done.hex(), "/* ID */")) << "seed " << seed;
        for (const PacketGroup& group : file.packetGroups) {
            codes.insert(type_code::form(group.code));
        }
    }
    EXPECT_EQ(codes.size(), 66U);
}

}  // namespace
}  // namespace mqf2vxb::tests
