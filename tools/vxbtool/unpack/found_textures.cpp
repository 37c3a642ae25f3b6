#include "vxbtool/unpack/found_textures.h"

#include <algorithm>
#include <array>
#include <set>

#include <fmt/core.h>

#include "format/texture_fields.h"
#include "vxb/packet_decoder.h"

namespace vxbtool::unpack {
namespace {

using model_text::Texture;
using mqf2vxb::Field;
using mqf2vxb::VxbFile;

constexpr unsigned modeShift = 7;
constexpr std::uint32_t modeBits = 3;
constexpr std::uint32_t flagBits = 3U << 5U;
/// Images that lie on one page with one lookup table and are looked at for a packet's texels.
constexpr std::uint32_t mostTried = 16;

/// Page, lookup table and mode of a packet: its page field without the material's flags.
std::uint64_t fieldsKey(std::uint32_t page, std::uint32_t clut) {
    return std::uint64_t{clut} << 16U | (page & ~flagBits);
}
/// The same without the mode, which no word of an image tells.
std::uint64_t placeKey(std::uint64_t key) { return key & ~(std::uint64_t{modeBits} << modeShift); }
std::uint32_t modeOf(std::uint64_t key) {
    return static_cast<std::uint32_t>(key >> modeShift) & modeBits;
}

std::uint64_t keyOf(const Texture& texture) {
    const std::uint32_t clut =
        texture.clut ? mqf2vxb::clutField({texture.clut->x, texture.clut->y}) : 0;
    return fieldsKey(mqf2vxb::pageField({texture.pixels.x, texture.pixels.y, texture.mode, 0}),
                     clut);
}

/// Pages and lookup tables of all packets, ascending.
std::vector<std::uint64_t> neededKeys(const VxbFile& file) {
    std::set<std::uint64_t> keys;
    std::uint64_t last = ~std::uint64_t{0};
    for (const mqf2vxb::PacketGroup& group : file.packetGroups) {
        if (group.form == nullptr || !group.form->textured) {
            continue;
        }
        mqf2vxb::forEachPolygon(file, group, [&](const mqf2vxb::PacketPolygon& polygon) {
            const std::uint64_t key = fieldsKey(polygon[Field::page], polygon[Field::clut]);
            if (key != last) {
                last = key;
                keys.insert(key);
            }
        });
    }
    return {keys.begin(), keys.end()};
}

model_text::ImageBlock blockOf(const VxbFile& file, const mqf2vxb::ImageBlock& block) {
    model_text::ImageBlock result;
    result.x = static_cast<std::uint16_t>(block.x);
    result.y = static_cast<std::uint16_t>(block.y);
    result.size = block.width | block.height << 16U;
    const auto first = file.words.begin() + block.offset;
    result.words.assign(first, first + block.words);
    return result;
}

/// The depth that the number of the lookup table's colours suggests.
std::uint32_t likelyMode(const mqf2vxb::Image& image) {
    if (!image.clut) {
        return 2;
    }
    constexpr std::uint32_t manyColours = 256;
    const std::uint32_t colours = image.clut->sized() ? image.clut->width : 2 * image.clut->words;
    return colours == manyColours ? 1 : 0;
}

std::uint32_t placeU(const Texture& texture) {
    return (texture.pixels.x % 64U) << (2 - texture.mode);
}
std::uint32_t placeV(const Texture& texture) { return texture.pixels.y % 256U; }

}  // namespace

FoundTextures::FoundTextures(const VxbFile& file) {
    const std::vector<std::uint64_t> needed = neededKeys(file);
    standIns_ = file.images.empty() && !needed.empty();
    for (const mqf2vxb::Image& image : file.images) {
        addImage(file, image);
    }
    if (standIns_) {
        for (const std::uint64_t key : needed) {
            addStandIn(static_cast<std::uint32_t>(key) & 0xFFFFU,
                       static_cast<std::uint32_t>(key >> 16U));
        }
    } else {
        chooseModes(file, needed);
    }
    std::vector<std::uint64_t> keys;
    for (std::uint32_t i = 0; i < textures_.size(); ++i) {
        order_.push_back(i);
        keys.push_back(keyOf(textures_[i]));
    }
    std::stable_sort(order_.begin(), order_.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    for (std::uint32_t first = 0; first < order_.size();) {
        std::uint32_t end = first + 1;
        while (end < order_.size() && keys[order_[end]] == keys[order_[first]]) {
            ++end;
        }
        runs_.find(keys[order_[first]], [&] { return Run{first, end}; });
        first = end;
    }
}

void FoundTextures::addImage(const VxbFile& file, const mqf2vxb::Image& image) {
    Texture texture;
    texture.comment = fmt::format("image {}", textures_.size());
    texture.mode = likelyMode(image);
    if (image.clut) {
        texture.clut = blockOf(file, *image.clut);
    }
    texture.pixels = blockOf(file, image.pixels);
    textures_.push_back(std::move(texture));
}

void FoundTextures::addStandIn(std::uint32_t page, std::uint32_t clut) {
    constexpr std::uint32_t onePixel = 1U | 1U << 16U;
    const mqf2vxb::TexturePage place = mqf2vxb::texturePage(page);
    Texture texture;
    texture.comment =
        fmt::format("image {}, a stand-in: only its place and depth are known", textures_.size());
    texture.mode = std::min(place.mode, 2U);
    texture.pixels = {
        static_cast<std::uint16_t>(place.x), static_cast<std::uint16_t>(place.y), onePixel, {0}};
    if (clut != 0) {
        const mqf2vxb::ClutPosition position = mqf2vxb::clutPosition(clut);
        texture.clut = {static_cast<std::uint16_t>(position.x),
                        static_cast<std::uint16_t>(position.y),
                        onePixel,
                        {0}};
    }
    textures_.push_back(std::move(texture));
}

void FoundTextures::chooseModes(const VxbFile& file, std::span<const std::uint64_t> needed) {
    struct Class {
        std::vector<std::uint32_t> images;
        std::array<bool, 4> needed{};
        std::array<std::uint32_t, 4> number{};  // images of each mode
    };
    std::vector<Class> classes;
    mqf2vxb::KeyMap<std::uint64_t, std::size_t> classOf;
    const auto classFor = [&](std::uint64_t key) -> Class& {
        const std::size_t index = classOf.find(placeKey(key), [&] {
            classes.emplace_back();
            return classes.size() - 1;
        });
        return classes[index];
    };
    for (const std::uint64_t key : needed) {
        classFor(key).needed[modeOf(key)] = true;
    }
    for (std::uint32_t i = 0; i < file.images.size(); ++i) {
        Class& all = classFor(keyOf(textures_[i]));
        all.images.push_back(i);
        ++all.number[textures_[i].mode];
    }
    for (Class& all : classes) {
        std::size_t next = 0;
        for (std::uint32_t mode = 0; mode < 3; ++mode) {
            // An image whose own depth no packet has, or has enough of, takes on the one that lacks.
            for (; all.needed[mode] && all.number[mode] == 0 && next < all.images.size(); ++next) {
                std::uint32_t& own = textures_[all.images[next]].mode;
                if (!all.needed[own] || all.number[own] > 1) {
                    --all.number[own];
                    ++all.number[mode];
                    own = mode;
                }
            }
        }
    }
}

bool FoundTextures::holds(std::uint32_t number, std::span<const std::uint32_t> texels) const {
    const Texture& texture = textures_[number];
    const std::uint32_t u = placeU(texture);
    const std::uint32_t v = placeV(texture);
    const std::uint32_t width = (texture.pixels.size & 0xFFFFU) << (2 - texture.mode);
    const std::uint32_t height = texture.pixels.size >> 16U;
    return std::all_of(texels.begin(), texels.end(), [&](std::uint32_t texel) {
        return (texel & 0xFFU) >= u && (texel & 0xFFU) - u < width && texel >> 8U >= v &&
               (texel >> 8U) - v < height;
    });
}

FoundTextures::Place FoundTextures::find(std::uint32_t page, std::uint32_t clut,
                                         std::span<const std::uint32_t> texels) const {
    if (textures_.empty()) {
        return {};
    }
    std::uint32_t number = 0;
    if (const Run* run = runs_.find(fieldsKey(page, clut))) {
        number = order_[run->first];
        const std::uint32_t end = std::min(run->end, run->first + mostTried);
        for (std::uint32_t i = run->first; end - run->first > 1 && i < end; ++i) {
            if (holds(order_[i], texels)) {
                number = order_[i];
                break;
            }
        }
    }
    return {number, placeU(textures_[number]), placeV(textures_[number])};
}

}  // namespace vxbtool::unpack
