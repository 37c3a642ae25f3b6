#include "vxbtool/render/gl_functions.h"

#include <fmt/core.h>

namespace vxbtool::render {

void Gl::checkErrors() const {
    const GLenum error = getError();
    if (error == GL_OUT_OF_MEMORY) {
        throw RenderFault("the driver has not enough memory for the picture");
    }
    if (error != GL_NO_ERROR) {
        throw RenderFault(fmt::format("the driver reports error 0x{:04x}", error));
    }
}

}  // namespace vxbtool::render
