#include "vxbtool/gltf/gltf.h"

#include <sstream>

#include "vxbtool/gltf/animations.h"
#include "vxbtool/gltf/buffer.h"
#include "vxbtool/gltf/materials.h"
#include "vxbtool/gltf/meshes.h"
#include "vxbtool/gltf/nodes.h"

namespace vxbtool::gltf {

std::string glb(const scene::Scene& scene, const GltfOptions& options) {
    tinygltf::Model model;
    Buffer buffer(model);
    model.asset.version = "2.0";
    model.asset.generator = "vxbtool";
    addMaterials(scene, model, buffer);
    const std::vector<int> holders =
        addNodes(scene, options.unit, addMeshes(scene, options.unit, model, buffer), model);
    if (options.motions) {
        addAnimations(scene, options, holders, model, buffer);
    }
    buffer.finish();
    std::ostringstream stream;
    constexpr bool pretty = false;
    constexpr bool binary = true;
    tinygltf::TinyGLTF().WriteGltfSceneToStream(&model, stream, pretty, binary);
    return std::move(stream).str();
}

}  // namespace vxbtool::gltf
