#pragma once

#include <string_view>

namespace vxbtool::pictures {

/// Throws PictureFault for a JPEG file whose scans leave a colour out, so that nobody knows what the
/// picture is, or go over it more often than those of real ones, which takes their time. Other files pass.
void requireSoundScans(std::string_view bytes);

}  // namespace vxbtool::pictures
