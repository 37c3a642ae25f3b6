#include "file_texts.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace bench {
namespace {

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

std::string label(std::int32_t step) { return "walk_" + std::to_string(step); }

}  // namespace

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

}  // namespace bench
