#include "vxbtool/pictures/placing.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <compare>
#include <map>
#include <numeric>
#include <queue>
#include <tuple>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/pictures/memory_map.h"
#include "vxbtool/pictures/texture_block.h"

namespace vxbtool::pictures {
namespace {

/// Sizes are halved down to this, in texels; it is the least of a window, too.
constexpr std::uint32_t shortestSide = 8;

/// A texture that is looked for a place.
struct Item {
    const WantedTexture* wanted = nullptr;
    ReducedPicture picture;
    std::uint32_t halvings = 0;
    Place place;
    Place table;

    [[nodiscard]] std::uint32_t columns() const { return columnsOf(picture.width, picture.depth); }
    [[nodiscard]] std::uint32_t tableColumns() const {
        return static_cast<std::uint32_t>(picture.table.size());
    }
    [[nodiscard]] std::uint32_t texelCost() const { return columns() * picture.height; }
};

ReducedPicture sized(const WantedTexture& wanted, std::uint32_t width, std::uint32_t height,
                     Colours colours) {
    Reduction reduction = wanted.reduction;
    reduction.colours = colours;
    return reduced(
        resized(wanted.picture, width, height, wanted.repeats ? Edges::repeat : Edges::clamp),
        reduction);
}

Colours coloursOf(const ReducedPicture& picture) {
    return picture.depth == 4 ? Colours::sixteen
                              : (picture.depth == 8 ? Colours::many : Colours::direct);
}

/// The side of a window that is nearest to a side, as a factor.
std::uint32_t windowSide(std::uint32_t side, std::uint32_t largest) {
    const double power = std::round(std::log2(side));
    const auto nearest = static_cast<std::uint32_t>(std::exp2(power));
    return std::clamp(nearest, shortestSide, std::bit_floor(std::max(largest, shortestSide)));
}

std::uint32_t widthOf(const WantedTexture& wanted) {
    return wanted.width > 0 ? wanted.width : wanted.picture.width;
}
std::uint32_t heightOf(const WantedTexture& wanted) {
    return wanted.height > 0 ? wanted.height : wanted.picture.height;
}

/// The size of a texture, in texels.
struct TextureSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t halvings = 0;
};

/// The size of a texture that has room enough.
TextureSize wholeSize(const WantedTexture& wanted, std::uint32_t largest) {
    const double longest = std::max(widthOf(wanted), heightOf(wanted));
    const double factor = std::min(1.0, largest / longest);
    const auto side = [&](std::uint32_t texels) {
        const auto fitted = std::max(1U, static_cast<std::uint32_t>(std::lround(texels * factor)));
        return wanted.repeats ? windowSide(fitted, largest) : fitted;
    };
    return {side(widthOf(wanted)), side(heightOf(wanted)), 0};
}

/// The next smaller size; nothing for the smallest.
std::optional<TextureSize> halved(const TextureSize& size) {
    const auto half = [](std::uint32_t side) {
        return side > shortestSide ? std::max(shortestSide, (side + 1) / 2) : side;
    };
    const TextureSize result{half(size.width), half(size.height), size.halvings + 1};
    return result.width == size.width && result.height == size.height ? std::nullopt
                                                                      : std::optional(result);
}

[[noreturn]] void failFull() {
    throw PictureFault("image memory is full, however small the textures are made");
}

/// The sizes of the textures, the largest halved until all might fit in as few bits as they can have:
/// to find colours for more than memory can hold would be in vain.
std::vector<TextureSize> sizesOf(std::span<const WantedTexture* const> wanted,
                                 std::uint32_t largest, const ImageMemory& memory) {
    const auto columnsOfSize = [&](std::size_t i, const TextureSize& size) {
        const Colours colours = wanted[i]->reduction.colours;
        const std::uint32_t depth = colours == Colours::direct ? 16
                                    : colours == Colours::many ? 8
                                                               : 4;
        return std::size_t{columnsOf(size.width, depth)} * size.height;
    };
    std::vector<TextureSize> sizes;
    std::priority_queue<std::tuple<std::size_t, std::size_t>> candidates;
    std::size_t needed = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        sizes.push_back(wholeSize(*wanted[i], largest));
        const std::size_t columns = columnsOfSize(i, sizes[i]);
        needed += columns;
        candidates.emplace(columns, wanted.size() - i);
    }
    const std::size_t room = std::size_t{memory.textures.width} * memory.textures.height;
    while (needed > room) {
        if (candidates.empty()) {
            failFull();
        }
        const auto [columns, fromEnd] = candidates.top();
        candidates.pop();
        const std::size_t i = wanted.size() - fromEnd;
        if (const std::optional<TextureSize> size = halved(sizes[i])) {
            sizes[i] = *size;
            const std::size_t fewer = columnsOfSize(i, *size);
            needed -= columns - fewer;
            candidates.emplace(fewer, fromEnd);
        }
    }
    return sizes;
}

Item itemOf(const WantedTexture& wanted, const TextureSize& size) {
    return {&wanted,
            sized(wanted, size.width, size.height, wanted.reduction.colours),
            size.halvings,
            {},
            {}};
}

/// Makes a texture smaller; false when it is as small as it gets. One whose colours are free to choose
/// gets 16 first, unless they would show or its table is small beside its texels.
bool shrink(Item& item) {
    const ReducedPicture& picture = item.picture;
    if (item.wanted->reduction.colours == Colours::automatic && picture.depth != 4) {
        constexpr double bearable = 30;
        constexpr std::size_t smallPicture = 4 * std::size_t{256};
        ReducedPicture few = sized(*item.wanted, picture.width, picture.height, Colours::sixteen);
        if (few.psnr >= bearable || few.texels.size() <= smallPicture) {
            item.picture = std::move(few);
            return true;
        }
    }
    const std::optional<TextureSize> size = halved({picture.width, picture.height, item.halvings});
    if (!size) {
        return false;
    }
    item.picture = sized(*item.wanted, size->width, size->height, coloursOf(picture));
    item.halvings = size->halvings;
    return true;
}

/// Finds the places of all tables.
void placeTables(std::vector<Item>& items, const ImageMemory& memory, MemoryMap& map) {
    for (const std::uint32_t colours : {256U, 16U}) {
        for (Item& item : items) {
            if (item.tableColumns() != colours) {
                continue;
            }
            constexpr std::uint32_t step = 16;
            const std::optional<Place> place = map.find(
                {colours, 1, step, 1, 0}, memory.tables.value_or(memory.textures), !memory.tables);
            if (!place) {
                throw PictureFault(fmt::format(
                    "image memory has no room for a colour table of {} colours", colours));
            }
            item.table = *place;
            map.take(*place, colours, 1);
        }
    }
}

/// The order in which textures look for places: those that many places do not suit come first.
std::vector<std::size_t> placingOrder(const std::vector<Item>& items) {
    std::vector<std::size_t> order(items.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, std::greater{}, [&](std::size_t i) {
        const Item& item = items[i];
        return std::tuple(item.columns() > MemoryMap::pageColumns, item.wanted->repeats,
                          item.picture.height, item.columns());
    });
    return order;
}

/// Finds the places of all textures, and tells how many columns of theirs have none.
std::size_t placeTexels(std::vector<Item>& items, const ImageMemory& memory, MemoryMap& map) {
    std::size_t unplaced = 0;
    for (const std::size_t i : placingOrder(items)) {
        Item& item = items[i];
        const std::uint32_t width = item.columns();
        const std::uint32_t height = item.picture.height;
        Demand demand{width, height, 1, 1, longestTexture * item.picture.depth / 16};
        if (item.wanted->repeats) {
            demand.stepX = width;
            demand.stepY = height;
        }
        if (const std::optional<Place> place = map.find(demand, memory.textures, false)) {
            item.place = *place;
            map.take(*place, width, height);
        } else {
            unplaced += item.texelCost();
        }
    }
    return unplaced;
}

/// Columns that all textures would need if they filled memory without a gap, beyond those there are.
std::size_t excess(const std::vector<Item>& items, const ImageMemory& memory) {
    std::size_t needed = 0;
    for (const Item& item : items) {
        needed += item.texelCost() + (memory.tables ? 0 : item.tableColumns());
    }
    const std::size_t room = std::size_t{memory.textures.width} * memory.textures.height;
    return needed > room ? needed - room : 0;
}

/// Halves the largest textures, of equal ones the first, until about `wanted` columns are saved.
void save(std::vector<Item>& items, std::size_t wanted) {
    using Candidate = std::tuple<std::uint32_t, std::size_t>;  // its cost, and how far from the end
    std::priority_queue<Candidate> candidates;
    const auto add = [&](std::size_t i) {
        candidates.emplace(items[i].texelCost(), items.size() - i);
    };
    for (std::size_t i = 0; i < items.size(); ++i) {
        add(i);
    }
    for (std::size_t saved = 0; saved < wanted;) {
        if (candidates.empty()) {
            if (saved == 0) {
                failFull();
            }
            return;
        }
        const std::size_t i = items.size() - std::get<1>(candidates.top());
        candidates.pop();
        Item& largest = items[i];
        const auto cost = [&] { return largest.texelCost() + largest.tableColumns(); };
        const std::size_t before = cost();
        if (shrink(largest)) {
            add(i);
        }
        saved += before - std::min<std::size_t>(before, cost());
    }
}

void placeItems(std::vector<Item>& items, const ImageMemory& memory) {
    for (;;) {
        std::size_t missing = excess(items, memory);
        if (missing == 0) {
            MemoryMap map;
            placeTables(items, memory, map);
            // What saves half of it may do: smaller textures leave smaller gaps.
            const std::size_t unplaced = placeTexels(items, memory, map);
            if (unplaced == 0) {
                return;
            }
            missing = (unplaced + 1) / 2;
        }
        save(items, missing);
    }
}

void demandInside(const Area& area, const char* what) {
    if (area.width == 0 || area.height == 0 || area.x >= MemoryMap::side ||
        area.y >= MemoryMap::side || area.width > MemoryMap::side - area.x ||
        area.height > MemoryMap::side - area.y) {
        throw PictureFault(
            fmt::format("the area of the {} does not lie inside image memory of {} x {}", what,
                        MemoryMap::side, MemoryMap::side));
    }
}

/// An order in which equal wishes are equal.
struct WantedOrder {
    bool operator()(const WantedTexture* a, const WantedTexture* b) const {
        const auto rest = [](const WantedTexture& wanted) {
            return std::tuple(widthOf(wanted), heightOf(wanted), wanted.repeats,
                              wanted.reduction.colours, wanted.reduction.dither,
                              wanted.reduction.marked);
        };
        const auto order = rest(*a) <=> rest(*b);
        return std::is_eq(order) ? a->picture.texels < b->picture.texels : std::is_lt(order);
    }
};

PlacedTexture placedTexture(const Item& item) {
    const ReducedPicture& picture = item.picture;
    PlacedTexture placed{textureOf(picture, item.place, item.table),
                         picture.width,
                         picture.height,
                         widthOf(*item.wanted),
                         heightOf(*item.wanted),
                         picture.depth,
                         picture.colours,
                         picture.psnr,
                         item.halvings,
                         item.wanted->repeats};
    placed.texture.comment = describe(placed);
    return placed;
}

}  // namespace

Picture shrunk(Picture picture, Edges edges) {
    constexpr std::uint32_t most = 2 * longestTexture;
    const std::uint32_t longest = std::max(picture.width, picture.height);
    if (longest <= most) {
        return picture;
    }
    const auto side = [&](std::uint32_t texels) {
        return std::max<std::uint32_t>(
            1, static_cast<std::uint32_t>(std::uint64_t{texels} * most / longest));
    };
    return resized(picture, side(picture.width), side(picture.height), edges);
}

Placing place(std::span<const WantedTexture> wanted, const PlacingOptions& options) {
    demandInside(options.memory.textures, "textures");
    if (options.memory.tables) {
        demandInside(*options.memory.tables, "colour tables");
    }
    const std::uint32_t largest = std::clamp(options.largest, 1U, longestTexture);
    Placing placing;
    std::map<const WantedTexture*, std::size_t, WantedOrder> known;
    std::vector<const WantedTexture*> different;
    for (const WantedTexture& texture : wanted) {
        const auto [entry, isNew] = known.try_emplace(&texture, different.size());
        if (isNew) {
            different.push_back(&texture);
        }
        placing.textureOf.push_back(entry->second);
    }
    const std::vector<TextureSize> sizes = sizesOf(different, largest, options.memory);
    std::vector<Item> items;
    for (std::size_t i = 0; i < different.size(); ++i) {
        items.push_back(itemOf(*different[i], sizes[i]));
    }
    placeItems(items, options.memory);
    std::ranges::transform(items, std::back_inserter(placing.textures), placedTexture);
    return placing;
}

std::string describe(const PlacedTexture& placed) {
    const model_text::Texture& texture = placed.texture;
    std::string text = fmt::format("{} x {} texels of {} bits at {}, {}", placed.width,
                                   placed.height, placed.depth, texture.pixels.x, texture.pixels.y);
    if (texture.clut) {
        text += fmt::format(", colour table at {}, {}", texture.clut->x, texture.clut->y);
    }
    text += fmt::format("; {} colour{}, ", placed.colours, placed.colours == 1 ? "" : "s");
    text += std::isinf(placed.psnr) ? "exact" : fmt::format("PSNR {:.1f} dB", placed.psnr);
    if (placed.width != placed.pictureWidth || placed.height != placed.pictureHeight) {
        text += fmt::format("; the picture has {} x {}", placed.pictureWidth, placed.pictureHeight);
    }
    if (placed.halvings > 0) {
        text +=
            fmt::format("; image memory is full: halved {}",
                        placed.halvings == 1 ? "once" : fmt::format("{} times", placed.halvings));
    }
    return text;
}

}  // namespace vxbtool::pictures
