#include "vxbtool/shared/image_depths.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <utility>

#include <fmt/core.h>

#include "format/texture_fields.h"
#include "vxb/packet_decoder.h"

namespace vxbtool {
namespace {

using namespace mqf2vxb;

constexpr std::size_t depthNum = DepthSet().size();

/// Which images cover a place of image memory. Images may overlap; to look up a place takes as long
/// as it has images.
class ImageMap {
public:
    explicit ImageMap(const std::vector<Image>& images) {
        for (std::uint32_t i = 0; i < images.size(); ++i) {
            const ImageBlock& block = images[i].pixels;
            // Without a size the first column and line are all that is known.
            const std::uint32_t width = block.sized() ? block.width : 1;
            const std::uint32_t height = block.sized() ? block.height : 1;
            for (std::uint32_t line = 0; line < height; ++line) {
                spansOf_[block.y + line].push_back({block.x, block.x + width, i});
            }
        }
        for (auto& [line, spans] : spansOf_) {
            std::sort(spans.begin(), spans.end(),
                      [](const Span& a, const Span& b) { return a.begin < b.begin; });
        }
    }

    template <class Visit>
    void at(std::uint32_t x, std::uint32_t y, Visit visit) const {
        const auto found = spansOf_.find(y);
        if (found == spansOf_.end()) {
            return;
        }
        for (const Span& span : found->second) {
            if (span.begin > x) {
                return;
            }
            if (x < span.end) {
                visit(span.image);
            }
        }
    }

private:
    /// Columns of one line that an image covers.
    struct Span {
        std::uint32_t begin;
        std::uint32_t end;
        std::uint32_t image;
    };

    std::unordered_map<std::uint32_t, std::vector<Span>> spansOf_;  // by line
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
    const ImageMap map(file.images);
    // Each place is looked up once for each depth, whatever number of packets lead there.
    constexpr std::size_t columns = 1024;
    constexpr std::size_t lines = 1024;
    std::array<std::vector<bool>, depthNum> seen;
    std::map<std::pair<std::uint32_t, std::uint32_t>, DepthSet> pages;  // by column and line
    const auto mark = [&](const TexturePage& page, const Texel& texel) {
        const std::uint32_t x = (page.x + texel.u * page.depth() / 16) % columns;
        const std::uint32_t y = (page.y + texel.v) % lines;
        std::vector<bool>& places = seen[page.mode];
        places.resize(columns * lines);
        if (!places[y * columns + x]) {
            places[y * columns + x] = true;
            map.at(x, y, [&](std::uint32_t image) { depths[image].set(page.mode); });
        }
    };
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
                    mark(page, texelOf(polygon, polygon[field]));
                }
            }
        });
    }
    // Texels may lie beside the image that was meant, but not outside its page.
    for (std::size_t i = 0; i < depths.size(); ++i) {
        const ImageBlock& pixels = file.images[i].pixels;
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
