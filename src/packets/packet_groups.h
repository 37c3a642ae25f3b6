#pragma once

#include <cstddef>
#include <cstdint>

#include "model/model.h"
#include "packets/drawn_polygon.h"
#include "packets/packet_forms.h"

namespace mqf2vxb {

/// The polygon of a material as it goes into its packet.
inline DrawnPolygon drawnPolygon(const Model& model, const MaterialRecord& material) {
    return {material, model.materials.appearance(material),
            model.polygons[static_cast<std::size_t>(material.polygon)]};
}

/// Walks everything that is drawn in the order of the tables, which memory likes better than the
/// order of the packet groups. Calls `visitor.polygon(form, material, drawn)` for each polygon that
/// is written by itself, `visitor.strip(form, i)` for each mesh i that is written as a strip, and
/// then `visitor.stripPolygon(form, drawn, k)` for each of its polygons, turned as the strip needs
/// it, where k is its position in the strip. Passes over codes without a form.
template <class Visitor>
void walkDrawn(const Model& model, Visitor& visitor) {
    for (const MaterialRecord& material : model.materials.records) {
        const PacketForm* form = findPacketForm(material.type);
        if (form != nullptr && !form->strip()) {
            visitor.polygon(*form, material, drawnPolygon(model, material));
        }
    }
    for (std::size_t i = 0; i < model.meshes.size(); ++i) {
        const MeshRecord& mesh = model.meshes[i];
        const PacketForm* form = findPacketForm(mesh.type);
        if (form == nullptr || !form->strip()) {
            continue;
        }
        visitor.strip(*form, i);
        StripVertices vertices;
        std::size_t k = 0;
        for (const MeshPolygon& polygon : model.polygonsOf(mesh)) {
            {
                const std::size_t at =
                    static_cast<std::size_t>(&polygon - model.meshPolygons.records().data());
                const std::size_t n = model.meshPolygons.size();
                if (at + 12 < n) {
                    const MeshPolygon& a = model.meshPolygons[at + 12];
                    __builtin_prefetch(&model.polygons[a.number]);
                    __builtin_prefetch(&model.materials.records[a.material]);
                    const MeshPolygon& b = model.meshPolygons[at + 8];
                    __builtin_prefetch(
                        &model.materials.lines[model.materials.records[b.material].line]);
                    const MeshPolygon& c = model.meshPolygons[at + 4];
                    __builtin_prefetch(
                        &model.materials
                             .numbers[model.materials
                                          .lines[model.materials.records[c.material].line]
                                          .firstNumber]);
                }
            }
            DrawnPolygon drawn = drawnPolygon(model, model.materials.records[polygon.material]);
            vertices.follow(drawn, k);
            visitor.stripPolygon(*form, drawn, k++);
        }
    }
}

}  // namespace mqf2vxb
