#include "vxbtool/shared/image_depths.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <utility>

#include <fmt/core.h>

#include "format/texture_fields.h"
#include "vxb/packet_decoder.h"

namespace vxbtool {
namespace {

using namespace mqf2vxb;

constexpr std::size_t depthNum = DepthSet().size();

/// The places of image memory that texels of one depth lie at, in the order of lines and columns.
/// However many images overlap, each asks for its own lines only.
class TexelPlaces {
public:
    void add(std::uint32_t x, std::uint32_t y) { places_.push_back(place(x % side, y % side)); }

    /// To be called once, when all places are added.
    void sort() {
        std::sort(places_.begin(), places_.end());
        places_.erase(std::unique(places_.begin(), places_.end()), places_.end());
    }

    /// Whether one of the places lies in the block.
    [[nodiscard]] bool anyIn(const ImageBlock& block) const {
        // Without a size the first column and line are all that is known.
        const std::uint32_t right = std::min(block.x + (block.sized() ? block.width : 1), side);
        const std::uint32_t bottom = std::min(block.y + (block.sized() ? block.height : 1), side);
        for (std::uint32_t y = block.y; block.x < right && y < bottom;) {
            const auto next = std::lower_bound(places_.begin(), places_.end(), place(block.x, y));
            if (next == places_.end()) {
                return false;
            }
            if (*next < place(right, y)) {
                return true;
            }
            y = std::max(y + 1, *next / side);
        }
        return false;
    }

private:
    static constexpr std::uint32_t side = 1024;  // columns, and lines

    static std::uint32_t place(std::uint32_t x, std::uint32_t y) { return y * side + x; }

    std::vector<std::uint32_t> places_;
};

/// A place in a page.
struct Texel {
    std::uint32_t u;
    std::uint32_t v;
};

/// A window repeats its part of the page.
Texel texelOf(const PacketPolygon& polygon, std::uint32_t field) {
    const Texel texel{field & 0xFFU, field >> 8U};
    if (!polygon.has(Field::window)) {
        return texel;
    }
    const TextureWindow window = textureWindow(polygon[Field::window]);
    return {window.x + texel.u % window.width, window.y + texel.v % window.height};
}

}  // namespace

std::vector<DepthSet> imageDepths(const VxbFile& file) {
    std::vector<DepthSet> depths(file.images.size());
    std::array<TexelPlaces, depthNum> places;                           // by mode
    std::map<std::pair<std::uint32_t, std::uint32_t>, DepthSet> pages;  // by column and line
    for (const PacketGroup& group : file.packetGroups) {
        if (file.images.empty() || group.form == nullptr || !group.form->textured) {
            continue;
        }
        forEachPolygon(file, group, [&](const PacketPolygon& polygon) {
            const TexturePage page = texturePage(polygon[Field::page]);
            if (page.depth() > 0) {
                pages[{page.x, page.y}].set(page.mode);
            }
            for (std::size_t corner = 0; page.depth() > 0 && corner < polygon.corners(); ++corner) {
                if (const Field field = cornerField(Field::T0, corner); polygon.has(field)) {
                    const Texel texel = texelOf(polygon, polygon[field]);
                    places[page.mode].add(page.x + texel.u * page.depth() / 16, page.y + texel.v);
                }
            }
        });
    }
    for (TexelPlaces& ofMode : places) {
        ofMode.sort();
    }
    // Texels may lie beside the image that was meant, but not outside its page.
    for (std::size_t i = 0; i < depths.size(); ++i) {
        const ImageBlock& pixels = file.images[i].pixels;
        for (std::size_t mode = 0; mode < depthNum; ++mode) {
            depths[i][mode] = places[mode].anyIn(pixels);
        }
        const TexturePage page = texturePage(pageField({pixels.x, pixels.y, 0, 0}));
        if (depths[i].none()) {
            depths[i] = pages[{page.x, page.y}];
        }
    }
    return depths;
}

unsigned onlyDepth(DepthSet depths) {
    constexpr unsigned leastBits = 4;  // of the first mode; each further one has twice as many
    return depths.count() == 1 ? leastBits * static_cast<unsigned>(depths.to_ulong()) : 0;
}

std::string depthText(DepthSet depths) {
    std::string text;
    for (std::size_t mode = 0; mode < depths.size(); ++mode) {
        if (depths[mode]) {
            text += fmt::format("{}{}", text.empty() ? "" : " or ", 4U << mode);
        }
    }
    return text.empty() ? "depth unknown" : text + " bits";
}

}  // namespace vxbtool
