#include "hierarchy/mesh_organisation.h"

#include <string>
#include <vector>

namespace mqf2vxb {
namespace {

/// The materials and meshes of the polygons by polygon number.
class PolygonUse {
public:
    explicit PolygonUse(const Model& model)
        : model_(model),
          materialOf_(model.polygons.size(), none),
          meshOf_(model.polygons.size(), none),
          named_(model.polygons.size(), 0) {
        for (std::size_t m = 0; m < model.materials.records.size(); ++m) {
            const auto polygon = static_cast<std::size_t>(model.materials.records[m].polygon);
            if (named_[polygon]++ == 0) {
                materialOf_[polygon] = static_cast<std::uint32_t>(m);
            }
        }
    }

    /// The one material of a polygon of a mesh.
    std::size_t take(std::size_t mesh, std::int32_t polygon) {
        const auto p = static_cast<std::size_t>(polygon);
        if (p >= named_.size()) {  // a negative number too
            refuse(mesh, polygon, "no material");
        }
        if (named_[p] != 1) {
            refuse(mesh, polygon, named_[p] == 0 ? "no material" : "two materials");
        }
        if (meshOf_[p] == mesh) {
            refuse(mesh, polygon, "a second place in the mesh");
        }
        if (meshOf_[p] != none) {
            refuse(mesh, polygon, "a place in mesh " + std::to_string(meshOf_[p]) + " too");
        }
        meshOf_[p] = static_cast<std::uint32_t>(mesh);
        return materialOf_[p];
    }

    /// Refuses a material whose polygon no mesh took.
    void checkAllTaken() const {
        for (const MaterialRecord& material : model_.materials.records) {
            if (meshOf_[static_cast<std::size_t>(material.polygon)] == none) {
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

    const Model& model_;
    std::vector<std::uint32_t> materialOf_;
    std::vector<std::uint32_t> meshOf_;
    std::vector<std::uint32_t> named_;
};

}  // namespace

void organiseMeshes(Model& model) {
    PolygonUse use(model);
    for (std::size_t i = 0; i < model.meshes.size(); ++i) {
        MeshRecord& mesh = model.meshes[i];
        if (mesh.poly.empty()) {
            notCorrectData(use.place(), "mesh " + std::to_string(i) + " has no polygons");
        }
        mesh.materials.reserve(mesh.poly.size());
        for (const std::int32_t polygon : mesh.poly) {
            const std::size_t m = use.take(i, polygon);
            MaterialRecord& material = model.materials.records[m];
            if (mesh.materials.empty()) {
                mesh.type = material.type | (mesh.poly.size() > 1 ? type_code::strip : 0);
                mesh.cno = material.cno;
            }
            const bool shared = material.cno == CoordinateListId::shared;
            if (shared != (mesh.cno == CoordinateListId::shared)) {
                use.refuse(i, polygon,
                           shared ? "vertices in different coordinates, unlike the first"
                                  : "vertices in one coordinate, unlike the first");
            }
            material.type = mesh.type;
            mesh.materials.push_back(static_cast<std::uint32_t>(m));
        }
    }
    use.checkAllTaken();
}

}  // namespace mqf2vxb
