#include "organise/limits.h"

#include "base/diagnostics.h"
#include "format/format.h"
#include "organise/sizes.h"

namespace mqf2vxb {

void checkFileSize(const std::string& model, std::uint64_t words) {
    if (words >= format::bit31) {
        notCorrectData({model}, "the output would be larger than 2147483647 words");
    }
}

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
        const std::uint64_t size = 1 + imagetsize(entry.type, entry.images.size());
        if (size > format::largestSize) {
            notCorrectData({description.fileName},
                           formatText("%zu images of one type, in more words than the 65535 that "
                                      "the format holds",
                                      entry.images.size()));
        }
    }
}

}  // namespace mqf2vxb
