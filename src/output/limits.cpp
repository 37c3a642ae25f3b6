#include "output/limits.h"

#include "driver/diagnostics.h"
#include "output/format.h"

namespace mqf2vxb {
namespace {

/// The words of an image's descriptor with a CLUT; without one it has half as many.
std::size_t descriptorWords(PrimitiveTypeCode type) {
    return type == type_code::imageWithClut ? 6 : 3;
}

}  // namespace

void checkLimits(const Model& model) {
    const ModelDescription& description = model.description;
    for (const PrimitiveBody& body : model.primitives.malprim) {
        for (const PrimitiveTypeEntry& entry : body.maltype) {
            if (entry.polyNum > format::largestNumber) {
                notCorrectData(
                    {(description.bnd.given ? description.bnd : description.srf).fileName},
                    formatText("%u %s of the type 0x%08x in one coordinate list, and "
                               "the format holds 32767",
                               entry.polyNum, description.bnd.given ? "meshes" : "polygons",
                               entry.type));
            }
        }
    }
    for (const PixelTypeEntry& entry : model.malimage.malpxltype) {
        const std::size_t size = 1 + descriptorWords(entry.type) * entry.images.size();
        if (entry.images.size() > format::largestNumber || size > format::largestSize) {
            notCorrectData({}, formatText("%zu images of one type", entry.images.size()));
        }
    }
}

}  // namespace mqf2vxb
