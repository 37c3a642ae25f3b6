#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <tuple>
#include <vector>

#include "base/key_map.h"
#include "vxbtool/lint/model_checks.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

/// Width, in columns of 16 bits, and height of a block.
struct Extent {
    std::uint32_t width;
    std::uint32_t height;
};

/// What the second header word of a block says of its size. The converter only copies that word, so
/// it is believed only when it agrees with the words of data.
std::optional<Extent> extentOf(const PxlBlock& block) {
    const std::uint32_t word = block.header[1];
    const Extent extent{word & 0xFFFFU, word >> 16U};
    const std::uint64_t columns = std::uint64_t{extent.width} * extent.height;
    if (columns == 0 || (columns + 1) / 2 != block.dataWords) {
        return std::nullopt;
    }
    return extent;
}

/// Texels of a column of 16 bits, as a shift.
std::uint32_t texelShift(const ImageRecord& image) {
    return 2U - static_cast<std::uint32_t>(image.mode);
}

/// The size of an image in texels.
std::optional<Extent> texelsOf(const ImageRecord& image) {
    std::optional<Extent> extent = extentOf(image.pixel);
    if (extent) {
        extent->width <<= texelShift(image);
    }
    return extent;
}

bool isOutside(std::int32_t value, std::uint32_t size) {
    return value < 0 || static_cast<std::uint32_t>(value) >= size;
}

/// The positions of an SRF line's numbers among its words.
constexpr std::size_t wordsBeforeNumbers = 4;

class LineCheck {
public:
    LineCheck(const LintedModel& linted, std::size_t line, const MaterialAppearance& appearance,
              const ImageRecord& image, const Extent& texels, Findings& findings)
        : linted_(linted),
          line_(line),
          appearance_(appearance),
          image_(image),
          texels_(texels),
          findings_(findings) {}

    void checkCorners(std::size_t corners) const {
        for (std::size_t corner = 0; corner < corners; ++corner) {
            const std::int32_t u = appearance_.u(corner);
            const std::int32_t v = appearance_.v(corner);
            if (isOutside(u, texels_.width) || isOutside(v, texels_.height)) {
                const std::size_t start = materialKind(appearance_.kind).cornerStart();
                add(kind::textureOutside, start + 2 * corner, fmt::arg("corner", corner),
                    fmt::arg("u", u), fmt::arg("v", v));
                return;
            }
        }
    }

    void checkWindow() const {
        const std::array<std::int64_t, MaterialKind::windowNumbers> window{
            appearance_.windowWidth(), appearance_.windowHeight(), appearance_.windowX(),
            appearance_.windowY()};
        // The packets tell where the window lies from the start of the image's page, which is a
        // multiple of 8 in both directions.
        const ImagePosition position = image_.pixel.position();
        const std::array<std::int64_t, MaterialKind::windowNumbers> start{
            0, 0, std::int64_t{position.x} << texelShift(image_), position.y};
        for (std::size_t i = 0; i < window.size(); ++i) {
            constexpr std::int64_t step = 8;
            if ((start[i] + window[i]) % step != 0) {
                add(kind::windowCut, MaterialKind::windowStart + i, fmt::arg("value", window[i]));
            }
        }
        const auto [width, height, x, y] = window;
        const std::int64_t right = x + width;
        const std::int64_t bottom = y + height;
        if (x < 0 || y < 0 || right > texels_.width || bottom > texels_.height) {
            add(kind::windowOutside, MaterialKind::windowStart, fmt::arg("right", right),
                fmt::arg("bottom", bottom));
        }
    }

private:
    template <class... Values>
    void add(const FindingKind& kind, std::size_t number, const Values&... values) const {
        findings_.add(kind, linted_.source.material(line_, wordsBeforeNumbers + number), values...,
                      fmt::arg("image", appearance_.texture()), fmt::arg("width", texels_.width),
                      fmt::arg("height", texels_.height));
    }

    const LintedModel& linted_;
    std::size_t line_;
    const MaterialAppearance& appearance_;
    const ImageRecord& image_;
    const Extent& texels_;
    Findings& findings_;
};

/// Looks at the lines whose texture numbers a model has; other numbers do not convert.
void checkLines(const LintedModel& linted, Findings& findings) {
    const Model& model = linted.model;
    const MaterialTable& materials = model.materials;
    std::vector<std::size_t> corners(materials.lines.size());
    for (const MaterialRecord& material : materials.records) {
        const std::int32_t type = linted.polygons[static_cast<std::size_t>(material.polygon)].type;
        corners[material.line] = std::max(corners[material.line], vertexCount(type));
    }
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const MaterialLine& line = materials.lines[i];
        const MaterialAppearance appearance = materials.appearance(line);
        const auto texture = static_cast<std::size_t>(appearance.texture());
        if (!appearance.textured() || texture >= model.images.size()) {
            continue;
        }
        const ImageRecord& image = model.images[texture];
        const std::optional<Extent> texels = texelsOf(image);
        if (!texels) {
            continue;
        }
        const LineCheck check(linted, i, appearance, image, *texels, findings);
        if (appearance.windowed()) {
            check.checkWindow();
        } else {
            check.checkCorners(corners[i]);
        }
    }
}

/// A block of an image in image memory.
struct PlacedBlock {
    std::size_t image;
    std::string_view part;
    std::uint32_t first;  ///< of the blocks with the same header and data
    // The columns from `left` up to `right` and the lines from `top` up to `bottom`.
    std::uint32_t left;
    std::uint32_t right;
    std::uint32_t top;
    std::uint32_t bottom;
};

/// The bytes of the header and the data; a model that is watched keeps its image files.
std::string_view bytesOf(const ImageRecord& image, const PxlBlock& block) {
    const std::string_view data = block.data(image.file->text()).bytes();
    return {data.data() - sizeof block.header, data.size() + sizeof block.header};
}

std::vector<PlacedBlock> placedBlocks(const Table<ImageRecord>& images) {
    std::vector<PlacedBlock> blocks;
    KeyMap<std::string_view, std::uint32_t> firstOfContents;
    const auto place = [&](std::size_t image, std::string_view part, const PxlBlock& block) {
        const std::optional<Extent> extent =
            block.present() ? extentOf(block) : std::optional<Extent>{};
        if (!extent) {
            return;
        }
        const auto [x, y] = block.position();
        const auto number = static_cast<std::uint32_t>(blocks.size());
        const std::uint32_t first =
            firstOfContents.find(bytesOf(images[image], block), [&] { return number; });
        blocks.push_back({image, part, first, x, x + extent->width, y, y + extent->height});
    };
    for (std::size_t i = 0; i < images.size(); ++i) {
        place(i, "picture", images[i].pixel);
        place(i, "colour table", images[i].clut);
    }
    return blocks;
}

/// Reports a block that overlaps one before it, once. Blocks that are the same do no harm, and are
/// looked at as one: however often a model names a file, what covers a line has data of its own there.
class OverlapCheck {
public:
    OverlapCheck(const LintedModel& linted, Findings& findings)
        : linted_(linted),
          findings_(findings),
          blocks_(placedBlocks(linted.model.images)),
          overlapped_(blocks_.size(), none) {}

    void check() {
        findOverlaps();
        for (std::uint32_t i = 0; i < blocks_.size(); ++i) {
            const PlacedBlock& block = blocks_[i];
            const std::uint32_t earlier = overlapped_[block.first];
            if (earlier < i) {
                const PlacedBlock& other = blocks_[earlier];
                findings_.add(kind::imageOverlap, linted_.source.image(block.image),
                              fmt::arg("part", block.part), fmt::arg("image", block.image),
                              fmt::arg("otherPart", other.part), fmt::arg("other", other.image));
            }
        }
    }

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    /// Looks only at the lines where a block begins or ends: the lines between are as the one
    /// before them.
    void findOverlaps() {
        std::vector<std::uint32_t> lines;
        std::vector<std::uint32_t> waiting;
        for (std::uint32_t i = 0; i < blocks_.size(); ++i) {
            if (blocks_[i].first == i) {
                lines.push_back(blocks_[i].top);
                lines.push_back(blocks_[i].bottom);
                waiting.push_back(i);
            }
        }
        std::sort(lines.begin(), lines.end());
        lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
        std::sort(waiting.begin(), waiting.end(), [&](std::uint32_t a, std::uint32_t b) {
            return std::tuple(blocks_[a].top, a) < std::tuple(blocks_[b].top, b);
        });

        std::vector<std::uint32_t> covering;
        auto next = waiting.begin();
        for (const std::uint32_t line : lines) {
            std::erase_if(covering, [&](std::uint32_t b) { return blocks_[b].bottom <= line; });
            for (; next != waiting.end() && blocks_[*next].top == line; ++next) {
                covering.push_back(*next);
            }
            std::sort(covering.begin(), covering.end(), [&](std::uint32_t a, std::uint32_t b) {
                return std::tuple(blocks_[a].left, a) < std::tuple(blocks_[b].left, b);
            });
            findInLine(covering);
        }
    }

    /// Takes the blocks that cover a line, from left to right.
    void findInLine(const std::vector<std::uint32_t>& covering) {
        std::optional<std::uint32_t> widest;  // of the blocks so far, the one that ends last
        for (const std::uint32_t block : covering) {
            if (widest && blocks_[block].left < blocks_[*widest].right) {
                overlapped_[block] = std::min(overlapped_[block], *widest);
                overlapped_[*widest] = std::min(overlapped_[*widest], block);
            }
            if (!widest || blocks_[block].right > blocks_[*widest].right) {
                widest = block;
            }
        }
    }

    const LintedModel& linted_;
    Findings& findings_;
    std::vector<PlacedBlock> blocks_;
    std::vector<std::uint32_t> overlapped_;  // by first blocks: the first one that was found
};

void checkUse(const LintedModel& linted, Findings& findings) {
    const Model& model = linted.model;
    std::vector<bool> used(model.images.size());
    for (const MaterialRecord& material : model.materials.records) {
        const MaterialAppearance appearance = model.materials.appearance(material);
        const auto texture = static_cast<std::size_t>(appearance.texture());
        if (appearance.textured() && texture < used.size()) {
            used[texture] = true;
        }
    }
    // Images of few bits that bring no colour table take the one at 0, 0, whoever brings it.
    bool sharedTableUsed = false;
    for (std::size_t i = 0; i < used.size(); ++i) {
        constexpr std::uint32_t mode16Bit = 2;
        const ImageRecord& image = model.images[i];
        sharedTableUsed |= used[i] && !image.hasClut() && image.mode != mode16Bit;
    }
    const auto bringsSharedTable = [&](const ImageRecord& image) {
        return image.hasClut() && image.clut.header[0] == 0;
    };
    for (std::size_t i = 0; i < used.size(); ++i) {
        if (!used[i] && !(sharedTableUsed && bringsSharedTable(model.images[i]))) {
            findings.add(kind::imageUnused, linted.source.image(i), fmt::arg("image", i));
        }
    }
}

}  // namespace

void checkTextures(const LintedModel& linted, Findings& findings) {
    checkLines(linted, findings);
    OverlapCheck(linted, findings).check();
    checkUse(linted, findings);
}

}  // namespace vxbtool::lint
