#pragma once

#include <string_view>

#include "vxbtool/pictures/picture.h"

namespace vxbtool::pictures {

/// Whether a file begins like a PGM or PPM file whose numbers are bytes: "P5" or "P6".
bool isPnm(std::string_view bytes);

/// Reads such a file: grey or red, green and blue, of 8 or 16 bits with any greatest value. Throws
/// PictureFault as readPicture() does.
Picture readPnm(std::string_view bytes);

}  // namespace vxbtool::pictures
