#pragma once

#include "support/memory_files.h"

namespace mqf2vxb::tests {

/// A model that converts, made by chance: equal seeds make equal models. Between them the models
/// use every part of the format.
ModelFiles randomModel(std::uint32_t seed);

/// The files of such a model with a few characters changed here and there.
Files damagedModel(std::uint32_t seed);

}  // namespace mqf2vxb::tests
