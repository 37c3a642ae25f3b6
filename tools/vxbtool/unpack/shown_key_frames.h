#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "format/primitive_type.h"
#include "vxb/vxb_file.h"

namespace vxbtool::unpack {

/// How the two meanings of the packet type index 0 are told apart, and in which direction the
/// motions are gone through when one shows the key frames of another.
struct Reading {
    enum class Zero : std::uint8_t { listed, byDistance };
    Zero zero = Zero::listed;
    bool backward = false;
    std::size_t bareFrom = 0;  ///< from this motion on the index means the bare type
    std::size_t start = 0;  ///< which of the places that have room is the first of the listed type
};

/// What a SEQ step shows.
struct Shown {
    std::uint32_t step = 0;  ///< within its motion
    std::uint32_t offset = 0;
    mqf2vxb::PrimitiveTypeCode type = 0;
};

/// What the SEQ steps of each motion show, in one reading. `cuts` are those of the steps.
std::vector<std::vector<Shown>> shownKeyFrames(const mqf2vxb::VxbFile& file,
                                               const std::vector<std::uint32_t>& cuts,
                                               const Reading& reading);

}  // namespace vxbtool::unpack
