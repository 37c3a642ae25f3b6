#pragma once

#include <string_view>

#include "vxbtool/pictures/picture.h"

namespace vxbtool::pictures {

/// Whether a file begins like a JPEG file.
bool isJpeg(std::string_view bytes);

/// Reads a JPEG file from its bytes. Throws PictureFault as readPicture() does, for one whose scans
/// leave a colour out too, so that nobody knows what the picture is, and for one whose scans go over it
/// more often than those of real ones, which takes their time.
Picture readJpeg(std::string_view bytes);

}  // namespace vxbtool::pictures
