#include "families.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "text.h"

namespace bench {
namespace {

constexpr std::int32_t textureNum = 8;

struct Polygon {
    bool quadrangle = false;
    std::array<std::int32_t, 4> corners{};  // vertices, and normals too
};

/// What decides a polygon's type code.
struct Look {
    std::uint32_t flag;
    char shading;
    char kind;
};

/// Polygons that follow each other and take their looks from one palette.
struct Run {
    std::int32_t first;
    std::int32_t number;
    std::span<const Look> palette;
};

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

void putColour(Random& random, Text& text) {
    for (int i = 0; i < 3; ++i) {
        text.word(random.below(256));
    }
}

/// A material line for the polygons from `first` to `last`.
void putMaterial(Random& random, std::int32_t first, std::int32_t last, const Look& look,
                 std::int32_t textures, Text& text) {
    const bool windowed = look.kind == 'W' || look.kind == 'S' || look.kind == 'N';
    const bool textured = windowed || look.kind == 'T' || look.kind == 'D' || look.kind == 'H';
    text.range(first, last)
        .hex(look.flag | static_cast<std::uint32_t>(random.below(4)) << 3U)
        .word(std::string_view(&look.shading, 1))
        .word(std::string_view(&look.kind, 1));
    if (textured) {
        text.word(random.below(textures));
        if (windowed) {
            text.word(32).word(32).word(0).word(0);
        }
        for (int i = 0; i < 8; ++i) {
            text.word(random.below(windowed ? 256 : 64));
        }
    }
    const std::string_view oneColour = "CDS";
    const std::string_view fourColours = "GHN";
    const int colours = oneColour.find(look.kind) != std::string_view::npos     ? 1
                        : fourColours.find(look.kind) != std::string_view::npos ? 4
                                                                                : 0;
    for (int i = 0; i < colours; ++i) {
        putColour(random, text);
    }
    text.endLine();
}

/// Most polygons have a line of their own; the others share one with those behind them.
std::string makeSrf(Random& random, std::span<const Run> runs, std::int32_t textures) {
    Text lines;
    std::int32_t lineNum = 0;
    for (const Run& run : runs) {
        for (std::int32_t i = 0; i < run.number;) {
            const std::int32_t number =
                random.percent(90) ? 1 : std::min(random.between(2, 12), run.number - i);
            const std::int32_t first = run.first + i;
            const Look& look = run.palette[static_cast<std::size_t>(
                random.below(static_cast<std::int32_t>(run.palette.size())))];
            putMaterial(random, first, first + number - 1, look, textures, lines);
            ++lineNum;
            i += number;
        }
    }
    Text head;
    head.line("@SRF970401").line("# polygons, flag, shading, kind, numbers");
    head.word(lineNum).endLine();
    return std::move(head.string()) + lines.string();
}

/// A normal for every vertex.
std::string makeGeo(Random& random, std::int32_t points, std::span<const Polygon> polygons) {
    Text text;
    text.line("@GEO970401").line("# vertices, normals, polygons");
    text.word(points).word(points).word(polygons.size()).endLine();
    for (std::int32_t i = 0; i < 3 * points; ++i) {
        text.real(random.real(-2000, 2000), 4);
        if (i % 3 == 2) {
            text.endLine();
        }
    }
    text.line("# normals");
    for (std::int32_t i = 0; i < 3 * points; ++i) {
        text.real(random.real(-0.57735, 0.57735), 6);
        if (i % 3 == 2) {
            text.endLine();
        }
    }
    text.line("# polygons");
    for (const Polygon& polygon : polygons) {
        text.word(polygon.quadrangle ? 1 : 0);
        for (int i = 0; i < 2; ++i) {
            for (const std::int32_t corner : polygon.corners) {
                text.word(corner);
            }
        }
        text.endLine();
    }
    return std::move(text.string());
}

/// `each` vertices in every coordinate; the last `overlap` of them also in the next one.
std::string makeFrm(Random& random, std::int32_t coordinates, std::int32_t each,
                    std::int32_t overlap) {
    Text text;
    text.line("@FRM970401").line("# direct").line("SQX=NULL");
    text.word(coordinates).endLine();
    for (std::int32_t c = 0; c < coordinates; ++c) {
        text.line("# matrix, place, angles and parent");
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                text.word(row == column ? random.between(3800, 4096) : random.between(-400, 400));
            }
            text.endLine();
        }
        for (int i = 0; i < 3; ++i) {
            text.word(random.between(-5000, 5000));
        }
        text.endLine();
        text.word(0).word(random.below(4096)).word(0).word(c == 0 ? 0 : random.below(c)).endLine();
    }
    text.line("# coordinate, number of vertices, vertices");
    for (std::int32_t c = 0; c < coordinates; ++c) {
        const std::int32_t first = std::max(0, c * each - overlap);
        const std::int32_t end = (c + 1) * each;
        text.word(c).word(end - first);
        for (std::int32_t v = first; v < end;) {
            const std::int32_t last = std::min(end - 1, v + random.below(12));
            text.range(v, last);
            v = last + 1;
        }
        text.endLine();
    }
    return std::move(text.string());
}

void putLittleEndian(std::string& bytes, std::uint32_t word) {
    for (const unsigned shift : {0U, 8U, 16U, 24U}) {
        bytes += static_cast<char>(word >> shift & 0xFFU);
    }
}

void putBlock(Random& random, std::string& bytes, std::uint32_t x, std::uint32_t y,
              std::uint32_t widthAndHeight, std::uint32_t dataWords) {
    putLittleEndian(bytes, 4 * (dataWords + 3));
    putLittleEndian(bytes, x | y << 16U);
    putLittleEndian(bytes, widthAndHeight);
    for (std::uint32_t i = 0; i < dataWords; ++i) {
        putLittleEndian(bytes, random.bits());
    }
}

/// An image at the top left corner of a texture page: 4-bit pixels of 2 KiB, or of 64 KiB either
/// 8-bit pixels with a colour table or 16-bit ones without.
std::string makePxl(Random& random, std::uint32_t number, bool large) {
    constexpr std::uint32_t clutPresent = 8;
    const std::uint32_t mode = large ? 1 + number % 2 : 0;
    const bool clut = mode < 2;
    std::string bytes;
    putLittleEndian(bytes, 0x10);
    putLittleEndian(bytes, mode | (clut ? clutPresent : 0));
    if (clut) {
        const std::uint32_t entries = mode == 0 ? 16 : 256;
        putBlock(random, bytes, 0, 480 + number % 32, 1U << 16U | entries, entries / 2);
    }
    putBlock(random, bytes, number % 16 * 64, number / 16 % 2 * 256,
             large ? 256U << 16U | 128U : 64U << 16U | 16U, large ? 16384 : 512);
    return bytes;
}

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

std::string label(std::int32_t step) { return "walk_" + std::to_string(step); }

/// A motion of `stepNum` labelled steps over all `coordinates`.
std::string makeClp(Random& random, std::int32_t coordinates, std::int32_t stepNum,
                    std::int32_t eighths) {
    struct Group {
        std::string_view code;
        std::int32_t keyFrames;
        int values;
    };
    // All motions together must stay within the 65536 words that a step can point at.
    const std::array groups{Group{"ps0r1t1", 50 * eighths, 6}, Group{"ps0r1t0", 75 * eighths, 3},
                            Group{"ps1r0t0", 37 * eighths, 3}};
    const auto anyLabel = [&] { return label(random.below(stepNum)); };
    Text text;
    text.line("@CLP970401").line("COORDINATE").word(coordinates).endLine();
    for (std::int32_t c = 0; c < coordinates; ++c) {
        text.word(c).word(3).word(anyLabel()).endLine();
        text.word("START").word(anyLabel()).word("0x0").endLine();
        text.word("START").word(anyLabel()).word("0x1").endLine();
        text.word("KEY2").word(anyLabel()).word(anyLabel()).endLine();
    }
    text.line("# sequences: frames, type of key frame, number of the key frame");
    for (std::int32_t i = 0; i < stepNum; ++i) {
        text.line(label(i));
        const std::int32_t kind = random.below(100);
        if (kind < 2) {
            text.word("END").word("0x0").endLine();
        } else if (kind < 10) {
            text.word("GOTO").word(anyLabel()).word("0x1").word("0x2").endLine();
        } else {
            const Group& group = groups[static_cast<std::size_t>(random.below(3))];
            text.word("SEQ").word(random.between(1, 60)).word(group.code);
            text.word(random.below(group.keyFrames)).endLine();
        }
    }
    for (const Group& group : groups) {
        text.word("TYPE").word(group.code).endLine();
        for (std::int32_t i = 0; i < group.keyFrames * group.values; ++i) {
            text.real(random.real(-2000, 2000), 3);
            if (i % group.values == group.values - 1) {
                text.endLine();
            }
        }
    }
    return std::move(text.string());
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
