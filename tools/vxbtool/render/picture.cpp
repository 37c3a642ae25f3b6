#include "vxbtool/render/picture.h"

#include <fmt/core.h>
#include <png.h>

#include "vxbtool/render/fault.h"

namespace vxbtool::render {
namespace {

bool isOpaque(const Picture& picture) {
    for (std::size_t i = Picture::channels - 1; i < picture.bytes.size(); i += Picture::channels) {
        if (picture.bytes[i] != 255) {
            return false;
        }
    }
    return true;
}

std::vector<std::uint8_t> withoutAlpha(const std::vector<std::uint8_t>& bytes) {
    std::vector<std::uint8_t> result;
    result.reserve(bytes.size() / Picture::channels * (Picture::channels - 1));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i % Picture::channels != Picture::channels - 1) {
            result.push_back(bytes[i]);
        }
    }
    return result;
}

}  // namespace

std::string pngFileOf(const Picture& picture) {
    const bool opaque = isOpaque(picture);
    const std::vector<std::uint8_t> pixels = opaque ? withoutAlpha(picture.bytes) : picture.bytes;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = opaque ? PNG_FORMAT_RGB : PNG_FORMAT_RGBA;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string file(size, '\0');
    if (png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr) == 0) {
        throw RenderFault(fmt::format("libpng: {}", static_cast<const char*>(image.message)));
    }
    file.resize(size);
    return file;
}

}  // namespace vxbtool::render
