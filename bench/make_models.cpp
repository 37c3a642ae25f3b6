// Writes the models of the benchmark:
//
//     make_models FOLDER [SEED]
//
// FOLDER/FAMILY/full and FOLDER/FAMILY/eighth hold each family's model at full size and at one
// eighth, FOLDER/tiny/full a tiny one. FOLDER/models.txt has a line for each: family, size, bytes
// of all files, material records.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "families.h"

namespace {

namespace fs = std::filesystem;

class Writer {
public:
    explicit Writer(fs::path folder)
        : folder_(std::move(folder)),
          list_((fs::create_directories(folder_), open(folder_ / "models.txt"))) {}

    void write(const std::string& family, const std::string& size, const bench::MadeModel& model) {
        const fs::path folder = folder_ / family / size;
        fs::create_directories(folder);
        std::size_t bytes = 0;
        for (const auto& [name, contents] : model.files) {
            open(folder / name) << contents;
            bytes += contents.size();
        }
        list_ << family << ' ' << size << ' ' << bytes << ' ' << model.materialRecords << '\n';
    }

private:
    static std::ofstream open(const fs::path& path) {
        std::ofstream file;
        file.exceptions(std::ios::failbit | std::ios::badbit);
        file.open(path, std::ios::binary);
        return file;
    }

    fs::path folder_;
    std::ofstream list_;
};

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 2) {
        std::fprintf(stderr, "usage: make_models FOLDER [SEED]\n");
        return 2;
    }
    const auto seed =
        static_cast<std::uint32_t>(argumentCount > 2 ? std::strtoul(arguments[2], nullptr, 10) : 1);
    try {
        Writer writer(arguments[1]);
        for (const bench::Family& family : bench::families()) {
            writer.write(family.name, "eighth", family.make(1, seed));
            writer.write(family.name, "full", family.make(8, seed));
        }
        writer.write("tiny", "full", bench::makeTiny(seed));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_models: %s\n", error.what());
        return 1;
    }
    return 0;
}
