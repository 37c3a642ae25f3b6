#include "vxbtool/import/skins.h"

#include <span>

namespace vxbtool::importing {

Skin bindSkin(const aiMesh& mesh, const CoordinateMap& map, std::uint32_t coordinate) {
    Skin skin;
    skin.bindings.push_back({coordinate, Matrix4()});
    if (mesh.mNumBones == 0) {
        return skin;
    }
    skin.owners.assign(mesh.mNumVertices, 0);
    std::vector<float> largest(mesh.mNumVertices, 0);
    for (const aiBone* bone : std::span(mesh.mBones, mesh.mNumBones)) {
        const std::optional<std::uint32_t> joint = map.find(bone->mName.C_Str());
        if (!joint) {
            continue;
        }
        const auto binding = static_cast<std::uint32_t>(skin.bindings.size());
        skin.bindings.push_back({*joint, Matrix4(bone->mOffsetMatrix)});
        for (const aiVertexWeight& weight : std::span(bone->mWeights, bone->mNumWeights)) {
            if (weight.mWeight > largest[weight.mVertexId]) {
                largest[weight.mVertexId] = weight.mWeight;
                skin.owners[weight.mVertexId] = binding;
            }
        }
    }
    return skin;
}

}  // namespace vxbtool::importing
