#include "vxbtool/lint/lint.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "vxbtool/lint/catalogue.h"
#include "vxbtool/lint/lint_model.h"
#include "vxbtool/shared/scale_option.h"
#include "vxbtool/shared/standard_streams.h"

namespace vxbtool {
namespace {

constexpr const char* lintExamples = R"(Examples:
  vxbtool lint car.mqf                      report what is surely not meant
  vxbtool lint --scale 16 car.mqf           will the model wrap at this scale?
  vxbtool lint --werror -W L012 *.mqf       fail on any finding but one kind
  vxbtool lint --json car.mqf > lint.json   report for another program)";

struct LintArguments {
    std::vector<std::string> models;
    std::string scale = "1";
    std::string base;
    ReportOptions report;
};

ExitStatus runLint(const LintArguments& arguments) {
    const float scale = parseScale(arguments.scale);
    std::vector<FileReport> reports;
    for (const std::string& name : arguments.models) {
        const std::string model = inputPath(name);
        ModelFiles files(arguments.base);
        reports.push_back(
            lintReport(model, lint::lintModel(model, scale, files), files, arguments.report));
    }
    return printReport("lint", reports, arguments.report);
}

}  // namespace

FileReport lintReport(const std::string& model, std::vector<ReportedFinding> findings,
                      const ModelFiles& files, const ReportOptions& options) {
    FileReport report{model, std::move(findings)};
    for (ReportedFinding& finding : report.findings) {
        finding.file = files.pathOf(finding.file);
        if (!finding.missing.empty()) {
            finding.text += files.baseHint(finding.missing);
        }
    }
    selectFindings(report.findings, options);
    return report;
}

void addLint(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("lint", "Find what converts but is surely not meant");
    const auto arguments = std::make_shared<LintArguments>();
    command->add_option("MODEL", arguments->models, "The model files (.mqf)")
        ->option_text("...")
        ->required();
    command->add_option("--scale", arguments->scale, "Factor on every vertex coordinate")
        ->option_text("F");
    command
        ->add_option("--base", arguments->base, "Open relative names in the model from this folder")
        ->option_text("DIR");
    addReportOptions(*command, arguments->report, lint::kinds);
    command->footer(lintExamples);
    command->callback([arguments, &session] { session.status = runLint(*arguments); });
}

}  // namespace vxbtool
