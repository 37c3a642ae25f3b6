#include <gtest/gtest.h>

#include "base/diagnostics.h"
#include "support/memory_files.h"

namespace mqf2vxb::tests {
namespace {

/// An image in the image memory and the fields that its place gives.
struct Placement {
    std::uint32_t flag;      ///< depth 0, 1 or 2, and 8 with a CLUT
    std::uint32_t position;  ///< y in the high half, x in the low one, like the CLUT's
    std::uint32_t clut;
    std::uint32_t u, v;  ///< where the image's corner lies on its page
    std::uint32_t clutField, pageField;
};

constexpr Placement placements[] = {
    {0, 0x00000000, 0, 0, 0, 0, 0x000},
    {0, 0x00FF003F, 0, 252, 255, 0, 0x000},
    {0, 0x0000003F, 0, 252, 0, 0, 0x000},
    {1, 0x00FF003F, 0, 126, 255, 0, 0x080},
    {1, 0x01FF03FF, 0, 126, 255, 0, 0x09F},
    {2, 0x01000040, 0, 0, 0, 0, 0x111},
    {2, 0x01FF007F, 0, 63, 255, 0, 0x111},
    {0, 0x02000000, 0, 0, 0, 0, 0x800},
    {0, 0x03010041, 0, 4, 1, 0, 0x811},
    {8, 0x00000000, 0x01FF03F0, 0, 0, 0x7FFF, 0x000},
    {8, 0x00000000, 0x00010010, 0, 0, 0x0041, 0x000},
    {9, 0x00000000, 0x0000000F, 0, 0, 0x0000, 0x080},
    {9, 0x00000000, 0x04000400, 0, 0, 0x0000, 0x080},
};

/// A polygon whose corners but the first lie `u` to the right, `v` below, and both.
Conversion convertTextured(const Placement& image, std::uint32_t u, std::uint32_t v,
                           const std::string& shape) {
    const std::string right = std::to_string(u);
    const std::string below = std::to_string(v);
    ModelFiles model;
    model.geo = "4 1 1;0;0;0;0;0 0 1;" + shape + " 0 1 2 3 0 0 0 0";
    model.srf = "1;0 0 F T 0 0 0 " + right + " 0 0 " + below + " " + right + " " + below;
    model.images = {tests::image(image.flag, {image.position, 0},
                                 (image.flag & 8U) != 0 ? Words{image.clut, 0} : Words{})};
    return convertFiles(model);
}

TEST(TextureWords, ReachTheLastTexelOfThePageAndNoFurther) {
    constexpr std::size_t primitiveTop = 8;
    for (const Placement& row : placements) {
        const std::uint32_t u = 255 - row.u;
        const std::uint32_t v = 255 - row.v;
        for (const std::string shape : {"0", "1"}) {
            SCOPED_TRACE(formatText("%08x, depth %u, shape ", row.position, row.flag) + shape);
            const Conversion done = convertTextured(row, u, v, shape);
            ASSERT_EQ(done.report, "");
            const Words words = done.words();
            const std::size_t top = words.at(primitiveTop) & 0x7FFFFFFFU;
            EXPECT_EQ(words.at(top), row.u | row.v << 8U | row.clutField << 16U);
            EXPECT_EQ(words.at(top + 1), 255U | row.v << 8U | row.pageField << 16U);
            EXPECT_EQ(words.at(top + 2), row.u | 0xFF00U);
            if (shape == "1") {
                EXPECT_EQ(words.at(top + 3), 0xFFFFU);
            }
            const std::string refused = "\nNot suitable texture\n";
            EXPECT_EQ(convertTextured(row, u + 1, v, shape).report, refused);
            EXPECT_EQ(convertTextured(row, u, v + 1, shape).report, refused);
        }
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
