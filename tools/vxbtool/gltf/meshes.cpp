#include "vxbtool/gltf/meshes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "base/key_map.h"
#include "vxb/word_meaning.h"
#include "vxbtool/gltf/bind_pose.h"
#include "vxbtool/gltf/materials.h"

namespace vxbtool::gltf {
namespace {

using scene::Body;
using scene::Corner;
using scene::Look;
using scene::Picture;
using scene::Polygon;
using scene::Scene;

constexpr std::uint16_t allLight = 0xFFFF;

/// What a mesh says of a corner. Equal ones become one vertex.
struct Vertex {
    std::array<float, 3> place{};
    std::array<float, 3> normal{};
    std::array<float, 2> texel{};
    std::array<std::uint16_t, 4> colour{allLight, allLight, allLight, allLight};
    std::uint32_t joint = 0;
    std::uint32_t primitive = 0;
};
static_assert(sizeof(Vertex) == 48, "vertices are compared byte by byte");

/// Polygons of one packet group and look.
struct Primitive {
    const Polygon* first = nullptr;
    std::uint32_t polygons = 0;
    std::vector<Vertex> vertices;
    std::vector<std::uint32_t> indices;
};

/// Components of colours as shares of the light. Of polygons with a texture 128 is all of it.
class LinearColours {
public:
    LinearColours() {
        constexpr float ofTexture = 128;
        constexpr float ofAll = 255;
        for (std::size_t i = 0; i < plain_.size(); ++i) {
            plain_[i] = linear(static_cast<float>(i) / ofAll);
            textured_[i] = linear(std::min(static_cast<float>(i) / ofTexture, 1.0F));
        }
    }
    [[nodiscard]] std::uint16_t operator()(std::uint8_t component, bool textured) const {
        return (textured ? textured_ : plain_)[component];
    }

private:
    static std::uint16_t linear(float value) {
        // The curve of the colour space sRGB.
        const float share =
            value <= 0.04045F ? value / 12.92F : std::pow((value + 0.055F) / 1.055F, 2.4F);
        return static_cast<std::uint16_t>(std::lround(share * allLight));
    }

    std::array<std::uint16_t, 256> plain_{};
    std::array<std::uint16_t, 256> textured_{};
};

class MeshWriter {
public:
    MeshWriter(const Scene& scene, double unit, tinygltf::Model& model, Buffer& buffer)
        : scene_(scene),
          unit_(static_cast<float>(unit)),
          bindPose_(scene, unit),
          model_(model),
          buffer_(buffer) {}

    BodyMesh write(const Body& body) {
        BodyMesh result;
        if (body.shared) {
            std::set<std::uint32_t> joints;
            for (const Corner& corner : cornersOf(body)) {
                joints.insert(corner.coordinate);
            }
            result.joints.assign(joints.begin(), joints.end());
            result.inverseBindMatrices = addInverseBindMatrices(result.joints);
        }
        tinygltf::Mesh mesh;
        mesh.name =
            body.shared ? "shared polygons" : "polygons " + std::to_string(model_.meshes.size());
        for (const Primitive& primitive : primitivesOf(body, result.joints)) {
            mesh.primitives.push_back(writePrimitive(primitive, body.shared));
        }
        result.mesh = static_cast<int>(model_.meshes.size());
        model_.meshes.push_back(std::move(mesh));
        return result;
    }

private:
    [[nodiscard]] std::span<const Polygon> polygonsOf(const Body& body) const {
        return std::span(scene_.polygons).subspan(body.firstPolygon, body.polygonNum);
    }
    [[nodiscard]] std::span<const Corner> cornersOf(const Polygon& polygon) const {
        return std::span(scene_.corners).subspan(polygon.firstCorner, polygon.cornerNum);
    }
    /// Polygons that follow each other have corners that do.
    [[nodiscard]] std::span<const Corner> cornersOf(const Body& body) const {
        const std::span<const Polygon> polygons = polygonsOf(body);
        const Polygon& last = polygons.back();
        const std::uint32_t first = polygons.front().firstCorner;
        return std::span(scene_.corners).subspan(first, last.firstCorner + last.cornerNum - first);
    }

    int addInverseBindMatrices(const std::vector<std::uint32_t>& joints) {
        std::vector<float> matrices;
        for (const std::uint32_t joint : joints) {
            const std::array<float, 16> matrix = bindPose_.inverse(joint);
            matrices.insert(matrices.end(), matrix.begin(), matrix.end());
        }
        return buffer_.add<float>(View::matrices, TINYGLTF_TYPE_MAT4, matrices);
    }

    std::vector<Primitive> primitivesOf(const Body& body,
                                        const std::vector<std::uint32_t>& joints) {
        constexpr unsigned groupShift = 32;
        std::vector<Primitive> primitives;
        mqf2vxb::KeyMap<std::uint64_t, std::uint32_t> primitiveOf;
        std::vector<Vertex> met;  // its memory does not move: the keys below are views of it
        met.reserve(cornersOf(body).size());
        mqf2vxb::KeyMap<std::string_view, std::uint32_t> indexOf(met.capacity());
        for (const Polygon& polygon : polygonsOf(body)) {
            const std::uint32_t number =
                primitiveOf.find(std::uint64_t{polygon.group} << groupShift | polygon.look, [&] {
                    primitives.emplace_back().first = &polygon;
                    return static_cast<std::uint32_t>(primitives.size() - 1);
                });
            Primitive& primitive = primitives[number];
            ++primitive.polygons;
            std::array<std::uint32_t, 4> indices{};
            for (std::size_t i = 0; i < polygon.cornerNum; ++i) {
                met.push_back(vertex(polygon, cornersOf(polygon)[i], body.shared, joints));
                met.back().primitive = number;
                const std::string_view key(reinterpret_cast<const char*>(&met.back()),
                                           sizeof(Vertex));
                bool isNew = false;
                indices[i] = indexOf.find(key, [&] {
                    isNew = true;
                    primitive.vertices.push_back(met.back());
                    return static_cast<std::uint32_t>(primitive.vertices.size() - 1);
                });
                if (!isNew) {
                    met.pop_back();
                }
            }
            // The file's triangles run clockwise, glTF's the other way.
            const auto [a, b, c, d] = indices;
            primitive.indices.insert(primitive.indices.end(), {a, c, b});
            if (polygon.cornerNum == 4) {
                primitive.indices.insert(primitive.indices.end(), {b, c, d});
            }
        }
        return primitives;
    }

    [[nodiscard]] Vertex vertex(const Polygon& polygon, const Corner& corner, bool shared,
                                const std::vector<std::uint32_t>& joints) const {
        const Look& look = scene_.looks[polygon.look];
        Vertex vertex;
        if (shared) {
            vertex.place = bindPose_.place(corner);
            vertex.joint = static_cast<std::uint32_t>(
                std::lower_bound(joints.begin(), joints.end(), corner.coordinate) - joints.begin());
        } else {
            for (std::size_t i = 0; i < vertex.place.size(); ++i) {
                vertex.place[i] = corner.place[i] * unit_;
            }
        }
        if (look.lit) {
            vertex.normal = shared ? bindPose_.normal(corner) : corner.normal;
        }
        if (look.picture) {
            const Picture& picture = scene_.pictures[*look.picture];
            vertex.texel = {corner.texel[0] / static_cast<float>(picture.width),
                            corner.texel[1] / static_cast<float>(picture.height)};
        }
        for (std::size_t i = 0; i < corner.colour.size(); ++i) {
            vertex.colour[i] = colours_(corner.colour[i], look.picture.has_value());
        }
        return vertex;
    }

    tinygltf::Primitive writePrimitive(const Primitive& from, bool shared) {
        const Look& look = scene_.looks[from.first->look];
        tinygltf::Primitive primitive;
        primitive.mode = TINYGLTF_MODE_TRIANGLES;
        primitive.material = static_cast<int>(from.first->look);
        const auto attribute = [&](const char* name, View view, int type, auto part,
                                   bool bounds = false) {
            using Number = typename decltype(part(from.vertices.front()))::value_type;
            std::vector<Number> values;
            values.reserve(from.vertices.size() * part(from.vertices.front()).size());
            for (const Vertex& vertex : from.vertices) {
                const auto numbers = part(vertex);
                values.insert(values.end(), numbers.begin(), numbers.end());
            }
            primitive.attributes[name] =
                buffer_.add(view, type, std::span<const Number>(values), bounds);
        };
        attribute(
            "POSITION", View::vectors, TINYGLTF_TYPE_VEC3,
            [](const Vertex& vertex) { return vertex.place; }, true);
        if (look.lit) {
            attribute("NORMAL", View::vectors, TINYGLTF_TYPE_VEC3,
                      [](const Vertex& vertex) { return vertex.normal; });
        }
        if (look.picture) {
            attribute("TEXCOORD_0", View::texels, TINYGLTF_TYPE_VEC2,
                      [](const Vertex& vertex) { return vertex.texel; });
        }
        if (std::any_of(from.vertices.begin(), from.vertices.end(),
                        [](const Vertex& vertex) { return vertex.colour != Vertex().colour; })) {
            attribute("COLOR_0", View::colours, TINYGLTF_TYPE_VEC4,
                      [](const Vertex& vertex) { return vertex.colour; });
        }
        if (shared) {
            attribute("JOINTS_0", View::joints, TINYGLTF_TYPE_VEC4, [](const Vertex& vertex) {
                return std::array{static_cast<std::uint16_t>(vertex.joint), std::uint16_t{0},
                                  std::uint16_t{0}, std::uint16_t{0}};
            });
            attribute("WEIGHTS_0", View::weights, TINYGLTF_TYPE_VEC4, [](const Vertex&) {
                return std::array<std::uint8_t, 4>{0xFF, 0, 0, 0};
            });
        }
        // The greatest number of 16 bits is no index.
        if (from.vertices.size() <= std::numeric_limits<std::uint16_t>::max()) {
            const std::vector<std::uint16_t> indices(from.indices.begin(), from.indices.end());
            primitive.indices =
                buffer_.add<std::uint16_t>(View::shortIndices, TINYGLTF_TYPE_SCALAR, indices);
        } else {
            primitive.indices =
                buffer_.add<std::uint32_t>(View::indices, TINYGLTF_TYPE_SCALAR, from.indices);
        }
        primitive.extras = extrasOf(from, look);
        return primitive;
    }

    [[nodiscard]] tinygltf::Value extrasOf(const Primitive& from, const Look& look) const {
        tinygltf::Value::Object extras{{"look", extra(from.first->look)},
                                       {"form", tinygltf::Value(mqf2vxb::formName(look.type))},
                                       {"group", extra(from.first->group)},
                                       {"polygons", extra(from.polygons)}};
        if (look.picture) {
            const Picture& picture = scene_.pictures[*look.picture];
            tinygltf::Value::Object texture{{"picture", extra(*look.picture)},
                                            {"page", extra(picture.page)},
                                            {"depth", extra(picture.depth)},
                                            {"x", extra(picture.x)},
                                            {"y", extra(picture.y)},
                                            {"width", extra(picture.width)},
                                            {"height", extra(picture.height)},
                                            {"window", tinygltf::Value(look.repeats)},
                                            {"missing", tinygltf::Value(picture.missing)}};
            if (picture.clut) {
                texture["clut"] = extra(*picture.clut);
            }
            extras["texture"] = tinygltf::Value(std::move(texture));
        }
        return tinygltf::Value(std::move(extras));
    }

    const Scene& scene_;
    float unit_;
    BindPose bindPose_;
    tinygltf::Model& model_;
    Buffer& buffer_;
    LinearColours colours_;
};

}  // namespace

std::vector<BodyMesh> addMeshes(const Scene& scene, double unit, tinygltf::Model& model,
                                Buffer& buffer) {
    MeshWriter writer(scene, unit, model, buffer);
    std::vector<BodyMesh> meshes;
    for (const Body& body : scene.bodies) {
        meshes.push_back(writer.write(body));
    }
    return meshes;
}

}  // namespace vxbtool::gltf
