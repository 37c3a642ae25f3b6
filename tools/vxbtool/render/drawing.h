#pragma once

#include <vector>

#include "vxbtool/render/camera.h"
#include "vxbtool/render/gl_functions.h"
#include "vxbtool/render/program.h"
#include "vxbtool/render/triangles.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::render {

/// The triangles and pictures of a scene in the driver, ready to be drawn into whatever is bound.
class Drawing {
public:
    /// Triangles that face away from the viewer are drawn too when they have `twoSides`.
    Drawing(const Gl& gl, const scene::Scene& scene, const Triangles& triangles, bool twoSides);

    /// The opaque ones first, then the others from the farthest to the nearest.
    void draw(const Camera& camera, const PixelArea& area) const;

private:
    void upload();
    void uploadPictures();
    void useLook(std::uint32_t number) const;
    void drawSeeThrough(const Camera& camera) const;

    const Gl& gl_;
    const scene::Scene& scene_;
    const Triangles& triangles_;
    Program program_;
    GlName state_;
    GlName vertices_;
    GlName order_;  // of the vertices of what is not opaque
    std::vector<GlName> pictures_;
};

}  // namespace vxbtool::render
