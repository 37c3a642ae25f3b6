#include "vxbtool/shared/vxb_json.h"

namespace vxbtool {
namespace {

using namespace mqf2vxb;

/// `depth`: bits of a pixel or colour; 0 when they are not known.
Json blockJson(const ImageBlock& block, unsigned depth) {
    constexpr unsigned columnBits = 16;
    Json json{{"size", nullptr}, {"position", {block.x, block.y}}, {"words", block.words}};
    if (block.sized() && depth > 0) {
        json["size"] = {block.width * columnBits / depth, block.height};
    }
    return json;
}

}  // namespace

Json imageJson(const Image& image, DepthSet depths) {
    constexpr unsigned colourBits = 16;
    const unsigned depth = onlyDepth(depths);
    Json json{{"depth", depth > 0 ? Json(depth) : Json(nullptr)}};
    json.update(blockJson(image.pixels, depth));
    json["lookupTable"] = image.clut ? blockJson(*image.clut, colourBits) : Json(nullptr);
    return json;
}

}  // namespace vxbtool
