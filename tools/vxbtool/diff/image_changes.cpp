#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <fmt/core.h>

#include "vxbtool/diff/compare.h"
#include "vxbtool/scene/image_memory.h"
#include "vxbtool/shared/counted.h"
#include "vxbtool/shared/image_depths.h"

namespace vxbtool::diff {
namespace {

using namespace mqf2vxb;

std::span<const std::uint32_t> wordsOf(const VxbFile& file, const ImageBlock& block) {
    return std::span(file.words).subspan(block.offset, block.words);
}

std::string positionText(const ImageBlock& block) {
    return fmt::format("({}, {})", block.x, block.y);
}

std::string sizeText(const ImageBlock& block) {
    return fmt::format("{} x {} ({} words)", block.width, block.height, block.words);
}

/// How many numbers of `bits` bits differ in words of one length.
std::size_t differing(std::span<const std::uint32_t> one, std::span<const std::uint32_t> other,
                      unsigned bits) {
    const std::uint32_t mask = (1U << bits) - 1;
    std::size_t number = 0;
    for (std::size_t i = 0; i < one.size(); ++i) {
        for (std::uint32_t rest = one[i] ^ other[i]; rest != 0; rest >>= bits) {
            number += (rest & mask) != 0 ? 1 : 0;
        }
    }
    return number;
}

/// Bits of an image's pixels, 16 where the packets do not tell.
unsigned pixelBits(DepthSet depths) { return depths[0] ? 4 : depths[1] ? 8 : 16; }

class ImageComparison {
public:
    ImageComparison(const VxbFile& before, const VxbFile& after, Changes& changes)
        : before_(before),
          after_(after),
          depthsBefore_(imageDepths(before)),
          depthsAfter_(imageDepths(after)),
          changes_(changes),
          partnerOf_(before.images.size()),
          taken_(after.images.size()) {}

    void compare() {
        const std::size_t known = changes_.kept().size();
        pair([](const VxbFile& file, const Image& image) {
            const std::span words = wordsOf(file, image.pixels);
            return std::pair(keyOf(image), std::vector(words.begin(), words.end()));
        });
        pair([](const VxbFile&, const Image& image) { return keyOf(image); });
        pair([](const VxbFile&, const Image& image) {
            return std::pair(image.pixels.x, image.pixels.y);
        });
        pair([](const VxbFile&, const Image&) { return 0; });
        for (std::uint32_t image = 0; image < before_.images.size(); ++image) {
            if (partnerOf_[image]) {
                compareImages(image, *partnerOf_[image]);
            } else {
                addWhole(ChangeKind::imageRemoved, "removed", before_, image);
            }
        }
        for (std::uint32_t image = 0; image < after_.images.size(); ++image) {
            if (!taken_[image]) {
                addWhole(ChangeKind::imageAdded, "added", after_, image);
            }
        }
        if (changes_.kept().size() == known && !std::ranges::is_sorted(partnerOf_)) {
            compareMemory();
        }
    }

private:
    using Key = std::array<std::uint32_t, 6>;

    /// Where an image lies and how large it is said to be.
    static Key keyOf(const Image& image) {
        const ImageBlock clut = image.clut.value_or(ImageBlock{});
        return {image.pixels.x,      image.pixels.y, image.pixels.width,
                image.pixels.height, clut.x,         clut.y};
    }

    /// Gives the images of equal keys that have none yet each other as partners, in their order.
    template <class KeyOf>
    void pair(KeyOf key) {
        std::map<decltype(key(after_, after_.images.front())), std::vector<std::uint32_t>> open;
        for (auto image = static_cast<std::uint32_t>(after_.images.size()); image-- > 0;) {
            if (!taken_[image]) {
                open[key(after_, after_.images[image])].push_back(image);
            }
        }
        for (std::size_t image = 0; image < partnerOf_.size(); ++image) {
            if (partnerOf_[image]) {
                continue;
            }
            const auto found = open.find(key(before_, before_.images[image]));
            if (found != open.end() && !found->second.empty()) {
                partnerOf_[image] = found->second.back();
                taken_[found->second.back()] = true;
                found->second.pop_back();
            }
        }
    }

    void addWhole(ChangeKind kind, const char* what, const VxbFile& file, std::uint32_t image) {
        const ImageBlock& pixels = file.images[image].pixels;
        changes_.add(kind, fmt::format("image {}", image),
                     fmt::format("{}: {} at {}", what, sizeText(pixels), positionText(pixels)));
    }

    void compareImages(std::uint32_t index, std::uint32_t partner) {
        const Image& one = before_.images[index];
        const Image& other = after_.images[partner];
        const std::string place = fmt::format("image {}", index);
        if (depthsBefore_[index] != depthsAfter_[partner]) {
            changes_.add(ChangeKind::imageDepth, place,
                         fmt::format("{} -> {}", depthText(depthsBefore_[index]),
                                     depthText(depthsAfter_[partner])));
        }
        compareBlocks(place, "", one.pixels, other.pixels, ChangeKind::imageTexels, "texel",
                      pixelBits(depthsBefore_[index]));
        if (one.clut && other.clut) {
            constexpr unsigned colourBits = 16;
            compareBlocks(place, "lookup table: ", *one.clut, *other.clut, ChangeKind::imageColours,
                          "colour", colourBits);
        } else if (one.clut || other.clut) {
            changes_.add(ChangeKind::imageColours, place,
                         one.clut ? "has no lookup table any more" : "has a lookup table now");
        }
    }

    /// A later image lies over an earlier one.
    void compareMemory() {
        std::vector<std::string> warnings;
        const std::size_t columns =
            scene::ImageMemory(before_, warnings).differing(scene::ImageMemory(after_, warnings));
        if (columns > 0) {
            changes_.add(ChangeKind::imageOrder, "images",
                         fmt::format("lie over each other in another order: {} of image memory {}",
                                     counted(columns, "column"),
                                     columns == 1 ? "differs" : "differ"),
                         columns);
        }
    }

    void compareBlocks(const std::string& place, const std::string& what, const ImageBlock& one,
                       const ImageBlock& other, ChangeKind dataKind, const std::string& unit,
                       unsigned bits) {
        if (one.x != other.x || one.y != other.y) {
            changes_.add(
                ChangeKind::imagePosition, place,
                fmt::format("{}position {} -> {}", what, positionText(one), positionText(other)));
        }
        if (one.words != other.words || one.width != other.width || one.height != other.height) {
            changes_.add(ChangeKind::imageSize, place,
                         fmt::format("{}size {} -> {}", what, sizeText(one), sizeText(other)));
        }
        const std::size_t number =
            one.words == other.words
                ? differing(wordsOf(before_, one), wordsOf(after_, other), bits)
                : 0;
        if (number > 0) {
            changes_.add(dataKind, place,
                         fmt::format("{} differ{}", counted(number, unit), number == 1 ? "s" : ""),
                         number);
        }
    }

    const VxbFile& before_;
    const VxbFile& after_;
    std::vector<DepthSet> depthsBefore_;
    std::vector<DepthSet> depthsAfter_;
    Changes& changes_;
    std::vector<std::optional<std::uint32_t>> partnerOf_;
    std::vector<bool> taken_;
};

}  // namespace

void compareImages(const VxbFile& before, const VxbFile& after, Changes& changes) {
    ImageComparison(before, after, changes).compare();
}

}  // namespace vxbtool::diff
