#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Refuses a file of so many words when no offset could reach its last ones; `model` is named.
void checkFileSize(const std::string& model, std::uint64_t words);

/// Refuses counts of polygons and images that the words of the file cannot hold.
void checkLimits(const Model& model);

}  // namespace mqf2vxb
