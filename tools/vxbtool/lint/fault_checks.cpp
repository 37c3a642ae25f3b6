#include "vxbtool/lint/fault_checks.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "format/format.h"
#include "format/key_frame_forms.h"
#include "packets/packet_groups.h"
#include "packets/texture_words.h"
#include "text/scan.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

bool wasRead(const TracedFile* file) { return file != nullptr && file->whole; }

template <class Record>
bool isIn(const Table<Record>& table, std::int64_t index) {
    return index >= 0 && static_cast<std::size_t>(index) < table.size();
}

/// Looks at one model's polygons, materials and meshes.
class DrawingFaults {
public:
    DrawingFaults(const LintedModel& linted, Findings& findings)
        : linted_(linted), model_(linted.model), source_(linted.source), findings_(findings) {}

    void check() {
        if (!model_.description.geo.given) {
            if (source_.srf != nullptr || source_.frm != nullptr || source_.bnd != nullptr) {
                findings_.add(kind::noGeometry, {source_.mqf, 0});
            }
            return;
        }
        if (!wasRead(source_.geo) || !wasRead(source_.srf)) {
            return;
        }
        for (const MaterialRecord& material : model_.materials.records) {
            if (isIn(linted_.polygons, material.polygon)) {
                checkPolygon(material);
            } else {
                findings_.add(kind::noPolygon, source_.material(material.line, listWord),
                              fmt::arg("polygon", material.polygon),
                              fmt::arg("count", linted_.polygons.size()));
            }
        }
        for (std::size_t i = 0; i < model_.materials.lines.size(); ++i) {
            checkLine(i);
        }
        if (wasRead(source_.bnd)) {
            checkMeshes();
        }
    }

private:
    static constexpr std::size_t listWord = 0;
    static constexpr std::size_t flagWord = 1;
    static constexpr std::size_t numberWord = 4;
    // Of a polygon's line in the GEO file.
    static constexpr std::size_t vertexWord = 1;
    static constexpr std::size_t normalWord = 5;

    void checkPolygon(const MaterialRecord& material) {
        const auto number = static_cast<std::size_t>(material.polygon);
        const PolygonRecord& polygon = linted_.polygons[number];
        const std::size_t corners = vertexCount(polygon.type);
        if (!hasDrawingCode(polygon.type)) {
            findings_.add(kind::unknownPolygonKind, source_.polygon(number),
                          fmt::arg("polygon", number), fmt::arg("kind", polygon.type));
        }
        for (std::size_t k = 0; k < corners; ++k) {
            checkIndex(kind::noVertex, number, vertexWord + k, polygon.vertex[k], model_.vertices);
        }
        const MaterialAppearance look = model_.materials.appearance(material);
        if (model_.normals.empty() || look.unlit()) {
            return;
        }
        for (std::size_t k = 0; k < (look.shading == 'G' ? corners : 1); ++k) {
            checkIndex(kind::noNormal, number, normalWord + k, polygon.normal[k], model_.normals);
        }
    }

    template <class Record>
    void checkIndex(const FindingKind& kind, std::size_t polygon, std::size_t word,
                    std::int32_t index, const Table<Record>& table) {
        if (!isIn(table, index)) {
            findings_.add(kind, source_.polygon(polygon, word), fmt::arg("polygon", polygon),
                          fmt::arg("index", index), fmt::arg("count", table.size()));
        }
    }

    void checkLine(std::size_t line) {
        const MaterialAppearance look = model_.materials.appearance(model_.materials.lines[line]);
        const auto place = [&](std::size_t number) {
            return source_.material(line, numberWord + number);
        };
        if (look.textured() && !isIn(model_.images, look.texture())) {
            findings_.add(kind::noTexture, place(0), fmt::arg("texture", look.texture()),
                          fmt::arg("count", model_.images.size()));
        }
        const MaterialKind kind = materialKind(look.kind);
        if (kind.textured && kind.colours == 1 && !look.unlit()) {
            return;  // packets do not carry this colour
        }
        const std::int32_t* numbers =
            model_.materials.numbers.records().data() + model_.materials.lines[line].firstNumber;
        for (std::size_t i = kind.colourStart(); i < kind.numbers(); ++i) {
            if (!format::colourFits(static_cast<std::uint32_t>(numbers[i]))) {
                findings_.add(kind::noColour, place(i), fmt::arg("value", numbers[i]));
            }
        }
    }

    void checkMeshes() {
        constexpr std::uint32_t none = 0xFFFFFFFFU;
        std::vector<bool> named(linted_.polygons.size());
        for (const MaterialRecord& material : model_.materials.records) {
            if (isIn(linted_.polygons, material.polygon)) {
                named[static_cast<std::size_t>(material.polygon)] = true;
            }
        }
        std::vector<std::uint32_t> meshOf(linted_.polygons.size(), none);
        std::size_t token = 1;  // behind the number of meshes
        for (std::uint32_t mesh = 0; mesh < model_.meshes.size(); ++mesh) {
            const auto place = [&] {
                return SourcePlace{source_.bnd, source_.bnd->tokens[token].offset};
            };
            if (model_.meshes[mesh].polyNum == 0) {
                findings_.add(kind::meshEmpty, place(), fmt::arg("mesh", mesh));
            }
            ++token;
            for (const MeshPolygon& polygon : model_.polygonsOf(model_.meshes[mesh])) {
                const auto number = static_cast<std::size_t>(polygon.number);
                const auto add = [&](const FindingKind& kind, std::size_t value) {
                    findings_.add(kind, place(), fmt::arg("mesh", mesh),
                                  fmt::arg("polygon", polygon.number), fmt::arg("count", value),
                                  fmt::arg("other", value));
                };
                if (!isIn(linted_.polygons, polygon.number)) {
                    add(kind::noMeshPolygon, linted_.polygons.size());
                } else if (!named[number]) {
                    add(kind::meshPolygonPlain, 0);
                } else if (meshOf[number] != none && meshOf[number] != mesh) {
                    add(kind::meshPolygonTaken, meshOf[number]);
                } else {
                    meshOf[number] = mesh;
                }
                ++token;
            }
        }
        for (const MaterialRecord& material : model_.materials.records) {
            if (isIn(linted_.polygons, material.polygon) &&
                meshOf[static_cast<std::size_t>(material.polygon)] == none) {
                findings_.add(kind::polygonInNoMesh, source_.material(material.line, listWord),
                              fmt::arg("polygon", material.polygon));
            }
        }
    }

    const LintedModel& linted_;
    const Model& model_;
    const SourceMap& source_;
    Findings& findings_;
};

/// Looks at what is drawn of an organised model, as the writers do.
class PacketFaults {
public:
    PacketFaults(const LintedModel& linted, Findings& findings)
        : linted_(linted), findings_(findings) {}

    void check() {
        const Model& model = linted_.model;
        const auto strip = [&](PrimitiveTypeCode type) { return type_code::isStrip(type); };
        for (const MaterialRecord& material : model.materials.records) {
            if (findPacketForm(material.type) == nullptr && !strip(material.type)) {
                formMissing(material);
            }
        }
        for (const MeshRecord& mesh : model.meshes) {
            if (findPacketForm(mesh.type) == nullptr && strip(mesh.type)) {
                formMissing(model.materials.records[model.polygonsOf(mesh).front().material]);
            }
        }
        walkDrawn(model, *this);
    }

    void polygon(const PacketForm& form, const MaterialRecord& material,
                 const DrawnPolygon& drawn) {
        checkPage(form, material, drawn);
    }
    void strip(std::size_t mesh) { mesh_ = mesh; }
    void stripPolygon(const PacketForm& form, const DrawnPolygon& drawn, std::size_t k) {
        const Model& model = linted_.model;
        const MeshPolygon& polygon = model.polygonsOf(model.meshes[mesh_])[k];
        checkPage(form, model.materials.records[polygon.material], drawn);
    }

private:
    void formMissing(const MaterialRecord& material) {
        const auto number = static_cast<std::size_t>(material.polygon);
        const std::int32_t type = linted_.polygons[number].type;
        const auto polygon = fmt::arg("polygon", number);
        if (type == polygon_type::line || type == polygon_type::sprite) {
            findings_.add(kind::notByItself, linted_.source.polygon(number), polygon,
                          fmt::arg("shape", type == polygon_type::line ? "line" : "sprite"));
        } else if (hasDrawingCode(type)) {
            constexpr std::size_t flagWord = 1;
            findings_.add(kind::noPacketForm, linted_.source.material(material.line, flagWord),
                          polygon);
        }
    }

    void checkPage(const PacketForm& form, const MaterialRecord& material,
                   const DrawnPolygon& drawn) {
        if (!form.textured || form.windowed()) {
            return;
        }
        const auto image = static_cast<std::size_t>(drawn.appearance.texture());
        if (image >= linted_.model.images.size()) {
            return;
        }
        const ImagePlacement placement(linted_.model.images[image]);
        std::size_t corners = 1;
        while (corners <= form.corners() && placement.pageTextures(drawn, corners)) {
            ++corners;
        }
        if (corners > form.corners()) {
            return;
        }
        constexpr std::size_t wordsBeforeNumbers = 4;
        const std::size_t corner = drawn.corners()[corners - 1];
        const std::size_t word =
            wordsBeforeNumbers + materialKind(drawn.appearance.kind).cornerStart() + 2 * corner;
        findings_.add(kind::pageEdge, linted_.source.material(material.line, word),
                      fmt::arg("polygon", drawn.number), fmt::arg("image", image),
                      fmt::arg("corner", corner), fmt::arg("u", drawn.u(corners - 1)),
                      fmt::arg("v", drawn.v(corners - 1)), fmt::arg("first", drawn.corners()[0]),
                      fmt::arg("u0", drawn.u(0)), fmt::arg("v0", drawn.v(0)));
    }

    const LintedModel& linted_;
    Findings& findings_;
    std::size_t mesh_ = 0;
};

std::string_view wordOf(const TracedLine& line, std::size_t number) {
    std::string_view rest = line.text;
    for (std::size_t i = 0; i < number; ++i) {
        scanWord(rest);
    }
    return scanWord(rest);
}

/// Looks at the SEQ and TYPE lines of one motion beside the records that were read from them.
void checkMotion(const MotionRecord& motion, const TracedFile& file, Findings& findings) {
    struct Groups {
        std::size_t number = 0;
        std::uint32_t keyFrames = 0;
    };
    std::map<PrimitiveTypeCode, Groups> groups;
    for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
        Groups& known = groups[group.type];
        ++known.number;
        known.keyFrames = group.packetNum;
    }
    std::set<PrimitiveTypeCode> shown;
    std::size_t step = 0;
    std::size_t group = 0;
    std::set<PrimitiveTypeCode> met;
    for (const TracedLine& line : file.lines) {
        const std::string_view keyword = wordOf(line, 0);
        if (keyword == "SEQ" && step < motion.seqTable.size()) {
            const PrimitiveTypeCode type = motion.seqTable[step].type;
            shown.insert(type);
            if (findKeyFrameForm(type) == nullptr) {
                findings.add(kind::noKeyFrameType, wordPlace(file, line, 2));
            }
            std::string_view number = wordOf(line, 3);
            std::int32_t keyFrame = 0;
            scanInteger(number, keyFrame);
            const auto found = groups.find(type);
            if (found != groups.end() && found->second.number == 1 &&
                static_cast<std::uint32_t>(keyFrame) >= found->second.keyFrames) {
                findings.add(kind::noKeyFrame, wordPlace(file, line, 3),
                             fmt::arg("keyFrame", keyFrame),
                             fmt::arg("count", found->second.keyFrames));
            }
        } else if (keyword == "TYPE" && group < motion.packetTypeTable.size()) {
            const PrimitiveTypeCode type = motion.packetTypeTable[group++].type;
            if (!met.insert(type).second && shown.contains(type)) {
                findings.add(kind::keyFrameTypeAgain, wordPlace(file, line, 1));
            } else if (findKeyFrameForm(type) == nullptr) {
                findings.add(kind::noKeyFrameType, wordPlace(file, line, 1));
            }
        }
        step += keyword == "SEQ" || keyword == "GOTO" || keyword == "END" ? 1 : 0;
    }
}

}  // namespace

void checkFaults(const LintedModel& linted, bool organised, Findings& findings) {
    DrawingFaults(linted, findings).check();
    if (organised) {
        PacketFaults(linted, findings).check();
    }
    const std::vector<const TracedFile*>& motions = linted.source.motions;
    for (std::size_t i = 0; i < motions.size(); ++i) {
        if (wasRead(motions[i])) {
            checkMotion(linted.model.motions[i], *motions[i], findings);
        }
    }
}

}  // namespace vxbtool::lint
