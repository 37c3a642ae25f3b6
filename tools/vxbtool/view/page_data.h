#pragma once

#include <string>

#include "vxbtool/scene/scene.h"
#include "vxbtool/shared/json_output.h"

namespace vxbtool::view {

/// What the page shows besides the GLB: `viewer/src/data.ts` describes it.
Json pageData(const mqf2vxb::VxbFile& file, const scene::Scene& scene, const std::string& name,
              double framesPerSecond);

}  // namespace vxbtool::view
