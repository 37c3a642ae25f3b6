#include "vxbtool/render/request.h"

namespace vxbtool::render {

std::string drawPng(const scene::Scene& /*scene*/, const Request& /*request*/) {
    throw RenderFault("this vxbtool was built without pictures; on Debian, install libegl-dev, "
                      "libgles-dev and libpng-dev, and build it again with "
                      "-DMQF2VXB_BUILD_RENDER=ON");
}

}  // namespace vxbtool::render
