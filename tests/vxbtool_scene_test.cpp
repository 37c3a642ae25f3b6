#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "support/memory_files.h"
#include "support/random_model.h"
#include "support/scene_cases.h"
#include "support/test_folder.h"
#include "vxb/vxb_reader.h"
#include "vxb/word_meaning.h"
#include "vxbtool/gltf/gltf.h"
#include "vxbtool/scene/scene.h"
#include "vxbtool/shared/any_model.h"

namespace vxbtool::scene_tests {
namespace {

using namespace mqf2vxb::tests;
using scene::Scene;
using scene::Vector3;

/// Numbers as a person writes them.
std::string numbers(const auto& values, double unit = 1) {
    std::vector<double> rounded;
    for (const auto value : values) {
        rounded.push_back(std::round(value * unit * 1000) / 1000 + 0.0);
    }
    return fmt::format("{}", fmt::join(rounded, " "));
}

std::string textOf(const scene::Picture& picture) {
    std::string text = fmt::format(
        "{}x{} of {} bits, page {:x}, at {} {}, images {}{}{}\n", picture.width, picture.height,
        picture.depth, picture.page, picture.x, picture.y, fmt::join(picture.images, " "),
        picture.cutOut ? ", cut out" : "", picture.missing ? ", missing" : "");
    for (std::size_t i = 0; i < picture.texels.size() && !picture.missing; ++i) {
        const auto& [red, green, blue, alpha] = picture.texels[i];
        text += alpha == 0 ? " ------" : fmt::format(" {:02x}{:02x}{:02x}", red, green, blue);
        text += (i + 1) % picture.width == 0 ? "\n" : "";
    }
    return text;
}

std::string textOf(const scene::Key& key) {
    constexpr double degrees = 180 / std::numbers::pi;
    std::string text = fmt::format("  {}:", key.frame);
    const auto part = [&](const char* name, const std::optional<Vector3>& values, double unit) {
        text += values ? fmt::format(" {} {}", name, numbers(*values, unit)) : "";
    };
    part("moved", key.pose.translation, 1);
    part("turned", key.pose.angles, degrees);
    part("scaled", key.pose.scale, 1);
    return text + (key.even ? " ->\n" : "\n");
}

/// All of a scene that a picture shows.
std::string textOf(const Scene& scene) {
    std::string text;
    for (const scene::Picture& picture : scene.pictures) {
        text += "picture " + textOf(picture);
    }
    for (const scene::Body& body : scene.bodies) {
        text +=
            body.shared ? "shared\n" : fmt::format("body {}\n", fmt::join(body.coordinates, " "));
        for (std::uint32_t p = 0; p < body.polygonNum; ++p) {
            const scene::Polygon& polygon = scene.polygons[body.firstPolygon + p];
            const scene::Look& look = scene.looks[polygon.look];
            text += fmt::format(" {}, blend {}", mqf2vxb::formName(look.type),
                                static_cast<int>(look.blend));
            text += look.picture ? fmt::format(", picture {}\n", *look.picture) : "\n";
            for (std::uint32_t c = 0; c < polygon.cornerNum; ++c) {
                const scene::Corner& corner = scene.corners[polygon.firstCorner + c];
                text += fmt::format("  {}: {}", corner.vertex, numbers(corner.place));
                text += body.shared ? fmt::format(" of {}", corner.coordinate) : "";
                text += look.lit ? ", normal " + numbers(corner.normal) : "";
                text += look.picture ? ", texel " + numbers(corner.texel) : "";
                text += ", colour " + numbers(corner.colour) + "\n";
            }
        }
    }
    for (const scene::Motion& motion : scene.motions) {
        text += fmt::format("motion of {} frames\n", motion.frames);
        for (const scene::Track& track : motion.tracks) {
            text += fmt::format(" coordinate {}{}\n", track.coordinate,
                                track.loops ? fmt::format(", loops from {}", track.loopFrom) : "");
            for (const scene::Key& key : track.keys) {
                text += textOf(key);
            }
        }
    }
    for (const std::string& warning : scene.warnings) {
        text += "warning: " + warning + "\n";
    }
    return text;
}

/// The file holds cases: "= title", the model, "-", and the scene.
TEST(Scene, IsWhatTheCasesSay) {
    const std::size_t number = forEachSceneCase(
        "scene/cases.txt",
        [](const std::string& title, const mqf2vxb::VxbFile& file, const std::string& expected) {
            EXPECT_EQ(textOf(scene::makeScene(file)), expected) << title;
        });
    EXPECT_GT(number, 5U);
}

/// A shoulder, an elbow on it, 10 to its right, and the end of the arm, 5 further.
TEST(Scene, PlacesCoordinatesAtRestAndInMotion) {
    Scene scene;
    scene.coordinates.resize(3);
    scene.coordinates[0].parent = 1;  // parents may stand behind their children
    scene.coordinates[0].translation = {5, 0, 0};
    scene.coordinates[1].parent = 2;
    scene.coordinates[1].translation = {10, 0, 0};
    scene.coordinates[2].translation = {0, 100, 0};
    scene.coordinates[2].matrix = {0, -1, 0, 1, 0, 0, 0, 0, 1};  // a quarter about z: x becomes y
    const auto end = [](const std::vector<scene::Placement>& places) {
        return numbers(std::array{places[0][3], places[0][7], places[0][11]});
    };
    EXPECT_EQ(end(placements(scene)), "0 115 0");

    constexpr float quarter = std::numbers::pi_v<float> / 2;
    scene::Track elbow;
    elbow.coordinate = 1;
    elbow.keys = {{0, {std::nullopt, Vector3{0, 0, 0}, std::nullopt}, true},
                  {10, {std::nullopt, Vector3{0, quarter, quarter}, std::nullopt}, false},
                  {20, {std::nullopt, std::nullopt, Vector3{2, 3, 1}}, false}};
    elbow.frames = 30;
    scene::Motion motion{{elbow}, 30};
    EXPECT_EQ(end(placements(scene, motion, 0)), "0 115 0");
    // About y first, then about z: x goes to -z and stays there.
    EXPECT_EQ(end(placements(scene, motion, 10)), "0 110 -5");
    // The angles stay as they were, the scale is applied before them.
    EXPECT_EQ(end(placements(scene, motion, 25)), "0 110 -10");
    EXPECT_EQ(end(placements(scene, motion, 1000)), "0 110 -10");
    motion.tracks[0].keys[1].pose.angles = Vector3{0, 0, 2 * quarter};
    const double half = 5 * std::sqrt(0.5);
    EXPECT_EQ(end(placements(scene, motion, 2.5)), numbers(std::array{-half, 110 + half, 0.0}));
    motion.tracks[0].loops = true;
    motion.tracks[0].loopFrom = 10;
    EXPECT_EQ(end(placements(scene, motion, 35)), end(placements(scene, motion, 15)));
}

std::string exampleBytes(const std::string& model) {
    AnyModelOptions options;
    options.base = MQF2VXB_EXAMPLES;
    const mqf2vxb::VxbFile file = readAnyModel(MQF2VXB_EXAMPLES "/" + model + ".mqf", options).file;
    return gltf::glb(scene::makeScene(file), {});
}

/// Strips and single polygons are the same triangles, and those of both sides have the same front.
TEST(Scene, VariantsOfTheSampleHaveTheSameTriangles) {
    const auto triangles = [](const std::string& model) {
        AnyModelOptions options;
        options.base = MQF2VXB_EXAMPLES;
        const Scene scene =
            scene::makeScene(readAnyModel(MQF2VXB_EXAMPLES "/" + model + ".mqf", options).file);
        EXPECT_EQ(scene.warnings, std::vector<std::string>());
        std::vector<std::string> result;
        for (const scene::Polygon& polygon : scene.polygons) {
            std::vector<std::string> corners;
            for (std::uint32_t c = 0; c < polygon.cornerNum; ++c) {
                const scene::Corner& corner = scene.corners[polygon.firstCorner + c];
                corners.push_back(numbers(corner.place) + "/" + numbers(corner.colour) + "/" +
                                  numbers(corner.texel));
            }
            if (polygon.cornerNum == 3) {
                std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()),
                            corners.end());
            }
            result.push_back(fmt::format("{}", fmt::join(corners, ", ")));
        }
        std::sort(result.begin(), result.end());
        return result;
    };
    const std::vector<std::string> plain = triangles("crawler");
    EXPECT_GT(plain.size(), 1000U);
    EXPECT_EQ(plain, triangles("crawler_strips"));
    EXPECT_EQ(plain, triangles("crawler_groups"));
}

/// Coordinates that share the steps of one turn after the other.
Scene sharedTurns(int coordinates, int steps) {
    ModelFiles model;
    model.geo = "3 0 1;0;1;0 1;0 0 1 2";
    model.srf = "1;0 1 F C 1 2 3";
    model.frm = fmt::format("G=NULL;{};", coordinates);
    std::string clp = fmt::format("COORDINATE;{};", coordinates);
    for (int i = 0; i < coordinates; ++i) {
        model.frm += "1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 0;";
        clp += fmt::format("{} 0 s;", i);
    }
    model.frm += "0 3 0-2";
    clp += "s;";
    for (int i = 0; i < steps; ++i) {
        clp += fmt::format("SEQ 9 ps0r1t0 {};", i % 2);
    }
    model.clp = {clp + "END 0x0;TYPE ps0r1t0;32767 32767 32767;-32768 -32768 -32768"};
    return scene::makeScene(mqf2vxb::readVxb(convertFiles(model).outputs.at("m.vxb")));
}

TEST(Gltf, MotionsThatShareStepsDoNotOutgrowTheFile) {
    const Scene few = sharedTurns(20, 20);
    EXPECT_TRUE(few.warnings.empty());
    EXPECT_EQ(few.motions.at(0).tracks.size(), 20U);
    for (const int coordinates : {100, 2000}) {
        const Scene many = sharedTurns(coordinates, 300);
        EXPECT_EQ(many.warnings.size(), 1U);
        EXPECT_LT(gltf::glb(many, {}).size(), std::size_t{1} << 24U);
    }
}

TEST(Gltf, HasNoErrorAndNoWarning) {
    const TestFolder folder;
    const std::string validator = MQF2VXB_MANUALS "/../../tests/gltf_validator";
    if (folder.run("node --version").status != 0 ||
        folder.run("ls '" + validator + "/node_modules/gltf-validator'").status != 0) {
        GTEST_SKIP() << "node or the package gltf-validator is missing: run \"npm ci\" in "
                     << validator;
    }
    constexpr std::uint32_t models = 100;
    for (std::uint32_t seed = 1; seed <= models; ++seed) {
        mqf2vxb::RunOptions options;
        options.imageOutput = seed % 5 != 0;
        const std::string bytes = convertFiles(randomModel(seed), options).outputs.at("m.vxb");
        const Scene scene = scene::makeScene(mqf2vxb::readVxb(bytes));
        folder.write(std::to_string(seed) + ".glb", gltf::glb(scene, {}));
    }
    for (const std::string model : {"crawler", "crawler_strips", "crawler_groups"}) {
        folder.write(model + ".glb", exampleBytes(model));
    }
    folder.write("empty.glb", gltf::glb({}, {}));
    const TestFolder::Result result = folder.run("node '" + validator + "/validate.mjs' *.glb");
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.status, 0);
}

}  // namespace
}  // namespace vxbtool::scene_tests
