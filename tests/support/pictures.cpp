#include "support/pictures.h"

#include <fstream>
#include <iterator>

namespace mqf2vxb::tests {

using vxbtool::pictures::Picture;
using vxbtool::pictures::Rgba;

std::string pictureFile(const std::string& name) {
    std::ifstream file(MQF2VXB_TEST_DATA "/pictures/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Picture smallPicture(bool withHole) {
    Picture picture{8, 4, {}};
    for (unsigned y = 0; y < 4; ++y) {
        for (unsigned x = 0; x < 8; ++x) {
            const bool hole = withHole && x == 7;
            picture.texels.push_back({static_cast<std::uint8_t>(32 * x),
                                      static_cast<std::uint8_t>(64 * y), 16,
                                      static_cast<std::uint8_t>(hole ? 0 : 255)});
        }
    }
    return picture;
}

Picture plainPicture(std::uint32_t width, std::uint32_t height, const Rgba& colour) {
    return {width, height, std::vector<Rgba>(std::size_t{width} * height, colour)};
}

}  // namespace mqf2vxb::tests
