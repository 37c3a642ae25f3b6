#pragma once

#include <cstdint>
#include <vector>

#include "vxb/vxb_file.h"
#include "vxbtool/model_text/model_text.h"
#include "vxbtool/unpack/found_textures.h"
#include "vxbtool/unpack/owners.h"

namespace vxbtool::unpack {

/// The polygons of one packet group, by their numbers in the GEO file.
struct PolygonGroup {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
    bool shared = false;
    bool strips = false;
};

/// What the packets make of the model. Polygons are numbered in the order of the file; each is used
/// once, in the same order.
struct UnpackedPolygons {
    std::vector<model_text::Polygon> polygons;
    model_text::Materials materials;
    model_text::Meshes meshes;  ///< of a file with strips every polygon is in one
    std::vector<PolygonGroup> groups;
    bool hasStrips = false;
    /// What an unlit polygon has for a normal, of which no packet tells: one that is not there where
    /// the normals of a shared polygon count, else the first.
    std::uint32_t noNormal = 0;
};

UnpackedPolygons unpackPolygons(const mqf2vxb::VxbFile& file, const Owners& owners,
                                const FoundTextures& textures);

}  // namespace vxbtool::unpack
