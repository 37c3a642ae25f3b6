#pragma once

#include "model/model.h"
#include "vxbtool/lint/findings.h"
#include "vxbtool/lint/source_map.h"

namespace vxbtool::lint {

/// A model that was read and organised.
struct LintedModel {
    const mqf2vxb::Model& model;
    /// The polygons as the GEO file has them; organisation renumbers the model's own.
    const mqf2vxb::Table<mqf2vxb::PolygonRecord>& polygons;
    float scale;
    const SourceMap& source;
};

// One function for each subject; each passes over its tables a fixed number of times.
void checkGeometry(const LintedModel& linted, Findings& findings);
void checkMaterials(const LintedModel& linted, Findings& findings);
void checkShapes(const LintedModel& linted, Findings& findings);
void checkImages(const LintedModel& linted, Findings& findings);
void checkTextures(const LintedModel& linted, Findings& findings);
void checkHierarchy(const LintedModel& linted, Findings& findings);
void checkMeshes(const LintedModel& linted, Findings& findings);
void checkMotions(const LintedModel& linted, Findings& findings);

}  // namespace vxbtool::lint
