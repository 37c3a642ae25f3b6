#include "families.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "file_texts.h"
#include "text.h"

namespace bench {
namespace {

constexpr std::int32_t textureNum = 8;

void addLooks(std::vector<Look>& looks, std::string_view kinds, std::uint32_t flag) {
    for (const char kind : kinds) {
        for (const char shading : {'F', 'G'}) {
            for (const std::uint32_t mirrored : {0U, 2U, 4U, 6U}) {
                looks.push_back({flag | mirrored, shading, kind});
            }
        }
    }
}

std::vector<Look> litLooks() {
    std::vector<Look> looks;
    addLooks(looks, "CGTDH", 0);
    return looks;
}

std::vector<Look> allLooks() {
    std::vector<Look> looks = litLooks();
    addLooks(looks, "CGTDH", 0x01);
    addLooks(looks, "WSN", 0);
    addLooks(looks, "WSN", 0x01);
    addLooks(looks, "CGTDH", 0x81);
    return looks;
}

/// A few looks for each of `number` coordinates, as the parts of a model have them.
class Palettes {
public:
    Palettes(Random& random, std::int32_t number) {
        const std::vector<Look> all = allLooks();
        for (std::int32_t i = 0; i < number * size; ++i) {
            looks_.push_back(
                all[static_cast<std::size_t>(random.below(static_cast<std::int32_t>(all.size())))]);
        }
    }
    [[nodiscard]] std::span<const Look> of(std::int32_t coordinate) const {
        return std::span(looks_).subspan(static_cast<std::size_t>(coordinate * size), size);
    }

private:
    static constexpr std::int32_t size = 5;
    std::vector<Look> looks_;
};

/// Collects the files of a model and names them in its description.
class ModelFiles {
public:
    ModelFiles() { description_.line("@MQF970401"); }

    void add(std::string_view key, const std::string& name, std::string bytes) {
        description_.line(std::string(key) + '=' + name);
        files_.emplace_back(name, std::move(bytes));
    }
    /// Slots of the block opened by "NTEX=" or "NCLP=".
    void addBlock(std::string_view key, std::vector<std::pair<std::string, std::string>> files) {
        description_.line('N' + std::string(key) + '=' + std::to_string(files.size()));
        int slot = 0;
        for (auto& [name, bytes] : files) {
            add(std::string(key) + '[' + std::to_string(slot++) + ']', name, std::move(bytes));
        }
    }
    MadeModel finish(std::size_t materialRecords) {
        files_.emplace(files_.begin(), "model.mqf", std::move(description_.string()));
        return {std::move(files_), materialRecords};
    }

private:
    Text description_;
    std::vector<std::pair<std::string, std::string>> files_;
};

void addTextures(Random& random, ModelFiles& files, std::int32_t number, bool large) {
    std::vector<std::pair<std::string, std::string>> images;
    for (std::int32_t i = 0; i < number; ++i) {
        images.emplace_back("image" + std::to_string(i) + ".pxl",
                            makePxl(random, static_cast<std::uint32_t>(i), large));
    }
    files.addBlock("TEX", std::move(images));
}

void addGeometry(Random& random, ModelFiles& files, std::int32_t points,
                 std::span<const Polygon> polygons, std::span<const Run> runs,
                 std::int32_t textures = textureNum) {
    files.add("GEO", "model.geo", makeGeo(random, points, polygons));
    files.add("SRF", "model.srf", makeSrf(random, runs, textures));
}

/// A polygon in a block of `each` vertices from `first` on.
Polygon polygonIn(Random& random, std::int32_t first, std::int32_t each) {
    Polygon polygon;
    polygon.quadrangle = random.percent(50);
    for (std::int32_t& corner : polygon.corners) {
        corner = first + random.below(each);
    }
    return polygon;
}

/// The numbers below `number`, each `times` times, in a random order: so no cost can hide behind
/// neighbours that belong together.
std::vector<std::int32_t> shuffled(Random& random, std::int32_t number, std::int32_t times) {
    std::vector<std::int32_t> order;
    for (std::int32_t i = 0; i < number * times; ++i) {
        order.push_back(i % number);
    }
    for (std::int32_t i = number * times - 1; i > 0; --i) {
        std::swap(order[static_cast<std::size_t>(i)],
                  order[static_cast<std::size_t>(random.below(i + 1))]);
    }
    return order;
}

/// Independent polygons in `runNum` runs of `runSize` in every coordinate.
struct Parts {
    Parts(Random& random, std::int32_t coordinates, std::int32_t each, std::int32_t runNum,
          std::int32_t runSize)
        : palettes(random, coordinates) {
        for (const std::int32_t c : shuffled(random, coordinates, runNum)) {
            runs.push_back({static_cast<std::int32_t>(polygons.size()), runSize, palettes.of(c)});
            for (std::int32_t i = 0; i < runSize; ++i) {
                polygons.push_back(polygonIn(random, c * each, each));
            }
        }
    }

    Palettes palettes;
    std::vector<Polygon> polygons;
    std::vector<Run> runs;
};

MadeModel makeLit(std::int32_t eighths, std::uint32_t seed) {
    Random random(seed);
    const std::int32_t points = 65000 / 8 * eighths;
    const std::int32_t polygonNum = 380000 / 8 * eighths;
    constexpr std::int32_t nearby = 64;
    std::vector<Polygon> polygons;
    for (std::int32_t i = 0; i < polygonNum; ++i) {
        const std::int64_t first = std::int64_t{i} * (points - nearby) / polygonNum;
        polygons.push_back(polygonIn(random, static_cast<std::int32_t>(first), nearby));
    }
    const std::vector<Look> looks = litLooks();
    const std::array runs{Run{0, polygonNum, looks}};
    ModelFiles files;
    addGeometry(random, files, points, polygons, runs);
    addTextures(random, files, textureNum, false);
    return files.finish(polygons.size());
}

MadeModel makeCoordinates(std::int32_t eighths, std::uint32_t seed) {
    Random random(seed);
    const std::int32_t coordinates = 2000 / 8 * eighths;
    constexpr std::int32_t each = 32;
    const Parts parts(random, coordinates, each, 10, 50);
    ModelFiles files;
    addGeometry(random, files, coordinates * each, parts.polygons, parts.runs);
    files.add("FRM", "model.frm", makeFrm(random, coordinates, each, 0));
    addTextures(random, files, textureNum, false);
    return files.finish(parts.polygons.size());
}

MadeModel makeShared(std::int32_t eighths, std::uint32_t seed) {
    Random random(seed);
    const std::int32_t coordinates = 1000 / 8 * eighths;
    constexpr std::int32_t each = 64;
    constexpr std::int32_t joint = 48;  // these may be used by shared polygons
    constexpr std::int32_t ownSize = 10;
    constexpr std::int32_t sharedSize = 90;
    const Palettes palettes(random, coordinates);
    std::vector<Polygon> polygons;
    std::vector<Run> runs;
    for (const std::int32_t c : shuffled(random, coordinates, 2)) {
        const std::int32_t next = (c + 1) % coordinates;
        runs.push_back(
            {static_cast<std::int32_t>(polygons.size()), ownSize + sharedSize, palettes.of(c)});
        for (std::int32_t i = 0; i < ownSize; ++i) {
            polygons.push_back(polygonIn(random, c * each, each));
        }
        for (std::int32_t i = 0; i < sharedSize; ++i) {
            Polygon polygon = polygonIn(random, c * each, joint);
            polygon.corners[2] = next * each + random.below(joint);
            polygons.push_back(polygon);
        }
    }
    ModelFiles files;
    addGeometry(random, files, coordinates * each, polygons, runs);
    files.add("FRM", "model.frm", makeFrm(random, coordinates, each, 0));
    addTextures(random, files, textureNum, false);
    return files.finish(polygons.size());
}

MadeModel makeMeshes(std::int32_t eighths, std::uint32_t seed) {
    Random random(seed);
    const std::int32_t coordinates = 96 / 8 * eighths;
    const std::int32_t meshNum = 100000 / 8 * eighths;
    constexpr std::int32_t each = 640;
    constexpr std::int32_t mostPolygons = 7;
    const Palettes palettes(random, coordinates);
    std::vector<Polygon> polygons;
    std::vector<Run> meshes;
    for (std::int32_t m = 0; m < meshNum; ++m) {
        const std::int32_t c = random.below(coordinates);
        const std::int32_t number = random.percent(10) ? 1 : random.between(2, mostPolygons);
        const std::span<const Look> palette = palettes.of(c);
        const std::size_t look =
            static_cast<std::size_t>(random.below(static_cast<std::int32_t>(palette.size())));
        meshes.push_back(
            {static_cast<std::int32_t>(polygons.size()), number, palette.subspan(look, 1)});
        const std::int32_t first = c * each + random.below(each - mostPolygons - 2);
        for (std::int32_t i = 0; i < number; ++i) {
            Polygon polygon;
            polygon.corners = {first + i, first + i + 1, first + i + 2, 0};
            std::rotate(polygon.corners.begin(), polygon.corners.begin() + random.below(3),
                        polygon.corners.begin() + 3);
            polygons.push_back(polygon);
        }
    }
    Text bnd;
    bnd.line("@BND970401").line("# the number of meshes").word(meshNum).endLine();
    for (const std::int32_t m : shuffled(random, meshNum, 1)) {
        const Run& mesh = meshes[static_cast<std::size_t>(m)];
        bnd.word(mesh.number);
        for (std::int32_t i = 0; i < mesh.number; ++i) {
            bnd.word(mesh.first + i);
        }
        bnd.endLine();
    }
    ModelFiles files;
    addGeometry(random, files, coordinates * each, polygons, meshes);
    files.add("BND", "model.bnd", std::move(bnd.string()));
    files.add("FRM", "model.frm", makeFrm(random, coordinates, each, 0));
    addTextures(random, files, textureNum, false);
    return files.finish(polygons.size());
}

MadeModel makeMotions(std::int32_t eighths, std::uint32_t seed) {
    Random random(seed);
    const std::int32_t coordinates = 200 / 8 * eighths;
    constexpr std::int32_t each = 8;
    const Parts parts(random, coordinates, each, 1, 4);
    ModelFiles files;
    addGeometry(random, files, coordinates * each, parts.polygons, parts.runs);
    files.add("FRM", "model.frm", makeFrm(random, coordinates, each, 0));
    addTextures(random, files, textureNum, false);
    std::vector<std::pair<std::string, std::string>> motions;
    for (int i = 0; i < 16; ++i) {
        motions.emplace_back("motion" + std::to_string(i) + ".clp",
                             makeClp(random, coordinates, 4000 / 8 * eighths, eighths));
    }
    files.addBlock("CLP", std::move(motions));
    return files.finish(parts.polygons.size());
}

MadeModel makePivots(std::int32_t eighths, std::uint32_t seed) {
    Random random(seed);
    const std::int32_t coordinates = 2000 / 8 * eighths;
    constexpr std::int32_t each = 32;
    const Parts parts(random, coordinates, each, 3, 10);
    Text axs;
    axs.line("@AXS970401").line("# coordinate, place").word(coordinates * 10).endLine();
    for (const std::int32_t c : shuffled(random, coordinates, 10)) {
        axs.word(c);
        for (int i = 0; i < 3; ++i) {
            axs.real(random.real(-500, 500), 3);
        }
        axs.endLine();
    }
    ModelFiles files;
    addGeometry(random, files, coordinates * each, parts.polygons, parts.runs);
    files.add("AXS", "model.axs", std::move(axs.string()));
    files.add("FRM", "model.frm", makeFrm(random, coordinates, each, 8));
    addTextures(random, files, textureNum, false);
    return files.finish(parts.polygons.size());
}

MadeModel makeImages(std::int32_t eighths, std::uint32_t seed) {
    Random random(seed);
    const std::int32_t images = 600 / 8 * eighths;
    const Parts parts(random, 1, 200, 8 * eighths, 10);
    ModelFiles files;
    addGeometry(random, files, 200, parts.polygons, parts.runs, images);
    addTextures(random, files, images, true);
    return files.finish(parts.polygons.size());
}

constexpr std::array allFamilies{
    Family{"lit", "65,000 vertices with 380,000 lit polygons", makeLit},
    Family{"coordinates", "2,000 coordinates with 1,000,000 polygons", makeCoordinates},
    Family{"shared", "1,000 coordinates with 180,000 shared polygons", makeShared},
    Family{"meshes", "100,000 meshes", makeMeshes},
    Family{"motions", "16 motions of 4,000 labelled steps", makeMotions},
    Family{"pivots", "20,000 pivots over 2,000 coordinates", makePivots},
    Family{"images", "600 images of 64 KiB", makeImages},
};

}  // namespace

std::span<const Family> families() { return allFamilies; }

MadeModel makeTiny(std::uint32_t seed) {
    Random random(seed);
    const Parts parts(random, 2, 8, 1, 6);
    ModelFiles files;
    addGeometry(random, files, 16, parts.polygons, parts.runs, 1);
    files.add("FRM", "model.frm", makeFrm(random, 2, 8, 0));
    addTextures(random, files, 1, false);
    files.addBlock("CLP", {{"motion.clp", makeClp(random, 2, 4, 1)}});
    return files.finish(parts.polygons.size());
}

}  // namespace bench
