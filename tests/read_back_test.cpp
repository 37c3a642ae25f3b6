#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <sstream>

#include "support/random_model.h"
#include "support/told_lines.h"
#include "vxb/packet_decoder.h"
#include "vxb/vxb_reader.h"

namespace mqf2vxb::tests {
namespace {

// What a random model's text says, worked out again in the plainest way, against what the reader
// finds in the converted file: polygon by polygon and image by image.

using Triple = std::array<float, 3>;

struct ToldPolygon {
    std::size_t points = 0;  ///< how many of its fields are vertices
    std::uint32_t code = 0;
    std::array<std::size_t, 4> vertex{};
    std::array<std::size_t, 4> normal{};
    std::array<std::size_t, 4> corner{0, 1, 2, 3};  ///< of the SRF line's per-corner numbers
    std::uint32_t flag = 0;
    char shading = 0;
    char kind = 0;
    Numbers texture;  ///< the image
    Numbers window;   ///< width, height, x, y
    Numbers uv;       ///< of four corners
    Numbers colours;
    std::vector<std::int64_t> coordinates;  ///< empty for a shared polygon
    std::size_t place = 0;                  ///< in its strip

    [[nodiscard]] bool is(std::string_view kinds) const {
        return kinds.find(kind) != std::string_view::npos;
    }
    [[nodiscard]] bool unlit() const { return (flag & 1U) != 0; }
};

class ToldModel {
public:
    explicit ToldModel(const ModelFiles& model) {
        readGeometry(linesOf(model.geo));
        readHierarchy(linesOf(model.frm), linesOf(model.sqx));
        subtractPivots(linesOf(model.axs));
        readMaterials(linesOf(model.srf));
        makeCodes();
        makeStrips(linesOf(model.bnd));
    }

    std::vector<Triple> vertices;
    std::vector<Triple> normals;
    std::vector<ToldPolygon> polygons;

private:
    static Triple triple(const Numbers& numbers, std::size_t first) {
        return {static_cast<float>(numbers.at(first)), static_cast<float>(numbers.at(first + 1)),
                static_cast<float>(numbers.at(first + 2))};
    }

    void readGeometry(const std::vector<std::string>& text) {
        const Numbers counts = numbersOf(text.at(0));
        for (std::int64_t i = 1; i <= counts.at(0) + counts.at(1); ++i) {
            (i <= counts[0] ? vertices : normals)
                .push_back(triple(numbersOf(text.at(static_cast<std::size_t>(i))), 0));
        }
        for (std::int64_t i = 0; i < counts.at(2); ++i) {
            const Numbers line =
                numbersOf(text.at(static_cast<std::size_t>(1 + counts[0] + counts[1] + i)));
            ToldPolygon& polygon = polygons.emplace_back();
            constexpr std::array<std::uint32_t, 4> shapes{8, 0x10, 0, 0x20};
            polygon.code = shapes.at(static_cast<std::size_t>(line.at(0)));
            polygon.points =
                std::array<std::size_t, 4>{3, 4, 2, 1}.at(static_cast<std::size_t>(line[0]));
            for (std::size_t k = 0; k < 4; ++k) {
                polygon.vertex[k] = static_cast<std::size_t>(line.at(1 + k));
                polygon.normal[k] = static_cast<std::size_t>(line.at(5 + k));
            }
        }
        coordinates_.resize(vertices.size(), {0});
    }

    void readHierarchy(const std::vector<std::string>& frm, const std::vector<std::string>& sqx) {
        if (frm.empty()) {
            return;
        }
        std::map<std::string, std::string> groups;
        for (std::size_t i = 1; i < sqx.size(); ++i) {
            const std::size_t blank = sqx[i].find(' ');
            groups[sqx[i].substr(0, blank)] = sqx[i].substr(blank);
        }
        const auto number = static_cast<std::size_t>(std::stoul(frm.at(1)));
        std::set<std::size_t> named;
        const auto add = [&](std::int64_t coordinate, const std::string& assigned) {
            const Numbers range = numbersOf(assigned.substr(assigned.rfind(' ')));
            const std::size_t dash = assigned.rfind('-');
            const auto first = static_cast<std::size_t>(
                std::stoul(assigned.substr(assigned.rfind(' ', dash) + 1)));
            for (std::size_t v = first; v <= std::stoul(assigned.substr(dash + 1)); ++v) {
                if (named.insert(v).second) {
                    coordinates_.at(v).clear();
                }
                coordinates_[v].push_back(coordinate);
            }
        };
        for (std::size_t i = 2 + number; i < frm.size(); ++i) {
            if (groups.empty()) {
                add(std::stoll(frm[i]), frm[i].substr(frm[i].find(' ')));
                continue;
            }
            std::istringstream line(frm[i]);
            std::int64_t coordinate = 0, count = 0;
            line >> coordinate >> count;
            for (std::string name; line >> name;) {
                add(coordinate, groups.at(name));
            }
        }
    }

    void subtractPivots(const std::vector<std::string>& axs) {
        for (std::size_t i = 1; i < axs.size(); ++i) {
            const Numbers pivot = numbersOf(axs[i]);
            for (std::size_t v = 0; v < vertices.size(); ++v) {
                for (auto times =
                         std::count(coordinates_[v].begin(), coordinates_[v].end(), pivot.at(0));
                     times > 0; --times) {
                    for (std::size_t k = 0; k < 3; ++k) {
                        vertices[v][k] -= triple(pivot, 1)[k];
                    }
                }
            }
        }
    }

    void readMaterials(const std::vector<std::string>& srf) {
        for (std::size_t i = 1; i < srf.size(); ++i) {
            std::istringstream in(srf[i]);
            std::string range, shading, kind;
            ToldPolygon look;
            in >> range >> std::hex >> look.flag >> shading >> kind;
            look.shading = shading.at(0);
            look.kind = kind.at(0);
            Numbers numbers = numbersOf(srf[i], 4);
            const auto take = [&](std::size_t count) {
                const auto end = numbers.begin() + static_cast<std::ptrdiff_t>(count);
                Numbers taken(numbers.begin(), end);
                numbers.erase(numbers.begin(), end);
                return taken;
            };
            look.texture = take(look.is("TDHWSN") ? 1 : 0);
            look.window = take(look.is("WSN") ? 4 : 0);
            look.uv = take(look.is("TDHWSN") ? 8 : 0);
            look.colours = numbers;
            for (std::size_t p = std::stoul(range);
                 p <= std::stoul(range.substr(range.find('-') + 1)); ++p) {
                look.code = polygons.at(p).code;
                look.points = polygons[p].points;
                look.vertex = polygons[p].vertex;
                look.normal = polygons[p].normal;
                polygons[p] = look;
            }
        }
    }

    void makeCodes() {
        for (ToldPolygon& p : polygons) {
            const bool coloured = p.is("GHN");
            p.code |= p.is("TDHWSN") ? 1 : 0;
            p.code |= coloured && !p.unlit() ? 2 : 0;
            p.code |= (p.unlit() ? coloured : p.shading == 'G') ? 4 : 0;
            p.code |= p.unlit() ? 0x40040 : 0;
            p.code |= (p.flag & 0x80U) != 0 ? 0x100 : 0;
            p.code |= p.is("WSN") ? 0x200 : 0;
            p.code |= (p.flag & 2U) != 0 ? 0x100000 : 0;
            p.code |= (p.flag & 4U) != 0 ? 0x200000 : 0;
            p.coordinates = coordinates_.at(p.vertex[0]);
            for (std::size_t k = 1; k < p.points; ++k) {
                if (coordinates_.at(p.vertex[k]).at(0) != coordinates_.at(p.vertex[0]).at(0)) {
                    p.coordinates.clear();
                    p.code |= 0x1000000;
                    break;
                }
            }
        }
    }

    void makeStrips(const std::vector<std::string>& bnd) {
        for (std::size_t i = 1; i < bnd.size(); ++i) {
            const Numbers mesh = numbersOf(bnd[i], 1);
            std::array<std::size_t, 3> latest{};
            for (std::size_t k = 0; mesh.size() > 1 && k < mesh.size(); ++k) {
                ToldPolygon& p = polygons.at(static_cast<std::size_t>(mesh[k]));
                p.code = polygons[static_cast<std::size_t>(mesh[0])].code | 0x18;
                p.place = k;
                for (std::size_t j = 1; k > 0 && j < 3; ++j) {
                    const auto* const same =
                        std::find(p.vertex.begin(), p.vertex.begin() + 3, latest[j]);
                    if (same != p.vertex.begin() + 3) {
                        const auto from = static_cast<std::size_t>(same - p.vertex.begin());
                        std::swap(p.vertex[j - 1], p.vertex[from]);
                        std::swap(p.corner[j - 1], p.corner[from]);
                        if (p.shading == 'G') {
                            std::swap(p.normal[j - 1], p.normal[from]);
                        }
                    }
                }
                latest = k == 0 ? std::array{p.vertex[0], p.vertex[1], p.vertex[2]}
                                : std::array{latest[1], latest[2], p.vertex[2]};
            }
        }
    }

    std::vector<Numbers> coordinates_;  // of each vertex
};

/// The words of a random model's image.
struct ToldImage {
    std::int64_t mode, x, y, clutX, clutY;
};

ToldImage toldImage(const std::string& bytes) {
    const Words words = wordsOf(bytes);
    const bool clut = (words.at(1) & 8U) != 0;
    const std::size_t pixel = clut ? 3 + words.at(2) / 4 : 3;
    return {words[1] & 3U, words.at(pixel) & 0xFFFFU, words[pixel] >> 16U,
            clut ? words.at(3) & 0xFFFFU : 0, clut ? words[3] >> 16U : 0};
}

/// Compares a polygon of the file with one of the text.
class Comparison {
public:
    Comparison(const VxbFile& file, const ToldModel& told, const std::vector<ToldImage>& images,
               float scale)
        : file_(file), told_(told), images_(images), scale_(scale) {}

    [[nodiscard]] bool equal(bool shared, const PacketPolygon& packet,
                             const ToldPolygon& polygon) const {
        if (packet.place != polygon.place) {
            return false;
        }
        bool same = true;
        for (std::size_t k = 0; k < packet.corners(); ++k) {
            if (packet.has(cornerField(Field::V0, k))) {
                same &= polygon.points < 3 ? packet.vertex(k) == polygon.vertex[k]
                                           : equal(file_.point(shared ? file_.vertices.shared
                                                                      : everything(file_.vertices),
                                                               packet.vertex(k)),
                                                   told_.vertices.at(polygon.vertex[k]), scale_);
            }
            if (packet.has(cornerField(Field::N0, k)) && !told_.normals.empty()) {
                // A flat shared polygon has its first normal at every corner.
                const std::size_t n = shared && polygon.shading == 'F' ? 0 : k;
                const std::uint32_t index = packet[cornerField(Field::N0, k)];
                // Nothing looks up the normals 1 to 3 of a flat polygon.
                same &= polygon.normal[n] >= told_.normals.size()
                            ? index == polygon.normal[n]
                            : equal(file_.point(shared ? file_.normals.shared
                                                       : everything(file_.normals),
                                                index),
                                    told_.normals.at(polygon.normal[n]), 4096);
            }
            if (packet.has(cornerField(Field::C0, k))) {
                same &= (packet[cornerField(Field::C0, k)] & 0xFFFFFFU) == colour(polygon, k);
            }
            if (packet.has(cornerField(Field::T0, k))) {
                same &= equalTexel(packet, polygon, k);
            }
        }
        return same && (!packet.has(Field::page) || equalPlaces(packet, polygon));
    }

private:
    /// Independent packets count vertices from the first of all.
    static PointBlock everything(const PointSection& section) {
        return {section.independent.offset, section.independent.number + section.shared.number};
    }

    static bool equal(Point point, const Triple& told, float factor) {
        const auto same = [&](std::int16_t value, float exact) {
            return value == static_cast<std::int16_t>(
                                static_cast<std::int64_t>(static_cast<double>(exact) * factor));
        };
        return same(point.x, told[0]) && same(point.y, told[1]) && same(point.z, told[2]);
    }

    static std::uint32_t colour(const ToldPolygon& polygon, std::size_t corner) {
        if (polygon.is("TW") && polygon.unlit()) {
            return 0x808080;
        }
        const std::size_t first = polygon.is("GHN") ? 3 * polygon.corner[corner] : 0;
        return static_cast<std::uint32_t>(polygon.colours.at(first) |
                                          polygon.colours.at(first + 1) << 8U |
                                          polygon.colours.at(first + 2) << 16U);
    }

    /// The texel that is drawn lies in the image where the text says.
    [[nodiscard]] bool equalTexel(const PacketPolygon& packet, const ToldPolygon& polygon,
                                  std::size_t corner) const {
        const std::uint32_t field = packet[cornerField(Field::T0, corner)];
        const std::int64_t u = polygon.uv.at(2 * polygon.corner[corner]);
        const std::int64_t v = polygon.uv.at(2 * polygon.corner[corner] + 1);
        if (packet.has(Field::window)) {
            return field == static_cast<std::uint32_t>(u | v << 8U);
        }
        const ToldImage& image = images_.at(static_cast<std::size_t>(polygon.texture[0]));
        const std::int64_t texels = 4 >> image.mode;  // in 16 bits
        return (image.x / 64 * 64) * texels + (field & 0xFFU) == image.x * texels + u &&
               image.y / 256 * 256 + (field >> 8U) == image.y + v;
    }

    [[nodiscard]] bool equalPlaces(const PacketPolygon& packet, const ToldPolygon& polygon) const {
        const ToldImage& image = images_.at(static_cast<std::size_t>(polygon.texture[0]));
        const std::uint32_t page = packet[Field::page];
        const std::uint32_t clut = packet[Field::clut];
        bool same = (page & 15U) == image.x / 64 && (page >> 4U & 1U) == (image.y / 256) % 2 &&
                    (page >> 11U & 1U) == image.y / 512 && (page >> 7U & 3U) == image.mode &&
                    (page >> 5U & 3U) == (polygon.flag >> 3U & 3U) &&
                    (clut & 63U) * 16 == image.clutX / 16 * 16 && clut >> 6U == image.clutY;
        if (packet.has(Field::window)) {
            const std::uint32_t word = packet[Field::window];
            const std::int64_t x = polygon.window[2] + image.x % 64 * (4 >> image.mode);
            const std::int64_t y = polygon.window[3] + image.y % 256;
            same &= word >> 24U == 0xE2U;
            same &= (word & 31U) == (-polygon.window[0] & 255) / 8;
            same &= (word >> 5U & 31U) == (-polygon.window[1] & 255) / 8;
            same &= (word >> 10U & 31U) == (x & 255) / 8;
            same &= (word >> 15U & 31U) == (y & 255) / 8;
        }
        return same;
    }

    const VxbFile& file_;
    const ToldModel& told_;
    const std::vector<ToldImage>& images_;
    float scale_;
};

/// The coordinates whose headers list each packet group.
std::map<std::uint32_t, std::set<std::int64_t>> coordinatesOfGroups(const VxbFile& file) {
    std::map<std::uint32_t, std::set<std::int64_t>> result;
    for (const PrimitiveHeader& header : file.primitiveHeaders) {
        for (std::uint32_t d = 0; d < header.descriptionNum; ++d) {
            const auto group = file.descriptions.at(header.firstDescription + d).group;
            if (group && header.coordinate) {
                result[*group].insert(*header.coordinate);
            }
        }
    }
    return result;
}

TEST(ReadBack, EveryPolygonIsDrawnOnceAsTheTextSays) {
    for (std::uint32_t seed = 1; seed <= 300; ++seed) {
        const ModelFiles model = randomModel(seed);
        const ToldModel told(model);
        std::vector<ToldImage> images;
        for (const std::string& bytes : model.images) {
            images.push_back(toldImage(bytes));
        }
        RunOptions options;
        options.scale = seed % 2 == 0 ? 0.37F : 1.0F;
        const VxbFile file = readVxb(bytesOf(convertFiles(model, options).words()));
        const auto coordinates = coordinatesOfGroups(file);
        const Comparison comparison(file, told, images, options.scale);
        std::vector<bool> found(told.polygons.size());
        for (std::uint32_t g = 0; g < file.packetGroups.size(); ++g) {
            const PacketGroup& group = file.packetGroups[g];
            forEachPolygon(file, group, [&](const PacketPolygon& packet) {
                std::size_t p = 0;
                while (p < found.size() &&
                       (found[p] || told.polygons[p].code != group.code ||
                        !comparison.equal(group.shared, packet, told.polygons[p]))) {
                    ++p;
                }
                ASSERT_LT(p, found.size()) << "seed " << seed << ", word " << packet.offset;
                found[p] = true;
                const Numbers& list = told.polygons[p].coordinates;
                if (!group.shared && !model.frm.empty()) {
                    EXPECT_EQ(coordinates.at(g), std::set<std::int64_t>(list.begin(), list.end()))
                        << "seed " << seed << ", word " << packet.offset;
                }
            });
        }
        EXPECT_EQ(std::count(found.begin(), found.end(), false), 0) << "seed " << seed;
    }
}

TEST(ReadBack, ImagesAreWhereAndWhatTheirFilesSay) {
    for (std::uint32_t seed = 1; seed <= 100; ++seed) {
        const ModelFiles model = randomModel(seed);
        const VxbFile file = readVxb(bytesOf(convertFiles(model).words()));
        ASSERT_EQ(file.images.size(), model.images.size());
        std::vector<std::string> written;
        const auto words = [&](const ImageBlock& block) {
            const auto first = file.words.begin() + block.offset;
            Words result{block.x | block.y << 16U, block.width | block.height << 16U};
            result.insert(result.end(), first, first + block.words);
            return result;
        };
        for (const Image& found : file.images) {
            // The depth stands in the packets alone.
            written.push_back(image(found.clut ? 8 : 0, words(found.pixels),
                                    found.clut ? words(*found.clut) : Words{}));
        }
        for (const std::string& bytes : model.images) {
            std::string plain = bytes;
            plain[4] = static_cast<char>(plain[4] & 8);
            const auto same = std::find(written.begin(), written.end(), plain);
            ASSERT_NE(same, written.end()) << "seed " << seed;
            written.erase(same);
        }
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
