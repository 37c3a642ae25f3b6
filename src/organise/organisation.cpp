#include "organise/organisation.h"

#include <algorithm>
#include <string>
#include <vector>

namespace mqf2vxb {
namespace {

PrimitiveTypeCode shapeCode(std::int32_t polygonType) {
    switch (polygonType) {
    case polygon_type::triangle: return type_code::triangle;
    case polygon_type::quadrangle: return type_code::quadrangle;
    case polygon_type::sprite: return type_code::sprite;
    default: return 0;
    }
}

PrimitiveTypeCode appearanceCode(const MaterialAppearance& appearance) {
    const bool perVertex = appearance.colourPerVertex();
    PrimitiveTypeCode code = 0;
    const auto set = [&code](PrimitiveTypeCode bits, bool when) { code |= when ? bits : 0; };
    set(type_code::textured, appearance.textured());
    set(type_code::window, appearance.windowed());
    if (appearance.unlit()) {
        set(type_code::unlit, true);
        set(type_code::smooth, perVertex);
    } else {
        set(type_code::colourPerCorner, perVertex);
        set(type_code::smooth, appearance.shading == 'G');
    }
    set(type_code::doubleImage, (appearance.flag & material_flag::doubleImage) != 0);
    set(type_code::flag02, (appearance.flag & material_flag::bit02) != 0);
    set(type_code::flag04, (appearance.flag & material_flag::bit04) != 0);
    return code;
}

/// Refuses a polygon with a vertex that no coordinate carries.
[[noreturn]] void refuseOrphan(const Model& model, const MaterialRecord& material,
                               std::int32_t vertex) {
    const std::size_t group = model.orphans.groupOfVertex.at(vertex);
    notCorrectData({model.GroupFileName}, "polygon " + std::to_string(material.polygon) +
                                              " uses vertex " + std::to_string(vertex) +
                                              " of the group " + model.orphans.groups[group] +
                                              ", which no coordinate carries");
}

/// The coordinate list of the material's polygon: that of its first vertex, or `shared` when the
/// first coordinates of its vertices differ.
CoordinateListId coordinateListOf(const Model& model, const MaterialRecord& material,
                                  const PolygonRecord& polygon, std::size_t corners) {
    const auto listOf = [&](std::size_t corner) {
        const std::int32_t vertex = polygon.vertex[corner];
        const CoordinateListId list = model.vertices.at(vertex).cno;
        if (list == CoordinateListId::empty) {
            refuseOrphan(model, material, vertex);
        }
        return list;
    };
    const CoordinateListId first = listOf(0);
    bool shared = false;
    for (std::size_t k = 1; k < corners; ++k) {
        const CoordinateListId list = listOf(k);
        shared |= list != first &&
                  model.coordinateLists.first(list) != model.coordinateLists.first(first);
    }
    return shared ? CoordinateListId::shared : first;
}

/// A record that a shared polygon uses has to lie in one coordinate, which says where it is
/// gathered.
void checkOneCoordinate(const Model& model, const MaterialRecord& material, std::int32_t vertex) {
    const CoordinateListId list = model.vertices[static_cast<std::size_t>(vertex)].cno;
    if (model.coordinateLists.length(list) == 1) {
        return;
    }
    constexpr std::size_t mostTold = 8;
    const std::vector<std::int32_t> entries = model.coordinateLists.entries(list);
    std::string coordinates;
    for (std::size_t i = 0; i < std::min(entries.size(), mostTold); ++i) {
        coordinates += " " + std::to_string(entries[i]);
    }
    if (entries.size() > mostTold) {
        coordinates += " and more";
    }
    notCorrectData({model.description.frm.fileName},
                   "vertex " + std::to_string(vertex) + " of the shared polygon " +
                       std::to_string(material.polygon) +
                       " lies in more than one coordinate:" + coordinates);
}

void shareCorners(Model& model, const MaterialRecord& material, PolygonRecord& polygon,
                  std::size_t corners) {
    for (std::size_t k = 0; k < corners; ++k) {
        checkOneCoordinate(model, material, polygon.vertex[k]);
        model.vertices.at(polygon.vertex[k]).shared = true;
    }
    if (model.normals.empty()) {
        return;
    }
    const MaterialAppearance appearance = model.materials.appearance(material);
    if (appearance.shading == 'F') {
        for (std::size_t k = 1; k < corners; ++k) {
            polygon.normal[k] = polygon.normal[0];
        }
    }
}

/// How many of a polygon's normals get a list: a flat independent polygon uses its first only.
std::size_t normalCorners(const MaterialRecord& material, const MaterialAppearance& appearance,
                          std::size_t corners) {
    if (material.cno == CoordinateListId::shared || appearance.shading == 'G') {
        return corners;
    }
    return 1;
}

}  // namespace

void organisePolygons(Model& model) {
    for (MaterialRecord& material : model.materials.records) {
        if (!model.description.geo.given) {
            noGeoFile();
        }
        const PolygonRecord& polygon = model.polygons.at(material.polygon);
        const std::size_t corners = vertexCount(polygon.type);
        material.type =
            appearanceCode(model.materials.appearance(material)) | shapeCode(polygon.type);
        material.cno = coordinateListOf(model, material, polygon, corners);
        if (material.cno == CoordinateListId::shared) {
            material.type |= type_code::shared;
        }
    }
}

void assignNormalCoordinates(Model& model) {
    for (const MaterialRecord& material : model.materials.records) {
        PolygonRecord& polygon = model.polygons.at(material.polygon);
        const std::size_t corners = vertexCount(polygon.type);
        const bool shared = material.cno == CoordinateListId::shared;
        if (shared) {
            ++model.primitives.SharedPolygonNum;
            shareCorners(model, material, polygon, corners);
        }
        if (model.normals.empty()) {
            continue;
        }
        const MaterialAppearance appearance = model.materials.appearance(material);
        const std::size_t named = normalCorners(material, appearance, corners);
        for (std::size_t k = 0; k < named; ++k) {
            const std::int32_t index = polygon.normal[k];
            const bool outside =
                index < 0 || static_cast<std::size_t>(index) >= model.normals.size();
            // An unlit polygon's packets carry no normals, so it may name normals that do not exist.
            if (outside && appearance.unlit()) {
                continue;
            }
            NormalRecord& normal = model.normals.at(index);
            normal.cno = model.vertices.at(polygon.vertex[k]).cno;
            normal.shared = normal.shared || shared;
        }
    }
}

}  // namespace mqf2vxb
