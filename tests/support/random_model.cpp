#include "support/random_model.h"

#include <algorithm>
#include <array>
#include <random>
#include <sstream>

namespace mqf2vxb::tests {
namespace {

/// Vertices that lie in the same coordinates.
struct Block {
    std::vector<std::uint32_t> coordinates;
    std::uint32_t first;
    std::uint32_t number;
};

class Generator {
public:
    explicit Generator(std::uint32_t seed) : random_(seed) {}

    ModelFiles make() {
        makeImages();
        makeHierarchy();
        makePolygons();
        for (std::uint32_t i = below(3); i > 0; --i) {
            model_.clp.push_back(motion());
        }
        return model_;
    }

private:
    std::uint32_t random() { return static_cast<std::uint32_t>(random_()); }
    std::uint32_t below(std::uint32_t limit) { return random() % limit; }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    std::string number(std::uint32_t limit) { return std::to_string(below(limit)); }
    std::string numbers(std::uint32_t count, std::uint32_t limit) {
        std::string text;
        for (; count > 0; --count) {
            text += " " + number(limit);
        }
        return text;
    }

    Words imageBlock(std::uint32_t x, std::uint32_t y) {
        const std::uint32_t width = 1 + below(4);
        Words words{x | y << 16U, 2 * width | 3U << 16U};
        for (std::uint32_t i = 0; i < 3 * width; ++i) {
            words.push_back(random());
        }
        return words;
    }

    void makeImages() {
        for (std::uint32_t i = 1 + below(4); i > 0; --i) {
            // A texture of 32 by 32 texels stays on its page from here.
            const Words pixel = imageBlock(64 * below(16) + below(32), 256 * below(4) + below(200));
            const bool clut = chance(60);
            model_.images.push_back(image(below(3) | (clut ? 8 : 0), pixel,
                                          clut ? imageBlock(16 * below(64), below(512)) : Words{}));
        }
    }

    void makeHierarchy() {
        coordinates_ = below(6);
        const std::uint32_t blocks = 1 + below(2 * coordinates_ + 1);
        for (std::uint32_t b = 0; b < blocks; ++b) {
            std::vector<std::uint32_t> list;
            for (std::uint32_t i = chance(20) ? 2 : 1; i > 0 && coordinates_ > 0; --i) {
                list.push_back(below(coordinates_));
            }
            blocks_.push_back({list, vertices_, 4 + below(6)});
            vertices_ += blocks_.back().number;
        }
        if (chance(40)) {
            model_.axs = "2;" + number(3) + numbers(3, 50) + ";" + number(3) + numbers(3, 50);
        }
        if (coordinates_ == 0) {
            return;
        }
        const bool groups = chance(40);
        std::ostringstream frm;
        frm << (groups ? "=g.sqx;" : "=NULL;") << coordinates_ << ";";
        for (std::uint32_t c = 0; c < coordinates_; ++c) {
            frm << numbers(15, 5000) << ' ' << (c == 0 || chance(20) ? c : below(c)) << ';';
        }
        std::ostringstream sqx;
        sqx << blocks_.size() << ";";
        std::vector<std::string> names(coordinates_);
        for (const Block& block : blocks_) {
            const std::string vertices = std::to_string(block.number) + " " +
                                         std::to_string(block.first) + "-" +
                                         std::to_string(block.first + block.number - 1) + ";";
            sqx << "b" << block.first << ' ' << vertices;
            for (const std::uint32_t c : block.coordinates) {
                names[c] += " b" + std::to_string(block.first);
                if (!groups) {
                    frm << c << ' ' << vertices;
                }
            }
        }
        for (std::uint32_t c = 0; groups && c < coordinates_; ++c) {
            frm << c << ' ' << std::count(names[c].begin(), names[c].end(), ' ') << names[c] << ';';
        }
        model_.frm = frm.str();
        model_.sqx = groups ? sqx.str() : "";
    }

    /// A vertex for a corner: of `block`, or for a shared polygon of any that lies in one place.
    std::uint32_t corner(const Block* block) {
        while (block == nullptr) {
            const Block& any = blocks_[below(static_cast<std::uint32_t>(blocks_.size()))];
            block = any.coordinates.size() == 1 ? &any : nullptr;
        }
        return block->first + below(block->number);
    }

    /// Two vertices of different coordinates, when there are such.
    std::vector<std::uint32_t> apart() {
        for (const Block& one : blocks_) {
            for (const Block& other : blocks_) {
                if (one.coordinates.size() == 1 && other.coordinates.size() == 1 &&
                    one.coordinates != other.coordinates) {
                    return {corner(&one), corner(&other)};
                }
            }
        }
        return {};
    }

    void makePolygons() {
        const bool meshes = chance(50);
        const std::uint32_t normals = chance(80) ? 1 + below(8) : 0;
        // Strips with lines, sprites and flat polygons among smooth ones; never with shared polygons,
        // whose gathering renumbers only some of the fields of such a strip.
        const bool mixed = meshes && chance(30);
        std::string polygons, materials, strips;
        std::uint32_t polygonNum = 0;
        std::uint32_t materialNum = 0;
        const std::uint32_t units = below(25);
        for (std::uint32_t unit = 0; unit < units; ++unit) {
            const std::uint32_t length = meshes && chance(60) ? 2 + below(4) : 1;
            std::vector<std::uint32_t> ends =
                !mixed && chance(35) ? apart() : std::vector<std::uint32_t>{};
            const Block* block = ends.empty()
                                     ? &blocks_[below(static_cast<std::uint32_t>(blocks_.size()))]
                                     : nullptr;
            const bool triangle = length > 1 || chance(50);
            const std::string look = material();
            const bool mixes = mixed && length > 1;
            const bool manyColours =
                look.find_first_of("GHN", look.find_first_of("FG") + 1) != std::string::npos;
            const auto addMaterial = [&](std::uint32_t first, std::uint32_t count,
                                         std::string text) {
                materials += std::to_string(first) + "-" + std::to_string(first + count - 1) + text;
                ++materialNum;
            };
            std::string flat = look;
            flat[look.find_first_of("FG")] = 'F';
            if (mixes) {
                addMaterial(polygonNum, 1, look);
            }
            addMaterial(polygonNum + (mixes ? 1 : 0), length - (mixes ? 1 : 0),
                        mixes ? flat : look);
            strips += std::to_string(length);
            for (std::uint32_t i = 0; i < length; ++i) {
                const bool free = mixes && i > 0;
                const std::uint32_t type = free && !manyColours && chance(40) ? 2 + below(2)
                                           : triangle                         ? 0
                                                                              : 1;
                const std::size_t corners = type < 2 ? 4 : 4 - type;
                std::array<std::uint32_t, 4> vertex{};
                for (std::size_t k = 0; k < vertex.size(); ++k) {
                    vertex[k] = k < ends.size() ? ends[k] : k < corners ? corner(block) : below(20);
                }
                polygons += std::to_string(type);
                for (const std::uint32_t v : vertex) {
                    polygons += " " + std::to_string(v);
                }
                polygons += numbers(1, std::max(normals, 1U)) +
                            numbers(3, std::max(normals, 1U) + (free ? 3 : 0)) + ";";
                strips += " " + std::to_string(polygonNum++);
            }
            strips += ";";
        }
        model_.geo = std::to_string(vertices_) + " " + std::to_string(normals) + " " +
                     std::to_string(polygonNum) + ";";
        for (std::uint32_t i = vertices_ + normals; i > 0; --i) {
            model_.geo += number(1000) + numbers(2, 40000) + ";";
        }
        model_.geo += polygons;
        model_.srf = std::to_string(materialNum) + ";" + materials;
        model_.bnd = meshes ? std::to_string(units) + ";" + strips : "";
    }

    /// An SRF line behind its polygons.
    std::string material() {
        const char kind = "CGTDHWSN"[below(8)];
        const bool window = std::string("WSN").find(kind) != std::string::npos;
        const bool textured = window || std::string("TDH").find(kind) != std::string::npos;
        const bool perVertex = std::string("GHN").find(kind) != std::string::npos;
        const bool unlit = chance(50);
        const std::uint32_t flag =
            below(16) << 1U | (unlit ? 1 : 0) | (unlit && !window && chance(40) ? 0x80U : 0);
        std::ostringstream line;
        line << ' ' << std::hex << flag << std::dec << (chance(50) ? " F " : " G ") << kind;
        if (textured) {
            line << ' ' << below(static_cast<std::uint32_t>(model_.images.size()));
        }
        line << numbers(window ? 4 : 0, 256) << numbers(textured ? 8 : 0, 32)
             << numbers(perVertex                                            ? 12
                        : std::string("CDS").find(kind) != std::string::npos ? 3
                                                                             : 0,
                        256)
             << ';';
        return line.str();
    }

    std::string motion() {
        constexpr std::array<const char*, 12> codes{"ps0r0t0", "ps0r0t1", "ps0r0t9", "ps9r0t9",
                                                    "ps1r0t0", "ps0r1t0", "ps9r1t0", "ps0r1t1",
                                                    "ps9r1t1", "ps1r1t1", "ps0r1t9", "ps1r1t9"};
        std::ostringstream text;
        const std::uint32_t indices = below(4);
        text << "COORDINATE;" << indices << ';';
        for (std::uint32_t i = 0; i < indices; ++i) {
            const bool header = chance(50);
            text << i << (header ? " 2 l" : " 0 l") << below(6) << ';'
                 << (header ? "START l1 0x2;KEY2 l0 l2;" : "");
        }
        const std::uint32_t start = below(12);
        const std::uint32_t types = 1 + below(4);
        const auto code = [&](std::uint32_t type) { return codes[(start + type) % codes.size()]; };
        const std::uint32_t steps = below(5);
        for (std::uint32_t i = 0; i < steps; ++i) {
            text << 'l' << i << ";SEQ " << below(256) << ' ' << code(i % types) << ' ' << i % 2
                 << ";GOTO l" << below(6) << " 0x" << below(10) << " 0x3;";
        }
        text << "END 0x" << below(10) << ';';
        for (std::uint32_t i = 0; i < types; ++i) {
            text << "TYPE " << code(i) << ';' << numbers(9, 70000) << ';' << numbers(9, 100) << ';';
        }
        return text.str();
    }

    std::mt19937 random_;
    ModelFiles model_;
    std::uint32_t coordinates_ = 0;
    std::uint32_t vertices_ = 0;
    std::vector<Block> blocks_;
};

}  // namespace

ModelFiles randomModel(std::uint32_t seed) { return Generator(seed).make(); }

Files damagedModel(std::uint32_t seed) {
    static const std::vector<std::string> patches{"",
                                                  " ",
                                                  "\t",
                                                  "\r",
                                                  "\n",
                                                  "\r\n",
                                                  "\n# x\n",
                                                  "-",
                                                  "+",
                                                  ".",
                                                  "0",
                                                  "x",
                                                  "e5",
                                                  "1.5",
                                                  "0x1",
                                                  "1234567",
                                                  "8388609.5",
                                                  "16777217",
                                                  "-99999999",
                                                  ",",
                                                  "#",
                                                  "\v1",
                                                  "7 8",
                                                  " s1 ",
                                                  "ps1",
                                                  "TYPE ",
                                                  "END 0x1",
                                                  "0x7f 0x1 ",
                                                  std::string(1, 0)};
    std::mt19937 random(seed);
    Files damaged = randomModel(seed % 100).files();
    for (auto& [name, text] : damaged) {
        if (random() % 2 != 0 && text.size() > 12) {
            text.replace(11 + random() % (text.size() - 11), random() % 3,
                         patches[random() % patches.size()]);
        }
    }
    return damaged;
}

}  // namespace mqf2vxb::tests
