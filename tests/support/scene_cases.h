#pragma once

#include <functional>
#include <string>

#include "support/memory_files.h"
#include "vxb/vxb_file.h"

namespace mqf2vxb::tests {

/// A model as a file of scenes tells it, in lines "geo TEXT" and so on; "pxl FLAG / PIXELS / TABLE" is an
/// image, and "ni" leaves the images out. Read back from the words that it became.
VxbFile fileOfLines(const std::string& lines);

/// Reads cases from a file of the folder data: "= title", the lines of a model, "-", and what is
/// expected of it. Gives each to `check` and returns their number.
std::size_t forEachSceneCase(const std::string& name,
                             const std::function<void(const std::string& title, const VxbFile& file,
                                                      const std::string& expected)>& check);

}  // namespace mqf2vxb::tests
