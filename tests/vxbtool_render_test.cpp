#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <sstream>
#include <utility>

#include <png.h>

#include "support/model_cases.h"
#include "support/test_folder.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/render/coverage.h"
#include "vxbtool/render/request.h"
#include "vxbtool/scene/placements.h"

namespace vxbtool {
namespace {

using mqf2vxb::tests::ModelCase;
using mqf2vxb::tests::readCases;
using mqf2vxb::tests::TestFolder;
using mqf2vxb::tests::Words;

constexpr std::uint32_t columns = 16;
constexpr std::uint32_t rows = 12;
constexpr std::uint32_t cell = 20;  // pixels of its side

/// What stands in front of a stored picture: "turn 30 motion 0 frame 45".
render::Request requestOf(const std::string& text) {
    render::Request request;
    request.width = columns * cell;
    request.height = rows * cell;
    std::istringstream stream(text);
    float value = 0;
    for (std::string name; stream >> name >> value;) {
        const auto number = static_cast<std::uint32_t>(value);
        if (name == "turn") {
            request.direction.turn = value;
        } else if (name == "tilt") {
            request.direction.tilt = value;
        } else if (name == "motion") {
            request.motion = number;
        } else if (name == "frame") {
            request.frame = value;
        } else if (name == "sheet") {
            request.views = number;
        } else if (name == "focus") {
            request.focus = number;
        } else if (name == "twosided") {
            request.twoSides = value != 0;
        } else {
            ADD_FAILURE() << name;
        }
    }
    return request;
}

struct Pixels {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> bytes;  // red, green, blue and alpha

    [[nodiscard]] int at(std::uint32_t x, std::uint32_t y, std::uint32_t channel) const {
        return bytes[(y * width + x) * 4 + channel];
    }
};

Pixels pixelsOf(const std::string& png) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, png.data(), png.size()), 0);
    image.format = PNG_FORMAT_RGBA;
    Pixels pixels{image.width, image.height, std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
    EXPECT_NE(png_image_finish_read(&image, nullptr, pixels.bytes.data(), 0, nullptr), 0);
    return pixels;
}

/// The mean colours of a picture's cells, in line after line from the top.
std::vector<std::array<double, 3>> cellsOf(const Pixels& pixels) {
    std::vector<std::array<double, 3>> cells(std::size_t{columns} * rows);
    for (std::uint32_t y = 0; y < pixels.height; ++y) {
        for (std::uint32_t x = 0; x < pixels.width; ++x) {
            for (std::uint32_t channel = 0; channel < 3; ++channel) {
                cells[std::size_t{y / cell} * columns + x / cell][channel] +=
                    static_cast<double>(pixels.at(x, y, channel)) / (cell * cell);
            }
        }
    }
    return cells;
}

/// The cells as they are stored: a digit of 0 to f for each of red, green and blue.
std::string stored(const std::vector<std::array<double, 3>>& cells) {
    std::string text;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        text += i % columns == 0 ? "\n " : "";
        text += ' ';
        for (const double value : cells[i]) {
            text += "0123456789abcdef"[std::lround(value / 17)];
        }
    }
    return text;
}

/// Drivers may differ in the last bits of a colour and in single pixels at edges.
void expectPicture(const Pixels& pixels, const Words& expected) {
    ASSERT_EQ(pixels.width, columns * cell);
    ASSERT_EQ(pixels.height, rows * cell);
    const auto cells = cellsOf(pixels);
    ASSERT_EQ(expected.size(), cells.size()) << "it is" << stored(cells);
    constexpr double mostOfCell = 25;
    constexpr double mostOfAll = 6;  // half of it comes from the few digits
    double sum = 0;
    std::size_t different = 0;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        double largest = 0;
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const std::uint32_t digit = expected[i] >> (8 - 4 * channel) & 0xFU;
            const double difference = std::abs(cells[i][channel] - digit * 17.0);
            sum += difference;
            largest = std::max(largest, difference);
        }
        different += largest > mostOfCell ? 1 : 0;
    }
    EXPECT_TRUE(different == 0 && sum / (3.0 * static_cast<double>(cells.size())) < mostOfAll)
        << different << " cells differ; it is" << stored(cells);
}

/// Why there are no pictures on this machine; empty when there are.
const std::string& whyNot() {
    static const std::string why = [] {
        mqf2vxb::tests::ModelFiles model;
        model.geo = "3 0 1;0;1;0 1;0 0 1 2";
        model.srf = "1;0 1 F C 1 2 3";
        const std::string file = convertFiles(model).outputs.at("m.vxb");
        try {
            render::drawPng(scene::makeScene(mqf2vxb::readVxb(file)), {});
        } catch (const render::RenderFault& fault) {
            return std::string(fault.what());
        }
        return std::string();
    }();
    return why;
}

class Render : public testing::Test {
protected:
    void SetUp() override {
        if (!whyNot().empty()) {
            GTEST_SKIP() << whyNot();
        }
    }
};

void expectPictures(const scene::Scene& scene, const ModelCase& each) {
    for (const auto& [request, picture] : each.words) {
        SCOPED_TRACE(each.name + ": " + request);
        expectPicture(pixelsOf(render::drawPng(scene, requestOf(request))), picture);
    }
}

TEST_F(Render, SmallModelsLookAsStored) {
    for (const ModelCase& each : readCases("../render/models.txt")) {
        const mqf2vxb::tests::Conversion done =
            mqf2vxb::tests::convertFiles(each.files, each.options);
        ASSERT_EQ(done.report, "") << each.name;
        expectPictures(scene::makeScene(mqf2vxb::readVxb(done.outputs.at("m.vxb"))), each);
    }
}

TEST_F(Render, VariantsOfTheSampleLookAlikeAndAsStored) {
    const TestFolder folder;
    std::string drawn;  // two of them are one file
    for (const std::string model : {"crawler", "crawler_groups", "crawler_strips"}) {
        SCOPED_TRACE(model);
        const auto made = folder.run("cd " MQF2VXB_EXAMPLES " && " VXBTOOL_PROGRAM " convert -o " +
                                     (folder.path() / "m.vxb").string() + " " + model + ".mqf");
        ASSERT_EQ(made.status, 0) << made.output;
        const std::string bytes = folder.read("m.vxb");
        if (bytes != std::exchange(drawn, bytes)) {
            const scene::Scene scene = scene::makeScene(mqf2vxb::readVxb(bytes));
            for (const ModelCase& each : readCases("../render/sample.txt")) {
                expectPictures(scene, each);
            }
        }
    }
}

/// The pixels of a view whose rays, from a viewer this far from the origin, meet a triangle.
int pixelsThatMeet(const std::array<scene::Vector3, 3>& triangle, const render::Camera& camera,
                   float distance, std::uint32_t side) {
    using scene::cross, scene::minus;
    const auto dot = [](const scene::Vector3& a, const scene::Vector3& b) {
        return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
    };
    const scene::Vector3 eye = camera.fromViewer({0, 0, distance});
    const auto toCorner = [&](std::size_t i) { return minus(triangle.at(i % 3), eye); };
    const float slope = std::tan(15 * std::numbers::pi_v<float> / 180);
    int number = 0;
    for (std::uint32_t i = 0; i < side * side; ++i) {
        const auto place = [&](std::uint32_t pixel) {
            return slope * ((2 * static_cast<float>(pixel) + 1) / static_cast<float>(side) - 1);
        };
        const scene::Vector3 ray = camera.fromViewer({place(i % side), place(i / side), -1});
        // It runs through the triangle when it has all edges on one side, and forward.
        std::array<int, 2> sides{};
        for (std::size_t k = 0; k < 3; ++k) {
            ++sides[dot(cross(toCorner(k), toCorner(k + 1)), ray) > 0 ? 1 : 0];
        }
        const scene::Vector3 normal =
            cross(minus(triangle[1], triangle[0]), minus(triangle[2], triangle[0]));
        const bool forward = dot(normal, toCorner(0)) * dot(normal, ray) > 0;
        number += (sides[0] == 3 || sides[1] == 3) && forward ? 1 : 0;
    }
    return number;
}

TEST(RenderCoverage, IsWhatRaysMeet) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-100, 100);
    constexpr std::uint32_t side = 120;
    int inside = 0;
    for (int round = 0; round < 300; ++round) {
        const float distance = static_cast<float>(round % 30) * 10;
        render::Camera camera({place(random), place(random) / 2}, side, side);
        camera.setDistance(distance);
        std::array<scene::Vector3, 3> triangle;
        std::array<render::Vertex, 3> vertices;
        for (std::size_t i = 0; i < 3; ++i) {
            vertices[i].place = triangle[i] = {place(random), place(random), place(random)};
        }
        camera.setDepths(triangle);
        const int met = pixelsThatMeet(triangle, camera, distance, side);
        EXPECT_NEAR(render::coveredPixels(camera, {0, 0, side, side}, vertices), met, side / 2)
            << round;
        inside += met > 0 ? 1 : 0;
    }
    EXPECT_GT(inside, 100);
}

TEST_F(Render, RefusesThousandsOfPolygonsBehindEachOther) {
    mqf2vxb::tests::ModelFiles model;
    model.geo = "3 0 3000;0;100;0 100";
    for (int i = 0; i < 3000; ++i) {
        model.geo += ";0 0 1 2";
    }
    model.srf = "1;0-2999 1 F C 1 2 3";
    const scene::Scene scene =
        scene::makeScene(mqf2vxb::readVxb(convertFiles(model).outputs.at("m.vxb")));
    render::Request request;
    EXPECT_THROW(render::drawPng(scene, request), render::RenderFault);
    request.width = request.height = 100;
    EXPECT_NO_THROW(render::drawPng(scene, request));
}

/// Runs the program in a folder with a small model in it.
TestFolder::Result runRender(const TestFolder& folder, const std::string& arguments) {
    folder.write("small.vxb", convertFiles(mqf2vxb::tests::smallModel()).outputs.at("m.vxb"));
    return folder.run(arguments.find("vxbtool") == std::string::npos
                          ? "'" VXBTOOL_PROGRAM "' render " + arguments
                          : arguments);
}

TEST_F(Render, SizesAndBackgroundsAreThoseAskedFor) {
    const TestFolder folder;
    const auto draw = [&](const std::string& options) {
        const auto result = runRender(folder, "small.vxb -o a.png " + options);
        EXPECT_EQ(result.status, 0) << result.output;
        return pixelsOf(folder.read("a.png"));
    };
    // Wider and higher than a tile.
    const Pixels large = draw("--size 1100x1030 --background '#102030'");
    EXPECT_EQ(large.width, 1100U);
    EXPECT_EQ(large.height, 1030U);
    for (const auto& [x, y] : {std::pair{0U, 0U}, std::pair{1099U, 1029U}}) {
        EXPECT_EQ(large.at(x, y, 0), 0x10);
        EXPECT_EQ(large.at(x, y, 2), 0x30);
        EXPECT_EQ(large.at(x, y, 3), 255);
    }
    const Pixels clear = draw("--size 7x9 --background transparent");
    EXPECT_EQ(clear.at(0, 0, 3), 0);
    EXPECT_EQ(draw("--sheet 5 --size 50x40 --motion 0 --frame 3.5").height, 40U);
}

TEST_F(Render, FaultsLeaveNoPicture) {
    const TestFolder folder;
    folder.write("damaged.vxb", "12345678");
    const std::pair<const char*, const char*> faults[] = {
        {"small.vxb -o a.png --motion 99", "small.vxb: no picture: it has no motion 99"},
        {"small.vxb -o a.png --focus 99", "small.vxb: no picture: it has no coordinate 99"},
        {"small.vxb -o a.png --sheet 50 --size 20x2", "50 views do not fit into 20 x 2 pixels"},
        {"damaged.vxb -o a.png", "damaged.vxb: no sound VXB file"},
        {"gone.vxb -o a.png", "gone.vxb: the file cannot be read"},
        {"gone.mqf -o a.png", "gone.mqf"},
        {"small.vxb -o gone/a.png", "gone/a.png"}};
    for (const auto& [arguments, text] : faults) {
        const auto result = runRender(folder, arguments);
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_NE(result.output.find(text), std::string::npos) << result.output;
    }
    for (const std::string wrong :
         {"./small.vxb", "a.png --size 0x9", "a.png --size 800", "a.png --size 99999x1",
          "a.png --size 16384x16384", "a.png --background red", "a.png --sheet 0",
          "a.png --frame 3", "a.png --turn nan", "a.png --motion 0 --frame -1"}) {
        EXPECT_EQ(runRender(folder, "small.vxb -o " + wrong).status, 2) << wrong;
    }
    EXPECT_EQ(folder.read("a.png"), "");
}

TEST_F(Render, WithoutDriverItNamesThePackages) {
    const TestFolder folder;
    const auto result = runRender(folder, "__EGL_VENDOR_LIBRARY_DIRS=/nonexistent '" VXBTOOL_PROGRAM
                                          "' render small.vxb -o a.png");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.output.ends_with(
        "small.vxb: no picture: there is no driver that draws without a display; on Debian Mesa's "
        "comes with \"apt-get install libegl1 libgl1-mesa-dri\"\n"))
        << result.output;
    EXPECT_EQ(folder.read("a.png"), "");
}

}  // namespace
}  // namespace vxbtool
