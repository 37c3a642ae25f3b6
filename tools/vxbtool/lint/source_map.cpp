#include "vxbtool/lint/source_map.h"

#include "readers/frm_reader.h"
#include "vxbtool/lint/description_checks.h"

namespace vxbtool::lint {

SourceMap::SourceMap(const Trace& trace, const mqf2vxb::Model& model)
    : vertices_(model.vertices.size()),
      normals_(model.normals.size()),
      coordinates_(model.coordinates.size()) {
    auto next = trace.files().begin();
    const auto take = [&](bool wanted) { return wanted ? &*next++ : nullptr; };
    const mqf2vxb::ModelDescription& description = model.description;
    mqf_ = take(true);
    geo = take(description.geo.given);
    srf = take(description.srf.given);
    bnd = take(description.bnd.given);
    axs = take(description.axs.given);
    frm = take(description.frm.given);
    sqx = take(description.frm.given && mqf2vxb::isGroupMode(model.GroupFileName));
    while (motions.size() < model.motions.size()) {
        motions.push_back(take(true));
    }
    imageOffsets_ = imageLines(*mqf_, model.images.size());
}

SourcePlace SourceMap::image(std::size_t slot) const { return {mqf_, imageOffsets_[slot]}; }

}  // namespace vxbtool::lint
