#include "organise/mesh_organisation.h"

#include <string>
#include <vector>

namespace mqf2vxb {
namespace {

/// The materials and meshes of the polygons by polygon number.
class PolygonUse {
public:
    explicit PolygonUse(const Model& model) : model_(model), uses_(model.polygons.size()) {
        for (std::size_t m = 0; m < model.materials.records.size(); ++m) {
            Use& use = useOf(model.materials.records[m].polygon);
            use.material = use.material == none ? static_cast<std::uint32_t>(m) : several;
        }
    }

    /// The one material of a polygon of a mesh.
    std::uint32_t take(std::size_t mesh, std::int32_t polygon) {
        if (static_cast<std::size_t>(polygon) >= uses_.size()) {  // a negative number too
            refuse(mesh, polygon, "no material");
        }
        Use& use = useOf(polygon);
        if (use.material == none || use.material == several) {
            refuse(mesh, polygon, use.material == none ? "no material" : "two materials");
        }
        if (use.mesh == mesh) {
            refuse(mesh, polygon, "a second place in the mesh");
        }
        if (use.mesh != none) {
            refuse(mesh, polygon, "a place in mesh " + std::to_string(use.mesh) + " too");
        }
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

    [[noreturn]] void refuse(std::size_t mesh, std::int32_t polygon,
                             const std::string& what) const {
        notCorrectData(place(), "polygon " + std::to_string(polygon) + " of mesh " +
                                    std::to_string(mesh) + " has " + what);
    }
    [[nodiscard]] Place place() const { return {model_.description.bnd.fileName}; }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;
    static constexpr std::uint32_t several = none - 1;

    struct Use {
        std::uint32_t material = none;
        std::uint32_t mesh = none;
    };
    Use& useOf(std::int32_t polygon) { return uses_[static_cast<std::size_t>(polygon)]; }

    const Model& model_;
    std::vector<Use> uses_;
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
            polygon.material = use.take(i, polygon.number);
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
}

}  // namespace mqf2vxb
