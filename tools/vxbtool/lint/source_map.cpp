#include "vxbtool/lint/source_map.h"

#include <set>

#include "vxbtool/lint/description_checks.h"

namespace vxbtool::lint {

using mqf2vxb::ModelPart;

SourceMap::SourceMap(const Trace& trace, const FilesOfParts& parts, const mqf2vxb::Model& model)
    : vertices_(model.vertices.size()),
      normals_(model.normals.size()),
      coordinates_(model.coordinates.size()) {
    const auto fileOf = [&](ModelPart part) {
        const PartFiles& files = parts[static_cast<std::size_t>(part)];
        return files.first < files.end ? trace.readings()[files.first] : nullptr;
    };
    mqf = fileOf(ModelPart::description);
    geo = fileOf(ModelPart::geometry);
    srf = fileOf(ModelPart::materials);
    bnd = fileOf(ModelPart::meshes);
    axs = fileOf(ModelPart::pivots);
    frm = fileOf(ModelPart::coordinates);
    sqx = fileOf(ModelPart::groups);
    const PartFiles& motionFiles = parts[static_cast<std::size_t>(ModelPart::motions)];
    std::set<const TracedFile*> met;
    for (std::size_t i = motionFiles.first; i < motionFiles.end; ++i) {
        const TracedFile* file = trace.readings()[i];
        motions.push_back(met.insert(file).second ? file : nullptr);
    }
    imageOffsets_ = imageLines(*mqf, model.images.size());
}

SourcePlace SourceMap::image(std::size_t slot) const { return {mqf, imageOffsets_[slot]}; }

}  // namespace vxbtool::lint
