#include "vxbtool/pictures/palette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>

#include <dlfcn.h>
#include <libimagequant.h>

namespace vxbtool::pictures {
namespace {

constexpr std::uint16_t componentMask = 0x1F;
constexpr unsigned componentBits = 5;

/// How near 16 colours have to come to a picture so that it does not get 256, in decibels.
constexpr double nearEnough = 36;

using Values = std::vector<std::uint16_t>;

/// The value of every texel in 16 bits, undithered.
Values valuesOf(const Picture& picture, bool marked) {
    Values values;
    values.reserve(picture.texels.size());
    for (const Rgba& texel : picture.texels) {
        const std::uint16_t mark = marked ? markBit : 0;
        values.push_back(isDrawn(texel) ? colour16(texel) | mark : notDrawn);
    }
    return values;
}

/// The different values, ascending: the one that is not drawn comes first.
Values different(Values values) {
    std::ranges::sort(values);
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

double psnrOf(const Picture& picture, const ReducedPicture& reduced) {
    double squares = 0;
    std::size_t components = 0;
    for (std::size_t i = 0; i < picture.texels.size(); ++i) {
        const std::uint16_t texel = reduced.texels[i];
        const Rgba shown = colourOf(reduced.table.empty() ? texel : reduced.table[texel]);
        if (!isDrawn(picture.texels[i])) {
            continue;
        }
        for (std::size_t c = 0; c < 3; ++c) {
            const int difference = shown[c] - picture.texels[i][c];
            squares += static_cast<double>(difference * difference);
        }
        components += 3;
    }
    if (squares == 0) {
        return std::numeric_limits<double>::infinity();
    }
    constexpr double peak = 255;
    return 10 * std::log10(peak * peak * static_cast<double>(components) / squares);
}

// libimagequant

struct Release {
    void operator()(liq_attr* attributes) const { liq_attr_destroy(attributes); }
    void operator()(liq_image* image) const { liq_image_destroy(image); }
    void operator()(liq_histogram* histogram) const { liq_histogram_destroy(histogram); }
    void operator()(liq_result* result) const { liq_result_destroy(result); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Release>;

template <class Handle>
Owned<Handle> owned(Handle* handle) {
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    return Owned<Handle>(handle);
}

void demand(liq_error error) {
    if (error == LIQ_OUT_OF_MEMORY) {
        throw std::bad_alloc();
    }
    if (error != LIQ_OK) {
        throw PictureFault("no colours can be found for it: error " + std::to_string(error) +
                           " of libimagequant");
    }
}

/// The library may be built to share its sums among processors; how many there are would then show in
/// their last bits, and so in the colours.
void useOneProcessor() {
    using SetThreads = void (*)(int);
    // A POSIX system lets a function's address come as that of an object.
    static const auto setThreads =
        reinterpret_cast<SetThreads>(dlsym(RTLD_DEFAULT, "omp_set_num_threads"));
    if (setThreads != nullptr) {
        setThreads(1);
    }
}

/// The picture without holes: in each lies the texel before it, so that no error of other colours is
/// handed on across it.
std::vector<Rgba> filled(const Picture& picture) {
    std::vector<Rgba> texels = picture.texels;
    Rgba last = *std::ranges::find_if(texels, isDrawn);
    for (Rgba& texel : texels) {
        last = isDrawn(texel) ? texel : last;
        texel = {last[0], last[1], last[2], 255};
    }
    return texels;
}

/// The colours of what is drawn, each with its number.
std::vector<liq_histogram_entry> histogramOf(const Picture& picture) {
    std::vector<Rgba> texels = picture.texels;
    std::erase_if(texels, [](const Rgba& texel) { return !isDrawn(texel); });
    std::ranges::sort(texels, {}, [](const Rgba& t) { return std::array{t[0], t[1], t[2]}; });
    std::vector<liq_histogram_entry> entries;
    for (const auto& [r, g, b, a] : texels) {
        if (entries.empty() || entries.back().color.r != r || entries.back().color.g != g ||
            entries.back().color.b != b) {
            entries.push_back({{r, g, b, 255}, 0});
        }
        ++entries.back().count;
    }
    return entries;
}

struct Quantised {
    Values palette;
    std::vector<std::uint8_t> indices;
};

/// The picture, which draws something, with at most `colours` colours.
Quantised quantised(const Picture& picture, std::size_t colours, const Reduction& reduction) {
    useOneProcessor();
    const auto attributes = owned(liq_attr_create());
    demand(liq_set_max_colors(attributes.get(), static_cast<int>(colours)));

    const auto histogram = owned(liq_histogram_create(attributes.get()));
    const std::vector<liq_histogram_entry> entries = histogramOf(picture);
    constexpr double gamma = 0;  // that of a screen
    demand(liq_histogram_add_colors(histogram.get(), attributes.get(), entries.data(),
                                    static_cast<int>(entries.size()), gamma));
    liq_result* made = nullptr;
    demand(liq_histogram_quantize(histogram.get(), attributes.get(), &made));
    const auto result = owned(made);
    demand(liq_set_dithering_level(result.get(), reduction.dither ? 1.0F : 0.0F));

    const std::vector<Rgba> texels = filled(picture);
    const auto image = owned(liq_image_create_rgba(attributes.get(), texels.data(),
                                                   static_cast<int>(picture.width),
                                                   static_cast<int>(picture.height), gamma));
    Quantised quantised;
    quantised.indices.resize(texels.size());
    demand(liq_write_remapped_image(result.get(), image.get(), quantised.indices.data(),
                                    quantised.indices.size()));
    // The palette is the one that the picture was drawn with only from here on. The library could cut
    // it to five bits by itself, but it truncates: rounded colours are nearer to the picture.
    const liq_palette& palette = *liq_get_palette(result.get());
    for (unsigned i = 0; i < palette.count; ++i) {
        const liq_color& c = palette.entries[i];
        quantised.palette.push_back(colour16({c.r, c.g, c.b, c.a}) |
                                    (reduction.marked ? markBit : 0));
    }
    return quantised;
}

// The three kinds of pictures

void fillTable(ReducedPicture& reduced, const Values& drawn) {
    reduced.table = drawn;
    reduced.table.resize(std::size_t{1} << reduced.depth, notDrawn);
}

/// The picture with a table, which holds `values` when they fit it, else the best that do.
ReducedPicture withTable(const Picture& picture, std::uint32_t depth, const Values& values,
                         const Values& differentValues, const Reduction& reduction) {
    ReducedPicture reduced{picture.width, picture.height, depth, {}, {}, 0, 0};
    const std::size_t room = std::size_t{1} << depth;
    Values wanted = values;
    Values table = differentValues;
    if (table.size() > room) {
        const bool holes = table.front() == notDrawn;
        const Quantised found = quantised(picture, room - (holes ? 1 : 0), reduction);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            wanted[i] = wanted[i] == notDrawn ? notDrawn : found.palette[found.indices[i]];
        }
        table = different(wanted);
    }
    reduced.colours = table.size();
    for (const std::uint16_t value : wanted) {
        const auto at = std::ranges::lower_bound(table, value) - table.begin();
        reduced.texels.push_back(static_cast<std::uint16_t>(at));
    }
    fillTable(reduced, table);
    reduced.psnr = psnrOf(picture, reduced);
    return reduced;
}

ReducedPicture direct(const Picture& picture, const Values& values, std::size_t colours) {
    ReducedPicture reduced{picture.width, picture.height, 16, {}, values, colours, 0};
    reduced.psnr = psnrOf(picture, reduced);
    return reduced;
}

}  // namespace

std::uint16_t colour16(const Rgba& colour) {
    constexpr unsigned top = 255;
    const auto component = [&](std::size_t c) {
        return (colour[c] * componentMask + top / 2) / top;
    };
    const unsigned value =
        component(0) | component(1) << componentBits | component(2) << (2 * componentBits);
    return value == notDrawn ? markBit : static_cast<std::uint16_t>(value);
}

Rgba colourOf(std::uint16_t colour) {
    const auto component = [&](unsigned c) {
        const unsigned bits = colour >> (c * componentBits) & componentMask;
        return static_cast<std::uint8_t>(bits << 3U | bits >> 2U);
    };
    constexpr std::uint8_t opaque = 255;
    return {component(0), component(1), component(2),
            colour == notDrawn ? std::uint8_t{0} : opaque};
}

ReducedPicture reduced(const Picture& picture, const Reduction& reduction) {
    const Values values = valuesOf(picture, reduction.marked);
    const Values differentValues = different(values);
    const auto table = [&](std::uint32_t depth) {
        return withTable(picture, depth, values, differentValues, reduction);
    };
    switch (reduction.colours) {
    case Colours::sixteen: return table(4);
    case Colours::many: return table(8);
    case Colours::direct: return direct(picture, values, differentValues.size());
    case Colours::automatic: break;
    }
    ReducedPicture few = table(4);
    if (few.psnr >= nearEnough || differentValues.size() <= few.table.size()) {
        return few;
    }
    constexpr std::size_t tableColumns = 256;
    const bool tableSaves = values.size() / 2 > tableColumns;
    return tableSaves ? table(8) : direct(picture, values, differentValues.size());
}

}  // namespace vxbtool::pictures
