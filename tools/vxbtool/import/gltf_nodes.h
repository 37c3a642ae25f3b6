#pragma once

#include "vxbtool/import/gltf_document.h"

namespace vxbtool::importing {

// What Assimp needs of the nodes and meshes of a document, which has arrays of them. Each function tells
// whether it changed something, and throws what a document that is not sound throws.

/// Gives nodes that share a name names of their own: Assimp finds joints and what moves by their names.
bool nameNodes(GltfJson& document);

/// Gives each skin that draws a mesh one of its own: Assimp's meshes have one skin.
bool divideMeshes(GltfJson& document);

/// Writes down what nodes that move have by default. Assimp would take it from the node's matrix
/// instead, and one that mirrors, or has no size, has several scales and rotations.
bool completeMovingNodes(GltfJson& document);

}  // namespace vxbtool::importing
