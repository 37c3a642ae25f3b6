#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vxbtool::importing {

/// A glTF 2.0 file, text or binary, that says more plainly what Assimp misreads or crashes on: whole
/// numbers as weights, texture coordinates, places, normals and key values become floats, keys that
/// leap or lie on a spline become even ones, and a skin without inverse matrices gets them. `readFile` reads a file by the name that the document has for
/// it. Nothing when there is nothing to change, or when the file is not sound enough for it.
std::optional<std::string>
plainGltf(std::string_view file,
          const std::function<std::optional<std::string>(const std::string& name)>& readFile);

}  // namespace vxbtool::importing
