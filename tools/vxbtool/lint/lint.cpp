#include "vxbtool/lint/lint.h"

#include <memory>
#include <new>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "vxbtool/lint/catalogue.h"
#include "vxbtool/lint/lint_model.h"
#include "vxbtool/shared/model_files.h"
#include "vxbtool/shared/scale_option.h"

namespace vxbtool {
namespace {

constexpr const char* lintExamples = R"(Examples:
  vxbtool lint car.mqf                      report what is probably unintended
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
    for (const std::string& model : arguments.models) {
        reports.push_back(lintFile(model, scale, arguments.base, arguments.report));
    }
    return printReport("lint", reports, arguments.report);
}

}  // namespace

FileReport lintFile(const std::string& model, float scale, const std::string& base,
                    const ReportOptions& options) {
    ModelFiles files(base);
    FileReport report{model, {}};
    try {
        report.findings = lint::lintModel(model, scale, files);
    } catch (const std::bad_alloc&) {
        ReportedFinding& finding = report.findings.emplace_back();
        finding.code = lint::kind::cannotConvert.code;
        finding.severity = lint::kind::cannotConvert.severity;
        finding.text = "there is not enough memory to look at this model";
        finding.file = model;
        return report;
    }
    for (ReportedFinding& finding : report.findings) {
        finding.file = files.pathOf(finding.file);
    }
    selectFindings(report.findings, options);
    return report;
}

void addLint(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("lint", "Find what converts but is probably unintended");
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
