#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <fstream>
#include <random>

#include <nlohmann/json.hpp>

#include "base/diagnostics.h"
#include "support/session.h"
#include "support/test_folder.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/import/guarded.h"
#include "vxbtool/import/import_model.h"
#include "vxbtool/import/strips.h"
#include "vxbtool/lint/lint_model.h"
#include "vxbtool/model_text/model_files_writer.h"
#include "vxbtool/shared/in_memory.h"

namespace vxbtool::importing {
namespace {

using mqf2vxb::tests::expectSession;
using mqf2vxb::tests::runIn;
using mqf2vxb::tests::TestFolder;
using nlohmann::json;
using Matrix = aiMatrix4x4t<double>;

TEST(Import, PrintsAndWritesWhatTheSessionHolds) {
    const TestFolder folder;
    ASSERT_EQ(runIn(folder, "cp " MQF2VXB_TEST_DATA "/import/* .").status, 0);
    expectSession(folder, MQF2VXB_TEST_DATA "/import/session.txt");
}

/// A scene of glTF made up at random: a tree of nodes, some with a mesh of triangles and of any
/// material, and one skin.
class RandomScene {
public:
    explicit RandomScene(std::uint32_t seed) : random_(seed) {
        const std::uint32_t nodes = 2 + below(6);
        for (std::uint32_t n = 0; n < nodes; ++n) {
            addNode(n);
        }
        document_["asset"] = {{"version", "2.0"}};
        document_["scene"] = 0;
        document_["scenes"] = json::array({json{{"nodes", json::array({0})}}});
        document_["images"] = json::array({json{{"uri", "brick.png"}}, json{{"uri", "leaf.png"}}});
        document_["samplers"] = json::array({json{{"wrapS", 33648}, {"wrapT", 33071}}});
        document_["textures"] = json::array(
            {json{{"source", 0}}, json{{"source", 1}}, json{{"source", 0}, {"sampler", 0}}});
        document_["extensionsUsed"] = json::array({"KHR_materials_unlit"});
        for (std::uint32_t m = 0; m < 6; ++m) {
            addMaterial(m);
        }
        document_["buffers"] =
            json::array({json{{"uri", "random.bin"}, {"byteLength", buffer_.size()}}});
    }

    void write(const TestFolder& folder) const {
        folder.write("random.gltf", document_.dump(1));
        folder.write("random.bin", buffer_);
    }

    /// Where the corners of its triangles lie, in metres.
    std::vector<Vector> corners;
    /// No node makes anything longer by more than this.
    double longest = 1;

private:
    std::uint32_t below(std::uint32_t end) {
        return std::uniform_int_distribution<std::uint32_t>(0, end - 1)(random_);
    }
    double real(double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random_);
    }

    std::size_t accessor(const std::vector<float>& values, std::size_t parts, const char* type) {
        json& views = document_["bufferViews"];
        const auto* bytes = reinterpret_cast<const char*>(values.data());
        views.push_back({{"buffer", 0},
                         {"byteOffset", buffer_.size()},
                         {"byteLength", values.size() * sizeof(float)}});
        buffer_.append(bytes, values.size() * sizeof(float));
        json& accessors = document_["accessors"];
        accessors.push_back({{"bufferView", views.size() - 1},
                             {"componentType", 5126},
                             {"count", values.size() / parts},
                             {"type", type}});
        return accessors.size() - 1;
    }

    void addNode(std::uint32_t number) {
        Matrix scaling;
        scaling.a1 = real(0.2, 3) * (below(4) == 0 ? -1 : 1);
        scaling.b2 = real(0.2, 3);
        scaling.c3 = below(5) == 0 ? 30 : real(0.2, 3);
        Matrix turn;
        Matrix::Rotation(real(-3, 3), Vector(real(-1, 1), real(-1, 1), 1.1).Normalize(), turn);
        Matrix moved;
        Matrix::Translation({real(-1, 1), real(-1, 1), real(-1, 1)}, moved);
        const Matrix local = moved * turn * scaling;
        json node{{"name", "node " + std::to_string(number)}, {"matrix", json::array()}};
        for (unsigned column = 0; column < 4; ++column) {
            for (unsigned row = 0; row < 4; ++row) {
                node["matrix"].push_back(local[row][column]);
            }
        }
        const std::uint32_t parent = number == 0 ? 0 : below(number);
        world_.push_back(number == 0 ? local : world_[parent] * local);
        double squares = 0;
        for (unsigned value = 0; value < 9; ++value) {
            squares += std::pow(world_.back()[value / 3][value % 3], 2);
        }
        longest = std::max(longest, std::sqrt(squares));
        if (number == 0 || below(3) > 0) {
            node["mesh"] = addMesh(world_.back());
        }
        document_["nodes"].push_back(node);
        if (number > 0) {
            document_["nodes"][parent]["children"].push_back(number);
        }
    }

    std::size_t addMesh(const Matrix& world) {
        const std::size_t triangles = 1 + below(4);
        std::vector<float> places, textures, colours;
        for (std::size_t corner = 0; corner < triangles * 3; ++corner) {
            const Vector place(static_cast<float>(real(-0.1, 0.1)),
                               static_cast<float>(real(-0.1, 0.1)),
                               static_cast<float>(real(-0.1, 0.1)));
            corners.push_back(world * place);
            for (unsigned axis = 0; axis < 3; ++axis) {
                places.push_back(static_cast<float>(place[axis]));
                colours.push_back(static_cast<float>(real(0, 1)));
            }
            textures.push_back(static_cast<float>(real(-3, 30)));
            textures.push_back(static_cast<float>(real(-3, 3)));
        }
        json attributes{{"POSITION", accessor(places, 3, "VEC3")}};
        if (below(4) > 0) {
            attributes["TEXCOORD_0"] = accessor(textures, 2, "VEC2");
        }
        if (below(3) == 0) {
            attributes["COLOR_0"] = accessor(colours, 3, "VEC3");
        }
        json& meshes = document_["meshes"];
        const json primitive{{"attributes", attributes}, {"material", below(6)}};
        meshes.push_back(json{{"primitives", json::array({primitive})}});
        return meshes.size() - 1;
    }

    void addMaterial(std::uint32_t number) {
        json look{{"baseColorFactor", {real(0, 1), real(0, 1), real(0, 1), real(0.2, 1)}}};
        if (number > 1) {
            look["baseColorTexture"] = {{"index", number % 3}};
        }
        constexpr std::array modes{"OPAQUE", "MASK", "BLEND"};
        json material{{"pbrMetallicRoughness", look},
                      {"alphaMode", modes.at(below(3))},
                      {"doubleSided", below(3) == 0}};
        if (below(3) == 0) {
            material["extensions"] = {{"KHR_materials_unlit", json::object()}};
        }
        document_["materials"].push_back(material);
    }

    std::mt19937 random_;
    json document_;
    std::string buffer_;
    std::vector<Matrix> world_;
};

/// Where the vertices of a model lie, by what its FRM and GEO files say.
std::vector<Vector> placesOf(const model_text::ModelText& model) {
    std::vector<Matrix> world;
    for (const model_text::Coordinate& coordinate : model.hierarchy->coordinates) {
        Matrix own;
        for (unsigned row = 0; row < 3; ++row) {
            for (unsigned column = 0; column < 3; ++column) {
                own[row][column] = coordinate.matrix.at(row * 3 + column) / 4096.0;
            }
            own[row][3] = coordinate.translation.at(row);
        }
        world.push_back(coordinate.parent == world.size() ? own : world[coordinate.parent] * own);
    }
    std::vector<Vector> places;
    for (const model_text::Assignment& assignment : model.hierarchy->assignments) {
        for (const std::uint32_t vertex : assignment.vertices) {
            const model_text::Point& p = model.geometry->vertices[vertex];
            places.push_back(world[assignment.coordinate] * Vector(p.x, p.y, p.z));
        }
    }
    return places;
}

/// What lint and the converter have to say against a model.
void expectSound(const model_text::ModelText& model, const std::string& what) {
    MemoryFiles files;
    model_text::writeModelFiles(model, "", "m", files);
    for (const ReportedFinding& finding : lint::lintModel("m.mqf", 1, files)) {
        EXPECT_NE(finding.severity, mqf2vxb::Severity::error) << what << ": " << finding.text;
    }
    try {
        const mqf2vxb::VxbFile file = mqf2vxb::readVxb(convertInMemory("m.mqf", {}, files));
        EXPECT_EQ(file.findings.count(mqf2vxb::Severity::error), 0U) << what;
        EXPECT_EQ(file.findings.count(mqf2vxb::Severity::warning), 0U) << what;
    } catch (const mqf2vxb::Report& report) {
        ADD_FAILURE() << what << report.text();
    }
}

TEST(Import, RandomScenesStayWhereTheyAreAndAreSound) {
    const TestFolder folder;
    ASSERT_EQ(runIn(folder, "cp " MQF2VXB_TEST_DATA "/import/*.png .").status, 0);
    const std::string file = (folder.path() / "random.gltf").string();
    for (std::uint32_t seed = 1; seed <= 150; ++seed) {
        const std::string what = "seed " + std::to_string(seed);
        const RandomScene scene(seed);
        scene.write(folder);
        ImportOptions options;
        options.scale = 3000;
        options.fit = true;
        options.strips = seed % 3 == 0;
        options.unlit = seed % 7 == 0;
        const bool lies = seed % 4 == 0;
        options.up = lies ? UpAxis::z : UpAxis::y;
        const ImportedModel model = importModel(Source::load(file, {}), file, options, [](auto) {});
        expectSound(model.text, what);
        const std::vector<Vector> places = placesOf(model.text);
        // Half a unit in each direction, as long as the matrices make it.
        const double most = 0.87 * std::max(1.0, scene.longest) + 0.01;
        EXPECT_LE(model.report.surface.positionError, most) << what;
        for (const Vector& at : scene.corners) {
            const Vector corner = lies ? Vector(at.x, at.z, -at.y) : at;
            double nearest = 1e9;
            for (const Vector& place : places) {
                nearest = std::min(nearest, (place - corner * model.report.scale).Length());
            }
            EXPECT_LE(nearest, most) << what;
        }
    }
}

TEST(Import, AWidePictureIsShrunkWithinItsEdges) {
    const TestFolder folder;
    std::string picture = "P6 1024 1 255\n";
    for (int x = 0; x < 1024; ++x) {
        picture += x < 512 ? std::string("\xFF\0\0", 3) : std::string("\0\0\xFF", 3);
    }
    folder.write("wide.ppm", picture);
    folder.write("wide.mtl", "newmtl wide\nKd 1 1 1\nmap_Kd wide.ppm\n");
    const auto firstTexel = [&](const char* u) {
        folder.write("wide.obj",
                     std::string("mtllib wide.mtl\nusemtl wide\nv 0 0 0\nv 1 0 0\nv 0 1 0\n"
                                 "vt 0 0\nvt ") +
                         u + " 0\nvt 0 1\nf 1/1 2/2 3/3\n");
        const std::string file = (folder.path() / "wide.obj").string();
        ImportOptions options;
        options.textures.colours = pictures::Colours::direct;
        const ImportedModel model = importModel(Source::load(file, {}), file, options, [](auto) {});
        return model.report.textures.placing.textures.at(0).texture.pixels.words.at(0) & 0x7FFFU;
    };
    constexpr std::uint32_t red = 0x1F;
    EXPECT_EQ(firstTexel("1"), red);
    EXPECT_NE(firstTexel("4"), red) << "its neighbour is the last one";
}

/// What import says against a file, or nothing.
std::string refusalOf(const TestFolder& folder, const std::string& name) {
    const std::string file = (folder.path() / name).string();
    try {
        importModel(Source::load(file, {}), file, {}, [](auto) {});
    } catch (const ImportFault& fault) {
        return fault.what();
    }
    return "";
}

TEST(Import, RefusesWhatFewBytesAskForManyTimes) {
    const TestFolder folder;
    ASSERT_EQ(runIn(folder, "cp " MQF2VXB_TEST_DATA "/import/* .").status, 0);

    std::string tiles = "mtllib wall.mtl\nusemtl brick\nv 0 0 0\nv 1 0 0\nv 0 1 0\n"
                        "vt 0 0\nvt 480 0\nvt 0 480\n";
    const auto tiled = [&](int polygons) {
        std::string text = tiles;
        for (int i = 0; i < polygons; ++i) {
            text += "f 1/1 2/2 3/3\n";
        }
        folder.write("tiles.obj", text);
        return refusalOf(folder, "tiles.obj");
    };
    EXPECT_EQ(tiled(10), "");
    EXPECT_THAT(tiled(1200), testing::HasSubstr("would become more than"));

    constexpr unsigned triangles = 1000;
    folder.write("triangles.bin",
                 std::string(36, '\0') + std::string(std::size_t{triangles} * 3, '\0'));
    json scene{
        {"asset", {{"version", "2.0"}}},
        {"scene", 0},
        {"buffers", {{{"uri", "triangles.bin"}, {"byteLength", 36 + triangles * 3}}}},
        {"bufferViews",
         {{{"buffer", 0}, {"byteLength", 36}},
          {{"buffer", 0}, {"byteOffset", 36}, {"byteLength", triangles * 3}}}},
        {"accessors",
         {{{"bufferView", 0}, {"componentType", 5126}, {"count", 3}, {"type", "VEC3"}},
          {{"bufferView", 1},
           {"componentType", 5121},
           {"count", triangles * 3},
           {"type", "SCALAR"}}}},
        {"meshes", {{{"primitives", {{{"attributes", {{"POSITION", 0}}}, {"indices", 1}}}}}}}};
    const auto drawn = [&](unsigned nodes) {
        scene["nodes"] = json(nodes, json{{"mesh", 0}});
        scene["scenes"] = {{{"nodes", json::array()}}};
        for (unsigned n = 0; n < nodes; ++n) {
            scene["scenes"][0]["nodes"].push_back(n);
        }
        folder.write("drawn.gltf", scene.dump());
        return refusalOf(folder, "drawn.gltf");
    };
    EXPECT_THAT(drawn(250), testing::HasSubstr("none of its polygons has an area"));
    EXPECT_THAT(drawn(300), testing::HasSubstr("so often that they make"));
}

TEST(Import, APictureOfManyNamesIsOne) {
    const TestFolder folder;
    ASSERT_EQ(runIn(folder, "cp " MQF2VXB_TEST_DATA "/import/brick.png . && mkdir sub").status, 0);
    std::string materials;
    std::string text = "mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n";
    int number = 0;
    for (const char* name : {"brick.png", "BRICK.png", "./sub/../brick.png", "C:\\art\\brick.png",
                             "bri%63k.png", "no.png", "no.png"}) {
        const std::string material = "m" + std::to_string(number++);
        materials += "newmtl " + material + "\nmap_Kd " + name + "\n";
        text += "usemtl " + material + "\nf 1/1 2/2 3/3\n";
    }
    folder.write("m.mtl", materials);
    folder.write("m.obj", text);
    const std::string file = (folder.path() / "m.obj").string();
    const ImportedModel model = importModel(Source::load(file, {}), file, {}, [](auto) {});
    EXPECT_EQ(model.report.textures.placing.textures.size(), 1U);
    ASSERT_EQ(model.report.textures.missing.size(), 1U);
    EXPECT_EQ(model.report.textures.missing[0].name, "no.png");
}

TEST(Import, StripsHoldEachTriangleOnceAndGoOnFromTheLastTwoCorners) {
    // A grid of squares, each two triangles.
    constexpr std::uint32_t side = 12;
    std::vector<std::array<std::uint32_t, 3>> triangles;
    for (std::uint32_t y = 0; y < side; ++y) {
        for (std::uint32_t x = 0; x < side; ++x) {
            const std::uint32_t at = y * (side + 1) + x;
            triangles.push_back({at, at + 1, at + side + 1});
            triangles.push_back({at + 1, at + side + 2, at + side + 1});
        }
    }
    for (std::size_t t = 0; t < std::size_t{side} * side; ++t) {  // some have a back side
        triangles.push_back({triangles[t][1], triangles[t][0], triangles[t][2]});
    }
    triangles.insert(triangles.end(), 5, triangles.front());  // lies there six times
    const std::vector<Strip> strips = findStrips(triangles);
    EXPECT_LT(strips.size(), triangles.size() / 8);
    std::vector<int> uses(triangles.size());
    for (const Strip& strip : strips) {
        std::array<std::uint32_t, 2> last{};
        for (std::size_t i = 0; i < strip.steps.size(); ++i) {
            std::array<std::uint32_t, 3> corners = triangles[strip.steps[i].triangle];
            ++uses[strip.steps[i].triangle];
            if (i == 0) {
                std::rotate(corners.begin(), corners.begin() + strip.steps[i].firstCorner,
                            corners.end());
                last = {corners[1], corners[2]};
                continue;
            }
            const auto isNew = [&](std::uint32_t v) { return v != last[0] && v != last[1]; };
            ASSERT_EQ(std::ranges::count_if(corners, isNew), 1);
            std::rotate(corners.begin(), std::ranges::find_if(corners, isNew), corners.end());
            EXPECT_EQ(corners[1], last[i % 2]) << "every other triangle runs the other way";
            last = {last[1], corners[0]};
        }
    }
    EXPECT_THAT(uses, testing::Each(1));
}

TEST(Import, ACrashOfTheReaderIsToldAndNothingElse) {
    const auto died = [](const std::string& cause) {
        return cause.find("crashes") != std::string::npos ? 77 : 78;
    };
    EXPECT_EQ(runGuarded([] { return 3; }, died), 3);
    EXPECT_EQ(runGuarded([]() -> int { throw std::runtime_error("no"); }, died), 1);
    const auto crash = [] {
        std::signal(SIGSEGV, SIG_DFL);
        return std::raise(SIGSEGV);
    };
    EXPECT_EQ(runGuarded(crash, died), 77);
}

/// Files cut off at any place, and lies: a report, or a model that is sound.
TEST(Import, DamagedFilesAreRefusedOrImported) {
    const TestFolder folder;
    ASSERT_EQ(runIn(folder, "cp " MQF2VXB_TEST_DATA "/import/* .").status, 0);
    for (const std::string name : {"skin.gltf", "shapes.obj"}) {
        const std::string whole = folder.read(name);
        for (std::size_t size = 0; size < whole.size(); size += whole.size() / 8) {
            folder.write("cut/" + name, whole.substr(0, size));
            const TestFolder::Result result =
                runIn(folder, "vxbtool import --force --convert --name m cut/" + name);
            EXPECT_THAT(result.status, testing::AnyOf(0, 1)) << result.output;
            EXPECT_EQ(std::filesystem::exists(folder.path() / "cut/m"), result.status == 0);
            std::filesystem::remove_all(folder.path() / "cut/m");
        }
    }
}

}  // namespace
}  // namespace vxbtool::importing
