#include "vxbtool/lint/lint_model.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

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
    RunOptions options;
    options.scale = scale;
    WatchedModel watched;
    std::vector<ReportedFinding> found;
    try {
        withMemory([&] {
            watched.make(mqfName, options, files);
            NoOutputs outputs;
            writeModel(watched.model(), options, files, outputs);
        });
    } catch (const Report& report) {
        found.push_back(errorFinding(report, mqfName, watched.trace()));
    }
    try {
        std::vector<ReportedFinding> ordered = watched.findings();
        std::move(ordered.begin(), ordered.end(), std::back_inserter(found));
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
