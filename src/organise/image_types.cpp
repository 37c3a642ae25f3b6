#include "organise/image_types.h"

#include <algorithm>

namespace mqf2vxb {

ImageTypes makeImageTypes(const Table<ImageRecord>& images) {
    ImageTypes malimage;
    std::vector<PixelTypeEntry>& entries = malimage.malpxltype;
    for (std::size_t slot = 0; slot < images.size(); ++slot) {
        const PrimitiveTypeCode type = images[slot].type;
        auto entry = std::find_if(entries.begin(), entries.end(),
                                  [&](const PixelTypeEntry& known) { return known.type == type; });
        if (entry == entries.end()) {
            entry = entries.insert(entries.end(), PixelTypeEntry{type, {}});
        }
        entry->images.push_back(slot);
    }
    return malimage;
}

}  // namespace mqf2vxb
