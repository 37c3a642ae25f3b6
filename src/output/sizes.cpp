#include "output/sizes.h"

#include "animation/key_frame_forms.h"
#include "driver/diagnostics.h"
#include "packets/packet_forms.h"

namespace mqf2vxb {

std::uint64_t primtsize(const Model& model, const PrimitiveTypeEntry& entry) {
    const PacketForm* form = findPacketForm(entry.type);
    if (form == nullptr) {
        typeMismatch("primtsize", entry.type);
    }
    if (!form->strip()) {
        return std::uint64_t{entry.polyNum} * form->size();
    }
    constexpr std::uint64_t countWord = 1;
    std::uint64_t words = entry.polyNum * (countWord + form->size());
    for (std::uint32_t i = 0; i < entry.polyNum; ++i) {
        const std::uint32_t mesh = model.primitives.members[entry.firstMember + i];
        words += (model.meshes[mesh].poly.size() - 1) * form->furtherSize();
    }
    return words;
}

std::uint64_t animmtsize(PrimitiveTypeCode type) {
    const KeyFrameForm* form = findKeyFrameForm(type);
    if (form == nullptr) {
        typeMismatch("animmtsize", type);
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
