#include "vxbtool/import/geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include <fmt/core.h>

#include "vxbtool/import/faces.h"
#include "vxbtool/import/simplifying.h"
#include "vxbtool/import/skins.h"
#include "vxbtool/import/smoothing.h"
#include "vxbtool/import/source.h"

namespace vxbtool::importing {
namespace {

bool isFinitePoint(const aiVector3D& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

std::vector<Face> facesOf(const aiMesh& mesh, Dropped& dropped) {
    std::vector<Face> faces;
    for (const aiFace& face : std::span(mesh.mFaces, mesh.mNumFaces)) {
        const std::span<const unsigned> corners(face.mIndices, face.mNumIndices);
        if (corners.size() < 3) {
            ++dropped.lines;
        } else if (!std::ranges::all_of(
                       corners, [&](unsigned v) { return isFinitePoint(mesh.mVertices[v]); })) {
            ++dropped.notFinite;
        } else {
            const std::size_t before = faces.size();
            dropped.fans += cutPolygon(mesh, corners, faces) ? 0 : 1;
            dropped.areaLess += faces.size() == before ? 1 : 0;
            dropped.cutPolygons += faces.size() > before + 1 ? 1 : 0;
        }
    }
    return faces;
}

/// What takes points and normals of a mesh into the space of a coordinate, in units.
struct Way {
    std::uint32_t coordinate;
    Matrix4 points;
    Matrix3 normals;
    bool mirrors;
};

Way wayOf(const Skin::Binding& binding, const PlacedCoordinates& placed) {
    const Matrix4 points = placed.toCoordinate[binding.coordinate] * binding.toNode;
    const Matrix3 plain(points);
    Matrix3 normals = Matrix3(plain).Inverse().Transpose();
    const bool sound = std::isfinite(normals.a1);
    return {binding.coordinate, points, sound ? normals : plain, plain.Determinant() < 0};
}

Vector3f direction(const Vector& vector) {
    const double length = vector.Length();
    if (!(length > 0) || !std::isfinite(length)) {
        return {};
    }
    return {static_cast<float>(vector.x / length), static_cast<float>(vector.y / length),
            static_cast<float>(vector.z / length)};
}

/// Adds the polygons of one mesh under one node to a shape.
class PartMaker {
public:
    PartMaker(const aiMesh& mesh, std::uint32_t part, const SurfaceMaterial& material, bool linear,
              Shape& shape)
        : mesh_(mesh), part_(part), material_(material), linear_(linear), shape_(shape) {}

    void make(const std::vector<Face>& faces, const std::vector<Vector>& cornerNormals,
              const Skin& skin, const PlacedCoordinates& placed) {
        for (const Skin::Binding& binding : skin.bindings) {
            ways_.push_back(wayOf(binding, placed));
        }
        skin_ = &skin;
        placeOf_.assign(mesh_.mNumVertices, none);
        for (std::size_t f = 0; f < faces.size(); ++f) {
            const std::span<const Vector> normals =
                cornerNormals.empty() ? std::span<const Vector>()
                                      : std::span(cornerNormals).subspan(f * 4, 4);
            addFace(faces[f], normals);
        }
    }

private:
    static constexpr auto none = std::numeric_limits<std::uint32_t>::max();

    [[nodiscard]] const Way& wayOfVertex(std::uint32_t vertex) const {
        return ways_[skin_->owners.empty() ? 0 : skin_->owners[vertex]];
    }

    void addFace(const Face& face, std::span<const Vector> normals) {
        // Around the edge, clockwise; then like a strip.
        const bool mirrors = wayOfVertex(face.vertices[0]).mirrors;
        const std::size_t count = face.cornerNum;
        std::array<std::size_t, 4> order{};
        for (std::size_t k = 0; k < count; ++k) {
            order[k] = mirrors ? k : (count - k) % count;
        }
        if (count == 4) {
            std::swap(order[2], order[3]);
        }
        std::array<Vector, 4> ring;
        for (std::size_t k = 0; k < count; ++k) {
            ring[k] = vectorOf(mesh_.mVertices[face.vertices[k]]);
        }
        const Vector front = frontOf(std::span(ring).first(count));

        ShapePolygon polygon;
        polygon.part = part_;
        polygon.cornerNum = face.cornerNum;
        polygon.mirrored = mirrors;
        for (std::size_t k = 0; k < count; ++k) {
            const std::uint32_t vertex = face.vertices[order[k]];
            Vector normal = front;
            if (!normals.empty()) {
                normal = normals[order[k]];
            } else if (mesh_.mNormals != nullptr && isFinitePoint(mesh_.mNormals[vertex]) &&
                       mesh_.mNormals[vertex].SquareLength() > 0) {
                normal = vectorOf(mesh_.mNormals[vertex]);
            }
            polygon.corners[k] = cornerOf(vertex, normal);
        }
        shape_.polygons.push_back(polygon);
        if (material_.twoSided) {
            std::swap(polygon.corners[1], polygon.corners[2]);
            for (ShapeCorner& corner : polygon.used()) {
                for (float& value : corner.normal) {
                    value = -value;
                }
            }
            shape_.polygons.push_back(polygon);
        }
    }

    ShapeCorner cornerOf(std::uint32_t vertex, const Vector& normal) {
        const Way& way = wayOfVertex(vertex);
        if (placeOf_[vertex] == none) {
            placeOf_[vertex] = static_cast<std::uint32_t>(shape_.places.size());
            shape_.places.push_back(
                {way.coordinate, way.points * vectorOf(mesh_.mVertices[vertex]), way.mirrors});
        }
        ShapeCorner corner;
        corner.place = placeOf_[vertex];
        corner.normal = direction(way.normals * normal);
        const Part& part = shape_.parts[part_];
        if (part.textured) {
            const aiVector3D& t = mesh_.mTextureCoords[material_.texture->set][vertex];
            const auto& m = material_.texture->transform;
            const float v = 1 - t.y;
            corner.texture = {m[0] * t.x + m[1] * v + m[2], m[3] * t.x + m[4] * v + m[5]};
            for (float& value : corner.texture) {
                value = std::isfinite(value) ? std::clamp(value, -farTexel, farTexel) : 0;
            }
        }
        if (part.coloured) {
            const aiColor4D& colour = mesh_.mColors[0][vertex];
            for (unsigned i = 0; i < 4; ++i) {
                const float value =
                    std::isfinite(colour[i]) ? std::clamp(colour[i], 0.0F, 1.0F) : 1.0F;
                corner.colour.at(i) = linear_ && i < 3 ? screenColour(value) : value;
            }
        }
        return corner;
    }

    /// Texture coordinates beyond are whole numbers.
    static constexpr float farTexel = 16777216;

    const aiMesh& mesh_;
    std::uint32_t part_;
    const SurfaceMaterial& material_;
    bool linear_;
    Shape& shape_;
    std::vector<Way> ways_;
    const Skin* skin_ = nullptr;
    std::vector<std::uint32_t> placeOf_;
};

/// Whether a mesh has colours at its vertices that do anything.
bool isColoured(const aiMesh& mesh) {
    if (mesh.mColors[0] == nullptr) {
        return false;
    }
    return std::ranges::any_of(std::span(mesh.mColors[0], mesh.mNumVertices), [](const auto& c) {
        return c.r != 1 || c.g != 1 || c.b != 1 || c.a != 1;
    });
}

std::size_t others(unsigned sets, bool used) { return sets - (used && sets > 0 ? 1U : 0U); }

Part partOf(const aiScene& scene, unsigned mesh, std::uint32_t coordinate,
            const Materials& materials, Dropped& dropped) {
    Part part;
    part.mesh = scene.mMeshes[mesh];
    part.coordinate = coordinate;
    part.material = part.mesh->mMaterialIndex;
    const SurfaceMaterial& material = materials.materials[part.material];
    part.textured = material.texture && part.mesh->mTextureCoords[material.texture->set] != nullptr;
    part.coloured =
        isColoured(*part.mesh) || (material.assumed && part.mesh->mColors[0] != nullptr);
    dropped.textureSets += others(part.mesh->GetNumUVChannels(), part.textured);
    dropped.colourSets += others(part.mesh->GetNumColorChannels(), true);
    dropped.morphTargets += part.mesh->mNumAnimMeshes;
    return part;
}

/// What a part has to go through of its mesh.
std::uint64_t sizeOf(const aiMesh& mesh) {
    std::uint64_t size = std::uint64_t{mesh.mNumFaces} + mesh.mNumVertices + mesh.mNumBones;
    for (const aiFace& face : std::span(mesh.mFaces, mesh.mNumFaces)) {
        size += face.mNumIndices;
    }
    for (const aiBone* bone : std::span(mesh.mBones, mesh.mNumBones)) {
        size += bone->mNumWeights;
    }
    return size;
}

/// Few bytes let a mesh be drawn many times.
void refuseManyInstances(const aiScene& scene, const CoordinateMap& map) {
    constexpr std::uint64_t many = std::uint64_t{1} << 20U;
    std::vector<std::uint64_t> sizes;
    std::uint64_t own = 0;
    for (const aiMesh* mesh : std::span(scene.mMeshes, scene.mNumMeshes)) {
        own += sizes.emplace_back(sizeOf(*mesh));
    }
    std::uint64_t drawn = 0;
    for (const SourceCoordinate& coordinate : map.coordinates) {
        const aiNode& node = *coordinate.node;
        for (const unsigned mesh : std::span(node.mMeshes, node.mNumMeshes)) {
            drawn += sizes[mesh];
        }
    }
    if (drawn > many + 4 * own) {
        throw ImportFault(fmt::format(
            "its nodes draw meshes of {} polygons, corners, vertices and weights so often that "
            "they make {}, which is too many",
            own, drawn));
    }
}

std::size_t sidesOf(const Part& part, const Materials& materials) {
    return materials.materials[part.material].twoSided ? 2 : 1;
}

/// The faces of each part, with fewer triangles where there are to be.
std::vector<std::vector<Face>> partFaces(const Shape& shape, const Materials& materials,
                                         const ShapeOptions& options, Dropped& dropped) {
    std::vector<std::vector<Face>> faces;
    std::size_t drawn = 0;
    for (const Part& part : shape.parts) {
        faces.push_back(facesOf(*part.mesh, dropped));
        drawn += triangleCount(faces.back()) * sidesOf(part, materials);
    }
    if (options.triangles && drawn > *options.triangles) {
        const double share = static_cast<double>(*options.triangles) / static_cast<double>(drawn);
        for (std::size_t p = 0; p < faces.size(); ++p) {
            const std::size_t before = triangleCount(faces[p]);
            const auto most = static_cast<std::size_t>(share * static_cast<double>(before));
            faces[p] = simplified(*shape.parts[p].mesh, faces[p], most);
            dropped.simplified +=
                (before - triangleCount(faces[p])) * sidesOf(shape.parts[p], materials);
        }
    }
    return faces;
}

}  // namespace

Shape makeShape(const aiScene& scene, const CoordinateMap& map, const PlacedCoordinates& placed,
                const Materials& materials, const ShapeOptions& options, Dropped& dropped) {
    dropped.cameras = scene.mNumCameras;
    dropped.lights = scene.mNumLights;
    refuseManyInstances(scene, map);
    Shape shape;
    for (std::uint32_t c = 0; c < map.coordinates.size(); ++c) {
        const aiNode& node = *map.coordinates[c].node;
        for (const unsigned mesh : std::span(node.mMeshes, node.mNumMeshes)) {
            shape.parts.push_back(partOf(scene, mesh, c, materials, dropped));
        }
    }
    const std::vector<std::vector<Face>> faces = partFaces(shape, materials, options, dropped);
    std::size_t polygons = 0;
    for (std::size_t p = 0; p < faces.size(); ++p) {
        polygons += faces[p].size() * sidesOf(shape.parts[p], materials);
    }
    shape.polygons.reserve(polygons);
    for (std::uint32_t p = 0; p < shape.parts.size(); ++p) {
        const Part& part = shape.parts[p];
        std::vector<Vector> normals;
        if (part.mesh->mNormals == nullptr) {
            normals = smoothNormals(*part.mesh, faces[p], options.smoothAngle);
        }
        PartMaker(*part.mesh, p, materials.materials[part.material], materials.linearColours, shape)
            .make(faces[p], normals, bindSkin(*part.mesh, map, part.coordinate), placed);
    }
    return shape;
}

Farthest farthest(const Shape& shape) {
    Farthest result;
    for (const Place& place : shape.places) {
        const double distance =
            std::max({std::abs(place.point.x), std::abs(place.point.y), std::abs(place.point.z)});
        // A distance that is no number is beyond any.
        if (!(distance <= result.distance)) {
            result = {distance, place.coordinate};
        }
    }
    return result;
}

}  // namespace vxbtool::importing
