#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "support/pictures.h"
#include "support/test_folder.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/pictures/placing.h"
#include "vxbtool/shared/in_memory.h"

namespace vxbtool::pictures {
namespace {

using mqf2vxb::tests::pictureFile;
using mqf2vxb::tests::plainPicture;
using mqf2vxb::tests::smallPicture;
using mqf2vxb::tests::TestFolder;
using testing::ElementsAre;
using testing::HasSubstr;

/// Many colours, as a photograph has.
Picture manyColours(std::uint32_t side) {
    std::mt19937 random(5);
    Picture picture{side, side, {}};
    for (std::uint32_t i = 0; i < side * side; ++i) {
        const auto part = [&](std::uint32_t place) {
            return static_cast<std::uint8_t>(place * 230 / side + random() % 24);
        };
        picture.texels.push_back(
            {part(i % side), part(i / side), part((i % side + i / side) / 2), 255});
    }
    return picture;
}

/// The value of a texel in the columns of a block: the first texel in the low bits.
std::uint32_t valueAt(const std::vector<std::uint32_t>& words, std::uint32_t columns,
                      std::uint32_t depth, std::uint32_t x, std::uint32_t y) {
    const std::uint32_t bit = (y * columns * 16) + x * depth;
    return words[bit / 32] >> bit % 32 & ((1U << depth) - 1);
}

/// The 16-bit colour of a texel, through the table if there is one.
std::uint32_t colourAt(const PlacedTexture& placed, std::uint32_t x, std::uint32_t y) {
    const model_text::Texture& texture = placed.texture;
    const std::uint32_t value =
        valueAt(texture.pixels.words, texture.pixels.size & 0xFFFFU, placed.depth, x, y);
    return texture.clut ? valueAt(texture.clut->words, 0, 16, value, 0) : value;
}

PlacedTexture placedAlone(const Picture& picture, const Reduction& reduction = {}) {
    return place(std::vector<WantedTexture>{{picture, reduction, false}}, {}).textures.at(0);
}

TEST(Pictures, ResizedInTheLightAndWithoutTheColourOfHoles) {
    Picture picture{2, 1, {{255, 255, 255, 255}, {0, 0, 0, 255}}};
    const Rgba grey = resized(picture, 1, 1, Edges::repeat).texels[0];
    EXPECT_NEAR(grey[0], 188, 2);  // half the light
    picture.texels[1] = {255, 0, 0, 0};
    EXPECT_THAT(resized(picture, 1, 1, Edges::repeat).texels[0], ElementsAre(255, 255, 255, 128));
    EXPECT_THAT(tinted(picture, {0.5F, 1.0F, 2.0F}).texels[0], ElementsAre(128, 255, 255, 255));
}

TEST(Pictures, GlassIsTranslucentButASoftEdgeIsNot) {
    EXPECT_TRUE(isTranslucent(plainPicture(4, 4, {9, 9, 9, 100})));
    EXPECT_FALSE(isTranslucent(plainPicture(4, 4, {9, 9, 9, 0})));
    Picture leaf = plainPicture(16, 16, {0, 200, 0, 255});
    for (std::uint32_t i = 0; i < 16; ++i) {
        leaf.texels[i] = {0, 200, 0, 0};
        leaf.texels[16 + i][3] = 128;
    }
    EXPECT_FALSE(isTranslucent(leaf));
    EXPECT_TRUE(hasHoles(leaf));
    EXPECT_FALSE(hasHoles(plainPicture(4, 4, {9, 9, 9, 128})));
}

TEST(Pictures, FewColoursBecomeTheseWords) {
    const Rgba black{0, 0, 0, 255};
    const Rgba red{255, 0, 0, 255};
    const Rgba blue{0, 0, 255, 128};
    const Rgba hole{90, 90, 90, 127};
    const PlacedTexture placed =
        placedAlone({5, 2, {hole, red, red, blue, black, black, black, blue, red, hole}});
    EXPECT_EQ(placed.depth, 4U);
    EXPECT_EQ(placed.colours, 4U);
    EXPECT_TRUE(std::isinf(placed.psnr));
    EXPECT_EQ(placed.texture.mode, 0U);
    ASSERT_TRUE(placed.texture.clut);
    // Not drawn, red, blue, and a black that is drawn, in ascending order of their values.
    EXPECT_THAT(placed.texture.clut->words, ElementsAre(0x001F0000, 0x80007C00, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(placed.texture.clut->size, 0x00010010U);
    // Lines of whole words, filled with their last texel.
    EXPECT_THAT(placed.texture.pixels.words, ElementsAre(0x33332110, 0x00001233 & 0xFFFF));
    EXPECT_EQ(placed.texture.pixels.size, 0x00020002U);
    EXPECT_EQ(placed.texture.pixels.x, 640);
    EXPECT_EQ(placed.texture.clut->y, 511);

    const PlacedTexture direct = placedAlone({2, 1, {black, red}}, {Colours::direct, true, true});
    EXPECT_EQ(direct.texture.mode, 2U);
    EXPECT_FALSE(direct.texture.clut);
    EXPECT_THAT(direct.texture.pixels.words, ElementsAre(0x801F8000));
}

double psnrOf(const Picture& picture, const PlacedTexture& placed) {
    double squares = 0;
    for (std::uint32_t i = 0; i < picture.texels.size(); ++i) {
        const std::uint32_t colour = colourAt(placed, i % picture.width, i / picture.width);
        for (unsigned c = 0; c < 3; ++c) {
            const double five = colour >> 5 * c & 31U;
            squares += std::pow(std::floor(five * 8.25) - picture.texels[i][c], 2);
        }
    }
    return 10 * std::log10(255.0 * 255 * 3 * static_cast<double>(picture.texels.size()) / squares);
}

TEST(Pictures, AsManyColoursAsThePictureNeeds) {
    const Picture photo = manyColours(64);
    const PlacedTexture automatic = placedAlone(photo);
    EXPECT_EQ(automatic.depth, 8U);
    for (const auto& [colours, depth, least] :
         {std::tuple(Colours::sixteen, 4U, 22.0), std::tuple(Colours::many, 8U, 31.0),
          std::tuple(Colours::direct, 16U, 38.0)}) {
        const PlacedTexture placed = placedAlone(photo, {colours, true, false});
        EXPECT_EQ(placed.depth, depth);
        EXPECT_GT(placed.psnr, least);
        EXPECT_NEAR(placed.psnr, psnrOf(photo, placed), 0.01) << depth;
    }
    // A table of 256 colours would cost more memory than it saves.
    EXPECT_EQ(placedAlone(manyColours(20)).depth, 16U);
    EXPECT_LE(placedAlone(plainPicture(64, 64, {7, 8, 9, 255})).depth, 4U);
}

TEST(Pictures, HolesStayHolesAmongManyColours) {
    Picture picture = manyColours(48);
    for (std::size_t i = 0; i < picture.texels.size(); i += 3) {
        picture.texels[i][3] = 0;
    }
    for (std::size_t i = 1; i < picture.texels.size(); i += 9) {
        picture.texels[i] = {0, 0, 0, 255};
    }
    for (const Colours colours : {Colours::sixteen, Colours::many, Colours::direct}) {
        const PlacedTexture placed = placedAlone(picture, {colours, true, false});
        for (std::uint32_t i = 0; i < picture.texels.size(); ++i) {
            ASSERT_EQ(colourAt(placed, i % 48, i / 48) == 0, picture.texels[i][3] == 0) << i;
        }
    }
}

/// The rules of image memory, stated without the code that keeps them.
void expectRulesKept(const Placing& placing, const Area& area) {
    std::vector<bool> taken(std::size_t{1024} * 1024);
    const auto take = [&](const model_text::ImageBlock& block) {
        const std::uint32_t width = block.size & 0xFFFFU;
        const std::uint32_t height = block.size >> 16U;
        EXPECT_GE(block.x, area.x);
        EXPECT_GE(block.y, area.y);
        EXPECT_LE(block.x + width, area.x + area.width);
        EXPECT_LE(block.y + height, area.y + area.height);
        EXPECT_EQ(block.words.size() * 2, std::size_t{width} * height);
        for (std::uint32_t y = block.y; y < block.y + height; ++y) {
            for (std::uint32_t x = block.x; x < block.x + width; ++x) {
                EXPECT_FALSE(taken[y * 1024 + x]) << x << ", " << y;
                taken[y * 1024 + x] = true;
            }
        }
    };
    for (const PlacedTexture& placed : placing.textures) {
        const model_text::ImageBlock& block = placed.texture.pixels;
        take(block);
        // Texels count from the first of the page, and run to 255.
        const std::uint32_t u = block.x % 64 * (16 / placed.depth);
        const std::uint32_t v = block.y % 256;
        EXPECT_LE(u + placed.width, 256U) << describe(placed);
        EXPECT_LE(v + placed.height, 256U) << describe(placed);
        EXPECT_LE(placed.width, (block.size & 0xFFFFU) * (16 / placed.depth));
        if (placed.repeats) {
            const std::set<std::uint32_t> sides{8, 16, 32, 64, 128, 256};
            EXPECT_TRUE(sides.contains(placed.width) && sides.contains(placed.height));
            EXPECT_EQ(u % placed.width, 0U);
            EXPECT_EQ(v % placed.height, 0U);
        }
        if (placed.texture.clut) {
            take(*placed.texture.clut);
            EXPECT_EQ(placed.texture.clut->x % 16, 0);
            EXPECT_EQ(placed.texture.clut->words.size(), std::size_t{1} << (placed.depth - 1));
        }
    }
}

TEST(Pictures, PlacesKeepTheRulesOfImageMemory) {
    std::size_t halvings = 0;
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        std::mt19937 random(seed);
        std::vector<WantedTexture> wanted;
        const auto count = 1 + random() % 40;
        for (std::uint32_t i = 0; i < count; ++i) {
            const auto side = [&] {
                return static_cast<std::uint32_t>(1 + random() % (1U << (1 + random() % 8)));
            };
            constexpr std::array depths{Colours::automatic, Colours::sixteen, Colours::many,
                                        Colours::direct};
            // No two are equal.
            const Rgba colour{static_cast<std::uint8_t>(i * 5), 200, 100, 255};
            wanted.push_back({plainPicture(side(), side(), colour),
                              {depths[random() % depths.size()], true, false},
                              random() % 3 == 0});
        }
        PlacingOptions options;
        if (seed % 4 == 0) {
            options.memory.textures = {static_cast<std::uint32_t>(random() % 400),
                                       static_cast<std::uint32_t>(random() % 300),
                                       320 + static_cast<std::uint32_t>(random() % 300),
                                       300 + static_cast<std::uint32_t>(random() % 300)};
        }
        SCOPED_TRACE(seed);
        const Placing placing = place(wanted, options);
        ASSERT_EQ(placing.textures.size(), wanted.size());
        expectRulesKept(placing, options.memory.textures);
        for (const PlacedTexture& placed : placing.textures) {
            halvings += placed.halvings;
        }
    }
    EXPECT_GT(halvings, 0U);
}

TEST(Pictures, FullMemoryHalvesTheLargest) {
    std::vector<WantedTexture> wanted;
    for (std::uint8_t i = 0; i < 3; ++i) {
        wanted.push_back(
            {plainPicture(150, 150, {i, 0, 0, 255}), {Colours::direct, true, false}, false});
        wanted.push_back({plainPicture(30, 20, {0, i, 9, 255}), {}, false});
    }
    wanted.push_back(wanted[1]);
    PlacingOptions options;
    options.memory.textures = {0, 0, 256, 512};
    const Placing placing = place(wanted, options);
    ASSERT_EQ(placing.textures.size(), 6U);
    EXPECT_THAT(placing.textureOf, ElementsAre(0, 1, 2, 3, 4, 5, 1));
    std::size_t halved = 0;
    for (const PlacedTexture& placed : placing.textures) {
        EXPECT_EQ(placed.width, placed.pictureWidth >> placed.halvings);
        EXPECT_TRUE(placed.halvings == 0 || placed.pictureWidth == 150) << describe(placed);
        halved += placed.halvings;
    }
    EXPECT_EQ(halved, 1U);

    options.memory.textures = {0, 0, 16, 2};
    EXPECT_THROW(place(wanted, options), PictureFault);
    options.memory.textures = {1000, 0, 100, 100};
    EXPECT_THROW(place(wanted, options), PictureFault);
}

/// A model of a square for each of the textures that "vxbtool image" names.
std::string modelOf(const TestFolder& folder, const std::string& lines, std::size_t textures) {
    folder.write("m.mqf", "@MQF970401\nGEO=m.geo\nSRF=m.srf\n" + lines);
    std::string vertices, polygons, materials;
    for (std::size_t i = 0; i < textures; ++i) {
        const std::string z = " " + std::to_string(i) + "\n";
        vertices += "0 0" + z + "0 9" + z + "9 0" + z + "9 9" + z;
        polygons += "1";
        for (std::size_t corner = 0; corner < 4; ++corner) {
            polygons += " " + std::to_string(4 * i + corner);
        }
        polygons += " 0 0 0 0\n";
        materials += std::to_string(i) + " 1 F T " + std::to_string(i) + " 0 0 0 3 7 0 7 3\n";
    }
    const std::string count = std::to_string(textures);
    folder.write("m.geo", "@GEO970401\n" + std::to_string(4 * textures) + " 0 " + count + "\n" +
                              vertices + polygons);
    folder.write("m.srf", "@SRF970401\n" + count + "\n" + materials);
    return "'" VXBTOOL_PROGRAM "' lint m.mqf && '" VXBTOOL_PROGRAM "' convert m.mqf";
}

TEST(Image, PicturesComeBackOutOfAVxbFile) {
    const TestFolder folder;
    folder.write("a b.png", pictureFile("small.png"));
    folder.write("c.ppm", pictureFile("small.ppm"));
    const TestFolder::Result made =
        folder.run("'" VXBTOOL_PROGRAM "' image --depth 8 'a b.png' c.ppm");
    EXPECT_EQ(made.status, 0) << made.output;
    EXPECT_EQ(
        made.output,
        "NTEX=2\n"
        "# 8 x 4 texels of 8 bits at 640, 0, colour table at 640, 511; 29 colours, PSNR 41.1 dB\n"
        "TEX[0]=a_b.pxl\n"
        "# 8 x 4 texels of 8 bits at 644, 0, colour table at 640, 510; 32 colours, PSNR 41.3 dB\n"
        "TEX[1]=c.pxl\n");
    const TestFolder::Result converted = folder.run(modelOf(folder, made.output, 2));
    EXPECT_EQ(converted.status, 0);
    EXPECT_EQ(converted.output, "");

    const mqf2vxb::VxbFile file = mqf2vxb::readVxb(folder.read("m.vxb"));
    ASSERT_EQ(file.images.size(), 2U);
    for (const bool hole : {true, false}) {
        const mqf2vxb::Image& image = file.images[hole ? 0 : 1];
        const auto words = [&](const mqf2vxb::ImageBlock& block) {
            return std::vector(file.words.begin() + block.offset,
                               file.words.begin() + block.offset + block.words);
        };
        ASSERT_TRUE(image.clut);
        const Picture expected = smallPicture(hole);
        for (std::uint32_t i = 0; i < 32; ++i) {
            const std::uint32_t value =
                valueAt(words(image.pixels), image.pixels.width, 8, i % 8, i / 8);
            const std::uint32_t colour = valueAt(words(*image.clut), 0, 16, value, 0);
            const Rgba& texel = expected.texels[i];
            EXPECT_EQ(colour == 0, texel[3] == 0);
            for (unsigned c = 0; c < 3 && colour != 0; ++c) {
                EXPECT_NEAR((colour >> 5 * c & 31U) * 255.0 / 31, texel[c], 4.2) << i;
            }
        }
    }
}

TEST(Image, PlacesAndBytesAreThoseAskedFor) {
    const TestFolder folder;
    Picture photo = manyColours(160);
    std::string bytes = "P6 160 160 255\n";
    for (const Rgba& texel : photo.texels) {
        bytes.append(texel.begin(), texel.begin() + 3);
    }
    folder.write("p.ppm", bytes);
    const std::string image = "'" VXBTOOL_PROGRAM "' image ";
    EXPECT_THAT(
        folder.run(image + "--texture-size 100 --at 704,300 --clut-at 16,490 --repeat p.ppm")
            .output,
        HasSubstr("64 x 64 texels of 8 bits at 704, 320, colour table at 16, 490; "));
    // As many processors as there may be: the bytes are the same.
    const std::string first = folder.read("p.pxl");
    EXPECT_EQ(folder
                  .run("OMP_NUM_THREADS=7 " + image +
                       "--image-memory 640,0,384,512 --out-dir a p.ppm; "
                       "OMP_NUM_THREADS=1 " +
                       image + "--out-dir b p.ppm; cmp a/p.pxl b/p.pxl")
                  .status,
              0);
    const TestFolder::Result again = folder.run(image + "p.ppm");
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.output, "p.pxl is there already; --force replaces it\n");
    EXPECT_TRUE(folder.read("p.pxl") == first);
    EXPECT_EQ(folder.run(image + "--force p.ppm").status, 0);
    EXPECT_TRUE(folder.read("p.pxl") == folder.read("b/p.pxl"));
}

TEST(Image, BadPicturesAndOptionsAreToldAndNothingIsWritten) {
    const TestFolder folder;
    const std::string png = pictureFile("small.png");
    folder.write("good.png", png);
    folder.write("cut.png", png.substr(0, 60));
    folder.write("text.png",
                 "no picture at all, but long enough for every header that is looked for");
    folder.write("liar.ppm", "P6 9000 7000 255\nabc");
    folder.write("huge.ppm", "P6 16385 1 255\nabc");
    folder.write("good.tga", pictureFile("small.tga"));
    for (const auto& [arguments, status, text] : {
             std::tuple("cut.png", 1, "cut.png: the picture ends early"),
             std::tuple("text.png", 1, "text.png: no picture can be read from it: "),
             std::tuple("liar.ppm", 1, "liar.ppm: 20 bytes cannot hold 9000 x 7000 texels"),
             std::tuple("huge.ppm", 1, "huge.ppm: 16385 x 1 texels are more than"),
             std::tuple("none.png", 1, "none.png: the file cannot be read: No such file"),
             std::tuple(". ", 1, "."),
             std::tuple("good.tga", 2, "good.png and good.tga would both become good.pxl"),
             std::tuple("--at 1024,0", 2, "--at: 1024,0 does not lie inside"),
             std::tuple("--at 1,2,3", 2, "\"1,2,3\" is not 2 whole numbers"),
             std::tuple("--clut-at 8,0", 2, "multiple of 16"),
             std::tuple("--depth 5", 2, "--depth"),
             std::tuple("--out-dir 'a b'", 2, "no MQF file can name a b/good.pxl"),
             std::tuple("--image-memory 640,0,400,512", 1, "does not lie inside image memory"),
         }) {
        const TestFolder::Result result =
            folder.run(std::string("'" VXBTOOL_PROGRAM "' image good.png ") + arguments);
        EXPECT_EQ(result.status, status) << arguments;
        EXPECT_THAT(result.output, HasSubstr(text));
        EXPECT_EQ(folder.read("good.pxl"), "") << arguments;
    }
}

}  // namespace
}  // namespace vxbtool::pictures
