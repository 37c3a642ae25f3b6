#include <array>
#include <cstdint>
#include <vector>

#include "packets/packet_groups.h"
#include "vxbtool/lint/model_checks.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

/// Whether the two would by themselves have packets of one form, drawn alike.
bool sameForm(const MaterialAppearance& a, const MaterialAppearance& b) {
    constexpr std::uint32_t formFlags = material_flag::unlit | material_flag::bit02 |
                                        material_flag::bit04 | material_flag::doubleImage;
    return (a.flag & formFlags) == (b.flag & formFlags) && a.textured() == b.textured() &&
           a.windowed() == b.windowed() && a.colourPerVertex() == b.colourPerVertex() &&
           (a.unlit() || (a.shading == 'G') == (b.shading == 'G'));
}

/// Walks the strips as the writer does.
class StripCheck {
public:
    StripCheck(const LintedModel& linted, Findings& findings)
        : linted_(linted), findings_(findings) {
        // A word for the number of meshes, and then for each mesh its number of polygons and those.
        std::size_t token = 1;
        for (const MeshRecord& mesh : linted.model.meshes) {
            firstToken_.push_back(token + 1);
            token += 1 + mesh.polyNum;
        }
    }

    void polygon(const PacketForm& /*form*/, const MaterialRecord& /*material*/,
                 const DrawnPolygon& /*drawn*/) {}

    void strip(std::size_t mesh) { mesh_ = mesh; }

    void stripPolygon(const PacketForm& form, const DrawnPolygon& drawn, std::size_t k) {
        const TracedFile& bnd = *linted_.source.bnd;
        const SourcePlace place{&bnd, bnd.tokens[firstToken_[mesh_] + k].offset};
        const auto polygon = fmt::arg("polygon", drawn.number);
        if (drawn.type == polygon_type::quadrangle) {
            findings_.add(kind::stripQuadrangle, place, polygon);
        }
        if (k > 0 && (drawn.vertex(0) != edge_[0] || drawn.vertex(1) != edge_[1])) {
            // The edge is told in the numbers of the GEO file, which organisation may have changed.
            findings_.add(kind::stripBreaks, place, polygon, fmt::arg("first", geoEdge_[0]),
                          fmt::arg("second", geoEdge_[1]));
        }
        const MeshRecord& mesh = linted_.model.meshes[mesh_];
        const MaterialTable& materials = linted_.model.materials;
        const MaterialAppearance first = materials.appearance(
            materials.records[linted_.model.polygonsOf(mesh).front().material]);
        if (!sameForm(first, drawn.appearance)) {
            findings_.add(kind::stripMixed, place, polygon);
        }
        checkIndices(form, k == 0 ? form.packet : form.further, drawn, place);
        remember(drawn, k);
    }

private:
    /// Nothing looks up the third field of a line, or a normal that the polygon does not have for
    /// itself. The sizes of a sprite are none of these: they have their places in its packet.
    void checkIndices(const PacketForm& form, const PacketWords& words, const DrawnPolygon& drawn,
                      const SourcePlace& place) {
        const Model& model = linted_.model;
        const auto check = [&](Field field, const char* what, std::int32_t index,
                               std::size_t count) {
            if (words.has(field) && static_cast<std::size_t>(index) >= count) {
                findings_.add(kind::stripNamesNothing, place, fmt::arg("polygon", drawn.number),
                              fmt::arg("what", what), fmt::arg("index", index),
                              fmt::arg("count", count));
            }
        };
        for (std::size_t i = 0; i < form.corners(); ++i) {
            if (drawn.type != polygon_type::sprite) {
                check(cornerField(Field::V0, i), "vertex", drawn.vertex(i), model.vertices.size());
            }
            if (!model.normals.empty()) {
                check(cornerField(Field::N0, i), "normal", drawn.normal(i), model.normals.size());
            }
        }
    }

    void remember(const DrawnPolygon& drawn, std::size_t k) {
        const auto geo = [&](std::size_t corner) { return geoNumber(drawn, drawn.vertex(corner)); };
        edge_ = {k == 0 ? drawn.vertex(1) : edge_[1], drawn.vertex(2)};
        geoEdge_ = {k == 0 ? geo(1) : geoEdge_[1], geo(2)};
    }

    /// The number in the GEO file of a vertex of the polygon.
    [[nodiscard]] std::int32_t geoNumber(const DrawnPolygon& drawn, std::int32_t vertex) const {
        const auto number = static_cast<std::size_t>(drawn.number);
        const auto& renumbered = linted_.model.polygons[number].vertex;
        for (std::size_t k = 0; k < renumbered.size(); ++k) {
            if (renumbered[k] == vertex) {
                return linted_.polygons[number].vertex[k];
            }
        }
        return vertex;
    }

    const LintedModel& linted_;
    Findings& findings_;
    std::vector<std::size_t> firstToken_;  // of each mesh, that of its first polygon
    std::size_t mesh_ = 0;
    std::array<std::int32_t, 2> edge_{};  // the two most recent vertices
    std::array<std::int32_t, 2> geoEdge_{};
};

}  // namespace

void checkMeshes(const LintedModel& linted, Findings& findings) {
    if (linted.source.bnd != nullptr) {
        StripCheck check(linted, findings);
        walkDrawn(linted.model, check);
    }
}

}  // namespace vxbtool::lint
