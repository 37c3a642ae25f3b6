#include <gtest/gtest.h>

#include "support/memory_files.h"

namespace mqf2vxb::tests {
namespace {

constexpr std::uint32_t bit31 = 0x80000000;
constexpr std::uint32_t none = 0xFFFFFFFF;

/// The animation section of a model of these motions alone.
Words animation(const std::vector<std::string>& clp) {
    ModelFiles model;
    model.clp = clp;
    const Conversion done = convertFiles(model);
    EXPECT_EQ(done.report, "");
    Words words = done.words();
    // Header, block table, and a header section with the animation's global header of six words.
    const Words start{0x50, 0, 6, 2, 13, 0, 1, 5, 5};
    EXPECT_EQ(show(Words(words.begin(), words.begin() + 9)), show(start));
    words.erase(words.begin(), words.begin() + 13);
    return words;
}

const std::string noCoordinates = "COORDINATE;0;";

TEST(Motion, HeadersStepsAndKeyFrames) {
    EXPECT_EQ(
        show(animation(
            {"COORDINATE and more;2;3 2 nothing;KEY2 two one;START one 0xABCD;"
             "7 3 two;START nothing 0x1;KEY2 one one;KEY2 nothing two;"
             "replaced;seq;one;SEQ 255 ps0r1t1 0;SEQ 1 ps0r0t1 1;two;"
             "GOTO one 0x7f 0x1;GOTO nothing 0x0 0x7f;END 0x7f;SEQ 2 ps0r0t0 0;SEQ 3 ps0r1t0 4;"
             "TYPE ps0r1t1;0.9 -1.9 70000 1 2 -3;-70000 0 0 32768 65537 1e30;"
             "TYPE ps0r0t1;1 2 3;4 5;TYPE ps0r0t0;1 -1 9"})),
        show({none,       7,          1 | bit31,  0x03800000, 0x80020012,  //
              0x0400003D, 0x00020008, 0,          0xFFFF0000, 0,          0,          0x00000002,
              0xABCD0000, 0x0400008D, 0x00030009, 0,          0x00020000, 0,          0,
              0x00010000, 0,          0x00020000, 2 | bit31,  0x03000011, 0x03000001,  //
              0x00FF0000, 0x0101000D, 0xBF810000, 0x807F0000, 0xC0FF0000, 0x00020010,
              0x00030010,  // no group of the type: key frame 4 of all
              0,          none,       70000,      0x00020001, 0x0000FFFD,  //
              0xFFFEEE90, 0,          0,          0x00018000, 0,           //
              1,          2,          3,          4,          5,          0,          0xFFFF0001}));
}

TEST(Motion, KeyFrameTypes) {
    struct Case {
        const char* code;
        std::uint32_t type;
        Words words;  ///< of the key frame 1 -2 3 -4 5 -6 7 -8 9
    };
    for (const Case& c :
         {Case{"ps0r0t0", 0x03000000, {0xFFFE0001}},
          {"ps0r0t1", 0x03000001, {1, 0xFFFFFFFE, 3}},
          {"ps0r0t9", 0x03000009, {0xFFFE0001, 3}},
          {"ps9r0t9", 0x03000909, {0xFFFE0001, 0xFFFC0003}},
          {"ps1r0t0", 0x03000100, {0xFFFE0001, 3}},
          {"ps0r1t0", 0x03000010, {0xFFFE0001, 3}},
          {"ps9r1t0", 0x03000910, {0xFFFE0001, 0xFFFC0003}},
          {"ps0r1t1", 0x03000011, {1, 0xFFFFFFFE, 3, 0x0005FFFC, 0xFFFA}},
          {"ps9r1t1", 0x03000911, {1, 0xFFFFFFFE, 3, 0x0005FFFC, 0x0007FFFA}},
          {"ps1r1t1", 0x03000111, {1, 0xFFFFFFFE, 3, 0x0005FFFC, 0x0007FFFA, 0x0009FFF8}},
          {"ps0r1t9", 0x03000019, {0xFFFE0001, 0xFFFC0003, 0xFFFA0005}},
          {"ps1r1t9", 0x03000119, {0xFFFE0001, 0xFFFC0003, 0xFFFA0005, 0xFFF80007, 9}}}) {
        const std::string code = c.code;
        Words expected{none, 7, 1 | bit31, 0x03800000, 0x80000001};
        if (c.type == 0x03000000) {
            expected.push_back(bit31);
        } else {
            expected.insert(expected.end(), {1 | bit31, c.type});
        }
        expected.push_back(0x00010000 | static_cast<std::uint32_t>(c.words.size()));
        expected.insert(expected.end(), c.words.begin(), c.words.end());
        expected.insert(expected.end(), c.words.begin(), c.words.end());
        const std::string keyFrame = "1 -2 3 -4 5 -6 7 -8 9;";
        EXPECT_EQ(show(animation({noCoordinates + "SEQ 1 " + code + " 1;TYPE " + code + ";" +
                                  keyFrame + keyFrame})),
                  show(expected))
            << code;
    }
}

TEST(Motion, NumbersRunOverAllMotionsAndLabelsDoNot) {
    EXPECT_EQ(
        show(animation({"COORDINATE;1;0 0 here;END 0x0;there;END 0x1;TYPE ps1r0t0;TYPE ps0r1t1;1",
                        "COORDINATE;1;0 1 there;START here 0x2;SEQ 0 ps0r0t9 0;here;"
                        "SEQ 0 ps0r1t1 0;GOTO there 0x0 0x0;TYPE ps0r1t1;2;TYPE ps0r0t9;3"})),
        show({none,       7,          2 | bit31,  //
              0x03800000, 0x80010007, 0x04000001, 6,          0,          0xFFFF0000, 0,
              0,          0x03000000, 0x80010008, 0x04000001, 0x00010007, 0,          0xFFFF0000,
              0,          0,          0x00020003, 3 | bit31,  0x03000100, 0x03000011, 0x03000009,
              0xC0800000, 0xC0810000, 0x0200000A, 0x01000005, 0x80000000, 1,          0,
              0,          0,          0,          2,          0,          0,          0,
              0,          3,          0}));
    // Only the first motion's first step and key frame can carry the tops' comments.
    ModelFiles model;
    model.clp = {noCoordinates + "TYPE ps0r0t0", noCoordinates + "END 0x0;TYPE ps0r0t0;1"};
    const std::string hex = convertFiles(model, withHex()).hex();
    EXPECT_EQ(hex.find("/* Control Top */\n", hex.find("/* Animation Type */")), std::string::npos);
    EXPECT_EQ(hex.find("/* Matrix Top */\n", hex.find("/* Animation Type */")), std::string::npos);
}

TEST(Images, Section) {
    ModelFiles model;
    const auto data = [](std::uint32_t first, std::uint32_t count) {
        Words words{first << 16U, first << 8U};
        for (std::uint32_t i = 0; i < count; ++i) {
            words.push_back(first + i);
        }
        return words;
    };
    model.images = {image(2, data(100, 10)), image(0x0C, data(200, 20), data(300, 16)),
                    image(1, data(400, 0)), image(9, data(500, 1), data(600, 2))};
    // Bytes behind a block's last whole word are not read, and bits without a meaning do not count.
    model.images[2].replace(0, 12, bytesOf({0xFFFFFF11, 0xFFFFFFF5, 15}));
    const Conversion done = convertFiles(model, withHex());
    Words expected{none,        7,          2 | bit31, 0x02000000,  0x80020007,  //
                   100U << 16U, 100U << 8U, 0,         400U << 16U, 400U << 8U, 10,
                   0x02000001,  0x8002000D,  //
                   200U << 16U, 200U << 8U, 10,        300U << 16U, 300U << 8U, 0,
                   500U << 16U, 500U << 8U, 30,        600U << 16U, 600U << 8U, 16};
    for (const auto& [first, count] : {std::pair{100, 10}, std::pair{200, 20}, std::pair{500, 1},
                                       std::pair{300, 16}, std::pair{600, 2}}) {
        for (int i = 0; i < count; ++i) {
            expected.push_back(static_cast<std::uint32_t>(first + i));
        }
    }
    EXPECT_EQ(done.report, "");
    EXPECT_EQ(show(between(done.hex(), "/* Next Primitive Pointer */")), show(expected));
    EXPECT_EQ(between(done.hex(), "/* Clut Top */").at(0), bit31 | (10 + 25 + 31));
    EXPECT_NE(done.hex().find("0x00000064,\t/* Image Top */\n"), std::string::npos);
    EXPECT_NE(done.hex().find("0x0000012c,\t/* Clut Top */\n"), std::string::npos);
}

TEST(Model, FilesAreReadInTheirOrder) {
    ModelFiles model = smallModel();
    model.frm.replace(0, 5, "=g.sqx");
    model.frm.erase(model.frm.find("1 4 0-3"));
    model.sqx = "0";
    model.bnd.clear();
    EXPECT_EQ(convertFiles(model).opened,
              (std::vector<std::string>{"m.mqf", "0.pxl", "1.pxl", "g.geo", "s.srf", "a.axs",
                                        "f.frm", "g.sqx", "0.clp", "1.clp"}));
    Files files = smallModel().files();
    files["m.mqf"] =
        "# x\n\n@MQF970401\nGEO=no.geo\n GEO=x\nGEO=\tg.geo x\nsrf=x\nSRF=s.srf\nSQD=gone\nXYZ\nNTEX=0\n"
        "TEX[0]=x\nNTEX=2\nTEX[1]=1.pxl\n#\nTEX[0]=x\nNTEX=2\nTEX[1]=0.pxl\n\nTEX[0]=1.pxl\nNCLP=0";
    EXPECT_EQ(convertFiles(files).opened,
              (std::vector<std::string>{"m.mqf", "1.pxl", "0.pxl", "g.geo", "s.srf"}));
}

}  // namespace
}  // namespace mqf2vxb::tests
