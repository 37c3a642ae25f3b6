#include "targets.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/diagnostics.h"
#include "run/command_line.h"
#include "support/memory_files.h"
#include "text/line_reader.h"
#include "text/scan.h"
#include "vxb/vxb_reader.h"
#include "vxb/word_meaning.h"

#ifdef MQF2VXB_FUZZ_UNPACK
#include "vxbtool/gltf/gltf.h"
#include "vxbtool/model_text/model_files_writer.h"
#include "vxbtool/scene/scene.h"
#include "vxbtool/shared/in_memory.h"
#include "vxbtool/unpack/unpack_model.h"
#endif

namespace mqf2vxb::fuzz {
namespace {

using tests::Conversion;
using tests::Files;

void require(bool holds, const std::string& promise) {
    if (!holds) {
        throw std::logic_error(promise);
    }
}

#ifdef MQF2VXB_FUZZ_UNPACK
/// Whatever a file holds, a scene can be made of it and written, and its motions run.
void showScene(const VxbFile& file) {
    constexpr double laterFrame = 1000.5;
    const vxbtool::scene::Scene scene = vxbtool::scene::makeScene(file);
    for (const vxbtool::scene::Motion& motion : scene.motions) {
        vxbtool::scene::placements(scene, motion, laterFrame);
    }
    require(!vxbtool::gltf::glb(scene, {}).empty(), "a scene becomes a file");
}

/// Whatever a sound file holds, it can be unpacked or is refused; a file that the converter never made
/// may become a model that is refused.
void unpackAndConvert(const VxbFile& file) {
    try {
        const vxbtool::unpack::UnpackedModel model = vxbtool::unpack::unpackModel(file);
        vxbtool::MemoryFiles files;
        vxbtool::model_text::writeModelFiles(model.text, "", "u", files);
        vxbtool::convertInMemory("u.mqf", {}, files);
    } catch (const Report& report) {
        require(!report.text().starts_with("\nLayout fault"), "the layout is right");
    }
}
#endif

/// Walks everything that the reader made of a file.
void walk(const VxbFile& file) {
    std::size_t next = 0;
    describeWords(file, [&](const WordMeaning& meaning) {
        require(meaning.offset == next && meaning.value == file.words[next],
                "the words are described in order");
        placeName(file, meaning.value & 0x7FFFFFFFU);
        ++next;
    });
    require(next == file.words.size(), "every word is described");
    for (const Finding& finding : file.findings.kept()) {
        require(!finding.line().empty(), "every finding has a text");
    }
#ifdef MQF2VXB_FUZZ_UNPACK
    showScene(file);
    if (file.findings.count(Severity::error) == 0) {
        unpackAndConvert(file);
    }
#endif
}

void reader(std::string_view input) { walk(readVxb(input)); }

/// The words of a hex text: each line begins with one.
tests::Words hexWords(const std::string& hex) {
    tests::Words words;
    for (std::size_t line = 0; line < hex.size(); line = hex.find('\n', line) + 1) {
        words.push_back(static_cast<std::uint32_t>(std::stoul(hex.substr(line, 10), nullptr, 16)));
    }
    return words;
}

void checkOutputs(const Conversion& result, const std::string& hexName) {
    const std::string& report = result.report;
    require(!report.starts_with("\nLayout fault"), "the layout is right");
    require(!report.starts_with("\nCan't malloc") && !report.starts_with("\nCan't realloc"),
            "little input takes little memory");
    const auto hex = result.outputs.find(hexName);  // none when its name, such as "", makes no file
    for (const auto& [name, bytes] : result.outputs) {
        if (name != hexName) {
            require(bytes.size() % 4 == 0, "the file has whole words");
            require(hex != result.outputs.end() ? hexWords(hex->second) == tests::wordsOf(bytes)
                                                : bytes.empty(),
                    "the hex text holds the same words");
        }
    }
}

/// Converts twice, the second time after another conversion; true when the files convert.
bool checkConversion(const Files& files, RunOptions options, const Files& other) {
    if (!options.hexOutput) {
        options.hexOutput = true;
        options.hexName = "hex";
    }
    const Conversion result = tests::convertFiles(files, options);
    checkOutputs(result, options.hexName);
    if (!result.report.empty()) {
        return false;
    }
    tests::convertFiles(other);
    require(tests::convertFiles(files, options).outputs == result.outputs,
            "equal input makes equal output");
    for (const auto& [name, bytes] : result.outputs) {
        if (name != options.hexName) {
            const VxbFile file = readVxb(bytes);
            for (const Finding& finding : file.findings.kept()) {
                require(finding.kind->severity != Severity::error, finding.line());
            }
            walk(file);
        }
    }
    return true;
}

/// A small model, all of whose files convert, and the same in the form with a group file.
const Files& soundFiles() {
    static const Files files = tests::smallModel().files();
    return files;
}
const Files& groupFiles() {
    static const Files files = [] {
        tests::ModelFiles model = tests::smallModel();
        model.frm = "=g.sqx;2;4096 0 0 0 4096 0 0 0 4096 0 0 0 0 0 0 0;"
                    "1 2 3 4 5 6 7 8 9 -1 -2 -3 4 5 6 0;0 1 a;1 2 b,c";
        model.sqx = "2;a 4 0-3;b 3 4 5,6";
        return model.files();
    }();
    return files;
}

/// An input that holds a whole model: its first line is the command line, without the model's
/// name "m.mqf"; then come the files, each behind a line "%% NAME". A file ends before the line
/// feed that the next such line follows.
void convertModel(std::string_view input) {
    constexpr std::string_view mark = "\n%% ";
    const auto takeUpTo = [&](std::string_view end) {
        const std::string_view part = input.substr(0, input.find(end));
        input.remove_prefix(std::min(input.size(), part.size() + end.size()));
        return part;
    };
    std::string_view line = takeUpTo(mark);
    Files files;
    while (!input.empty()) {
        const std::string name(takeUpTo("\n"));
        // The next mark may begin with the line feed that ends this one: an empty file.
        files[name] = input.starts_with(mark.substr(1)) ? "" : takeUpTo(mark);
    }

    std::vector<std::string> words{"mqf2vxb"};
    while (!line.empty()) {
        words.emplace_back(scanWord(line));
    }
    words.emplace_back("m.mqf");
    std::vector<const char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    RunOptions options;
    try {
        if (getOptions(arguments, options) == arguments.size()) {
            return;
        }
    } catch (const Report&) {
        return;
    }

    static const Conversion sound = tests::convertFiles(soundFiles());
    static const Files unsound = [] {
        Files damaged = soundFiles();
        damaged["0.clp"].resize(damaged["0.clp"].size() / 2);
        return damaged;
    }();
    if (!checkConversion(files, options, unsound)) {
        require(tests::convertFiles(soundFiles()).outputs == sound.outputs,
                "a failed conversion leaves nothing behind");
    }
}

/// Converts a sound model in which the input replaces one file.
void convertWith(const Files& sound, const std::string& name, std::string_view input) {
    Files files = sound;
    files[name] = input;
    checkConversion(files, {}, sound);
}

void materials(std::string_view input) { convertWith(soundFiles(), "s.srf", input); }
void image(std::string_view input) { convertWith(soundFiles(), "0.pxl", input); }
void motion(std::string_view input) { convertWith(soundFiles(), "0.clp", input); }

/// A coordinate, group or mesh file: the ID line tells.
void tokens(std::string_view input) {
    if (input.starts_with("@BND")) {
        convertWith(soundFiles(), "b.bnd", input);
    } else {
        convertWith(groupFiles(), input.starts_with("@SQX") ? "g.sqx" : "f.frm", input);
    }
}

template <class Number>
struct Expected {
    Scanned scanned;
    Number value;
    std::size_t taken;
};

/// What the C library makes of a whole number.
template <class Number>
Expected<Number> wholeNumber(const std::string& text, int base, long long smallest,
                             long long largest) {
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, base);
    const bool fits = errno == 0 && value >= smallest && value <= largest;
    return {end == text.c_str() ? Scanned::nothing
            : fits              ? Scanned::number
                                : Scanned::outOfRange,
            static_cast<Number>(value), static_cast<std::size_t>(end - text.c_str())};
}

Expected<float> realNumber(const std::string& text) {
    char* end = nullptr;
    const float value = std::strtof(text.c_str(), &end);
    return {end == text.c_str() ? Scanned::nothing : Scanned::number, value,
            static_cast<std::size_t>(end - text.c_str())};
}

template <class Number, class Scan>
void checkScan(const std::string& text, Scan scan, const Expected<Number>& expected) {
    std::string_view rest = text;
    Number value{};
    const Scanned scanned = scan(rest, value);
    require(scanned == expected.scanned, "the C library sees the same number: " + text);
    if (scanned == Scanned::number) {
        require(value == expected.value || (value != value && expected.value != expected.value),
                "the C library scans the same value: " + text);
        require(rest.size() == text.size() - expected.taken,
                "the C library takes the same characters: " + text);
    }
}

/// A text file; every word of its lines is scanned as a number of each kind, as the C library does
/// it.
void text(std::string_view input) {
    const std::string id = "@TXT970401";
    tests::MemoryFileSystem files({{"text", id + "\n" + std::string(input)}});
    Inputs inputs(files);
    LineReader reader(inputs, "text", id);
    std::int64_t number = 0;
    do {
        std::string_view rest = reader.line();
        require(rest.size() <= 255 && rest.find('\n') == rest.npos, "a line is one line");
        if (!rest.empty()) {
            require(reader.lineNumber(rest.data()) >= number, "line numbers rise");
            number = reader.lineNumber(rest.data());
        }
        while (!rest.empty()) {
            const std::string word(rest);
            constexpr long long least = std::numeric_limits<std::int32_t>::min();
            checkScan(
                word, [](auto&... a) { return scanInteger(a...); },
                wholeNumber<std::int32_t>(word, 10, least, -1 - least));
            checkScan(word, scanHex, wholeNumber<std::uint32_t>(word, 16, least, 0xFFFFFFFF));
            checkScan(word, scanReal, realNumber(word));
            scanWord(rest);
        }
    } while (reader.readLine());
}

constexpr std::array<Target, 7> all{{{"convert", convertModel},
                                     {"reader", reader},
                                     {"text", text},
                                     {"tokens", tokens},
                                     {"srf", materials},
                                     {"pxl", image},
                                     {"clp", motion}}};

}  // namespace

std::span<const Target> targets() { return all; }

}  // namespace mqf2vxb::fuzz
