#include "organise/mesh_organisation.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "format/packet_forms.h"

namespace mqf2vxb {
namespace {

/// The materials and meshes of the polygons by polygon number. Of several materials of a polygon
/// the first counts.
class PolygonUse {
public:
    explicit PolygonUse(const Model& model) : model_(model), uses_(model.polygons.size()) {
        for (std::uint32_t m = 0; m < model.materials.records.size(); ++m) {
            Use& use = useOf(model.materials.records[m].polygon);
            if (use.material == none) {
                use.material = m;
            } else {
                further_.push_back(m);
            }
        }
    }

    /// The material of a polygon of a mesh; `repeated` is set when the mesh has the polygon already.
    std::uint32_t take(std::size_t mesh, std::int32_t polygon, bool& repeated) {
        // The table has no negative number either.
        if (static_cast<std::size_t>(polygon) >= uses_.size() || useOf(polygon).material == none) {
            refuse(mesh, polygon, "no material");
        }
        Use& use = useOf(polygon);
        if (use.mesh != none && use.mesh != mesh) {
            refuse(mesh, polygon, "a place in mesh " + std::to_string(use.mesh) + " too");
        }
        repeated = repeated || use.mesh == mesh;
        use.mesh = static_cast<std::uint32_t>(mesh);
        return use.material;
    }

    /// Refuses a material whose polygon no mesh took.
    void checkAllTaken() {
        for (const MaterialRecord& material : model_.materials.records) {
            if (useOf(material.polygon).mesh == none) {
                notCorrectData(place(), "polygon " + std::to_string(material.polygon) +
                                            " has a material and is in no mesh");
            }
        }
    }

    /// Refuses a further material of a polygon that belongs to a packet group of meshes of one
    /// polygon. The group holds the packets of all materials of its code and list, and the file
    /// counts its meshes: the two would disagree.
    void checkFurtherMaterials() const {
        if (further_.empty()) {
            return;
        }
        std::set<std::pair<CoordinateListId, PrimitiveTypeCode>> groups;
        for (const MeshRecord& mesh : model_.meshes) {
            if (mesh.polyNum == 1 && findPacketForm(mesh.type) != nullptr) {
                groups.emplace(mesh.cno, mesh.type);
            }
        }
        for (const std::uint32_t m : further_) {
            const MaterialRecord& material = model_.materials.records[m];
            if (groups.contains({material.cno, material.type})) {
                notCorrectData({model_.description.srf.fileName},
                               "polygon " + std::to_string(material.polygon) +
                                   " has a second material, whose packet no mesh counts");
            }
        }
    }

    [[noreturn]] void refuse(std::size_t mesh, std::int32_t polygon,
                             const std::string& what) const {
        notCorrectData(place(), "polygon " + std::to_string(polygon) + " of mesh " +
                                    std::to_string(mesh) + " has " + what);
    }
    [[nodiscard]] Place place() const { return {model_.description.bnd.fileName}; }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    struct Use {
        std::uint32_t material = none;
        std::uint32_t mesh = none;
    };
    Use& useOf(std::int32_t polygon) { return uses_[static_cast<std::size_t>(polygon)]; }

    const Model& model_;
    std::vector<Use> uses_;
    std::vector<std::uint32_t> further_;  // materials that are not the first of their polygon
};

}  // namespace

void organiseMeshes(Model& model) {
    PolygonUse use(model);
    for (std::size_t i = 0; i < model.meshes.size(); ++i) {
        MeshRecord& mesh = model.meshes[i];
        if (mesh.polyNum == 0) {
            notCorrectData(use.place(), "mesh " + std::to_string(i) + " has no polygons");
        }
        for (std::uint32_t k = 0; k < mesh.polyNum; ++k) {
            MeshPolygon& polygon = model.meshPolygons[mesh.firstPolygon + k];
            polygon.material = use.take(i, polygon.number, mesh.repeats);
            MaterialRecord& material = model.materials.records[polygon.material];
            if (k == 0) {
                mesh.type = material.type | (mesh.polyNum > 1 ? type_code::strip : 0);
                mesh.cno = material.cno;
            }
            const bool shared = material.cno == CoordinateListId::shared;
            if (shared != (mesh.cno == CoordinateListId::shared)) {
                use.refuse(i, polygon.number,
                           shared ? "vertices in different coordinates, unlike the first"
                                  : "vertices in one coordinate, unlike the first");
            }
            material.type = mesh.type;
        }
    }
    use.checkAllTaken();
    use.checkFurtherMaterials();
}

}  // namespace mqf2vxb
