#pragma once

#include <cstdint>
#include <vector>

#include "model/model.h"

namespace mqf2vxb {

// The size rules: how many words the parts of the file take whose size depends on a type. A type
// without a rule is reported. Sums are 64 bits wide, so that none can wrap.

/// The packet groups of the model, in their order.
std::vector<std::uint64_t> primtsize(const Model& model);
/// One key frame.
std::uint64_t animmtsize(PrimitiveTypeCode type);
/// Reports a type of key frames that has no rule.
[[noreturn]] void animmtsizeMissing(PrimitiveTypeCode type);
/// The descriptors of `count` images.
std::uint64_t imagetsize(PrimitiveTypeCode type, std::uint64_t count);

}  // namespace mqf2vxb
