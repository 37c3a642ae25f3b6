#pragma once

#include "vxbtool/import/gltf_document.h"

namespace vxbtool::importing {

// What Assimp needs of the materials and textures of a document, which has arrays of them. Each function
// tells whether it changed something, and throws what a document that is not sound throws.

/// Gives materials of specular glossiness the colour and the texture that stand for theirs.
bool renewMaterials(GltfJson& document);

/// Takes the set of texture coordinates that a texture's transform names instead of the texture's own.
bool chooseTextureCoordinates(GltfJson& document);

/// Names the pictures that extensions name, so that they are missed when nobody can read them.
bool namePictures(GltfJson& document);

}  // namespace vxbtool::importing
