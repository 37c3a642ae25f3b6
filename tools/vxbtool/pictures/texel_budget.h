#pragma once

#include <cstdint>

#include "vxbtool/pictures/picture.h"

namespace vxbtool::pictures {

/// Bounds the texels of many pictures together by the bytes that they are read from: a picture of one
/// colour has thousands of texels for a byte, and costs the time and memory of a real one.
class TexelBudget {
public:
    /// Throws PictureFault when no further picture may be read.
    void require() const {
        if (!hasRoom()) {
            throw PictureFault(
                "the pictures before it have too many texels for the size of their files");
        }
    }
    /// Whether a texture may be made of a picture that was read, beside another one: to find its
    /// colours takes more time than to read a picture.
    bool takesVariant(std::uint64_t texels) {
        constexpr std::uint64_t effort = 8;
        const bool takes = hasRoom();
        texels_ += takes ? effort * texels : 0;
        return takes;
    }
    /// A picture was read.
    void add(std::uint64_t texels, std::uint64_t bytes) {
        texels_ += texels;
        bytes_ += bytes;
    }

private:
    [[nodiscard]] bool hasRoom() const {
        constexpr std::uint64_t manyTexels = std::uint64_t{1} << 27U;
        constexpr std::uint64_t texelsPerByte = 256;  // real pictures have some tens
        return texels_ <= manyTexels + bytes_ * texelsPerByte;
    }

    std::uint64_t texels_ = 0;
    std::uint64_t bytes_ = 0;
};

}  // namespace vxbtool::pictures
