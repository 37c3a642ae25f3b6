// Benchmarks of the parts of a conversion, on models in memory at one eighth of their full size.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include "families.h"
#include "files/output_word_stream.h"
#include "organise/mesh_organisation.h"
#include "organise/organisation.h"
#include "organise/packet_check.h"
#include "organise/pivots.h"
#include "organise/preparation.h"
#include "organise/primitive_bodies.h"
#include "organise/shared_primitives.h"
#include "readers/frm_reader.h"
#include "readers/geo_reader.h"
#include "readers/motion_reader.h"
#include "readers/srf_reader.h"
#include "run/convert.h"
#include "text.h"
#include "text/line_reader.h"
#include "text/scan.h"
#include "writers/coordinate_section.h"
#include "writers/header_sections.h"
#include "writers/model_writer.h"
#include "writers/output_layout.h"
#include "writers/packet_writer.h"

namespace {

using namespace mqf2vxb;
using benchmark::State;

class DroppedFile final : public OutputFile {
public:
    bool write(std::string_view bytes) override {
        benchmark::DoNotOptimize(bytes.data());
        return true;
    }
    bool close() override { return true; }
};

/// Files that are read from memory and written to nowhere.
class MemoryFiles final : public InputFiles, public OutputFiles {
public:
    std::optional<FileContents> read(const std::string& name) override {
        const auto found = files_.find(name);
        if (found == files_.end()) {
            return std::nullopt;
        }
        FileContents contents(found->second.size());
        std::copy(found->second.begin(), found->second.end(), contents.data());
        return contents;
    }
    std::unique_ptr<OutputFile> create(const std::string& /*name*/) override {
        return std::make_unique<DroppedFile>();
    }

    void add(const std::string& name, std::string bytes) { files_[name] = std::move(bytes); }
    [[nodiscard]] std::int64_t size(const std::string& name) const {
        return static_cast<std::int64_t>(files_.at(name).size());
    }

private:
    std::map<std::string, std::string> files_;
};

/// The files of one family's model, made once.
MemoryFiles& filesOf(const std::string& family) {
    static std::map<std::string, MemoryFiles> made;
    const auto [place, added] = made.try_emplace(family);
    if (added) {
        const auto all = bench::families();
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&](const auto& one) { return one.name == family; });
        if (found == all.end()) {
            throw std::out_of_range(family);
        }
        for (auto& [name, bytes] : found->make(1, 1).files) {
            place->second.add(name, std::move(bytes));
        }
    }
    return place->second;
}

std::unique_ptr<Model> readFamily(const std::string& family) {
    Inputs inputs(filesOf(family));
    auto model = std::make_unique<Model>();
    readModel("model.mqf", inputs, *model);
    return model;
}

std::unique_ptr<Model> organiseFamily(const std::string& family) {
    auto model = readFamily(family);
    organiseModel({}, *model);
    return model;
}

/// Times `work` alone, on what `prepare` makes anew for each turn. Processor time, which other
/// programs on the machine disturb less.
template <class Prepare, class Work>
void timeWork(State& state, Prepare prepare, Work work) {
    for (auto _ : state) {
        auto prepared = prepare();
        const std::clock_t start = std::clock();
        work(*prepared);
        state.SetIterationTime(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
}

/// A text of numbers as the files have them.
std::string numbers(bool reals) {
    bench::Random random(1);
    bench::Text text;
    for (int i = 0; i < 10000; ++i) {
        reals ? text.real(random.real(-2000, 2000), random.between(3, 6))
              : text.word(random.below(65536));
    }
    return std::move(text.string());
}

template <class Number>
void scanNumbers(State& state, Scanned (*scan)(std::string_view&, Number&)) {
    const std::string text = numbers(std::is_floating_point_v<Number>);
    for (auto _ : state) {
        std::string_view rest = text;
        Number value{};
        while (scan(rest, value) == Scanned::number) {
            benchmark::DoNotOptimize(value);
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK_CAPTURE(scanNumbers, integers, scanInteger);
BENCHMARK_CAPTURE(scanNumbers, hexadecimals, scanHex);
BENCHMARK_CAPTURE(scanNumbers, reals, scanReal);

void readLines(State& state) {
    MemoryFiles& files = filesOf("lit");
    for (auto _ : state) {
        Inputs inputs(files);
        LineReader reader(inputs, "model.geo", "@GEO970401");
        while (reader.readLine()) {
            benchmark::DoNotOptimize(reader.line().data());
        }
    }
    state.SetBytesProcessed(state.iterations() * files.size("model.geo"));
}
BENCHMARK(readLines)->Unit(benchmark::kMillisecond);

void readGeo(State& state) {
    MemoryFiles& files = filesOf("lit");
    for (auto _ : state) {
        Inputs inputs(files);
        Model model;
        readGeometry(inputs, "model.geo", model.vertices, model.normals, model.polygons);
    }
    state.SetBytesProcessed(state.iterations() * files.size("model.geo"));
}
BENCHMARK(readGeo)->Unit(benchmark::kMillisecond);

void readSrf(State& state) {
    MemoryFiles& files = filesOf("lit");
    for (auto _ : state) {
        Inputs inputs(files);
        Model model;
        readMaterials(inputs, "model.srf", model.materials);
    }
    state.SetBytesProcessed(state.iterations() * files.size("model.srf"));
}
BENCHMARK(readSrf)->Unit(benchmark::kMillisecond);

void readFrm(State& state) {
    MemoryFiles& files = filesOf("coordinates");
    const std::size_t vertices = readFamily("coordinates")->vertices.size();
    for (auto _ : state) {
        Inputs inputs(files);
        Model model;
        model.vertices.allocate(vertices);
        readCoordinateFile(inputs, "model.frm", model.coordinates, model.vertices,
                           model.coordinateLists);
    }
    state.SetBytesProcessed(state.iterations() * files.size("model.frm"));
}
BENCHMARK(readFrm)->Unit(benchmark::kMillisecond);

void readClp(State& state) {
    MemoryFiles& files = filesOf("motions");
    constexpr const char* name = "motion0.clp";
    for (auto _ : state) {
        Inputs inputs(files);
        Model model;
        model.motions.allocate(1);
        model.motions[0].name = name;
        model.motions[0].named = true;
        readMotions(inputs, model.motions);
    }
    state.SetBytesProcessed(state.iterations() * files.size(name));
}
BENCHMARK(readClp)->Unit(benchmark::kMillisecond);

void organise(State& state, const char* family) {
    timeWork(
        state, [&] { return readFamily(family); },
        [](Model& model) {
            organisePolygons(model);
            if (model.description.bnd.given) {
                organiseMeshes(model);
                buildMeshPrimitiveBodies(model);
            } else {
                buildPrimitiveBodies(model);
            }
            assignNormalCoordinates(model);
            countSharedPerCoordinate(model);
        });
}
BENCHMARK_CAPTURE(organise, coordinates, "coordinates")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(organise, meshes, "meshes")->UseManualTime()->Unit(benchmark::kMillisecond);

void gather(State& state) {
    timeWork(
        state,
        [] {
            auto model = readFamily("shared");
            organisePolygons(*model);
            buildPrimitiveBodies(*model);
            assignNormalCoordinates(*model);
            countSharedPerCoordinate(*model);
            return model;
        },
        [](Model& model) { prepareSharedPrimitives(model); });
}
BENCHMARK(gather)->UseManualTime()->Unit(benchmark::kMillisecond);

void prepareMotions(State& state) {
    timeWork(
        state, [] { return readFamily("motions"); }, [](Model& model) { prepareAnimation(model); });
}
BENCHMARK(prepareMotions)->UseManualTime()->Unit(benchmark::kMillisecond);

void subtractPivots(State& state) {
    timeWork(
        state, [] { return readFamily("pivots"); }, [](Model& model) { applyPivots(model); });
}
BENCHMARK(subtractPivots)->UseManualTime()->Unit(benchmark::kMillisecond);

void check(State& state, const char* family) {
    const auto model = organiseFamily(family);
    for (auto _ : state) {
        checkPackets(*model);
    }
}
BENCHMARK_CAPTURE(check, lit, "lit")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(check, meshes, "meshes")->Unit(benchmark::kMillisecond);

void layout(State& state, const char* family) {
    const auto model = organiseFamily(family);
    for (auto _ : state) {
        benchmark::DoNotOptimize(computeLayout(*model));
    }
}
BENCHMARK_CAPTURE(layout, coordinates, "coordinates")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(layout, meshes, "meshes")->Unit(benchmark::kMillisecond);

void packets(State& state, const char* family, bool hex) {
    const auto model = organiseFamily(family);
    const OutputLayout places = computeLayout(*model);
    const std::string hexName = "hex";
    std::int64_t words = 0;
    timeWork(
        state,
        [&] {
            auto stream = std::make_unique<OutputWordStream>(filesOf(family), "vxb",
                                                             hex ? &hexName : nullptr);
            writeFileHeader(*model, places, *stream);
            writeBlockTable(*model, places, *stream);
            if (!model->coordinates.empty()) {
                writeCoordinateSection(*model, places, *stream);
            }
            writePrimitiveHeaderSection(*model, places, *stream);
            writePrimitiveHeaders(*model, places, *stream);
            return stream;
        },
        [&](OutputWordStream& stream) {
            const std::uint64_t before = stream.position();
            writePrimitivePackets(*model, places, stream);
            words += static_cast<std::int64_t>(stream.position() - before);
        });
    state.SetItemsProcessed(words);
}
BENCHMARK_CAPTURE(packets, lit, "lit", false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(packets, meshes, "meshes", false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(packets, lit_with_hex, "lit", true)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void putWords(State& state, bool hex) {
    MemoryFiles files;
    const std::string hexName = "hex";
    OutputWordStream stream(files, "vxb", hex ? &hexName : nullptr);
    std::array<std::uint32_t, 8> words{};
    bench::Random random(1);
    std::generate(words.begin(), words.end(), [&] { return random.bits(); });
    for (auto _ : state) {
        stream.putWords(words);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(stream.position()));
}
BENCHMARK_CAPTURE(putWords, binary, false);
BENCHMARK_CAPTURE(putWords, hex_text, true);

void wholeConversion(State& state, const char* family) {
    MemoryFiles& files = filesOf(family);
    for (auto _ : state) {
        convert({}, "model.mqf", files, files);
    }
}
BENCHMARK_CAPTURE(wholeConversion, lit, "lit")->Unit(benchmark::kMillisecond);

}  // namespace
