#pragma once

#include <array>

#include "vxbtool/render/gl_functions.h"

namespace vxbtool::render {

/// Where the attributes of a vertex go.
enum Attribute : GLuint { placeAttribute, normalAttribute, colourAttribute, texelAttribute };

/// The shaders of everything that is drawn. It is in use as long as it lives.
class Program {
public:
    explicit Program(const Gl& gl);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    /// From the model to the picture, column by column, and the direction in which the light lies.
    void setView(const std::array<float, 16>& matrix, const std::array<float, 3>& light) const;

    /// How polygons of one look are drawn.
    struct Look {
        bool textured = false;
        bool lit = false;
        /// The alpha of what is drawn is its brightness, not 1.
        bool brightnessAsAlpha = false;
        float colourFactor = 1;  ///< on vertex colours, of which 255 comes as 1
        float width = 1;         ///< of the picture, in texels
        float height = 1;
    };
    void setLook(const Look& look) const;

private:
    GLint place(const char* uniform) const { return gl_.getUniformLocation(program_, uniform); }

    const Gl& gl_;
    GLuint program_;
    GLint matrix_ = -1;
    GLint light_ = -1;
    GLint textured_ = -1;
    GLint lit_ = -1;
    GLint brightnessAsAlpha_ = -1;
    GLint colourFactor_ = -1;
    GLint pictureSize_ = -1;
};

}  // namespace vxbtool::render
