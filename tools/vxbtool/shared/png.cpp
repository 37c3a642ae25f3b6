#include "vxbtool/shared/png.h"

#include <stdexcept>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace vxbtool {

std::string pngOf(std::uint32_t width, std::uint32_t height, std::span<const std::uint8_t> pixels) {
    constexpr int components = 4;
    std::string png;
    const auto append = [](void* context, void* data, int size) {
        static_cast<std::string*>(context)->append(static_cast<const char*>(data),
                                                   static_cast<std::size_t>(size));
    };
    if (stbi_write_png_to_func(append, &png, static_cast<int>(width), static_cast<int>(height),
                               components, pixels.data(),
                               static_cast<int>(width) * components) == 0) {
        throw std::runtime_error("a picture cannot be made into a PNG file");
    }
    return png;
}

}  // namespace vxbtool
