#pragma once

#include "vxbtool/model_text/model_text.h"
#include "vxbtool/model_text/text_file.h"

namespace vxbtool::model_text {

// What stands in each component file of a model, its comment first.

void writeGeometry(const Geometry& geometry, const std::string& comment, TextFile& file);
void writeMaterials(const Materials& materials, const std::string& comment, TextFile& file);
void writeHierarchy(const Hierarchy& hierarchy, const std::string& comment, TextFile& file);
void writeMeshes(const Meshes& meshes, const std::string& comment, TextFile& file);
void writeMotion(const Motion& motion, TextFile& file);
void writeTexture(const Texture& texture, TextFile& file);

}  // namespace vxbtool::model_text
