#include "organise/sizes.h"

#include "base/diagnostics.h"
#include "format/key_frame_forms.h"
#include "format/packet_forms.h"

namespace mqf2vxb {

std::vector<std::uint64_t> primtsize(const Model& model) {
    std::vector<std::uint64_t> sizes;
    for (const PrimitiveBody& body : model.primitives.malprim) {
        for (const PrimitiveTypeEntry& entry : body.maltype) {
            const PacketForm* form = findPacketForm(entry.type);
            if (form == nullptr) {
                typeMismatch("primtsize", entry.type);
            }
            sizes.push_back(form->strip() ? 0 : std::uint64_t{entry.polyNum} * form->size());
        }
    }
    for (const MeshRecord& mesh : model.meshes) {
        const PacketForm* form = findPacketForm(mesh.type);
        if (form->strip()) {
            constexpr std::uint64_t countWord = 1;
            sizes[mesh.group] +=
                countWord + form->size() + std::uint64_t{mesh.polyNum - 1} * form->furtherSize();
        }
    }
    return sizes;
}

void animmtsizeMissing(PrimitiveTypeCode type) { typeMismatch("animmtsize", type); }

std::uint64_t animmtsize(PrimitiveTypeCode type) {
    const KeyFrameForm* form = findKeyFrameForm(type);
    if (form == nullptr) {
        animmtsizeMissing(type);
    }
    return form->words();
}

std::uint64_t imagetsize(PrimitiveTypeCode type, std::uint64_t count) {
    constexpr std::uint64_t pixelWords = 3;  // its two header words and the offset of its data
    switch (type) {
    case type_code::image: return pixelWords * count;
    case type_code::imageWithClut: return 2 * pixelWords * count;
    default: typeMismatch("imagetsize", type);
    }
}

}  // namespace mqf2vxb
