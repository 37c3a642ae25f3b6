#pragma once

#include <string_view>

#include "vxbtool/pictures/picture.h"

namespace vxbtool::pictures {

/// Makes transparent what the first frame of a GIF file leaves of its picture. Other files stay as they
/// are.
void clearBesideFrame(std::string_view file, Picture& picture);

}  // namespace vxbtool::pictures
