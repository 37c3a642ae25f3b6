#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "vxbtool/import/geometry.h"
#include "vxbtool/import/model_builder.h"
#include "vxbtool/import/motions.h"
#include "vxbtool/import/nodes.h"
#include "vxbtool/import/shape.h"
#include "vxbtool/import/source.h"
#include "vxbtool/import/textures.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::importing {

struct ImportOptions {
    double scale = 1000;  ///< units for one of the source
    bool fit = false;     ///< take the largest scale that fits where this one is too large
    UpAxis up = UpAxis::y;
    bool unlit = false;
    bool strips = false;
    bool motions = true;
    std::optional<double> fps;
    ShapeOptions shape;
    TextureOptions textures;
};

/// What became of a model, for the report.
struct ImportReport {
    std::string format;  ///< what Assimp calls the source's
    double scale = 0;    ///< the one that was taken
    bool fitted = false;
    std::size_t coordinates = 0;
    std::size_t joints = 0;
    SurfaceCounts surface;
    Dropped dropped;
    Textures textures;
    Motions motions;
};

struct ImportedModel {
    model_text::ModelText text;
    ImportReport report;
};

/// Makes a model of a source that was read from `file`, beside which its pictures lie. `step` is told
/// what is done next. Throws ImportFault when the model goes beyond what its files can hold.
ImportedModel importModel(const Source& source, const std::string& file,
                          const ImportOptions& options,
                          const std::function<void(const char*)>& step);

}  // namespace vxbtool::importing
