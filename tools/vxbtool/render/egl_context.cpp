#include "vxbtool/render/egl_context.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <EGL/eglext.h>
#include <dlfcn.h>
#include <fmt/core.h>

namespace vxbtool::render {
namespace {

/// The library is not closed: drivers leave threads and exit handlers behind.
void* eglLibrary() {
    void* library = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw RenderFault(fmt::format("there is no EGL to draw with ({}); on Debian it comes with "
                                      "\"apt-get install libegl1 libgl1-mesa-dri\"",
                                      dlerror()));
    }
    return library;
}

/// Whether a list of names, separated by blanks, has a name.
bool lists(const char* names, std::string_view name) {
    const std::string list = fmt::format(" {} ", names == nullptr ? "" : names);
    return list.find(fmt::format(" {} ", name)) != std::string::npos;
}

}  // namespace

/// The functions of EGL.
struct EglContext::Egl {
    void* library = eglLibrary();
    PFNEGLGETPROCADDRESSPROC getProcAddress =
        reinterpret_cast<PFNEGLGETPROCADDRESSPROC>(dlsym(library, "eglGetProcAddress"));

    /// Null where the library lacks it.
    template <class Typed>
    Typed find(const char* name) const {
        return reinterpret_cast<Typed>(dlsym(library, name));
    }
    template <class Typed>
    Typed findExtension(const char* name) const {
        return reinterpret_cast<Typed>(getProcAddress(name));
    }

    PFNEGLQUERYSTRINGPROC queryString = find<PFNEGLQUERYSTRINGPROC>("eglQueryString");
    PFNEGLINITIALIZEPROC initialize = find<PFNEGLINITIALIZEPROC>("eglInitialize");
    PFNEGLTERMINATEPROC terminate = find<PFNEGLTERMINATEPROC>("eglTerminate");
    PFNEGLBINDAPIPROC bindApi = find<PFNEGLBINDAPIPROC>("eglBindAPI");
    PFNEGLCHOOSECONFIGPROC chooseConfig = find<PFNEGLCHOOSECONFIGPROC>("eglChooseConfig");
    PFNEGLCREATECONTEXTPROC createContext = find<PFNEGLCREATECONTEXTPROC>("eglCreateContext");
    PFNEGLDESTROYCONTEXTPROC destroyContext = find<PFNEGLDESTROYCONTEXTPROC>("eglDestroyContext");
    PFNEGLMAKECURRENTPROC makeCurrent = find<PFNEGLMAKECURRENTPROC>("eglMakeCurrent");
    PFNEGLRELEASETHREADPROC releaseThread = find<PFNEGLRELEASETHREADPROC>("eglReleaseThread");

    [[nodiscard]] bool complete() const {
        return getProcAddress != nullptr && queryString != nullptr && initialize != nullptr &&
               terminate != nullptr && bindApi != nullptr && chooseConfig != nullptr &&
               createContext != nullptr && destroyContext != nullptr && makeCurrent != nullptr &&
               releaseThread != nullptr;
    }

    /// Displays that need no screen, the likeliest first: Mesa's, which any machine can have, and then
    /// the graphics devices of other drivers.
    [[nodiscard]] std::vector<EGLDisplay> displays() const {
        const char* known = queryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
        const auto display =
            findExtension<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
        std::vector<EGLDisplay> found;
        if (display == nullptr || !lists(known, "EGL_EXT_platform_base")) {
            return found;
        }
        if (lists(known, "EGL_MESA_platform_surfaceless")) {
            found.push_back(display(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
        }
        const auto query = findExtension<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
        if (query != nullptr && lists(known, "EGL_EXT_platform_device")) {
            constexpr EGLint most = 16;
            std::array<EGLDeviceEXT, most> devices{};
            EGLint number = 0;
            if (query(most, devices.data(), &number) == EGL_TRUE) {
                for (const EGLDeviceEXT device :
                     std::span(devices).first(static_cast<std::size_t>(number))) {
                    found.push_back(display(EGL_PLATFORM_DEVICE_EXT, device, nullptr));
                }
            }
        }
        return found;
    }
};

EglContext::EglContext() : egl_(std::make_unique<Egl>()) {
    if (egl_->complete()) {
        for (const EGLDisplay display : egl_->displays()) {
            if (openDisplay(display)) {
                gl_ = std::make_unique<Gl>(egl_->getProcAddress);
                return;
            }
        }
    }
    throw RenderFault(
        "there is no driver that draws without a display; on Debian Mesa's comes with "
        "\"apt-get install libegl1 libgl1-mesa-dri\"");
}

EglContext::~EglContext() { close(); }

bool EglContext::openDisplay(EGLDisplay display) {
    if (display == EGL_NO_DISPLAY || egl_->initialize(display, nullptr, nullptr) != EGL_TRUE) {
        return false;
    }
    display_ = display;
    constexpr std::array<EGLint, 5> wanted{EGL_RENDERABLE_TYPE, EGL_OPENGL_ES3_BIT,
                                           EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_NONE};
    constexpr std::array<EGLint, 3> version{EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint number = 0;
    if (lists(egl_->queryString(display, EGL_EXTENSIONS), "EGL_KHR_surfaceless_context") &&
        egl_->bindApi(EGL_OPENGL_ES_API) == EGL_TRUE &&
        egl_->chooseConfig(display, wanted.data(), &config, 1, &number) == EGL_TRUE && number > 0) {
        context_ = egl_->createContext(display, config, EGL_NO_CONTEXT, version.data());
        if (context_ != EGL_NO_CONTEXT &&
            egl_->makeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context_) == EGL_TRUE) {
            return true;
        }
    }
    close();
    return false;
}

void EglContext::close() {
    if (display_ == EGL_NO_DISPLAY) {
        return;
    }
    egl_->makeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (context_ != EGL_NO_CONTEXT) {
        egl_->destroyContext(display_, context_);
    }
    egl_->terminate(display_);
    egl_->releaseThread();
    display_ = EGL_NO_DISPLAY;
    context_ = EGL_NO_CONTEXT;
}

}  // namespace vxbtool::render
