#include "vxbtool/finding_catalogue/finding_catalogue.h"

#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "vxb/findings.h"
#include "vxbtool/lint/catalogue.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

constexpr std::string_view introduction = R"(# Findings

What `vxbtool check` finds in VXB files and `vxbtool lint` in models. The codes are stable: none is
ever given to another kind of finding. The texts may change. A name in braces stands for a value.

This page is made from the program: `vxbtool finding-catalogue > docs/findings.md`.
)";

constexpr std::string_view tableHead = "\n| Code | Severity | Text |\n|---|---|---|\n";

/// The text without what is said in its braces about the form of a value.
std::string plainText(std::string_view text) {
    std::string plain;
    bool inForm = false;
    bool inName = false;
    for (const char c : text) {
        inName = c == '{' || (inName && c != '}');
        inForm = inName && (inForm || c == ':');
        if (!inForm) {
            plain += c == '|' ? "\\|" : std::string(1, c);
        }
    }
    return plain;
}

std::string row(const mqf2vxb::FindingKind& kind) {
    return fmt::format("| {} | {} | {} |\n", kind.code,
                       kind.severity == mqf2vxb::Severity::error ? "error" : "warning",
                       plainText(kind.text));
}

}  // namespace

std::string catalogueDocument() {
    std::string document(introduction);
    document += "\n## vxbtool check\n";
    document += tableHead;
    for (const mqf2vxb::FindingKind& kind : mqf2vxb::findingKinds) {
        document += row(kind);
    }
    document += "\n## vxbtool lint\n";
    document += tableHead;
    for (const mqf2vxb::FindingKind& kind : lint::kinds) {
        document += row(kind);
    }
    return document;
}

void addFindingCatalogue(CLI::App& app, Session& session) {
    CLI::App* command =
        app.add_subcommand("finding-catalogue", "Prints docs/findings.md")->group("");
    command->callback([&session] {
        printText(catalogueDocument());
        session.status = ExitStatus::good;
    });
}

}  // namespace vxbtool
