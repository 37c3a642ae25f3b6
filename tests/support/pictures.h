#pragma once

#include <string>

#include "vxbtool/pictures/picture.h"

namespace mqf2vxb::tests {

/// A file of tests/data/pictures.
std::string pictureFile(const std::string& name);

/// What the files small.* hold: red rises with x, green with y.
vxbtool::pictures::Picture smallPicture(bool withHole);

vxbtool::pictures::Picture plainPicture(std::uint32_t width, std::uint32_t height,
                                        const vxbtool::pictures::Rgba& colour);

}  // namespace mqf2vxb::tests
