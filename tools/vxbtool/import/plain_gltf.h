#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vxbtool/import/gltf_document.h"

namespace vxbtool::importing {

/// A glTF 2.0 file, text or binary, that says more plainly what Assimp misreads or crashes on:
/// - Whole numbers as weights, texture coordinates, places, normals and key values become floats, and
///   so does what replaces some elements of another accessor.
/// - Unless `motions` is false, keys that leap or lie on a spline become even ones.
/// - Materials of specular glossiness get the colour and the texture that stand for theirs.
/// - Textures name the coordinates that their transform names, and the picture that an extension does.
/// - Nodes that move say which of their parts are as by default.
/// - A skin without inverse matrices gets them.
/// - Nodes get names of their own, and a mesh for each skin that draws it, for Assimp finds joints and
///   what moves by their names, and gives a mesh its joints.
///
/// Nothing when there is nothing to change, and of another version. Throws ImportFault of a file that
/// is not sound.
std::optional<std::string> plainGltf(std::string_view file, const GltfAccessors::ReadFile& readFile,
                                     bool motions);

}  // namespace vxbtool::importing
