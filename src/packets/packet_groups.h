#pragma once

#include "model/model.h"
#include "packets/drawn_polygon.h"
#include "packets/packet_forms.h"

namespace mqf2vxb {

/// Walks every packet of the file in its order: body by body, group by group, and in a group the
/// polygons in material order or the strips in mesh order. Calls `visitor.unknown(type)` for a
/// code without a form, `visitor.strip(mesh)` before each strip (mesh is its index) and
/// `visitor.polygon(form, drawn, k)` for each polygon, turned as its strip needs it, where k is
/// its position in its strip.
template <class Visitor>
void walkPackets(const Model& model, Visitor&& visitor) {
    const auto drawn = [&](std::uint32_t material) {
        const MaterialRecord& record = model.materials.records[material];
        return DrawnPolygon(record, model.materials.appearance(record),
                            model.polygons[static_cast<std::size_t>(record.polygon)]);
    };
    for (const PrimitiveBody& body : model.primitives.malprim) {
        for (const PrimitiveTypeEntry& entry : body.maltype) {
            const PacketForm* form = findPacketForm(entry.type);
            if (form == nullptr) {
                visitor.unknown(entry.type);
                continue;
            }
            for (std::uint32_t i = 0; i < entry.polyNum; ++i) {
                const std::uint32_t member = model.primitives.members[entry.firstMember + i];
                if (!form->strip()) {
                    visitor.polygon(*form, drawn(member), 0);
                    continue;
                }
                visitor.strip(member);
                StripVertices vertices;
                std::size_t k = 0;
                for (const std::uint32_t material : model.meshes[member].materials) {
                    DrawnPolygon polygon = drawn(material);
                    vertices.follow(polygon, k);
                    visitor.polygon(*form, polygon, k++);
                }
            }
        }
    }
}

}  // namespace mqf2vxb
