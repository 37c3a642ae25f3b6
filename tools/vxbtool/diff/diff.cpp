#include "vxbtool/diff/diff.h"

#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "vxbtool/diff/changes.h"
#include "vxbtool/diff/compare.h"
#include "vxbtool/shared/any_model.h"
#include "vxbtool/shared/json_output.h"
#include "vxbtool/shared/printable.h"

namespace vxbtool {
namespace {

using mqf2vxb::VxbFile;

constexpr const char* diffExamples = R"(Examples:
  vxbtool diff old.vxb new.vxb            what became of the model?
  vxbtool diff car.mqf car.vxb            is the file still what the model makes?
  vxbtool diff --all old.vxb new.vxb      every polygon and vertex by itself
  vxbtool diff --json old.vxb new.vxb | jq '.changes[].kind'

Exit status: 0 the words are equal, 1 they differ, 2 there was trouble.)";

// As diff and cmp have it.
constexpr ExitStatus differ{1};
constexpr ExitStatus trouble{2};

struct DiffArguments {
    std::string before;
    std::string after;
    bool json = false;
    bool all = false;
    AnyModelOptions models;
};

/// Bytes behind the last word are no part of the words.
bool endsUneven(const VxbFile& file) {
    return file.findings.count(mqf2vxb::finding::unevenLength) > 0;
}

diff::Changes changesOf(const VxbFile& before, const VxbFile& after, bool all) {
    diff::Changes changes(all);
    diff::compareCoordinates(before, after, changes);
    diff::comparePolygons(before, after, changes);
    diff::compareMotions(before, after, changes);
    diff::compareImages(before, after, changes);
    if (changes.empty()) {
        changes.add(diff::ChangeKind::order, "model", "the same model in another order");
    }
    return changes;
}

void printChanges(const diff::Changes& changes, TextOutput& output) {
    const std::vector<diff::Change>& kept = changes.kept();
    std::array<std::size_t, diff::changeKindNum> printed{};
    for (const diff::Change& change : kept) {
        output.format("{}: {}\n", change.place, change.text);
        const std::size_t more = changes.numberOf(change.kind) - diff::Changes::keptPerKind;
        if (++printed[static_cast<std::size_t>(change.kind)] == diff::Changes::keptPerKind &&
            !changes.all() && more > 0) {
            output.format("... and {} more ({})\n", more, diff::nameOf(change.kind));
        }
    }
}

void writeJson(const DiffArguments& arguments, const diff::Changes& changes, JsonOutput& output) {
    output.openObject();
    output.member("format", "vxbtool-diff");
    output.member("version", 1);
    output.member("old", arguments.before);
    output.member("new", arguments.after);
    output.member("equal", changes.empty());
    output.openArray("kinds");
    for (std::size_t i = 0; i < diff::changeKindNum; ++i) {
        const auto kind = static_cast<diff::ChangeKind>(i);
        if (changes.numberOf(kind) > 0) {
            output.value({{"kind", diff::nameOf(kind)}, {"changes", changes.numberOf(kind)}});
        }
    }
    output.close();
    output.openArray("changes");
    for (const diff::Change& change : changes.kept()) {
        output.value({{"kind", diff::nameOf(change.kind)},
                      {"place", change.place},
                      {"text", change.text},
                      {"count", change.count}});
    }
    output.close();
    output.close();
}

ExitStatus runDiff(const DiffArguments& arguments) {
    const VxbFile before = readAnyModel(arguments.before, arguments.models).file;
    const VxbFile after = readAnyModel(arguments.after, arguments.models).file;
    diff::Changes changes(arguments.all);
    if (before.words != after.words || endsUneven(before) || endsUneven(after)) {
        requireSound(arguments.before, before);
        requireSound(arguments.after, after);
        changes = changesOf(before, after, arguments.all);
    }
    TextOutput output(stdout);
    if (arguments.json) {
        JsonOutput json(output);
        writeJson(arguments, changes, json);
    } else {
        printChanges(changes, output);
    }
    output.finish();
    return changes.empty() ? ExitStatus::good : differ;
}

ExitStatus diffOrTrouble(const DiffArguments& arguments) {
    try {
        return runDiff(arguments);
    } catch (const CLI::Error&) {
        throw;
    } catch (const std::exception& error) {
        fmt::print(stderr, "{}\n", printableLines(error.what()));
        return trouble;
    }
}

}  // namespace

void addDiff(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("diff", "Tell what differs between two models");
    const auto arguments = std::make_shared<DiffArguments>();
    const auto option = [command](const char* name, auto& value, const char* valueName,
                                  const char* description) {
        return command->add_option(name, value, description)->option_text(valueName);
    };
    option("OLD", arguments->before, "", "A VXB file, or a model (.mqf), which is converted")
        ->required();
    option("NEW", arguments->after, "", "Another one")->required();
    command->add_flag("--json", arguments->json, "Print JSON");
    command->add_flag("--all", arguments->all, "Tell every difference by itself");
    addAnyModelOptions(*command, arguments->models);
    command->footer(diffExamples);
    command->callback([arguments, &session] { session.status = diffOrTrouble(*arguments); });
}

}  // namespace vxbtool
