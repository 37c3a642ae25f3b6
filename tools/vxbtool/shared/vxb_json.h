#pragma once

#include <optional>

#include "vxb/vxb_file.h"
#include "vxbtool/shared/image_depths.h"
#include "vxbtool/shared/json_output.h"

namespace vxbtool {

template <class Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

/// An image and its lookup table without their data.
Json imageJson(const mqf2vxb::Image& image, DepthSet depths);

}  // namespace vxbtool
