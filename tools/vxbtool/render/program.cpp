#include "vxbtool/render/program.h"

#include <string>

namespace vxbtool::render {
namespace {

constexpr const char* vertexShader = R"(#version 300 es
layout(location = 0) in vec3 place;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec4 colour;
layout(location = 3) in vec2 texel;

uniform mat4 matrix;
uniform float colourFactor;
uniform vec2 pictureSize;

centroid out vec3 outward;
centroid out vec3 shade;
centroid out vec2 pictureAt;

void main() {
    gl_Position = matrix * vec4(place, 1.0);
    outward = normal;
    shade = colour.rgb * colourFactor;
    pictureAt = texel / pictureSize;
}
)";

// Half of the light comes from everywhere, as much as from the one light at its brightest, so that
// what the light misses still has its colour.
constexpr const char* fragmentShader = R"(#version 300 es
precision highp float;

uniform sampler2D picture;
uniform bool textured;
uniform bool lit;
uniform bool brightnessAsAlpha;
uniform vec3 light;

centroid in vec3 outward;
centroid in vec3 shade;
centroid in vec2 pictureAt;

out vec4 pixel;

void main() {
    vec3 colour = shade;
    if (textured) {
        vec4 texel = texture(picture, pictureAt);
        if (texel.a < 0.5) {
            discard;
        }
        colour *= texel.rgb;
    }
    if (lit) {
        vec3 normal = normalize(gl_FrontFacing ? outward : -outward);
        colour *= 0.5 + 0.6 * max(dot(normal, light), 0.0);
    }
    colour = min(colour, vec3(1.0));
    pixel = vec4(colour, brightnessAsAlpha ? dot(colour, vec3(1.0 / 3.0)) : 1.0);
}
)";

void addShader(const Gl& gl, GLuint program, GLenum kind, const char* source) {
    const GLuint shader = gl.createShader(kind);
    gl.shaderSource(shader, 1, &source, nullptr);
    gl.compileShader(shader);
    gl.attachShader(program, shader);
    gl.deleteShader(shader);  // it lives on as long as the program has it
}

}  // namespace

Program::Program(const Gl& gl) : gl_(gl), program_(gl.createProgram()) {
    addShader(gl, program_, GL_VERTEX_SHADER, vertexShader);
    addShader(gl, program_, GL_FRAGMENT_SHADER, fragmentShader);
    gl.linkProgram(program_);
    GLint linked = GL_FALSE;
    gl.getProgramiv(program_, GL_LINK_STATUS, &linked);
    if (linked != GL_TRUE) {
        constexpr GLsizei most = 1000;
        std::string log(most, '\0');
        GLsizei length = 0;
        gl.getProgramInfoLog(program_, most, &length, log.data());
        gl.deleteProgram(program_);
        log.resize(static_cast<std::size_t>(length));
        throw RenderFault("the driver does not take the shaders: " + log);
    }
    gl.useProgram(program_);
    matrix_ = place("matrix");
    light_ = place("light");
    textured_ = place("textured");
    lit_ = place("lit");
    brightnessAsAlpha_ = place("brightnessAsAlpha");
    colourFactor_ = place("colourFactor");
    pictureSize_ = place("pictureSize");
}

Program::~Program() {
    gl_.useProgram(0);
    gl_.deleteProgram(program_);
}

void Program::setView(const std::array<float, 16>& matrix,
                      const std::array<float, 3>& light) const {
    gl_.uniformMatrix4fv(matrix_, 1, GL_FALSE, matrix.data());
    gl_.uniform3fv(light_, 1, light.data());
}

void Program::setLook(const Look& look) const {
    gl_.uniform1i(textured_, look.textured ? 1 : 0);
    gl_.uniform1i(lit_, look.lit ? 1 : 0);
    gl_.uniform1i(brightnessAsAlpha_, look.brightnessAsAlpha ? 1 : 0);
    gl_.uniform1f(colourFactor_, look.colourFactor);
    gl_.uniform2f(pictureSize_, look.width, look.height);
}

}  // namespace vxbtool::render
