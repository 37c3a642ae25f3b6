#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

#include "format/packet_forms.h"
#include "model/model.h"
#include "packets/drawn_polygon.h"

namespace mqf2vxb {

/// The polygon of a material as it goes into its packet.
inline DrawnPolygon drawnPolygon(const Model& model, const MaterialRecord& material) {
    return {material, model.materials.appearance(material),
            model.polygons[static_cast<std::size_t>(material.polygon)]};
}

/// Prefetches what the meshes behind this one are drawn from, which lies scattered over the tables.
[[gnu::always_inline]] inline void fetchAhead(const Model& model, std::size_t meshPolygon) {
    constexpr std::size_t distance = 4;  // each table's index comes from the table before it
    if (meshPolygon + 3 * distance >= model.meshPolygons.size()) {
        return;
    }
    const auto material = [&](std::size_t ahead) -> const MaterialRecord& {
        return model.materials.records[model.meshPolygons[meshPolygon + ahead].material];
    };
    const auto line = [&](std::size_t ahead) -> const MaterialLine& {
        return model.materials.lines[material(ahead).line];
    };
    __builtin_prefetch(&model.polygons[static_cast<std::size_t>(
        model.meshPolygons[meshPolygon + 3 * distance].number)]);
    __builtin_prefetch(&material(3 * distance));
    __builtin_prefetch(&line(2 * distance));
    __builtin_prefetch(model.materials.numbers.records().data() + line(distance).firstNumber);
}

/// Walks everything that is drawn in the order of the tables, which suits the caches better than the
/// order of the packet groups. Calls `visitor.polygon(form, material, drawn)` for each polygon that
/// is written by itself, `visitor.strip(i)` for each mesh i that is written as a strip, and then
/// `visitor.stripPolygon(form, drawn, k)` for each of its polygons, turned as the strip needs it,
/// where k is its position in the strip. A polygon that stands twice in a strip is turned from where
/// the first time left it. Passes over codes without a form.
template <class Visitor>
void walkDrawn(const Model& model, Visitor& visitor) {
    for (const MaterialRecord& material : model.materials.records) {
        const PacketForm* form = findPacketForm(material.type);
        if (form != nullptr && material.group != MaterialRecord::noGroup) {
            visitor.polygon(*form, material, drawnPolygon(model, material));
        }
    }
    for (std::size_t i = 0; i < model.meshes.size(); ++i) {
        const MeshRecord& mesh = model.meshes[i];
        const PacketForm* form = findPacketForm(mesh.type);
        if (form == nullptr || !form->strip()) {
            continue;
        }
        visitor.strip(i);
        StripVertices vertices;
        std::map<std::int32_t, DrawnPolygon::Corners> turned;
        std::size_t k = 0;
        for (const MeshPolygon& polygon : model.polygonsOf(mesh)) {
            fetchAhead(model, mesh.firstPolygon + k);
            DrawnPolygon drawn = drawnPolygon(model, model.materials.records[polygon.material]);
            if (mesh.repeats) {
                DrawnPolygon::Corners& corners =
                    turned.try_emplace(polygon.number, drawn.corners()).first->second;
                drawn.turnTo(corners);
                vertices.follow(drawn, k);
                corners = drawn.corners();
            } else {
                vertices.follow(drawn, k);
            }
            visitor.stripPolygon(*form, drawn, k++);
        }
    }
}

}  // namespace mqf2vxb
