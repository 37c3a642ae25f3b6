#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/session.h"
#include "support/test_folder.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/import/import_model.h"
#include "vxbtool/import/materials.h"
#include "vxbtool/import/plain_gltf.h"
#include "vxbtool/import/source.h"
#include "vxbtool/model_text/model_files_writer.h"
#include "vxbtool/scene/placements.h"
#include "vxbtool/shared/base64.h"
#include "vxbtool/shared/in_memory.h"

namespace vxbtool::importing {
namespace {

using mqf2vxb::tests::runIn;
using mqf2vxb::tests::TestFolder;
using nlohmann::json;
using testing::ElementsAre;
using testing::FloatNear;
using testing::Pointwise;

/// What the floats of an accessor of a changed document are.
std::vector<float> floatsOf(const json& document, std::size_t number) {
    const json& accessor = document.at("accessors").at(number);
    EXPECT_EQ(accessor.at("componentType"), 5126);
    EXPECT_FALSE(accessor.contains("normalized") || accessor.contains("sparse"));
    const json& view = document.at("bufferViews").at(accessor.at("bufferView").get<std::size_t>());
    const std::string uri =
        document.at("buffers").at(view.at("buffer").get<std::size_t>()).at("uri");
    const std::string bytes = bytesOfBase64(uri.substr(uri.find(',') + 1)).value();
    std::vector<float> floats(view.at("byteLength").get<std::size_t>() / sizeof(float));
    std::memcpy(floats.data(), &bytes.at(view.at("byteOffset").get<std::size_t>()),
                floats.size() * sizeof(float));
    return floats;
}

json base(const std::string& bytes, const char* uri) {
    return {{"asset", {{"version", "2.0"}}},
            {"buffers", {{{"uri", uri}, {"byteLength", bytes.size()}}}},
            {"bufferViews", json::array()},
            {"accessors", json::array()}};
}

void addAccessor(json& document, std::size_t offset, std::size_t length, int component,
                 std::size_t count, const char* type, bool normalized = false) {
    document["bufferViews"].push_back(
        {{"buffer", 0}, {"byteOffset", offset}, {"byteLength", length}});
    document["accessors"].push_back({{"bufferView", document["bufferViews"].size() - 1},
                                     {"componentType", component},
                                     {"count", count},
                                     {"type", type},
                                     {"normalized", normalized},
                                     {"min", {0}}});
}

TEST(ImportGltf, WholeNumbersBecomeTheFractionsTheyStandFor) {
    // Weights of two vertices eight bytes apart; three texture coordinates, one of them replaced.
    const std::string bytes("\xFF\0\0\0....\x33\xCC\0\0"
                            "\0\0\x80\x80\0\0\0\0\xFF\xFF\0\0"
                            "\1"
                            "\xFF\xFF\xFF\xFF",
                            29);
    json document = base(bytes, "a b.bin");
    addAccessor(document, 0, 12, 5121, 2, "VEC4", true);
    document["bufferViews"][0]["byteStride"] = 8;
    addAccessor(document, 12, 12, 5123, 3, "VEC2", true);
    document["bufferViews"].push_back({{"buffer", 0}, {"byteOffset", 24}, {"byteLength", 1}});
    document["bufferViews"].push_back({{"buffer", 0}, {"byteOffset", 25}, {"byteLength", 4}});
    document["accessors"][1]["sparse"] = {{"count", 1},
                                          {"indices", {{"bufferView", 2}, {"componentType", 5121}}},
                                          {"values", {{"bufferView", 3}}}};
    document["meshes"] = {
        {{"primitives", {{{"attributes", {{"WEIGHTS_0", 0}, {"TEXCOORD_0", 1}}}}}}}};
    document["skins"] = {{{"joints", {0, 1}}}};
    const auto readFile = [&](const std::string& name) -> std::optional<std::string> {
        EXPECT_EQ(name, "a b.bin");
        return bytes;
    };
    const json made = json::parse(plainGltf(document.dump(), readFile, true).value());
    EXPECT_THAT(floatsOf(made, 0),
                ElementsAre(1, 0, 0, 0, FloatNear(0.2F, 1e-6F), FloatNear(0.8F, 1e-6F), 0, 0));
    EXPECT_THAT(floatsOf(made, 1),
                Pointwise(FloatNear(1e-5F), {0.0F, 0.501961F, 1.0F, 1.0F, 1.0F, 0.0F}));
    EXPECT_EQ(made["accessors"][2]["type"], "MAT4");
    EXPECT_THAT(floatsOf(made, made["skins"][0]["inverseBindMatrices"]).at(15), 1);

    document["bufferViews"][0]["byteLength"] = 11;
    EXPECT_THROW(plainGltf(document.dump(), readFile, true), ImportFault);
    EXPECT_THROW(plainGltf("{", readFile, true), ImportFault);
    EXPECT_EQ(plainGltf(json{{"asset", {{"version", "1.0"}}}}.dump(), readFile, true),
              std::nullopt);
}

TEST(ImportGltf, LeapsAndSplinesBecomeEvenKeys) {
    // Times 0 and 1; values 1 and 3; a spline from 0 to 1, level at both ends.
    const std::vector<float> numbers{0, 1, 1, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0,
                                     0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    const std::string bytes(reinterpret_cast<const char*>(numbers.data()),
                            numbers.size() * sizeof(float));
    json document = base(bytes, "k.bin");
    addAccessor(document, 0, 8, 5126, 2, "SCALAR");
    addAccessor(document, 8, 24, 5126, 2, "VEC3");
    addAccessor(document, 32, 72, 5126, 6, "VEC3");
    document["nodes"] = {json::object()};
    document["animations"] = {
        {{"samplers",
          {{{"input", 0}, {"output", 1}, {"interpolation", "STEP"}},
           {{"input", 0}, {"output", 2}, {"interpolation", "CUBICSPLINE"}}}},
         {"channels",
          {{{"sampler", 0}, {"target", {{"node", 0}, {"path", "translation"}}}},
           {{"sampler", 1}, {"target", {{"node", 0}, {"path", "scale"}}}}}}}};
    const auto plain = plainGltf(
        document.dump(), [&](const std::string&) { return bytes; }, true);
    const json made = json::parse(plain.value());
    const json& samplers = made["animations"][0]["samplers"];
    EXPECT_EQ(samplers[0]["interpolation"], "LINEAR");
    EXPECT_THAT(floatsOf(made, samplers[0]["input"]), ElementsAre(0, FloatNear(0.999F, 1e-6F), 1));
    EXPECT_THAT(floatsOf(made, samplers[0]["output"]), ElementsAre(1, 0, 0, 1, 0, 0, 3, 0, 0));
    const std::vector<float> times = floatsOf(made, samplers[1]["input"]);
    const std::vector<float> values = floatsOf(made, samplers[1]["output"]);
    ASSERT_EQ(values.size(), times.size() * 3);
    EXPECT_GE(times.size(), 60U);
    for (std::size_t i = 0; i < times.size(); ++i) {
        const double t = times[i];
        ASSERT_NEAR(values[3 * i], t * t * (3 - 2 * t), 1e-6) << t;
    }
}

TEST(ImportGltf, WhatAssimpFindsByNameHasNamesOfItsOwn) {
    json document{
        {"asset", {{"version", "2.0"}}},
        {"meshes", {{{"primitives", {{{"attributes", json::object()}}}}}}},
        {"skins",
         {{{"joints", {0}}, {"inverseBindMatrices", 0}},
          {{"joints", {1}}, {"inverseBindMatrices", 0}}}},
        {"materials", {json::parse(R"({"pbrMetallicRoughness": {"baseColorTexture": {"index": 0,
                      "extensions": {"KHR_texture_transform": {"texCoord": 1}}}}})")}},
        {"nodes",
         {{{"name", "hip"}},
          {{"name", "hip"}, {"scale", {-1, 1, 1}}},
          {{"name", "hip (2)"}},
          {{"mesh", 0}, {"skin", 0}},
          {{"mesh", 0}, {"skin", 1}},
          {{"mesh", 0}, {"skin", 0}}}},
        {"animations",
         {{{"samplers", json::array()},
           {"channels", {{{"sampler", 0}, {"target", {{"node", 1}, {"path", "scale"}}}}}}}}}};
    const auto readFile = [](const std::string&) { return std::nullopt; };
    const json made = json::parse(plainGltf(document.dump(), readFile, false).value());
    const json& nodes = made["nodes"];
    EXPECT_EQ(nodes[0]["name"], "hip");
    EXPECT_EQ(nodes[1]["name"], "hip (2)");
    EXPECT_EQ(nodes[2]["name"], "hip (2) (2)");
    EXPECT_EQ(nodes[3]["mesh"], 0);
    EXPECT_EQ(nodes[4]["mesh"], 1);
    EXPECT_EQ(nodes[5]["mesh"], 0);
    EXPECT_EQ(made["meshes"][1], made["meshes"][0]);
    EXPECT_EQ(made["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"]["texCoord"], 1);
    // Of a node that moves, nothing is left to guesses from its matrix.
    EXPECT_EQ(nodes[1]["rotation"], json({0, 0, 0, 1}));
    EXPECT_EQ(nodes[1]["scale"], json({-1, 1, 1}));
    EXPECT_FALSE(nodes[0].contains("rotation"));

    document["extensionsRequired"] = {"KHR_texture_transform"};
    EXPECT_NO_THROW(plainGltf(document.dump(), readFile, false));
    document["extensionsRequired"].push_back("EXT_mesh_gpu_instancing");
    EXPECT_THROW(plainGltf(document.dump(), readFile, false), ImportFault);
}

/// A triangle between a joint that mirrors and one that does not, cut where its texture repeats; that
/// texture is turned.
TEST(ImportGltf, PiecesOverAMirrorLookTheSameWayAndATurnedTextureIsTurned) {
    const TestFolder folder;
    ASSERT_EQ(runIn(folder, "cp " MQF2VXB_TEST_DATA "/import/brick.png .").status, 0);
    const std::vector<float> numbers{
        0,  0, 0,  2, 0, 0,  0, 2, 0,                       // places
        0,  0, 40, 0, 0, 40,                                // texture coordinates
        1,  0, 0,  0, 1, 0,  0, 0, 1, 0, 0, 0,              // weights
        -1, 0, 0,  0, 0, 1,  0, 0, 0, 0, 1, 0, 0, 0, 0, 1,  // inverse matrices
        1,  0, 0,  0, 0, 1,  0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    std::string bytes(reinterpret_cast<const char*>(numbers.data()),
                      numbers.size() * sizeof(float));
    for (std::size_t j = 0; j < 12; ++j) {
        bytes.push_back(j == 4 || j == 8 ? 1 : 0);
    }
    folder.write("m.bin", bytes);
    json document{
        {"asset", {{"version", "2.0"}}},
        {"scene", 0},
        {"scenes", {{{"nodes", {0, 1, 2}}}}},
        {"nodes",
         {{{"name", "a"}, {"scale", {-1, 1, 1}}}, {{"name", "b"}}, {{"mesh", 0}, {"skin", 0}}}},
        {"skins", {{{"joints", {0, 1}}, {"inverseBindMatrices", 4}}}},
        {"images", {{{"uri", "brick.png"}}}},
        {"textures", {{{"source", 0}}}},
        {"extensionsUsed", {"KHR_texture_transform"}},
        {"buffers", {{{"uri", "m.bin"}, {"byteLength", bytes.size()}}}}};
    const double turn = 0.5;
    document["materials"] = {
        {{"pbrMetallicRoughness",
          {{"baseColorTexture",
            {{"index", 0},
             {"extensions",
              {{"KHR_texture_transform",
                {{"rotation", turn}, {"scale", {1.5, 0.8}}, {"offset", {0.1, 0.2}}}}}}}}}}}};
    document["meshes"] = {
        {{"primitives",
          {{{"attributes", {{"POSITION", 0}, {"TEXCOORD_0", 1}, {"JOINTS_0", 2}, {"WEIGHTS_0", 3}}},
            {"material", 0}}}}}};
    const auto accessor = [&](std::size_t from, int component, std::size_t count, const char* type,
                              std::size_t size) {
        json& views = document["bufferViews"];
        views.push_back({{"buffer", 0}, {"byteOffset", from}, {"byteLength", size}});
        document["accessors"].push_back({{"bufferView", views.size() - 1},
                                         {"componentType", component},
                                         {"count", count},
                                         {"type", type}});
    };
    constexpr int floats = 5126;
    accessor(0, floats, 3, "VEC3", 36);
    accessor(36, floats, 3, "VEC2", 24);
    accessor(numbers.size() * sizeof(float), 5121, 3, "VEC4", 12);
    accessor(60, floats, 3, "VEC4", 48);
    accessor(108, floats, 2, "MAT4", 128);
    folder.write("m.gltf", document.dump());
    const std::string file = (folder.path() / "m.gltf").string();
    const Source source = Source::load(file, {});

    const auto m = readMaterials(source.scene(), false).materials.at(0).texture->transform;
    const double s = std::sin(turn);
    const double c = std::cos(turn);
    EXPECT_THAT(m, testing::Pointwise(testing::FloatNear(1e-5F),
                                      {1.5 * c, 0.8 * s, 0.1, -1.5 * s, 0.8 * c, 0.2}));

    ImportOptions options;
    options.scale = 1000;
    const ImportedModel model = importModel(source, file, options, [](auto) {});
    MemoryFiles files;
    model_text::writeModelFiles(model.text, "", "m", files);
    const scene::Scene made =
        scene::makeScene(mqf2vxb::readVxb(convertInMemory("m.mqf", {}, files)));
    const std::vector<scene::Placement> at = scene::placements(made);
    double area = 0;
    for (const scene::Polygon& polygon : made.polygons) {
        std::array<scene::Vector3, 4> places{};
        for (std::size_t i = 0; i < polygon.cornerNum; ++i) {
            const scene::Corner& corner = made.corners.at(polygon.firstCorner + i);
            places.at(i) = scene::transformed(at.at(corner.coordinate), corner.place);
        }
        for (std::size_t i = 0; i + 2 < polygon.cornerNum; ++i) {
            // Clockwise, and every other triangle of a strip the other way.
            const float front = scene::cross(scene::minus(places.at(i + 2), places.at(i)),
                                             scene::minus(places.at(i + 1), places.at(i)))[2] *
                                (i == 0 ? 1.0F : -1.0F);
            EXPECT_GT(front, 0) << polygon.offset;
            area += front / 2;
        }
    }
    EXPECT_GT(made.polygons.size(), 3U);
    EXPECT_NEAR(area, 2e6, 1e4);
}

/// The glTF file that export writes of the sample, with its skins of whole numbers, comes in again.
TEST(ImportGltf, WhatExportWroteComesBack) {
    const TestFolder folder;
    const auto made = folder.run(
        "cp " MQF2VXB_EXAMPLES "/* . && " VXBTOOL_PROGRAM " convert crawler.mqf && " VXBTOOL_PROGRAM
        " export crawler.vxb && " VXBTOOL_PROGRAM " import --convert --out-dir again crawler.glb");
    ASSERT_EQ(made.status, 0) << made.output;
    const auto sharedCorners = [&](const std::string& name) {
        const scene::Scene scene = scene::makeScene(mqf2vxb::readVxb(folder.read(name)));
        std::size_t corners = 0;
        for (const scene::Body& body : scene.bodies) {
            for (std::uint32_t p = 0; body.shared && p < body.polygonNum; ++p) {
                const scene::Polygon& polygon = scene.polygons.at(body.firstPolygon + p);
                corners += 3 * (polygon.cornerNum - 2);
            }
        }
        return corners;
    };
    EXPECT_GT(sharedCorners("crawler.vxb"), 100U);
    EXPECT_EQ(sharedCorners("again/crawler.vxb"), sharedCorners("crawler.vxb"));
}

}  // namespace
}  // namespace vxbtool::importing
