#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "support/memory_files.h"

namespace mqf2vxb::tests {
namespace {

constexpr std::uint32_t bit31 = 0x80000000;
constexpr std::uint32_t none = 0xFFFFFFFF;

void expectWords(const Conversion& done, const Words& expected) {
    EXPECT_EQ(done.report, "");
    EXPECT_EQ(show(done.words()), show(expected));
}

const char* const fiveVertices = "0 0 0;1 0 0;2 -1 0;3 -2.7 0.96;1.5 -2.7 40000;";

TEST(Layout, OneBodyWithoutHierarchy) {
    ModelFiles model;
    model.geo = "5 3 10;" + std::string(fiveVertices) + "0 0 1;0 -1 0;0.5 0 0;" +
                repeated(9, "0 0 1 2 9 0 1 2 9;") + "0 3 4 0 9 2 1 2 9";
    model.srf = "2;9,0-7 0 F C 1 2 3;8 0 F C 255 255 255";
    Words expected{0x50,       0,          6,          2,          0,
                   0,                                                           //
                   1,          3,          17 | bit31, 47 | bit31, 57 | bit31,  //
                   none,       7,          1 | bit31,  8,          bit31 | 10U << 16U | 2,
                   0,  //
                   0x20030201, 0x00030002, 0x00000004};
    for (int i = 0; i < 9; ++i) {
        expected.insert(expected.end(),
                        {i < 8 ? 0x20030201U : 0x20FFFFFFU, 0x00000000, 0x00020001});
    }
    expected.insert(expected.end(), {0, 0, 1, 0, 0xFFFF0002, 0, 0xFFFE0003, 0, 0xFFFE0001, 0x9C40,
                                     0, 0x1000, 0xF0000000, 0, 0x0800, 0});
    ASSERT_EQ(expected.size(), 63U);
    expectWords(convertFiles(model), expected);

    // The scale reaches the vertices only.
    RunOptions options;
    options.scale = -2.5F;
    expected.resize(47);
    expected.insert(expected.end(), {0, 0, 0xFFFE, 0, 0x0002FFFB, 0, 0x0006FFF9, 0xFFFE, 0x0006FFFD,
                                     0x7960, 0, 0x1000, 0xF0000000, 0, 0x0800, 0});
    expectWords(convertFiles(model, options), expected);
}

TEST(Layout, TwoBodiesUnderTwoCoordinates) {
    ModelFiles model;
    model.geo = "8 0 6;" + std::string(fiveVertices) + "5 0 0;6 0 0;7 0 0;" +
                repeated(4, "0 0 1 2 0 0 0 0 0;") + repeated(2, "1 4 5 6 7 0 0 0 0;");
    model.srf = "1;0-5 0 F C 0 0 0";
    model.frm = "=NULL;2;4096 0 0 0 4096 0 0 0 4096 0 0 -500 1 -2 3 0;"
                "-1 0 5 6 7 8 9 10 -11 1 2 -3 0 0 65535 0;0 4 0-3;1 4 4-7";
    Words expected{
        0x50,       0,          49,         4,          0,          55,         61,     0,  //
        2,          0,          0x1000,     0,          0x1000,     0,          0x1000, 0,
        0,          0xFFFFFE0C,  //
        0,          0,          0,          0,          0,          0,          0,      0,
        0xFFFE0001, 3,          0,                                                          //
        0,          0x0000FFFF, 0x00060005, 0x00080007, 0x000A0009, 0x0000FFF5, 1,      2,  //
        0xFFFFFFFD, 0,          0,          0,          0,          0,          0,      0,
        0,          0,          0x0000FFFF, 9,                                  //
        1,          4,          67 | bit31, 87 | bit31, 0,          8 | bit31,  //
        none,       50,         1 | bit31,  0x00800008, 0x80040002, 0,          //
        none,       50,         1 | bit31,  0x00000010, 0x80020002, 12};
    for (int i = 0; i < 4; ++i) {
        expected.insert(expected.end(), {0x20000000, 0, 0x00020001});
    }
    for (int i = 0; i < 2; ++i) {
        expected.insert(expected.end(), {0x28000000, 0x00040000, 0x00060005, 7});
    }
    expected.insert(expected.end(), {0, 0, 1, 0, 0xFFFF0002, 0, 0xFFFE0003, 0, 0xFFFE0001, 0x9C40,
                                     5, 0, 6, 0, 7, 0});
    ASSERT_EQ(expected.size(), 103U);
    expectWords(convertFiles(model), expected);
}

TEST(Layout, EveryPolygonShared) {
    ModelFiles model;
    model.geo = "3 2 1;1 0 0;2 0 0;3 0 0;0 0 1;0 -1 0;0 0 1 2 0 0 1 1 0";
    model.srf = "1;0 0 F C 0 0 0";
    model.frm =
        "=NULL;2;1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 0;1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 1;0 2 0,1;1 1 2";
    const Words words = convertFiles(model).words();
    const Words expected{1,           6,         85 | bit31, 88 | bit31, 94 | bit31, 102 | bit31,
                         104 | bit31, 8 | bit31,  //
                         none,        50,        1 | bit31,  0x01800000, 0x80000007, 2,
                         0,           0,         0,          0,          0,  //
                         none,        50,        1 | bit31,  0x01000000, 0x80000007, 1,
                         2,           2,         1,          0,          0,              //
                         none,        50,        1 | bit31,  0x01000008, 0x80010002, 0,  //
                         0x20000000,  0,         0x00020001,                             //
                         1,           0,         2,          0,          3,          0,
                         0,           0,         0,          0,          0,          0,  //
                         0xF0000000,  0,         0,          0x1000,     0,          0};
    EXPECT_EQ(show(Words(words.begin(), words.begin() + 8)), show({0x50, 0, 49, 4, 0, 57, 68, 79}));
    EXPECT_EQ(show(Words(words.begin() + 49, words.end())), show(expected));
}

TEST(Layout, WithoutPrimitives) {
    expectWords(convertFiles(ModelFiles{}), {0x50, 0, 6, 2, 0, 0, 0});

    // What is not written counts nothing in the offsets behind it.
    ModelFiles model;
    model.geo = "2 1 0;0 0 0;1 1 1;0 0 1";
    model.srf = "0";
    model.images = {image(2, {7, 8, 9})};
    expectWords(convertFiles(model), {0x50, 0, 6, 2, 10, 0, 1, 2, 18 | bit31, 0,  //
                                      none, 7, 1 | bit31, 0x02000000, 0x80010004, 7, 8, 0, 9});
    RunOptions noImages;
    noImages.imageOutput = false;
    expectWords(convertFiles(model, noImages), {0x50, 0, 6, 2, 0, 0, 0});

    // A coordinate with objects that nothing draws points where the first header would be.
    model.frm = "=NULL;2;1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 0;1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 1;1 1 0";
    const Words words = convertFiles(model, noImages).words();
    ASSERT_EQ(words.size(), 50U);
    EXPECT_EQ(show(Words(words.begin(), words.begin() + 8)), show({0x50, 0, 49, 4, 0, 0, 50, 0}));
}

TEST(Layout, WithoutObjects) {
    ModelFiles model;
    model.geo = "3 0 1;1 0 0;2 0 0;3 0 0;0 0 1 2 0 0 0 0 0";
    model.srf = "1;0 0 F C 0 0 0";
    model.frm = "=NULL;1;1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 0";
    const Words words = convertFiles(model).words();
    ASSERT_EQ(words.size(), 48U);
    EXPECT_EQ(words[5], 0U);
    EXPECT_EQ(show(Words(words.begin() + 28, words.begin() + 39)),
              show({1, 3, 39 | bit31, 42 | bit31, 0, none, 29, 1 | bit31, 8, 0x80010002, 0}));
}

TEST(Layout, HexTextHoldsTheSameWordsWithTheirComments) {
    const Conversion done = convertFiles(smallModel(), withHex());
    std::ifstream file(MQF2VXB_TEST_DATA "/small_model.hex");
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(done.hex(), expected);
    EXPECT_EQ(show(done.words()), show(between(done.hex(), "/* ID */")));
    EXPECT_EQ(show(done.words()), show(convertFiles(smallModel()).words()));

    // A model of shared polygons only has comments of its own.
    ModelFiles model;
    model.geo = "3 1 1;1 0 0;2 0 0;3 0 0;0 0 1;0 0 1 2 0 0 0 0 0";
    model.srf = "1;0 0 F C 0 0 0";
    model.frm =
        "=NULL;2;1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 0;1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 1;0 2 0,1;1 1 2";
    EXPECT_EQ(
        show(between(convertFiles(model, withHex()).hex(), "/* Shared Vertex Top(Vertex Top) */")),
        show({1, 0, 2, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0x1000, 0, 0}));
    EXPECT_EQ(
        show(between(convertFiles(model, withHex()).hex(), "/* Shared Normal Top(Normal Top) */")),
        show({0, 0x1000, 0, 0}));
}

}  // namespace
}  // namespace mqf2vxb::tests
