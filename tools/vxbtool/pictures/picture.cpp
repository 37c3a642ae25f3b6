#include "vxbtool/pictures/picture.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/pictures/gif_frame.h"
#include "vxbtool/pictures/jpeg.h"
#include "vxbtool/pictures/picture_size.h"
#include "vxbtool/pictures/pnm.h"
#include "vxbtool/pictures/texel_budget.h"

namespace {

// What a damaged file leaves out of its picture is the same in each run: zeros.
// NOLINTBEGIN(cppcoreguidelines-no-malloc): stb frees what it gets.
void* zeroedMemory(std::size_t size) { return std::calloc(1, size); }
void* grownMemory(void* memory, std::size_t before, std::size_t size) {
    auto* const grown = static_cast<char*>(std::realloc(memory, size));
    if (grown != nullptr && size > before) {
        std::memset(grown + before, 0, size - before);
    }
    return grown;
}
// NOLINTEND(cppcoreguidelines-no-malloc)

}  // namespace

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
// What has readers of its own here, and what none of its users has.
#define STBI_NO_JPEG
#define STBI_NO_PNM
#define STBI_NO_HDR
#define STBI_NO_LINEAR
#define STBI_NO_PIC
#define STBI_MALLOC zeroedMemory
#define STBI_REALLOC_SIZED grownMemory
#define STBI_FREE std::free
#include <stb/stb_image.h>
#include <stb/stb_image_resize.h>

namespace vxbtool::pictures {
namespace {

constexpr int channels = 4;
constexpr std::uint8_t halfOpaque = 128;

/// The bytes of a file on their way to stb. Some of its readers take zeros for what is behind the
/// end; that somebody asked for it shows that the file was cut off.
struct Source {
    std::string_view bytes;
    std::size_t position = 0;
    bool askedBeyond = false;

    static int read(void* user, char* data, int size) {
        auto& source = *static_cast<Source*>(user);
        const std::size_t left = source.bytes.size() - source.position;
        const std::size_t taken = std::min(left, static_cast<std::size_t>(std::max(size, 0)));
        source.askedBeyond |= left == 0;
        std::memcpy(data, source.bytes.data() + source.position, taken);
        source.position += taken;
        return static_cast<int>(taken);
    }
    /// A negative number goes back.
    static void skip(void* user, int size) {
        auto& source = *static_cast<Source*>(user);
        const auto target = static_cast<std::int64_t>(source.position) + size;
        const auto end = static_cast<std::int64_t>(source.bytes.size());
        source.askedBeyond |= target > end;
        source.position = static_cast<std::size_t>(std::clamp(target, std::int64_t{0}, end));
    }
    static int isAtEnd(void* user) {
        const auto& source = *static_cast<const Source*>(user);
        return source.position == source.bytes.size() ? 1 : 0;
    }
};

constexpr stbi_io_callbacks sourceCallbacks{&Source::read, &Source::skip, &Source::isAtEnd};

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size&) const = default;
};

[[noreturn]] void failOf(const Source& source) {
    if (source.askedBeyond) {
        throw PictureFault("the picture ends early");
    }
    std::string reason = stbi_failure_reason();
    if (!reason.empty()) {
        reason.front() =
            static_cast<char>(std::tolower(static_cast<unsigned char>(reason.front())));
    }
    throw PictureFault(fmt::format("no picture can be read from it: {}", reason));
}

/// What the file says of its size, once that is believable.
Size announcedSize(std::string_view bytes) {
    Source source{bytes};
    Size size;
    int channelsInFile = 0;
    if (stbi_info_from_callbacks(&sourceCallbacks, &source, &size.width, &size.height,
                                 &channelsInFile) == 0) {
        failOf(source);
    }
    // The lines of a BMP file from the top down have a negative number.
    size.height = size.height < 0 ? -std::max(size.height, -INT_MAX) : size.height;
    requireSoundSize(static_cast<std::uint32_t>(std::max(size.width, 0)),
                     static_cast<std::uint32_t>(size.height), bytes.size());
    return size;
}

/// Refuses what stb reads wrongly.
void requireReadable(std::string_view bytes) {
    // It takes for granted that what is transparent in a PSD file lies on white.
    constexpr std::size_t channelNumber = 13;  // its lower byte
    constexpr char most = 3;
    if (bytes.starts_with("8BPS") && bytes.size() > channelNumber &&
        (bytes[channelNumber] > most || bytes[channelNumber] < 0)) {
        throw PictureFault(
            "only PSD files without transparency are read: save it as PNG, or flattened");
    }
    // It counts too few colours in tables of three bytes each.
    constexpr std::size_t headerSize = 14;
    constexpr char oldHeader = 12;
    if (bytes.starts_with("BM") && bytes.size() > headerSize && bytes[headerSize] == oldHeader) {
        throw PictureFault("BMP files with the header of OS/2 are not read: save it anew");
    }
}

}  // namespace

Picture readPicture(std::string_view bytes) {
    if (isJpeg(bytes)) {
        return readJpeg(bytes);
    }
    if (isPnm(bytes)) {
        return readPnm(bytes);
    }
    requireReadable(bytes);
    const Size announced = announcedSize(bytes);
    Source source{bytes};
    Size size;
    int channelsInFile = 0;
    const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> texels(
        stbi_load_from_callbacks(&sourceCallbacks, &source, &size.width, &size.height,
                                 &channelsInFile, channels),
        &stbi_image_free);
    if (!texels || source.askedBeyond) {
        failOf(source);
    }
    if (size != announced) {
        throw PictureFault("the picture has another size than its file says");
    }
    Picture picture{
        static_cast<std::uint32_t>(size.width), static_cast<std::uint32_t>(size.height), {}};
    picture.texels.resize(std::size_t{picture.width} * picture.height);
    std::memcpy(picture.texels.data(), texels.get(), picture.texels.size() * sizeof(Rgba));
    clearBesideFrame(bytes, picture);
    return picture;
}

Picture readPictureFile(const std::string& name, mqf2vxb::InputFiles& files, TexelBudget& budget) {
    budget.require();
    const std::optional<mqf2vxb::FileContents> contents = files.read(name);
    if (!contents) {
        throw PictureFault(fmt::format("the file cannot be read: {}", std::strerror(errno)));
    }
    Picture picture = readPicture(contents->text());
    budget.add(picture.texels.size(), contents->text().size());
    return picture;
}

Picture resized(const Picture& picture, std::uint32_t width, std::uint32_t height, Edges edges) {
    if (width == picture.width && height == picture.height) {
        return picture;
    }
    Picture result{width, height, std::vector<Rgba>(std::size_t{width} * height)};
    constexpr int alphaChannel = 3;
    const stbir_edge edge = edges == Edges::repeat ? STBIR_EDGE_WRAP : STBIR_EDGE_CLAMP;
    if (stbir_resize_uint8_srgb_edgemode(
            picture.texels.front().data(), static_cast<int>(picture.width),
            static_cast<int>(picture.height), 0, result.texels.front().data(),
            static_cast<int>(width), static_cast<int>(height), 0, channels, alphaChannel, 0,
            edge) == 0) {
        throw std::bad_alloc();
    }
    return result;
}

Picture tinted(Picture picture, const std::array<float, 3>& colour) {
    for (std::size_t channel = 0; channel < colour.size(); ++channel) {
        const float factor = std::clamp(colour[channel], 0.0F, 1.0F);
        std::array<std::uint8_t, 256> product{};
        for (std::size_t value = 0; value < product.size(); ++value) {
            product[value] =
                static_cast<std::uint8_t>(std::lround(static_cast<float>(value) * factor));
        }
        for (Rgba& texel : picture.texels) {
            texel[channel] = product[texel[channel]];
        }
    }
    return picture;
}

bool isDrawn(const Rgba& texel) { return texel[3] >= halfOpaque; }

bool hasHoles(const Picture& picture) { return !std::ranges::all_of(picture.texels, isDrawn); }

bool isTranslucent(const Picture& picture) {
    constexpr std::uint8_t hardlySeen = 25;
    constexpr std::uint8_t nearlyOpaque = 230;
    std::size_t seen = 0;
    std::size_t between = 0;
    for (const Rgba& texel : picture.texels) {
        seen += texel[3] > hardlySeen ? 1 : 0;
        between += texel[3] > hardlySeen && texel[3] < nearlyOpaque ? 1 : 0;
    }
    return between > 0 && 4 * between >= seen;
}

}  // namespace vxbtool::pictures
