#pragma once

#include <string>
#include <vector>

#include "files/input_files.h"
#include "model/model.h"
#include "model/options.h"
#include "vxbtool/lint/trace.h"
#include "vxbtool/shared/finding_report.h"

namespace vxbtool::lint {

/// A model on its way through a conversion, up to where that would write it. Lint looks on, so that
/// every input is read once for both.
class WatchedModel {
public:
    /// Reads and organises the model. Throws a Report when that fails.
    void make(const std::string& mqfName, const mqf2vxb::RunOptions& options,
              mqf2vxb::InputFiles& files);

    [[nodiscard]] const mqf2vxb::Model& model() const { return model_; }
    [[nodiscard]] const Trace& trace() const { return trace_; }
    /// Everything that converts but is probably unintended, as far as make() got.
    [[nodiscard]] std::vector<ReportedFinding> findings() const;

private:
    Trace trace_;
    mqf2vxb::Model model_;
    mqf2vxb::Table<mqf2vxb::PolygonRecord> polygons_{"Polygon Data Base"};  // as in the GEO file
    float scale_ = 1.0F;
    bool read_ = false;
    bool organised_ = false;
};

}  // namespace vxbtool::lint
