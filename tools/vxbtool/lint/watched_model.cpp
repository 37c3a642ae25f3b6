#include "vxbtool/lint/watched_model.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

#include "vxbtool/lint/fault_checks.h"
#include "vxbtool/lint/findings.h"
#include "vxbtool/lint/model_checks.h"
#include "vxbtool/lint/text_checks.h"
#include "vxbtool/shared/file_kind.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

std::size_t indexOf(ModelPart part) { return static_cast<std::size_t>(part); }

/// The line of the MQF file that names a file.
SourcePlace wantedAt(const TracedFile& mqf, const std::string& name) {
    for (const TracedLine& line : mqf.lines) {
        const std::size_t value = line.text.find('=');
        if (line.scanned && value != std::string_view::npos &&
            line.text.substr(value + 1).starts_with(name)) {
            return {&mqf, line.offset};
        }
    }
    return {&mqf, 0};
}

/// Fills in the line of an error that a reader told, and the column of the token that it took last, or
/// of the line's first word.
void placeError(const TracedFile& file, ReportedFinding& finding) {
    if (finding.line == 0) {
        return;
    }
    finding.source = sourceLine(file, finding.line);
    if (!file.tokens.empty()) {
        ReportedFinding token;
        placeFinding({&file, file.tokens.back().offset}, token);
        finding.column = token.line == finding.line ? token.column : 0;
    }
    const std::size_t first = finding.source.find_first_not_of(" \t");
    if (finding.column == 0 && first != std::string::npos) {
        finding.column = static_cast<std::int64_t>(first) + 1;
    }
}

}  // namespace

void WatchedModel::make(const std::string& mqfName, const RunOptions& options, InputFiles& files) {
    mqfName_ = mqfName;
    scale_ = options.scale;
    Inputs inputs(files, trace_);
    readParts(mqfName, inputs);
    auto* const failed = std::find_if(failed_.begin(), failed_.end(),
                                      [](const auto& report) { return report.has_value(); });
    polygons_ = model_.polygons;
    if (failed != failed_.end()) {
        throw Report(**failed);
    }
    organiseModel(options, model_);
    organised_ = true;
}

void WatchedModel::readParts(const std::string& mqfName, Inputs& inputs) {
    for (const ModelPart part : modelParts) {
        PartFiles& files = files_[indexOf(part)];
        files.first = trace_.readings().size();
        if (canBeRead(part)) {
            try {
                readPart(part, mqfName, inputs, model_);
            } catch (const Report& report) {
                failed_[indexOf(part)] = report;
            }
        }
        trace_.endPart(hasFailed(part));
        files.end = trace_.readings().size();
    }
}

/// Whether the parts that this one counts on were read.
bool WatchedModel::canBeRead(ModelPart part) const {
    if (hasFailed(ModelPart::description)) {
        return false;
    }
    const bool vertices = !hasFailed(ModelPart::geometry) || !model_.vertices.empty();
    switch (part) {
    case ModelPart::coordinates: return vertices;
    case ModelPart::groups: return vertices && !hasFailed(ModelPart::coordinates);
    default: return true;
    }
}

std::vector<ReportedFinding> WatchedModel::findingsOf(const Report* report) const {
    std::vector<ReportedFinding> errors;
    for (const ModelPart part : modelParts) {
        if (hasFailed(part)) {
            errors.push_back(errorFinding(*failed_[indexOf(part)]));
        }
    }
    if (trace_.files().empty()) {
        if (errors.empty() && report != nullptr) {
            errors.push_back(errorFinding(*report));
        }
        return errors;
    }
    Findings findings;
    checkText(trace_, findings);
    if (hasFailed(ModelPart::description)) {
        std::ranges::move(std::move(findings).inOrder(trace_), std::back_inserter(errors));
        return errors;
    }
    const SourceMap source(trace_, files_, model_);
    const LintedModel linted{model_, polygons_, scale_, source};
    if (report != nullptr) {
        checkFaults(linted, organised_, findings);
    }
    if (organised_) {
        checkGeometry(linted, findings);
        checkMaterials(linted, findings);
        checkShapes(linted, findings);
        checkImages(linted, findings);
        checkTextures(linted, findings);
        checkHierarchy(linted, findings);
        checkMeshes(linted, findings);
        checkMotions(linted, findings);
    }
    std::vector<ReportedFinding> found = std::move(findings).inOrder(trace_);
    const bool explained =
        !errors.empty() || std::ranges::any_of(found, [](const ReportedFinding& finding) {
            return finding.severity == Severity::error;
        });
    if (report != nullptr && !explained) {
        errors.push_back(errorFinding(*report));
    }
    std::ranges::move(found, std::back_inserter(errors));
    return inOrderOfFiles(std::move(errors));
}

/// The findings in the order of the files that were read and of their contents. Images count as the
/// file that names them.
std::vector<ReportedFinding>
WatchedModel::inOrderOfFiles(std::vector<ReportedFinding> findings) const {
    std::map<std::string, std::size_t> position;
    for (const TracedFile& file : trace_.files()) {
        position.emplace(file.name, position.size());
    }
    const auto key = [&](const ReportedFinding& finding) {
        const auto found = position.find(finding.file);
        return std::tuple(found == position.end() ? 0 : found->second, finding.line);
    };
    std::ranges::stable_sort(findings, {}, key);
    return findings;
}

ReportedFinding WatchedModel::errorFinding(const Report& report) const {
    const Place& place = report.place();
    ReportedFinding finding;
    finding.code = kind::cannotConvert.code;
    finding.severity = kind::cannotConvert.severity;
    finding.text = report.cause();
    finding.file = place.file.empty() ? mqfName_ : place.file;
    finding.line = place.line;
    finding.column = place.column;
    const auto file = std::ranges::find(trace_.files(), finding.file, &TracedFile::name);
    if (file != trace_.files().end()) {
        placeError(*file, finding);
        if (&*file == &trace_.files().front() && !file->whole && file->lines.size() == 1) {
            const std::string kind = fileKind(file->text);
            finding.text = file->text.starts_with("@MQF") || kind.empty() ? finding.text : kind;
        }
    } else if (!trace_.files().empty() && !trace_.wasOpened(finding.file)) {
        // A file that was not read has no line to show, but the line that wanted it.
        const SourcePlace wanted = wantedAt(trace_.files().front(), finding.file);
        if (wanted.offset > 0) {
            finding.text = fmt::format("{}: {}", finding.file, report.cause());
            finding.missing = std::exchange(finding.file, mqfName_);
            placeFinding(wanted, finding);
        }
    }
    return finding;
}

}  // namespace vxbtool::lint
