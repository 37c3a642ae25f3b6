#include "vxbtool/unpack/unpack_model.h"

#include <algorithm>
#include <utility>

#include <fmt/core.h>

#include "vxb/word_meaning.h"
#include "vxbtool/unpack/found_textures.h"
#include "vxbtool/unpack/hierarchy.h"
#include "vxbtool/unpack/motions.h"
#include "vxbtool/unpack/normal_order.h"
#include "vxbtool/unpack/owners.h"
#include "vxbtool/unpack/polygons.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::VxbFile;

/// Tells above its first polygon, and its first mesh, what a packet group draws.
void addGroupNotes(const VxbFile& file, const UnpackedPolygons& polygons,
                   model_text::Notes& notes) {
    for (std::size_t g = 0; g < polygons.groups.size(); ++g) {
        if (polygons.groups[g].first < polygons.groups[g].end) {
            notes.push_back(
                {polygons.groups[g].first, mqf2vxb::formName(file.packetGroups[g].code)});
        }
    }
}

}  // namespace

UnpackedModel unpackModel(const VxbFile& file) {
    UnpackedModel result;
    model_text::ModelText& model = result.text;
    const Owners owners(file);
    FoundTextures textures(file);
    result.withoutImages = textures.standIns();
    if (result.withoutImages) {
        model.heading = "convert with -ni: the images are stand-ins\n";
    }
    model.heading +=
        "Unpacked from a VXB file. What such a file does not tell: the scale, pivots and groups, all of\n"
        "which are in the vertices and coordinates already, and whether a lit texture is of kind T or D.\n";
    UnpackedPolygons polygons = unpackPolygons(file, owners, textures);
    orderForNormals(owners, file.normals.independent.number, file.normals.shared.number, polygons);

    if (!file.packetGroups.empty()) {
        model.geometry = unpackPoints(file);
        addGroupNotes(file, polygons, model.geometry->polygonNotes);
        model.geometry->polygons = std::move(polygons.polygons);
        model.materials = std::move(polygons.materials);
    }
    if (!file.coordinates.empty()) {
        model.hierarchy = unpackHierarchy(file, owners);
    }
    if (polygons.hasStrips) {
        model.meshes = std::move(polygons.meshes);
    }
    model.textures = textures.take();
    model.motions = unpackMotions(file);
    return result;
}

}  // namespace vxbtool::unpack
