#include "vxbtool/lint/lint_model.h"

#include <memory>
#include <new>
#include <optional>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "vxbtool/lint/findings.h"
#include "vxbtool/lint/watched_model.h"
#include "writers/model_writer.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

/// Takes an output and keeps nothing of it.
class NoFile final : public OutputFile {
public:
    [[nodiscard]] bool write(std::string_view /*bytes*/) override { return true; }
    [[nodiscard]] bool close() override { return true; }
};

/// Outputs that go nowhere.
class NoOutputs final : public OutputFiles {
public:
    [[nodiscard]] std::unique_ptr<OutputFile> create(const std::string& /*name*/) override {
        return std::make_unique<NoFile>();
    }
};

}  // namespace

std::vector<ReportedFinding> lintModel(const std::string& mqfName, float scale, InputFiles& files) {
    RunOptions options;
    options.scale = scale;
    WatchedModel watched;
    std::optional<Report> failure;
    try {
        withMemory([&] {
            watched.make(mqfName, options, files);
            NoOutputs outputs;
            writeModel(watched.model(), options, files, outputs);
        });
    } catch (const Report& report) {
        failure = report;
    }
    std::vector<ReportedFinding> found;
    try {
        found = failure ? watched.findings(*failure) : watched.findings();
    } catch (const std::bad_alloc&) {  // the other models of the call may fit
        ReportedFinding& finding = found.emplace_back();
        finding.code = kind::cannotConvert.code;
        finding.severity = kind::cannotConvert.severity;
        finding.text = "there is not enough memory to look at this model";
        finding.file = mqfName;
    }
    return found;
}

}  // namespace vxbtool::lint
