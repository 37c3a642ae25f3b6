#include "vxbtool/gltf/nodes.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "vxbtool/gltf/materials.h"
#include "vxbtool/gltf/rotations.h"

namespace vxbtool::gltf {
namespace {

using scene::Coordinate;
using scene::Scene;

template <class Numbers>
std::vector<double> doubles(const Numbers& numbers) {
    return {numbers.begin(), numbers.end()};
}

float length(const scene::Vector3& v) { return std::hypot(v[0], v[1], v[2]); }

/// By coordinate, how far from its origin the farthest corner lies that moves with it alone.
std::vector<float> ownReaches(const Scene& scene) {
    std::vector<float> reaches(scene.coordinates.size());
    const auto take = [&](std::uint32_t coordinate, float reach) {
        reaches[coordinate] = std::max(reaches[coordinate], reach);
    };
    for (const scene::Body& body : scene.bodies) {
        float farthest = 0;
        for (std::uint32_t p = 0; p < body.polygonNum; ++p) {
            const scene::Polygon& polygon = scene.polygons[body.firstPolygon + p];
            for (std::uint32_t c = 0; c < polygon.cornerNum; ++c) {
                const scene::Corner& corner = scene.corners[polygon.firstCorner + c];
                farthest = std::max(farthest, length(corner.place));
                if (body.shared) {
                    take(corner.coordinate, length(corner.place));
                }
            }
        }
        for (std::size_t i = 0; !body.shared && i < body.coordinates.size(); ++i) {
            take(body.coordinates[i], farthest);
        }
    }
    return reaches;
}

/// By coordinate, at most how far from its origin anything lies that it carries.
std::vector<float> reaches(const Scene& scene) {
    std::vector<float> reaches = ownReaches(scene);
    std::vector<std::uint32_t> children(scene.coordinates.size());
    for (const Coordinate& coordinate : scene.coordinates) {
        if (coordinate.parent) {
            ++children[*coordinate.parent];
        }
    }
    // From the ends of the branches to the roots: each coordinate behind its last child.
    for (std::uint32_t end = 0; end < scene.coordinates.size(); ++end) {
        std::optional<std::uint32_t> c = children[end] == 0 ? std::optional(end) : std::nullopt;
        while (c) {
            const Coordinate& coordinate = scene.coordinates[*c];
            children[*c] = UINT32_MAX;
            const auto parent = coordinate.parent;
            if (parent) {
                float square = 0;
                for (const float value : coordinate.matrix) {
                    square += value * value;
                }
                reaches[*parent] = std::max(reaches[*parent], length(coordinate.translation) +
                                                                  std::sqrt(square) * reaches[*c]);
            }
            c = parent && --children[*parent] == 0 ? parent : std::nullopt;
        }
    }
    return reaches;
}

class NodeWriter {
public:
    NodeWriter(const Scene& scene, double unit, tinygltf::Model& model)
        : scene_(scene), unit_(unit), reaches_(reaches(scene)), model_(model) {}

    std::vector<int> write(const std::vector<BodyMesh>& meshes) {
        for (std::uint32_t i = 0; i < scene_.coordinates.size(); ++i) {
            addCoordinate(i);
        }
        // What a coordinate holds hangs on its node, or on the one that completes a shear.
        holders_.resize(scene_.coordinates.size());
        for (std::uint32_t i = 0; i < scene_.coordinates.size(); ++i) {
            holders_[i] = addShear(i);
        }
        tinygltf::Node whole;
        whole.name = "model";
        for (std::uint32_t i = 0; i < scene_.coordinates.size(); ++i) {
            const auto parent = scene_.coordinates[i].parent;
            (parent ? node(holders_[*parent]) : whole).children.push_back(static_cast<int>(i));
        }
        for (std::size_t i = 0; i < scene_.bodies.size(); ++i) {
            addBody(scene_.bodies[i], meshes[i].mesh, whole);
        }
        std::vector<int> tops{add(std::move(whole))};
        for (const BodyMesh& mesh : meshes) {
            if (mesh.inverseBindMatrices >= 0) {
                tops.push_back(addSkinned(mesh));
            }
        }
        tinygltf::Scene shown;
        shown.nodes = std::move(tops);
        model_.scenes.push_back(std::move(shown));
        model_.defaultScene = 0;
        return std::move(holders_);
    }

private:
    tinygltf::Node& node(int index) { return model_.nodes[static_cast<std::size_t>(index)]; }
    int add(tinygltf::Node node) {
        model_.nodes.push_back(std::move(node));
        return static_cast<int>(model_.nodes.size() - 1);
    }

    /// A node that turns and scales; what changes nothing is not written.
    static void set(tinygltf::Node& node, const scene::Matrix& rotation,
                    const scene::Vector3& scale) {
        if (rotation != scene::ScaledRotation().rotation) {
            node.rotation = doubles(quaternion(rotation));
        }
        if (scale != scene::ScaledRotation().scale) {
            node.scale = doubles(scale);
        }
    }

    /// Whether a rotation and a scale are all of a coordinate's matrix: what they leave moves nothing
    /// that can be seen.
    [[nodiscard]] bool isWhole(std::uint32_t index, const scene::ScaledRotation& parts) const {
        constexpr float unseen = 0.125F;  // in units
        return !(parts.lean * reaches_[index] > unseen);
    }

    void addCoordinate(std::uint32_t index) {
        const Coordinate& coordinate = scene_.coordinates[index];
        tinygltf::Node node;
        node.name = "coordinate " + std::to_string(index);
        if (coordinate.translation != scene::Vector3{}) {
            for (const float component : coordinate.translation) {
                node.translation.push_back(static_cast<float>(component * unit_));
            }
        }
        const scene::ScaledRotation parts = scene::scaledRotation(coordinate.matrix);
        if (isWhole(index, parts)) {
            set(node, parts.rotation, parts.scale);
        } else {
            const TurnedScale sheared = turnedScale(coordinate.matrix);
            set(node, sheared.last, sheared.scale);
        }
        tinygltf::Value::Array further;
        for (const std::int32_t value : coordinate.extra) {
            further.emplace_back(value);
        }
        node.extras = tinygltf::Value(tinygltf::Value::Object{
            {"coordinate", extra(index)}, {"extra", tinygltf::Value(std::move(further))}});
        add(std::move(node));
    }

    int addShear(std::uint32_t index) {
        const scene::Matrix& matrix = scene_.coordinates[index].matrix;
        if (isWhole(index, scene::scaledRotation(matrix))) {
            return static_cast<int>(index);
        }
        tinygltf::Node shear;
        shear.name = "coordinate " + std::to_string(index) + ", shear";
        set(shear, turnedScale(matrix).first, {1, 1, 1});
        const int holder = add(std::move(shear));
        node(static_cast<int>(index)).children.push_back(holder);
        return holder;
    }

    void addBody(const scene::Body& body, int mesh, tinygltf::Node& whole) {
        // A node has one mesh: further ones have nodes of their own.
        const auto hang = [&](const std::string& name) {
            tinygltf::Node further;
            further.name = name + ", mesh " + std::to_string(mesh);
            further.mesh = mesh;
            return add(std::move(further));
        };
        if (body.shared) {
            return;
        }
        if (body.coordinates.empty()) {
            whole.children.push_back(hang("model"));
        }
        for (const std::uint32_t coordinate : body.coordinates) {
            const int holder = holders_[coordinate];
            if (node(holder).mesh < 0) {
                node(holder).mesh = mesh;
            } else {
                const int further = hang("coordinate " + std::to_string(coordinate));
                node(holder).children.push_back(further);
            }
        }
    }

    int addSkinned(const BodyMesh& mesh) {
        tinygltf::Skin skin;
        skin.name = "shared polygons";
        skin.inverseBindMatrices = mesh.inverseBindMatrices;
        for (const std::uint32_t joint : mesh.joints) {
            skin.joints.push_back(holders_[joint]);
        }
        model_.skins.push_back(std::move(skin));
        tinygltf::Node node;
        node.name = "shared polygons";
        node.mesh = mesh.mesh;
        node.skin = static_cast<int>(model_.skins.size() - 1);
        return add(std::move(node));
    }

    const Scene& scene_;
    double unit_;
    std::vector<float> reaches_;
    tinygltf::Model& model_;
    std::vector<int> holders_;  // by coordinate
};

}  // namespace

std::vector<int> addNodes(const Scene& scene, double unit, const std::vector<BodyMesh>& meshes,
                          tinygltf::Model& model) {
    return NodeWriter(scene, unit, model).write(meshes);
}

}  // namespace vxbtool::gltf
