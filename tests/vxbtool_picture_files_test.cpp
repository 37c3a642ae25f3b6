#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "support/memory_files.h"
#include "support/pictures.h"
#include "vxbtool/pictures/picture.h"
#include "vxbtool/pictures/texel_budget.h"

namespace vxbtool::pictures {
namespace {

using mqf2vxb::tests::pictureFile;
using mqf2vxb::tests::plainPicture;
using mqf2vxb::tests::smallPicture;
using testing::HasSubstr;

TEST(PictureFiles, EveryFormatIsRead) {
    for (const char* name : {"small.png", "small.tga", "small.bmp"}) {
        EXPECT_EQ(readPicture(pictureFile(name)), smallPicture(true)) << name;
    }
    for (const char* name : {"small.gif", "small.ppm"}) {
        EXPECT_EQ(readPicture(pictureFile(name)), smallPicture(false)) << name;
    }
    const Picture photo = readPicture(pictureFile("small.jpg"));
    EXPECT_EQ(photo.width, 8U);
    EXPECT_EQ(photo.height, 4U);
}

/// Of 1, 8 and 16 bits; values beyond the greatest are the greatest.
TEST(PictureFiles, GreyAndWidePnmFilesAreReadByTheirGreatestValue) {
    const auto one = [](const std::string& bytes) { return readPicture(bytes).texels.at(0); };
    EXPECT_EQ(one("P5 #1\n1 1\n1\n\x01"), (Rgba{255, 255, 255, 255}));
    EXPECT_EQ(one(std::string("P6\n1 1 100\n\0\x32\xC8", 14)), (Rgba{0, 128, 255, 255}));
    EXPECT_EQ(one("P6 1 1 1000\n\x01\xF4\x03\xE8\x03\xFF"), (Rgba{128, 255, 255, 255}));
    for (const char* bad :
         {"P5", "P5 1 1 0\n1", "P5 1 1 65536\n11", "P5 1 x 1\n1", "P5 1 1 256\n1"}) {
        EXPECT_THROW(readPicture(bad), PictureFault) << bad;
    }
}

TEST(PictureFiles, BmpFilesFromTheTopAndGifFramesBesideTheEdgeAreRead) {
    std::string bmp = pictureFile("small.bmp");
    const std::uint32_t height = smallPicture(true).height;
    const auto lines = -static_cast<std::int32_t>(height);
    std::memcpy(&bmp[22], &lines, sizeof(lines));
    const Picture picture = readPicture(bmp);
    for (std::uint32_t i = 0; i < picture.texels.size(); ++i) {
        const std::uint32_t line = height - 1 - i / picture.width;
        EXPECT_EQ(picture.texels[i],
                  smallPicture(true).texels[line * picture.width + i % picture.width]);
    }
    bmp[14] = 12;
    EXPECT_THROW(readPicture(bmp), PictureFault);
    // A frame of one red texel in the lower right corner of four.
    const std::string gif("GIF89a\2\0\2\0\x80\1\0\xFF\0\0\0\xFF\0,\1\0\1\0\1\0\1\0\0\2\2\x44\1\0;",
                          35);
    EXPECT_EQ(readPicture(gif).texels,
              (std::vector<Rgba>{{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {255, 0, 0, 255}}));
}

TEST(PictureFiles, FilesOfFewBytesHaveABudgetOfTexelsTogether) {
    mqf2vxb::tests::MemoryFileSystem files({{"small.png", pictureFile("small.png")}});
    TexelBudget budget;
    budget.add(std::uint64_t{1} << 30U, 1000);
    EXPECT_THROW(readPictureFile("small.png", files, budget), PictureFault);
    budget.add(0, std::uint64_t{1} << 22U);
    EXPECT_EQ(readPictureFile("small.png", files, budget), smallPicture(true));
    TexelBudget own;
    for (int i = 0; i < 1000; ++i) {
        readPictureFile("small.png", files, own);
    }
    own.add((std::uint64_t{1} << 27U) + 1000 * (256 * files.inputs["small.png"].size() - 32), 0);
    EXPECT_NO_THROW(own.require());
    EXPECT_TRUE(own.takesVariant(1));
    EXPECT_FALSE(own.takesVariant(1));
    EXPECT_THROW(own.require(), PictureFault);
}

/// A file that is cut off is refused, unless only what nobody needs is missing.
TEST(PictureFiles, NoCutOrDamagedFileIsTakenForWhole) {
    for (const char* name :
         {"small.png", "small.tga", "small.bmp", "small.gif", "small.ppm", "small.jpg"}) {
        const std::string bytes = pictureFile(name);
        const Picture whole = readPicture(bytes);
        std::size_t refused = 0;
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            try {
                EXPECT_EQ(readPicture(bytes.substr(0, length)), whole) << name << ' ' << length;
            } catch (const PictureFault&) {
                ++refused;
            }
        }
        EXPECT_GE(refused + 12, bytes.size()) << name;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            for (const char patch : {'\x00', '\x7f', '\xff'}) {
                std::string damaged = bytes;
                damaged[i] = patch;
                try {
                    const Picture picture = readPicture(damaged);
                    EXPECT_EQ(picture.texels.size(), std::size_t{picture.width} * picture.height);
                } catch (const PictureFault&) {}
            }
        }
    }
}

TEST(PictureFiles, JpegFilesHaveAScanOfEachColourAndNotTooMany) {
    const std::string whole = pictureFile("small.jpg");
    const std::string before = whole.substr(0, whole.find("\xFF\xDA"));
    const std::string after = "\xFF\xD9";
    const auto refusal = [](const std::string& bytes) {
        try {
            readPicture(bytes);
        } catch (const PictureFault& fault) {
            return std::string(fault.what());
        }
        return std::string();
    };
    // Scans of one component, whose only block has the value 0 throughout.
    const auto scan = [](char component, char tables, char block) {
        return std::string("\xFF\xDA\0\x08\x01", 5) + component + tables +
               std::string("\0\x3F\0", 3) + block;
    };
    const std::string light = scan(1, 0, '\x2B');
    const std::string colours = scan(2, '\x11', '\x0F') + scan(3, '\x11', '\x0F');
    EXPECT_EQ(readPicture(before + light + colours + after),
              plainPicture(8, 4, {128, 128, 128, 255}));
    EXPECT_EQ(refusal(before + light + after), "the picture lacks a scan of a colour");
    std::string many = before;
    for (int i = 0; i < 64; ++i) {
        many += light;
    }
    EXPECT_EQ(refusal(many + colours + after), "the picture has more than 64 scans");
    // More codes than a table has room for.
    std::string full = whole;
    full.replace(full.find("\xFF\xC4") + 5, 16, 16, '\xFF');
    EXPECT_THAT(refusal(full), HasSubstr("bogus Huffman table definition"));
}

}  // namespace
}  // namespace vxbtool::pictures
