#pragma once

#include <string>

#include <GLES3/gl32.h>

#include "vxbtool/render/fault.h"

namespace vxbtool::render {

/// Any function of a driver. The caller gives it its type.
using Function = void (*)();

/// How functions are found by their names; null for those that are not there.
using FunctionFinder = Function (*)(const char* name);

/// What the drawing needs of OpenGL ES. The functions come from the driver that is found at run time:
/// the program is linked with none, so that it starts where there is none.
class Gl {
    /// Takes the type of whatever it is assigned to.
    struct Found {
        Function function;

        template <class Typed>
        operator Typed() const {  // NOLINT(google-explicit-constructor)
            return reinterpret_cast<Typed>(function);
        }
    };

    FunctionFinder find_;

    [[nodiscard]] Found find(const char* name) const {
        const Function function = find_(name);
        if (function == nullptr) {
            throw RenderFault(std::string("the driver lacks ") + name);
        }
        return {function};
    }

public:
    explicit Gl(FunctionFinder finder) : find_(finder) {}

    PFNGLATTACHSHADERPROC attachShader = find("glAttachShader");
    PFNGLBINDBUFFERPROC bindBuffer = find("glBindBuffer");
    PFNGLBINDFRAMEBUFFERPROC bindFramebuffer = find("glBindFramebuffer");
    PFNGLBINDRENDERBUFFERPROC bindRenderbuffer = find("glBindRenderbuffer");
    PFNGLBINDTEXTUREPROC bindTexture = find("glBindTexture");
    PFNGLBINDVERTEXARRAYPROC bindVertexArray = find("glBindVertexArray");
    PFNGLBLENDCOLORPROC blendColor = find("glBlendColor");
    PFNGLBLENDEQUATIONSEPARATEPROC blendEquationSeparate = find("glBlendEquationSeparate");
    PFNGLBLENDFUNCSEPARATEPROC blendFuncSeparate = find("glBlendFuncSeparate");
    PFNGLBLITFRAMEBUFFERPROC blitFramebuffer = find("glBlitFramebuffer");
    PFNGLBUFFERDATAPROC bufferData = find("glBufferData");
    PFNGLCHECKFRAMEBUFFERSTATUSPROC checkFramebufferStatus = find("glCheckFramebufferStatus");
    PFNGLCLEARPROC clear = find("glClear");
    PFNGLCLEARCOLORPROC clearColor = find("glClearColor");
    PFNGLCOMPILESHADERPROC compileShader = find("glCompileShader");
    PFNGLCREATEPROGRAMPROC createProgram = find("glCreateProgram");
    PFNGLCREATESHADERPROC createShader = find("glCreateShader");
    PFNGLDELETEBUFFERSPROC deleteBuffers = find("glDeleteBuffers");
    PFNGLDELETEFRAMEBUFFERSPROC deleteFramebuffers = find("glDeleteFramebuffers");
    PFNGLDELETEPROGRAMPROC deleteProgram = find("glDeleteProgram");
    PFNGLDELETERENDERBUFFERSPROC deleteRenderbuffers = find("glDeleteRenderbuffers");
    PFNGLDELETESHADERPROC deleteShader = find("glDeleteShader");
    PFNGLDELETETEXTURESPROC deleteTextures = find("glDeleteTextures");
    PFNGLDELETEVERTEXARRAYSPROC deleteVertexArrays = find("glDeleteVertexArrays");
    PFNGLDEPTHFUNCPROC depthFunc = find("glDepthFunc");
    PFNGLDEPTHMASKPROC depthMask = find("glDepthMask");
    PFNGLDISABLEPROC disable = find("glDisable");
    PFNGLDRAWARRAYSPROC drawArrays = find("glDrawArrays");
    PFNGLDRAWELEMENTSPROC drawElements = find("glDrawElements");
    PFNGLENABLEPROC enable = find("glEnable");
    PFNGLENABLEVERTEXATTRIBARRAYPROC enableVertexAttribArray = find("glEnableVertexAttribArray");
    PFNGLFRAMEBUFFERRENDERBUFFERPROC framebufferRenderbuffer = find("glFramebufferRenderbuffer");
    PFNGLFRONTFACEPROC frontFace = find("glFrontFace");
    PFNGLGENBUFFERSPROC genBuffers = find("glGenBuffers");
    PFNGLGENFRAMEBUFFERSPROC genFramebuffers = find("glGenFramebuffers");
    PFNGLGENRENDERBUFFERSPROC genRenderbuffers = find("glGenRenderbuffers");
    PFNGLGENTEXTURESPROC genTextures = find("glGenTextures");
    PFNGLGENVERTEXARRAYSPROC genVertexArrays = find("glGenVertexArrays");
    PFNGLGETERRORPROC getError = find("glGetError");
    PFNGLGETINTEGERVPROC getIntegerv = find("glGetIntegerv");
    PFNGLGETPROGRAMINFOLOGPROC getProgramInfoLog = find("glGetProgramInfoLog");
    PFNGLGETPROGRAMIVPROC getProgramiv = find("glGetProgramiv");
    PFNGLGETUNIFORMLOCATIONPROC getUniformLocation = find("glGetUniformLocation");
    PFNGLLINKPROGRAMPROC linkProgram = find("glLinkProgram");
    PFNGLREADPIXELSPROC readPixels = find("glReadPixels");
    PFNGLRENDERBUFFERSTORAGEPROC renderbufferStorage = find("glRenderbufferStorage");
    PFNGLRENDERBUFFERSTORAGEMULTISAMPLEPROC renderbufferStorageMultisample =
        find("glRenderbufferStorageMultisample");
    PFNGLSHADERSOURCEPROC shaderSource = find("glShaderSource");
    PFNGLTEXIMAGE2DPROC texImage2D = find("glTexImage2D");
    PFNGLTEXPARAMETERIPROC texParameteri = find("glTexParameteri");
    PFNGLUNIFORM1FPROC uniform1f = find("glUniform1f");
    PFNGLUNIFORM1IPROC uniform1i = find("glUniform1i");
    PFNGLUNIFORM2FPROC uniform2f = find("glUniform2f");
    PFNGLUNIFORM3FVPROC uniform3fv = find("glUniform3fv");
    PFNGLUNIFORMMATRIX4FVPROC uniformMatrix4fv = find("glUniformMatrix4fv");
    PFNGLUSEPROGRAMPROC useProgram = find("glUseProgram");
    PFNGLVERTEXATTRIBPOINTERPROC vertexAttribPointer = find("glVertexAttribPointer");
    PFNGLVIEWPORTPROC viewport = find("glViewport");
    /// Of OpenGL ES 3.2: null or not to be called before.
    PFNGLMINSAMPLESHADINGPROC minSampleShading =
        reinterpret_cast<PFNGLMINSAMPLESHADINGPROC>(find_("glMinSampleShading"));

    /// Throws a RenderFault when the driver reported an error since the last call.
    void checkErrors() const;
};

/// The name of something in the driver, which is deleted with it.
class GlName {
public:
    using Make = void(GL_APIENTRYP)(GLsizei, GLuint*);
    using Delete = void(GL_APIENTRYP)(GLsizei, const GLuint*);

    GlName(Make make, Delete del) : delete_(del) { make(1, &name_); }
    GlName(const GlName&) = delete;
    GlName& operator=(const GlName&) = delete;
    GlName(GlName&& other) noexcept : delete_(other.delete_), name_(other.name_) {
        other.name_ = 0;
    }
    GlName& operator=(GlName&&) = delete;
    ~GlName() {
        if (name_ != 0) {
            delete_(1, &name_);
        }
    }

    [[nodiscard]] GLuint get() const { return name_; }

private:
    Delete delete_;
    GLuint name_ = 0;
};

}  // namespace vxbtool::render
