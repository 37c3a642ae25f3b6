#include "vxbtool/lint/watched_model.h"

#include "run/convert.h"
#include "vxbtool/lint/findings.h"
#include "vxbtool/lint/model_checks.h"
#include "vxbtool/lint/text_checks.h"

namespace vxbtool::lint {

void WatchedModel::make(const std::string& mqfName, const mqf2vxb::RunOptions& options,
                        mqf2vxb::InputFiles& files) {
    mqf2vxb::Inputs inputs(files, trace_);
    scale_ = options.scale;
    mqf2vxb::readModel(mqfName, inputs, model_);
    read_ = true;
    polygons_ = model_.polygons;
    mqf2vxb::organiseModel(options, model_);
    organised_ = true;
}

std::vector<ReportedFinding> WatchedModel::findings() const {
    Findings findings;
    checkText(trace_, read_, findings);
    if (organised_) {
        const SourceMap source(trace_, model_);
        const LintedModel linted{model_, polygons_, scale_, source};
        checkGeometry(linted, findings);
        checkMaterials(linted, findings);
        checkTextures(linted, findings);
        checkHierarchy(linted, findings);
        checkMeshes(linted, findings);
        checkMotions(linted, findings);
    }
    return std::move(findings).inOrder(trace_);
}

}  // namespace vxbtool::lint
