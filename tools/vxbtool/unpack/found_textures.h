#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/key_map.h"
#include "vxb/vxb_file.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::unpack {

/// The images of a file, each with the pixel depth that the packets need, and the way back from a
/// packet to its image. A file without an image section whose packets have textures gets small
/// stand-ins, which give the packets' words.
class FoundTextures {
public:
    explicit FoundTextures(const mqf2vxb::VxbFile& file);

    /// The image of a packet, and where it lies in its page, in texels.
    struct Place {
        std::uint32_t number = 0;
        std::uint32_t u = 0;
        std::uint32_t v = 0;
    };
    /// The image whose packets have these page and lookup table fields, of several one that has the
    /// texels: page-local u in the low byte, v in the high byte. The first image when there is none.
    [[nodiscard]] Place find(std::uint32_t page, std::uint32_t clut,
                             std::span<const std::uint32_t> texels) const;

    [[nodiscard]] bool standIns() const { return standIns_; }
    [[nodiscard]] std::vector<model_text::Texture> take() { return std::move(textures_); }

private:
    void addImage(const mqf2vxb::VxbFile& file, const mqf2vxb::Image& image);
    void addStandIn(std::uint32_t page, std::uint32_t clut);
    void chooseModes(const mqf2vxb::VxbFile& file, std::span<const std::uint64_t> needed);
    [[nodiscard]] bool holds(std::uint32_t number, std::span<const std::uint32_t> texels) const;

    std::vector<model_text::Texture> textures_;
    std::vector<std::uint32_t> order_;  ///< the images by the fields of their packets
    struct Run {
        std::uint32_t first = 0;
        std::uint32_t end = 0;
    };
    mqf2vxb::KeyMap<std::uint64_t, Run> runs_;
    bool standIns_ = false;
};

}  // namespace vxbtool::unpack
