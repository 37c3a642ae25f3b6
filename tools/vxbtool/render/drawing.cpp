#include "vxbtool/render/drawing.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace vxbtool::render {
namespace {

using scene::Blend;

/// The light comes from the viewer's upper left.
constexpr Vector3 lightFromViewer{-0.48F, 0.64F, 0.6F};

constexpr float half = 0.5F;
constexpr float quarter = 0.25F;

/// How a blended colour meets what is there. Alpha tells how much of the background is left: half
/// leaves half of it, added light all, and what is subtracted darkens even where nothing is.
void setBlend(const Gl& gl, Blend blend) {
    const bool subtract = blend == Blend::subtract;
    gl.blendEquationSeparate(subtract ? GL_FUNC_REVERSE_SUBTRACT : GL_FUNC_ADD, GL_FUNC_ADD);
    switch (blend) {
    case Blend::half:
        gl.blendColor(half, half, half, half);
        gl.blendFuncSeparate(GL_CONSTANT_ALPHA, GL_ONE_MINUS_CONSTANT_ALPHA, GL_CONSTANT_ALPHA,
                             GL_ONE_MINUS_CONSTANT_ALPHA);
        break;
    case Blend::addQuarter:
        gl.blendColor(quarter, quarter, quarter, quarter);
        gl.blendFuncSeparate(GL_CONSTANT_ALPHA, GL_ONE, GL_ZERO, GL_ONE);
        break;
    case Blend::subtract:
        gl.blendFuncSeparate(GL_ONE, GL_ONE, GL_ONE_MINUS_DST_ALPHA, GL_ONE);
        break;
    default: gl.blendFuncSeparate(GL_ONE, GL_ONE, GL_ZERO, GL_ONE); break;
    }
}

/// An offset into a buffer, as OpenGL takes it.
const void* bufferOffset(std::size_t bytes) {
    return reinterpret_cast<const void*>(bytes);  // NOLINT(performance-no-int-to-ptr)
}

void setAttribute(const Gl& gl, Attribute attribute, GLint number, GLenum type,
                  std::size_t offset) {
    gl.enableVertexAttribArray(attribute);
    gl.vertexAttribPointer(attribute, number, type, type == GL_UNSIGNED_BYTE ? GL_TRUE : GL_FALSE,
                           sizeof(Vertex), bufferOffset(offset));
}

}  // namespace

Drawing::Drawing(const Gl& gl, const scene::Scene& scene, const Triangles& triangles, bool twoSides)
    : gl_(gl),
      scene_(scene),
      triangles_(triangles),
      program_(gl),
      state_(gl.genVertexArrays, gl.deleteVertexArrays),
      vertices_(gl.genBuffers, gl.deleteBuffers),
      order_(gl.genBuffers, gl.deleteBuffers) {
    upload();
    uploadPictures();
    gl.enable(GL_DEPTH_TEST);
    gl.depthFunc(GL_LEQUAL);
    gl.frontFace(GL_CW);
    if (!twoSides) {
        gl.enable(GL_CULL_FACE);
    }
    // Each sample gets its own texel, so that textures are smooth too; a driver of version 3.1 smooths
    // edges alone.
    GLint major = 0, minor = 0;
    gl.getIntegerv(GL_MAJOR_VERSION, &major);
    gl.getIntegerv(GL_MINOR_VERSION, &minor);
    if ((major > 3 || minor >= 2) && gl.minSampleShading != nullptr) {
        gl.enable(GL_SAMPLE_SHADING);
        gl.minSampleShading(1);
    }
    gl.checkErrors();
}

void Drawing::upload() {
    gl_.bindVertexArray(state_.get());
    gl_.bindBuffer(GL_ARRAY_BUFFER, vertices_.get());
    gl_.bufferData(GL_ARRAY_BUFFER,
                   static_cast<GLsizeiptr>(triangles_.vertices.size() * sizeof(Vertex)),
                   triangles_.vertices.data(), GL_STATIC_DRAW);
    setAttribute(gl_, placeAttribute, 3, GL_FLOAT, offsetof(Vertex, place));
    setAttribute(gl_, normalAttribute, 3, GL_FLOAT, offsetof(Vertex, normal));
    setAttribute(gl_, colourAttribute, 4, GL_UNSIGNED_BYTE, offsetof(Vertex, colour));
    setAttribute(gl_, texelAttribute, 2, GL_FLOAT, offsetof(Vertex, texel));
    gl_.bindBuffer(GL_ELEMENT_ARRAY_BUFFER, order_.get());
}

void Drawing::uploadPictures() {
    for (const scene::Picture& picture : scene_.pictures) {
        const GlName& name = pictures_.emplace_back(gl_.genTextures, gl_.deleteTextures);
        gl_.bindTexture(GL_TEXTURE_2D, name.get());
        gl_.texImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, static_cast<GLsizei>(picture.width),
                       static_cast<GLsizei>(picture.height), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                       picture.texels.data());
        gl_.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl_.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
}

void Drawing::useLook(std::uint32_t number) const {
    const scene::Look& look = scene_.looks[number];
    Program::Look program;
    program.lit = look.lit;
    program.brightnessAsAlpha = look.blend == Blend::subtract;
    if (look.picture) {
        const scene::Picture& picture = scene_.pictures[*look.picture];
        program.textured = true;
        program.colourFactor = 255.0F / 128;
        program.width = static_cast<float>(picture.width);
        program.height = static_cast<float>(picture.height);
        gl_.bindTexture(GL_TEXTURE_2D, pictures_[*look.picture].get());
        const GLint wrap = look.repeats ? GL_REPEAT : GL_CLAMP_TO_EDGE;
        gl_.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
        gl_.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
    }
    program_.setLook(program);
}

void Drawing::draw(const Camera& camera, const PixelArea& area) const {
    program_.setView(camera.matrix(area), camera.fromViewer(lightFromViewer));
    gl_.disable(GL_BLEND);
    gl_.depthMask(GL_TRUE);
    for (const Run& run : triangles_.opaque) {
        useLook(run.look);
        gl_.drawArrays(GL_TRIANGLES, static_cast<GLint>(run.firstVertex),
                       static_cast<GLsizei>(run.vertexNum));
    }
    drawSeeThrough(camera);
    gl_.checkErrors();
}

void Drawing::drawSeeThrough(const Camera& camera) const {
    const std::vector<SeeThrough>& all = triangles_.seeThrough;
    std::vector<float> depths;
    depths.reserve(all.size());
    for (const SeeThrough& each : all) {
        depths.push_back(camera.depth(each.middle));
    }
    std::vector<std::uint32_t> order(all.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::stable_sort(order, std::greater{}, [&](std::uint32_t i) { return depths[i]; });

    std::vector<std::uint32_t> indices;
    std::vector<Run> runs;  // of the indices
    for (const std::uint32_t i : order) {
        const Run& run = all[i].run;
        if (runs.empty() || runs.back().look != run.look) {
            runs.push_back({run.look, static_cast<std::uint32_t>(indices.size()), 0});
        }
        runs.back().vertexNum += run.vertexNum;
        for (std::uint32_t k = 0; k < run.vertexNum; ++k) {
            indices.push_back(run.firstVertex + k);
        }
    }
    gl_.bufferData(GL_ELEMENT_ARRAY_BUFFER,
                   static_cast<GLsizeiptr>(indices.size() * sizeof(std::uint32_t)), indices.data(),
                   GL_STREAM_DRAW);
    gl_.enable(GL_BLEND);
    gl_.depthMask(GL_FALSE);
    for (const Run& run : runs) {
        useLook(run.look);
        setBlend(gl_, scene_.looks[run.look].blend);
        const std::size_t offset = run.firstVertex * sizeof(std::uint32_t);
        gl_.drawElements(GL_TRIANGLES, static_cast<GLsizei>(run.vertexNum), GL_UNSIGNED_INT,
                         bufferOffset(offset));
    }
}

}  // namespace vxbtool::render
