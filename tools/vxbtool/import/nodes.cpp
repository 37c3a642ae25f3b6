#include "vxbtool/import/nodes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <unordered_set>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/import/source.h"

namespace vxbtool::importing {
namespace {

/// Few bytes may stand for very many nodes; the vertices of a file are 65536.
constexpr std::size_t mostNodes = std::size_t{1} << 18U;

/// The nodes of a scene from above, parents first, children in the scene's order.
struct NodeList {
    std::vector<const aiNode*> nodes;
    std::vector<std::size_t> parents;  ///< index into nodes; of the root its own
};

NodeList listNodes(const aiScene& scene) {
    NodeList list;
    std::vector<std::pair<const aiNode*, std::size_t>> open{{scene.mRootNode, 0}};
    while (!open.empty()) {
        const auto [node, parent] = open.back();
        open.pop_back();
        const std::size_t index = list.nodes.size();
        list.nodes.push_back(node);
        list.parents.push_back(parent);
        if (list.nodes.size() > mostNodes) {
            throw ImportFault(fmt::format("it has more than {} nodes", mostNodes));
        }
        for (unsigned c = node->mNumChildren; c > 0; --c) {
            if (const aiNode* child = node->mChildren[c - 1]; child != nullptr) {
                open.emplace_back(child, index);
            }
        }
    }
    return list;
}

struct NodeUses {
    std::unordered_set<const aiNode*> joints;
    std::unordered_set<const aiNode*> moving;
};

NodeUses findUses(const aiScene& scene, const CoordinateMap& map, bool withMotions) {
    NodeUses uses;
    const auto add = [&](const aiString& name, std::unordered_set<const aiNode*>& set) {
        if (const auto found = map.nodes.find(name.C_Str()); found != map.nodes.end()) {
            set.insert(found->second);
        }
    };
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        const aiMesh& mesh = *scene.mMeshes[m];
        for (unsigned b = 0; b < mesh.mNumBones; ++b) {
            add(mesh.mBones[b]->mName, uses.joints);
        }
    }
    for (unsigned a = 0; withMotions && a < scene.mNumAnimations; ++a) {
        const aiAnimation& animation = *scene.mAnimations[a];
        for (unsigned c = 0; c < animation.mNumChannels; ++c) {
            add(animation.mChannels[c]->mNodeName, uses.moving);
        }
    }
    return uses;
}

/// Whether each mesh has polygons, not only lines and points.
std::vector<bool> meshesWithPolygons(const aiScene& scene) {
    std::vector<bool> result;
    for (const aiMesh* mesh : std::span(scene.mMeshes, scene.mNumMeshes)) {
        const std::span<const aiFace> faces(mesh->mFaces, mesh->mNumFaces);
        result.push_back(
            std::ranges::any_of(faces, [](const aiFace& face) { return face.mNumIndices > 2; }));
    }
    return result;
}

Matrix3 scaled(const Matrix3& matrix, double factor) {
    Matrix3 result = matrix;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            result[row][column] *= factor;
        }
    }
    return result;
}

double columnLength(const Matrix3& matrix, unsigned column) {
    return std::hypot(matrix[0][column], matrix[1][column], matrix[2][column]);
}

/// Whether 16 bits hold the matrix well: nothing too large, no column so short that rounding bends
/// it, and not flat.
bool isWellHeld(const Matrix3& matrix) {
    constexpr double shortest = 0.125;
    constexpr double flattest = 0.05;
    double volume = 1;
    for (unsigned column = 0; column < 3; ++column) {
        const double length = columnLength(matrix, column);
        for (unsigned row = 0; row < 3; ++row) {
            if (!(std::abs(matrix[row][column]) < matrixLimit)) {
                return false;
            }
        }
        if (length < shortest) {
            return false;
        }
        volume *= length;
    }
    return std::abs(matrix.Determinant()) > flattest * volume;
}

/// What turns the source upright.
Matrix4 turned(UpAxis up) {
    Matrix4 turn;
    if (up == UpAxis::z) {
        turn.b2 = turn.c3 = 0;
        turn.b3 = 1;
        turn.c2 = -1;
    }
    return turn;
}

/// The part of a coordinate's matrix that goes into its vertices.
Matrix3 vertexPart(const Matrix3& matrix, bool moves) {
    if (isWellHeld(matrix)) {
        return {};
    }
    double longest = 0;
    for (unsigned column = 0; column < 3; ++column) {
        longest = std::max(longest, columnLength(matrix, column));
    }
    const bool uniform = longest > 0 && isWellHeld(scaled(matrix, 1 / longest));
    if (moves || uniform) {
        // Smaller ones of a node that moves may be so in this moment only.
        return longest > 0 && (uniform || longest >= matrixLimit) ? scaled({}, longest) : Matrix3();
    }
    return matrix;  // and the coordinate's is the identity
}

std::int32_t rounded(double value) { return static_cast<std::int32_t>(std::lround(value)); }

std::int32_t translationValue(double value, const SourceCoordinate& coordinate) {
    if (!(std::abs(value) < static_cast<double>(std::numeric_limits<std::int32_t>::max()))) {
        throw ImportFault(
            fmt::format("node \"{}\" lies {:.6g} units from its parent, which goes beyond 32 bits",
                        coordinate.node->mName.C_Str(), value));
    }
    return rounded(value);
}

Matrix4 matrixOf(const model_text::Coordinate& coordinate) {
    Matrix4 result;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            result[row][column] = coordinate.matrix[row * 3 + column] / 4096.0;
        }
        result[row][3] = coordinate.translation[row];
    }
    return result;
}

}  // namespace

std::optional<std::uint32_t> CoordinateMap::find(const std::string& name) const {
    const auto node = nodes.find(name);
    if (node == nodes.end()) {
        return std::nullopt;
    }
    const auto coordinate = byNode.find(node->second);
    return coordinate == byNode.end() ? std::nullopt : std::optional(coordinate->second);
}

CoordinateMap mapCoordinates(const aiScene& scene, bool withMotions, UpAxis up) {
    CoordinateMap map;
    const NodeList list = listNodes(scene);
    for (const aiNode* node : list.nodes) {
        map.nodes.emplace(node->mName.C_Str(), node);
    }
    const NodeUses uses = findUses(scene, map, withMotions);

    const std::size_t count = list.nodes.size();
    const std::vector<bool> withPolygons = meshesWithPolygons(scene);
    std::vector<char> drawing(count);
    std::vector<char> kept(count);
    std::vector<std::size_t> carried(count);  // children that are or carry something
    for (std::size_t n = count; n-- > 0;) {
        const aiNode* node = list.nodes[n];
        drawing[n] = static_cast<char>(
            std::ranges::any_of(std::span(node->mMeshes, node->mNumMeshes),
                                [&](unsigned mesh) -> bool { return withPolygons[mesh]; }));
        const bool needed =
            drawing[n] != 0 || uses.joints.contains(node) || uses.moving.contains(node);
        kept[n] = static_cast<char>(needed || carried[n] > 1);
        carried[list.parents[n]] += static_cast<std::size_t>(n != 0 && (needed || carried[n] > 0));
    }

    constexpr auto none = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> coordinateOf(count, none);  // it, or the one above
    std::vector<Matrix4> above(count);                     // from that coordinate down to the node
    for (std::size_t n = 0; n < count; ++n) {
        const aiNode* node = list.nodes[n];
        const std::size_t parent = list.parents[n];
        const Matrix4 folded = n == 0 ? turned(up) : above[parent];
        const std::uint32_t parentCoordinate = n == 0 ? none : coordinateOf[parent];
        const Matrix4 local = folded * Matrix4(node->mTransformation);
        if (kept[n] == 0) {
            coordinateOf[n] = parentCoordinate;
            above[n] = local;
            continue;
        }
        const auto index = static_cast<std::uint32_t>(map.coordinates.size());
        SourceCoordinate coordinate;
        coordinate.node = node;
        coordinate.parent = parentCoordinate == none ? index : parentCoordinate;
        coordinate.folded = folded;
        coordinate.local = local;
        if (parentCoordinate != none) {
            coordinate.parentTransform = map.coordinates[parentCoordinate].vertexTransform;
        }
        coordinate.draws = drawing[n] != 0;
        coordinate.moves = uses.moving.contains(node);
        coordinate.joint = uses.joints.contains(node);
        coordinate.vertexTransform = vertexPart(coordinate.parentPart(), coordinate.moves);
        map.byNode.emplace(node, index);
        coordinateOf[n] = index;
        map.coordinates.push_back(coordinate);
    }
    return map;
}

PlacedCoordinates placeCoordinates(const CoordinateMap& map, double scale) {
    PlacedCoordinates placed;
    const std::size_t count = map.coordinates.size();
    placed.coordinates.resize(count);
    std::vector<char> sound(count);  // whether the rounded numbers can be turned back
    const Matrix4 units{scaled({}, scale)};
    for (std::uint32_t c = 0; c < count; ++c) {
        const SourceCoordinate& source = map.coordinates[c];
        model_text::Coordinate& result = placed.coordinates[c];
        const bool root = source.parent == c;
        result.parent = source.parent;
        const Matrix4 plain{scaled(source.vertexTransform, scale)};
        const Matrix4 inParent = (root ? units : placed.toCoordinate[source.parent]) * source.local;
        if (source.vertexTransform != source.parentPart()) {
            const Matrix3 matrix = Matrix3(inParent) * Matrix3(plain).Inverse();
            for (std::size_t m = 0; m < result.matrix.size(); ++m) {
                const double value = matrix[static_cast<unsigned>(m / 3)][m % 3] * 4096;
                result.matrix.at(m) = rounded(std::clamp(value, -32768.0, 32767.0));
            }
        }
        for (unsigned axis = 0; axis < 3; ++axis) {
            result.translation.at(axis) = translationValue(inParent[axis][3], source);
        }
        const Matrix4 own = matrixOf(result);
        sound[c] =
            static_cast<char>((root || sound[source.parent] != 0) && isWellHeld(Matrix3(own)));
        placed.toModel.push_back(root ? own : placed.toModel[source.parent] * own);
        placed.sourceToModel.push_back((root ? units : placed.sourceToModel[source.parent]) *
                                       source.local);
        placed.toCoordinate.push_back(
            sound[c] != 0 ? Matrix4(placed.toModel[c]).Inverse() * placed.sourceToModel[c] : plain);
    }
    return placed;
}

}  // namespace vxbtool::importing
