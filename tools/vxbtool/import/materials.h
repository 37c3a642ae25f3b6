#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <assimp/scene.h>

namespace vxbtool::importing {

/// What lies beyond the edges of a texture, in one direction.
enum class Wrap : std::uint8_t { repeat, mirror, clamp };

/// The picture that a material asks for.
struct TextureUse {
    std::string name;  ///< as the material has it: a path, or "*" and the number of an embedded one
    std::uint32_t set = 0;  ///< which texture coordinates of a mesh
    Wrap across = Wrap::repeat;
    Wrap down = Wrap::repeat;
    // What becomes of texture coordinates first: u' = m[0] u + m[1] v + m[2], v' = m[3] u and so on.
    std::array<float, 6> transform{1, 0, 0, 0, 1, 0};
};

/// What import takes of a material. Colours are those of a screen, 0 to 1.
struct SurfaceMaterial {
    std::string name;
    std::array<float, 3> colour{1, 1, 1};
    bool assumed = false;  ///< the file has no material, and Assimp made one
    float opacity = 1;
    bool unlit = false;
    bool twoSided = false;
    bool mayBlend = false;  ///< what is half transparent in a texture or a vertex is to be so
    bool cutsOut = true;    ///< alpha of the texture counts
    std::optional<TextureUse> texture;
};

/// Reads the materials of a scene. Vertex colours of a scene with `linearColours` are those of light,
/// not of a screen.
struct Materials {
    std::vector<SurfaceMaterial> materials;
    bool linearColours = false;
};

Materials readMaterials(const aiScene& scene, bool unlit);

/// The colour of a screen for an amount of light, both 0 to 1.
float screenColour(float light);

}  // namespace vxbtool::importing
