#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "support/gltf_player.h"
#include "support/random_model.h"
#include "support/scene_cases.h"
#include "support/session.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/gltf/gltf.h"
#include "vxbtool/scene/image_pictures.h"
#include "vxbtool/shared/png.h"

namespace vxbtool::export_tests {
namespace {

using namespace mqf2vxb::tests;
using nlohmann::json;
using Matrix = GltfPlayer::Matrix;
using Row = GltfPlayer::Row;

std::string rounded(const Row& row, double unit = 1) {
    Row values;
    for (const double value : row) {
        values.push_back(std::round(value * unit * 100) / 100 + 0.0);
    }
    return fmt::format("{}", fmt::join(values, " "));
}

constexpr double millimetres = 1000;

/// A material as somebody sees it who looks at what is drawn with it.
std::string textOfMaterial(const GltfPlayer& player, const json& primitive) {
    const json& document = player.document();
    const json& material = document["materials"][primitive["material"].get<std::size_t>()];
    const json& surface = material["pbrMetallicRoughness"];
    const json& extras = material["extras"];
    std::string text =
        material.contains("extensions") && material["extensions"].contains("KHR_materials_unlit")
            ? "unlit"
            : "lit";
    text += ", " + material.value("alphaMode", "OPAQUE");
    text += surface.contains("baseColorFactor") ? " " + surface["baseColorFactor"].dump() : "";
    text += fmt::format(", flag {:x}, {}", extras["flag"].get<unsigned>(),
                        extras["blend"].get<std::string>());
    if (surface.contains("baseColorTexture")) {
        const json& texture =
            document["textures"][surface["baseColorTexture"]["index"].get<std::size_t>()];
        const json& sampler = document["samplers"][texture["sampler"].get<std::size_t>()];
        const auto repeats = [&](const char* side) { return sampler.value(side, 10497) == 10497; };
        EXPECT_EQ(sampler["magFilter"], 9728);
        EXPECT_EQ(repeats("wrapS"), repeats("wrapT"));
        json place = primitive["extras"]["texture"];
        EXPECT_EQ(place["picture"], texture["source"]);
        text += repeats("wrapS") ? ", repeats" : ", ends";
        text += "\n  " + place.dump();
    }
    return text;
}

/// What a viewer shows: triangle by triangle, counterclockwise, in millimetres.
std::string textOf(const GltfPlayer& player) {
    std::string text;
    for (const GltfPlayer::Drawn& drawn : player.drawn(player.places())) {
        const json& extras = drawn.primitive["extras"];
        text += fmt::format("{}: {} {}, group {}, {}\n",
                            player.document()["nodes"][drawn.node]["name"].get<std::string>(),
                            extras["polygons"].dump(), extras["form"].get<std::string>(),
                            extras["group"].dump(), textOfMaterial(player, drawn.primitive));
        for (std::size_t i = 0; i < drawn.corners.size(); ++i) {
            const std::size_t v = drawn.corners[i];
            text += (i % 3 == 0 ? " - " : "   ") + rounded(drawn.places.at(v), millimetres);
            text += drawn.normals.empty() ? "" : ", normal " + rounded(drawn.normals.at(v));
            text += drawn.texels.empty() ? "" : ", texel " + rounded(drawn.texels.at(v));
            text += drawn.colours.empty() ? "" : ", colour " + rounded(drawn.colours.at(v));
            text += "\n";
        }
    }
    // Of motions, where the origin of each coordinate is at every fifth frame, and where its axes point.
    constexpr double framesOfSecond = 30;
    const json animations = player.document().value("animations", json::array());
    for (std::size_t a = 0; a < animations.size(); ++a) {
        text += fmt::format("{}, {}\n", animations[a]["name"].get<std::string>(),
                            animations[a]["extras"].dump());
        for (double frame = 0; frame <= animations[a]["extras"]["frames"]; frame += 5) {
            // A moment later: what leaps at the frame has done so.
            const auto places = player.places(a, frame / framesOfSecond + 1e-6);
            text += fmt::format(" {}:", frame);
            for (std::size_t n = 0; n < places.size(); ++n) {
                if (player.document()["nodes"][n].contains("extras")) {
                    const Row origin = moved(places[n], {0, 0, 0});
                    text += " at " + rounded(origin, millimetres);
                    for (const Row& axis : {Row{1, 0, 0}, {0, 1, 0}}) {
                        Row end = moved(places[n], axis);
                        for (std::size_t i = 0; i < end.size(); ++i) {
                            end[i] -= origin[i];
                        }
                        text += (axis[0] > 0 ? " x " : " y ") + rounded(end);
                    }
                    text += ";";
                }
            }
            text += "\n";
        }
    }
    return text;
}

TEST(Export, GltfShowsWhatTheCasesSay) {
    const std::size_t number = forEachSceneCase(
        "export/scenes.txt",
        [](const std::string& title, const mqf2vxb::VxbFile& file, const std::string& expected) {
            EXPECT_EQ(textOf(GltfPlayer(gltf::glb(scene::makeScene(file), {}))), expected) << title;
        });
    EXPECT_GT(number, 3U);
}

/// The nodes that hold what the coordinates hold: those that complete matrices that shear.
std::vector<std::size_t> holdersOf(const GltfPlayer& player, std::size_t coordinates) {
    std::vector<std::size_t> holders;
    const nlohmann::json& nodes = player.document()["nodes"];
    for (std::size_t c = 0; c < coordinates; ++c) {
        holders.push_back(c);
        for (std::size_t n = coordinates; n < nodes.size(); ++n) {
            if (nodes[n]["name"] == fmt::format("coordinate {}, shear", c)) {
                holders.back() = n;
            }
        }
    }
    return holders;
}

/// Hierarchies and motions made up at random, with matrices that shear: what a viewer of glTF shows is
/// what the motions make of the coordinates, at whole frames and between them.
TEST(Export, GltfMovesAsTheMotionsDo) {
    std::size_t compared = 0;
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
        std::uint32_t state = seed * 7919;
        const auto below = [&](int limit) {
            state = state * 1664525U + 1013904223U;
            return static_cast<int>((state >> 16U) % static_cast<unsigned>(limit));
        };
        const int coordinates = 1 + below(3);
        std::string frm = fmt::format("frm =NULL;{};", coordinates);
        std::string clp = fmt::format("clp COORDINATE;{};", coordinates);
        for (int c = 0; c < coordinates; ++c) {
            frm += fmt::format("4096 {} 0 0 0 -4096 0 4096 0 {} {} {} 0 0 0 {};", 2048 * below(2),
                               below(99), below(99), below(99), c == 0 ? 0 : below(c));
            clp += fmt::format("{} 0 a{};", c, c);
        }
        for (int c = 0; c < coordinates; ++c) {
            frm += fmt::format("{} 3 0-2;", c);
        }
        const char* codes[] = {"ps0r1t0", "ps0r1t9", "ps9r1t0", "ps1r1t1", "ps0r0t1"};
        int keys[] = {0, 0, 0, 0, 0};
        for (int c = 0; c < coordinates; ++c) {
            clp += fmt::format("a{};", c);
            int type = below(5);
            for (int step = 1 + below(4); step > 0; --step) {
                type = below(3) == 0 ? below(5) : type;
                clp += fmt::format("SEQ {} {} {};", 1 + below(20), codes[type], keys[type]++ % 3);
            }
            clp += "END 0x0;";
        }
        for (int type = 0; type < 5; ++type) {
            clp += fmt::format("TYPE {}", codes[type]);
            const bool scaled = type == 2 || type == 3;
            for (int key = 0; key < 3 && keys[type] > 0; ++key) {
                clp += ";";
                for (int part = type == 0 || type == 2 ? 1 : 0; part < 1; ++part) {
                    clp += fmt::format("{} {} {} ", below(500), below(500) - 250, below(99));
                }
                if (type != 4) {
                    clp += fmt::format("{} {} {} ", below(6000) - 3000, below(6000) - 3000,
                                       below(9000) - 3000);
                }
                for (int part = 0; scaled && part < (type == 2 ? 1 : 3); ++part) {
                    clp += fmt::format("{} ", 2048 + below(4096));
                }
            }
            clp += ";";
        }
        const mqf2vxb::VxbFile file =
            fileOfLines("geo 3 0 1;0 0 0;0 10 0;10 0 0;0 0 1 2 0 0 0 0 0\nsrf 1;0 1 F C 1 1 1\n" +
                        frm + "\n" + clp + "\n");
        const scene::Scene scene = scene::makeScene(file);
        ASSERT_EQ(scene.motions.size(), 1U);
        constexpr double fps = 25;
        const GltfPlayer player(gltf::glb(scene, {1, fps, true}));
        const auto holders = holdersOf(player, scene.coordinates.size());
        for (double frame = 0; frame < scene.motions[0].frames; frame += 0.5) {
            const auto expected = placements(scene, scene.motions[0], frame);
            const auto shown = player.places(0, frame / fps + 1e-6);
            for (std::size_t c = 0; c < scene.coordinates.size(); ++c, ++compared) {
                double most = 0;
                for (std::size_t i = 0; i < 12; ++i) {
                    // Angles that go evenly and turns about one axis part by a little.
                    const double allowed = i % 4 == 3 ? 500 : 1;
                    most =
                        std::max(most, std::abs(shown[holders[c]][i] - expected[c][i]) / allowed);
                }
                ASSERT_LT(most, 0.03) << seed << ", frame " << frame << ", coordinate " << c;
            }
        }
    }
    EXPECT_GT(compared, 1500U);
}

/// A matrix that leans, under others and over them: the places of corners and normals are the scene's.
TEST(Export, GltfPlacesTheCornersOfEveryModel) {
    std::size_t compared = 0;
    for (std::uint32_t seed = 1; seed <= 25; ++seed) {
        const scene::Scene scene =
            scene::makeScene(mqf2vxb::readVxb(convertFiles(randomModel(seed)).outputs.at("m.vxb")));
        const GltfPlayer player(gltf::glb(scene, {1, 30, false}));
        EXPECT_FALSE(player.document().contains("animations"));
        const auto places = player.places();
        const auto atRest = placements(scene);
        const auto holders = holdersOf(player, atRest.size());
        for (std::size_t c = 0; c < atRest.size(); ++c) {
            const auto [x, y] = std::minmax_element(atRest[c].begin(), atRest[c].end());
            const double size = std::max<double>(std::abs(*x), std::abs(*y));
            for (std::size_t i = 0; i < 12; ++i, ++compared) {
                ASSERT_NEAR(places[holders[c]][i], atRest[c][i], 1e-3 * size) << seed << ' ' << c;
            }
        }
    }
    EXPECT_GT(compared, 300U);
}

std::string textOf(const char* name, const scene::MemoryPicture& picture) {
    std::uint32_t left = picture.width, right = 0, top = picture.height, bottom = 0;
    const auto drawn = [&](std::uint32_t x, std::uint32_t y) {
        return picture.pixels[std::size_t{y} * picture.width + x][3] != 0;
    };
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x) {
            if (drawn(x, y)) {
                left = std::min(left, x);
                right = std::max(right, x + 1);
                top = std::min(top, y);
                bottom = y + 1;
            }
        }
    }
    std::string text = fmt::format("{} of {} x {}", name, picture.width, picture.height);
    text += right > 0 ? fmt::format(", from {} {}\n", left, top) : "\n";
    for (std::uint32_t y = top; y < bottom; ++y) {
        for (std::uint32_t x = left; x < right; ++x) {
            const auto& [red, green, blue, alpha] =
                picture.pixels[std::size_t{y} * picture.width + x];
            text += alpha == 0 ? " ------" : fmt::format(" {:02x}{:02x}{:02x}", red, green, blue);
        }
        text += "\n";
    }
    return text;
}

TEST(Export, ImagesAndTheirMemoryAreWhatTheCasesSay) {
    const std::size_t number = forEachSceneCase(
        "export/images.txt",
        [](const std::string& title, const mqf2vxb::VxbFile& file, const std::string& expected) {
            const scene::Scene scene = scene::makeScene(file);
            std::string text;
            for (const scene::MemoryPicture& picture : scene::imagePictures(file, scene)) {
                text += textOf("image", picture);
            }
            EXPECT_EQ(text + textOf("memory", scene::memoryPicture(file, scene)), expected)
                << title;
        });
    EXPECT_GT(number, 2U);
}

TEST(Export, PrintsAndWritesWhatTheSessionHolds) {
    const TestFolder folder;
    folder.write("small.vxb", convertFiles(smallModel()).outputs.at("m.vxb"));
    folder.write("short.vxb", folder.read("small.vxb").substr(0, 400));
    expectSession(folder, MQF2VXB_TEST_DATA "/export/session.txt");
    // The textures of the glTF file are the pictures themselves.
    const GltfPlayer player(folder.read("small.glb"));
    const scene::Scene scene = scene::makeScene(mqf2vxb::readVxb(folder.read("small.vxb")));
    ASSERT_EQ(player.document()["images"].size(), scene.pictures.size());
    for (std::size_t i = 0; i < scene.pictures.size(); ++i) {
        const scene::Picture& picture = scene.pictures[i];
        EXPECT_EQ(
            player.document()["images"][i].value("/extras/images"_json_pointer, json::array()),
            json(picture.images));
        const auto* first = reinterpret_cast<const std::uint8_t*>(picture.texels.data());
        EXPECT_EQ(player.bytes(player.document()["images"][i]["bufferView"]),
                  pngOf(picture.width, picture.height, {first, 4 * picture.texels.size()}));
    }
}

}  // namespace
}  // namespace vxbtool::export_tests
