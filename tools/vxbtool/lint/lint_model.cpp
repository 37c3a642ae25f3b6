#include "vxbtool/lint/lint_model.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "run/convert.h"
#include "vxbtool/lint/findings.h"
#include "vxbtool/lint/model_checks.h"
#include "vxbtool/lint/text_checks.h"
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

/// One conversion that is watched, as far as it gets.
class WatchedConversion {
public:
    WatchedConversion(const std::string& mqfName, float scale, InputFiles& files)
        : files_(files), inputs_(files, trace) {
        RunOptions options;
        options.scale = scale;
        try {
            run(mqfName, options);
        } catch (const Report& caught) {
            report = caught;
        }
    }

    Trace trace;
    Model model;
    Table<PolygonRecord> polygons{"Polygon Data Base"};  ///< as the GEO file has them
    bool read = false;
    bool organised = false;
    std::optional<Report> report;  ///< what ended the conversion

private:
    void run(const std::string& mqfName, const RunOptions& options) {
        withMemory([&] {
            readModel(mqfName, inputs_, model);
            read = true;
            polygons = model.polygons;
            organiseModel(options, model);
            organised = true;
            NoOutputs outputs;
            writeModel(model, options, files_, outputs);
        });
    }

    InputFiles& files_;
    Inputs inputs_;
};

/// The text of a line of a file that was read.
std::string sourceLine(const Trace& trace, const Place& place) {
    for (const TracedFile& file : trace.files()) {
        if (file.name != place.file || place.line == 0) {
            continue;
        }
        std::string_view rest = file.text;
        for (std::int64_t line = 1; line < place.line; ++line) {
            rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
        }
        return std::string(shownLine(rest.substr(0, rest.find('\n'))));
    }
    return {};
}

ReportedFinding errorFinding(const Report& report, const std::string& mqfName, const Trace& trace) {
    const Place& place = report.place();
    ReportedFinding finding;
    finding.code = kind::cannotConvert.code;
    finding.severity = kind::cannotConvert.severity;
    finding.text =
        fmt::format(fmt::runtime(kind::cannotConvert.text), fmt::arg("cause", report.cause()));
    finding.file = place.file.empty() ? mqfName : place.file;
    finding.line = place.line;
    finding.column = place.column;
    finding.source = sourceLine(trace, place);
    return finding;
}

}  // namespace

std::vector<ReportedFinding> lintModel(const std::string& mqfName, float scale, InputFiles& files) {
    const WatchedConversion conversion(mqfName, scale, files);
    const Trace& trace = conversion.trace;
    Findings findings;
    checkText(trace, conversion.read, findings);
    if (conversion.organised) {
        const SourceMap source(trace, conversion.model);
        const LintedModel linted{conversion.model, conversion.polygons, scale, source};
        checkGeometry(linted, findings);
        checkMaterials(linted, findings);
        checkTextures(linted, findings);
        checkHierarchy(linted, findings);
        checkMeshes(linted, findings);
        checkMotions(linted, findings);
    }

    std::vector<ReportedFinding> found;
    if (conversion.report) {
        found.push_back(errorFinding(*conversion.report, mqfName, trace));
    }
    std::vector<ReportedFinding> ordered = std::move(findings).inOrder(trace);
    std::move(ordered.begin(), ordered.end(), std::back_inserter(found));
    return found;
}

}  // namespace vxbtool::lint
