#include "vxbtool/scene/pictures.h"

#include <algorithm>
#include <array>
#include <set>

#include <fmt/core.h>

#include "format/texture_fields.h"

namespace vxbtool::scene {
namespace {

using mqf2vxb::Field;
using mqf2vxb::PacketPolygon;

constexpr std::uint32_t flagBits = 3U << 5U;
constexpr std::uint32_t pageMask = mqf2vxb::pageFieldBits & ~flagBits;
constexpr std::uint32_t directDepth = 16;  // whose texels are colours themselves
/// What all pictures together may be. Image memory has 4 million texels at most, but each colour table
/// and each window makes other pictures of them; a small file that is made to need very many shows one
/// colour instead.
struct Most {
    explicit Most(std::size_t words)
        : pictures(4096 + words / 64), texels((std::size_t{1} << 23U) + 32 * words) {}

    std::size_t pictures;
    std::size_t texels;
};

/// Looks texels up in image memory.
class Texels {
public:
    Texels(const ImageMemory& memory, std::uint32_t page, std::uint32_t clut)
        : memory_(memory),
          page_(mqf2vxb::texturePage(page)),
          clut_(mqf2vxb::clutPosition(clut)),
          known_(depth() == directDepth || (depth() > 0 && memory.image(clut_.x, clut_.y))) {}

    [[nodiscard]] std::uint32_t depth() const { return page_.depth(); }
    /// The image that a texel lies in; nothing when none does, or when no colour table is there.
    [[nodiscard]] std::optional<std::uint32_t> image(std::uint32_t x, std::uint32_t y) const {
        return known_ ? memory_.image(columnOf(x), page_.y + y) : std::nullopt;
    }
    [[nodiscard]] Rgba colour(std::uint32_t x, std::uint32_t y) const {
        const std::uint16_t column = memory_.column(columnOf(x), page_.y + y);
        if (depth() == directDepth) {
            return colourOf(column);
        }
        const std::uint32_t perColumn = directDepth / depth();
        const std::uint32_t index = column >> (x % perColumn * depth()) & ((1U << depth()) - 1U);
        return colourOf(memory_.column(clut_.x + index, clut_.y));
    }

private:
    [[nodiscard]] std::uint32_t columnOf(std::uint32_t x) const {
        return page_.x + x * depth() / directDepth;
    }

    const ImageMemory& memory_;
    mqf2vxb::TexturePage page_;
    mqf2vxb::ClutPosition clut_;
    bool known_;  ///< whether the texels' colours can be told
};

/// What stands where no image lies.
Rgba checker(std::uint32_t x, std::uint32_t y) {
    constexpr std::uint32_t square = 4;
    constexpr Rgba dark{24, 24, 24, 255};
    constexpr Rgba bright{255, 0, 255, 255};
    return (x / square + y / square) % 2 == 0 ? bright : dark;
}

/// A page is looked at in cells of 8 x 8 texels: uses whose cells touch share a picture.
constexpr std::uint32_t cellSize = 8;
constexpr std::uint32_t cells = 32;
using Cells = std::array<std::uint32_t, cells>;  // by row, a bit for each column

std::uint32_t cellOf(std::uint32_t x, std::uint32_t y) {
    return y / cellSize * cells + x / cellSize;
}

/// Numbers the used cells so that those that touch have the same number, counted from 0.
std::vector<std::uint16_t> touchingCells(Cells used) {
    std::vector<std::uint16_t> numbers(std::size_t{cells} * cells);
    std::uint16_t number = 0;
    std::vector<std::uint32_t> ahead;
    const auto take = [&](std::uint32_t column, std::uint32_t row) {
        // Beyond the edges there is none: what is less than 0 is a large number.
        if (column < cells && row < cells && (used[row] >> column & 1U) != 0) {
            used[row] &= ~(1U << column);
            numbers[row * cells + column] = number;
            ahead.push_back(row * cells + column);
        }
    };
    for (std::uint32_t start = 0; start < numbers.size(); ++start) {
        take(start % cells, start / cells);
        const bool isUsed = !ahead.empty();
        while (!ahead.empty()) {
            const std::uint32_t column = ahead.back() % cells;
            const std::uint32_t row = ahead.back() / cells;
            ahead.pop_back();
            take(column - 1, row);
            take(column + 1, row);
            take(column, row - 1);
            take(column, row + 1);
        }
        number = static_cast<std::uint16_t>(number + (isUsed ? 1 : 0));
    }
    return numbers;
}

}  // namespace

void Pictures::Rectangle::add(const Rectangle& other) {
    left = std::min(left, other.left);
    top = std::min(top, other.top);
    right = std::max(right, other.right);
    bottom = std::max(bottom, other.bottom);
}

std::uint64_t Pictures::keyOf(const PacketPolygon& polygon) {
    constexpr std::uint64_t windowBits = 0xFFFFF;
    constexpr unsigned windowShift = 32;
    const std::uint32_t page = polygon[Field::page] & pageMask;
    const bool direct = mqf2vxb::texturePage(page).depth() == directDepth;
    const std::uint64_t clut = direct ? 0 : polygon[Field::clut];
    const std::uint64_t window =
        polygon.has(Field::window) ? (polygon[Field::window] & windowBits) + 1 : 0;
    return page | clut << 16U | window << windowShift;
}

void Pictures::use(const PacketPolygon& polygon, std::size_t corners) {
    const std::uint32_t index = sourceOf_.find(keyOf(polygon), [&] {
        Source source;
        source.page = polygon[Field::page] & pageMask;
        source.clut = polygon[Field::clut];
        if (polygon.has(Field::window)) {
            source.window = polygon[Field::window];
            const mqf2vxb::TextureWindow window = mqf2vxb::textureWindow(*source.window);
            source.uses.push_back(
                {window.x, window.y, window.x + window.width, window.y + window.height});
        }
        sources_.push_back(std::move(source));
        return static_cast<std::uint32_t>(sources_.size() - 1);
    });
    Source& source = sources_[index];
    const Texels texels(memory_, source.page, source.clut);
    Rectangle used;
    bool covered = true;
    for (std::size_t corner = 0; corner < corners; ++corner) {
        CornerTexel texel = cornerTexel(polygon, corner);
        if (source.window) {
            const Rectangle& window = source.uses.front();
            texel = {window.left + texel.x % (window.right - window.left),
                     window.top + texel.y % (window.bottom - window.top)};
        }
        used.add({texel.x, texel.y, texel.x + 1, texel.y + 1});
        covered = covered && texels.image(texel.x, texel.y).has_value();
    }
    uncovered_ += covered ? 0 : 1;
    if (!source.window && (source.uses.empty() || source.uses.back() != used)) {
        source.uses.push_back(used);
    }
}

std::vector<Pictures::Rectangle> Pictures::split(Source& source) {
    if (source.uses.size() == 1) {
        return source.uses;
    }
    Cells used{};
    for (const Rectangle& use : source.uses) {
        const std::uint32_t first = use.left / cellSize;
        const std::uint32_t last = (use.right - 1) / cellSize;
        const std::uint32_t columns = ~0U >> (cells - 1 - last) & ~0U << first;
        for (std::uint32_t row = use.top / cellSize; row <= (use.bottom - 1) / cellSize; ++row) {
            used[row] |= columns;
        }
    }
    source.partOf = touchingCells(used);
    std::vector<Rectangle> parts;
    for (const Rectangle& use : source.uses) {
        const std::uint16_t part = source.partOf[cellOf(use.left, use.top)];
        parts.resize(std::max<std::size_t>(parts.size(), part + std::size_t{1}));
        parts[part].add(use);
    }
    if (parts.size() == 1) {
        source.partOf.clear();
    }
    return parts;
}

Picture Pictures::picture(const Source& source, const Rectangle& part) const {
    const Texels texels(memory_, source.page, source.clut);
    Picture picture;
    picture.width = part.right - part.left;
    picture.height = part.bottom - part.top;
    picture.depth = texels.depth();
    picture.page = source.page;
    if (texels.depth() != directDepth) {
        picture.clut = source.clut;
    }
    picture.window = source.window;
    picture.x = part.left;
    picture.y = part.top;
    picture.missing = true;
    picture.texels.reserve(std::size_t{picture.width} * picture.height);
    std::set<std::uint32_t> images;
    std::optional<std::uint32_t> last;
    for (std::uint32_t y = part.top; y < part.bottom; ++y) {
        for (std::uint32_t x = part.left; x < part.right; ++x) {
            const std::optional<std::uint32_t> image = texels.image(x, y);
            if (!image) {
                picture.texels.push_back(checker(x, y));
                continue;
            }
            picture.missing = false;
            picture.texels.push_back(texels.colour(x, y));
            picture.cutOut = picture.cutOut || picture.texels.back()[3] == 0;
            if (image != last) {
                images.insert(*image);
                last = image;
            }
        }
    }
    picture.images.assign(images.begin(), images.end());
    return picture;
}

std::vector<Picture> Pictures::make(std::size_t words, std::vector<std::string>& warnings) {
    const Most most(words);
    std::vector<Picture> pictures;
    std::size_t texels = 0;
    std::size_t refused = 0;
    std::vector<Source*> without;
    for (Source& source : sources_) {
        const std::vector<Rectangle> parts = split(source);
        std::size_t more = 0;
        for (const Rectangle& part : parts) {
            more += std::size_t{part.right - part.left} * (part.bottom - part.top);
        }
        source.uses = {};
        if (pictures.size() + parts.size() > most.pictures || texels + more > most.texels) {
            refused += parts.size();
            source.partOf = {};
            without.push_back(&source);
            continue;
        }
        texels += more;
        source.firstPicture = static_cast<std::uint32_t>(pictures.size());
        for (const Rectangle& part : parts) {
            pictures.push_back(picture(source, part));
        }
    }
    if (!without.empty()) {
        for (Source* source : without) {
            source->firstPicture = static_cast<std::uint32_t>(pictures.size());
        }
        Picture missing;
        missing.width = missing.height = 1;
        missing.texels = {checker(0, 0)};
        missing.missing = true;
        pictures.push_back(std::move(missing));
    }
    if (uncovered_ > 0) {
        warnings.push_back(fmt::format(
            "{} polygon{} a texture where no image lies, or no colour table; a checker stands there",
            uncovered_, uncovered_ == 1 ? " has" : "s have"));
    }
    if (refused > 0) {
        warnings.push_back(fmt::format(
            "{} textures are left out, because all together are more than {} or have more than {} texels",
            refused, most.pictures, most.texels));
    }
    return pictures;
}

std::uint32_t Pictures::find(const PacketPolygon& polygon) const {
    const Source& source = sources_[*sourceOf_.find(keyOf(polygon))];
    if (source.partOf.empty()) {
        return source.firstPicture;
    }
    // A window has one part, so that this is a texel of the page.
    const CornerTexel texel = cornerTexel(polygon, 0);
    return source.firstPicture + source.partOf[cellOf(texel.x, texel.y)];
}

}  // namespace vxbtool::scene
