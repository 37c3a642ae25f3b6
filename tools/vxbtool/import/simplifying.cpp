#include "vxbtool/import/simplifying.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include <meshoptimizer.h>

namespace vxbtool::importing {
namespace {

/// Triangles whose corners are the same vertex where nothing of them differs.
std::vector<unsigned> weldedTriangles(const aiMesh& mesh, const std::vector<Face>& faces) {
    std::vector<unsigned> indices;
    for (const Face& face : faces) {
        for (std::size_t k = 0; k + 2 < face.cornerNum; ++k) {
            indices.insert(indices.end(),
                           {face.vertices[0], face.vertices[k + 1], face.vertices[k + 2]});
        }
    }
    std::vector<meshopt_Stream> streams{{mesh.mVertices, sizeof(aiVector3D), sizeof(aiVector3D)}};
    if (mesh.mNormals != nullptr) {
        streams.push_back({mesh.mNormals, sizeof(aiVector3D), sizeof(aiVector3D)});
    }
    for (const aiVector3D* texture : mesh.mTextureCoords) {
        if (texture != nullptr) {
            streams.push_back({texture, sizeof(aiVector3D), sizeof(aiVector3D)});
        }
    }
    if (mesh.mColors[0] != nullptr) {
        streams.push_back({mesh.mColors[0], sizeof(aiColor4D), sizeof(aiColor4D)});
    }
    // Which of equal vertices stands for them: the first that meets the map's number.
    std::vector<unsigned> remap(mesh.mNumVertices);
    const std::size_t different =
        meshopt_generateVertexRemapMulti(remap.data(), indices.data(), indices.size(),
                                         mesh.mNumVertices, streams.data(), streams.size());
    constexpr unsigned none = ~0U;
    std::vector<unsigned> first(different, none);
    for (unsigned& index : indices) {
        unsigned& vertex = first[remap[index]];
        vertex = vertex == none ? index : vertex;
        index = vertex;
    }
    return indices;
}

/// Leaves out triangles that are there already, with the same corners in the same order.
void dropRepeated(std::vector<unsigned>& indices) {
    using Triangle = std::array<unsigned, 3>;
    std::vector<std::pair<Triangle, std::size_t>> order;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        Triangle triangle{indices[i], indices[i + 1], indices[i + 2]};
        std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()),
                    triangle.end());
        order.emplace_back(triangle, i);
    }
    std::ranges::sort(order);
    std::vector<std::size_t> kept;
    for (std::size_t k = 0; k < order.size(); ++k) {
        if (k == 0 || order[k].first != order[k - 1].first) {
            kept.push_back(order[k].second);
        }
    }
    std::ranges::sort(kept);
    std::vector<unsigned> result;
    for (const std::size_t i : kept) {
        result.insert(result.end(), {indices[i], indices[i + 1], indices[i + 2]});
    }
    indices = std::move(result);
}

/// Whether so many triangles meet at vertices that to look at their edges, each beside the others,
/// would take the square of them.
bool isCrowded(std::span<const unsigned> indices, std::size_t vertexNum) {
    constexpr std::uint64_t bearable = 1024;  // for each corner
    std::vector<std::uint64_t> triangles(vertexNum);
    std::uint64_t effort = 0;
    for (const unsigned index : indices) {
        effort += 2 * triangles[index]++ + 1;  // the squares' sum, as they grow
    }
    return effort > bearable * indices.size();
}

}  // namespace

std::size_t triangleCount(const std::vector<Face>& faces) {
    std::size_t count = 0;
    for (const Face& face : faces) {
        count += face.cornerNum - std::size_t{2};
    }
    return count;
}

std::vector<Face> simplified(const aiMesh& mesh, const std::vector<Face>& faces, std::size_t most) {
    if (triangleCount(faces) <= most) {
        return faces;
    }
    std::vector<unsigned> indices = weldedTriangles(mesh, faces);
    dropRepeated(indices);
    std::vector<unsigned> fewer = indices;
    constexpr float anyError = 1e9F;
    if (indices.size() > most * 3 && !isCrowded(indices, mesh.mNumVertices)) {
        fewer.resize(meshopt_simplify(fewer.data(), indices.data(), indices.size(),
                                      &mesh.mVertices[0].x, mesh.mNumVertices, sizeof(aiVector3D),
                                      most * 3, anyError, 0, nullptr));
    }
    if (fewer.size() > most * 3) {
        // It keeps every edge between attributes that differ; this one does not.
        std::vector<unsigned> few(fewer.size());
        few.resize(meshopt_simplifySloppy(few.data(), fewer.data(), fewer.size(),
                                          &mesh.mVertices[0].x, mesh.mNumVertices,
                                          sizeof(aiVector3D), most * 3, anyError, nullptr));
        fewer = std::move(few);
    }
    std::vector<Face> result;
    for (std::size_t i = 0; i + 2 < fewer.size(); i += 3) {
        const std::array<Vector, 3> ring{vectorOf(mesh.mVertices[fewer[i]]),
                                         vectorOf(mesh.mVertices[fewer[i + 1]]),
                                         vectorOf(mesh.mVertices[fewer[i + 2]])};
        if (frontOf(ring).SquareLength() > 0) {
            result.push_back({3, {fewer[i], fewer[i + 1], fewer[i + 2], 0}});
        }
    }
    return result;
}

}  // namespace vxbtool::importing
