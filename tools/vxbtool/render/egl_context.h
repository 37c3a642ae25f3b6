#pragma once

#include <memory>

#include <EGL/egl.h>

#include "vxbtool/render/gl_functions.h"

namespace vxbtool::render {

/// OpenGL ES 3 without window and display, current in this thread as long as it lives. At most one
/// lives at a time.
class EglContext {
public:
    /// Throws a RenderFault that tells what to install when no driver is found.
    EglContext();
    EglContext(const EglContext&) = delete;
    EglContext& operator=(const EglContext&) = delete;
    ~EglContext();

    [[nodiscard]] const Gl& gl() const { return *gl_; }

private:
    struct Egl;

    bool openDisplay(EGLDisplay display);
    void close();

    std::unique_ptr<Egl> egl_;
    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLContext context_ = EGL_NO_CONTEXT;
    std::unique_ptr<Gl> gl_;
};

}  // namespace vxbtool::render
