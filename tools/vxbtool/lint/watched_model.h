#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "base/diagnostics.h"
#include "files/input_files.h"
#include "model/model.h"
#include "model/options.h"
#include "run/convert.h"
#include "vxbtool/lint/source_map.h"
#include "vxbtool/lint/trace.h"
#include "vxbtool/shared/finding_report.h"

namespace vxbtool::lint {

/// A model on its way through a conversion, up to where that would write it. Lint looks on, so that
/// every input is read once for both.
class WatchedModel {
public:
    /// Reads and organises the model. Throws the first Report when that fails; what can be read is
    /// read all the same.
    void make(const std::string& mqfName, const mqf2vxb::RunOptions& options,
              mqf2vxb::InputFiles& files);

    [[nodiscard]] const mqf2vxb::Model& model() const { return model_; }
    [[nodiscard]] const Trace& trace() const { return trace_; }
    /// Everything that converts but is surely not meant, as far as make() got.
    [[nodiscard]] std::vector<ReportedFinding> findings() const { return findingsOf(nullptr); }
    /// The same of a model that failed with this report, here or while it was written: the causes of
    /// that too, as errors, and causes in other files that would be next.
    [[nodiscard]] std::vector<ReportedFinding> findings(const mqf2vxb::Report& report) const {
        return findingsOf(&report);
    }

private:
    [[nodiscard]] std::vector<ReportedFinding> findingsOf(const mqf2vxb::Report* report) const;
    [[nodiscard]] bool canBeRead(mqf2vxb::ModelPart part) const;
    [[nodiscard]] bool hasFailed(mqf2vxb::ModelPart part) const {
        return failed_[static_cast<std::size_t>(part)].has_value();
    }
    void readParts(const std::string& mqfName, mqf2vxb::Inputs& inputs);
    [[nodiscard]] std::vector<ReportedFinding>
    inOrderOfFiles(std::vector<ReportedFinding> findings) const;
    [[nodiscard]] ReportedFinding errorFinding(const mqf2vxb::Report& report) const;

    std::string mqfName_;
    Trace trace_;
    FilesOfParts files_;
    std::array<std::optional<mqf2vxb::Report>, mqf2vxb::modelParts.size()> failed_;
    mqf2vxb::Model model_;
    mqf2vxb::Table<mqf2vxb::PolygonRecord> polygons_{"Polygon Data Base"};  // as in the GEO file
    float scale_ = 1.0F;
    bool organised_ = false;
};

}  // namespace vxbtool::lint
