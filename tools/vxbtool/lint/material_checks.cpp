#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "vxbtool/lint/model_checks.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

// Positions of the words of an SRF line.
constexpr std::size_t listWord = 0;
constexpr std::size_t flagWord = 1;
constexpr std::size_t shadingWord = 2;
constexpr std::size_t kindWord = 3;

constexpr std::uint32_t texturePageBits = 0x18;
constexpr std::uint32_t knownFlags = material_flag::unlit | material_flag::bit02 |
                                     material_flag::bit04 | material_flag::doubleImage |
                                     texturePageBits;

/// What stands behind the digits of an item of the polygon list.
void checkPolygonList(const TracedFile& file, const SourcePlace& list, Findings& findings) {
    std::string_view rest = std::string_view(file.text).substr(list.offset);
    rest = rest.substr(0, rest.find_first_of(" \t\r\n"));
    const auto skipNumber = [&rest] {
        rest.remove_prefix(std::min(rest.find_first_not_of("0123456789"), rest.size()));
    };
    while (!rest.empty()) {
        skipNumber();
        if (rest.starts_with('-')) {
            rest.remove_prefix(1);
            skipNumber();
        }
        const std::string_view left = rest.substr(0, rest.find(','));
        if (!left.empty()) {
            const auto offset = static_cast<std::size_t>(left.data() - file.text.data());
            findings.add(kind::leftOver, {&file, offset}, fmt::arg("text", left));
        }
        rest.remove_prefix(std::min(left.size() + 1, rest.size()));
    }
}

void checkLine(const LintedModel& linted, std::size_t number, Findings& findings) {
    const MaterialLine& line = linted.model.materials.lines[number];
    const MaterialKind materialKind = mqf2vxb::materialKind(line.kind);
    const auto place = [&](std::size_t word) { return linted.source.material(number, word); };
    const bool unlit = (line.flag & material_flag::unlit) != 0;
    if (line.shading != 'F' && line.shading != 'G') {
        findings.add(kind::unknownShading, place(shadingWord), fmt::arg("letter", line.shading));
    }
    if (!materialKind.textured && materialKind.colours == 0) {
        findings.add(kind::unknownMaterial, place(kindWord), fmt::arg("letter", line.kind));
    }
    if ((line.flag & ~knownFlags) != 0) {
        findings.add(kind::unknownFlag, place(flagWord), fmt::arg("bits", line.flag & ~knownFlags),
                     fmt::arg("flag", line.flag));
    }
    if ((line.flag & material_flag::doubleImage) != 0 && !unlit) {
        findings.add(kind::doubleLit, place(flagWord));
    }
    if (materialKind.textured && materialKind.colours == 1 && !unlit) {
        findings.add(kind::colourLost, place(kindWord), fmt::arg("letter", line.kind));
    }
}

/// Polygons that the SRF file names more than once, at the line that names them again.
void checkNaming(const LintedModel& linted, Findings& findings) {
    struct Naming {
        std::uint32_t count = 0;
        std::uint32_t again = 0;
    };
    std::vector<Naming> named(linted.polygons.size());
    for (const MaterialRecord& material : linted.model.materials.records) {
        Naming& naming = named[static_cast<std::size_t>(material.polygon)];
        if (++naming.count == 2) {
            naming.again = material.line;
        }
    }
    for (std::size_t polygon = 0; polygon < named.size(); ++polygon) {
        if (named[polygon].count > 1) {
            const bool meshes = linted.source.bnd != nullptr;
            findings.add(meshes ? kind::polygonAgainInMesh : kind::polygonAgain,
                         linted.source.material(named[polygon].again, listWord),
                         fmt::arg("polygon", polygon), fmt::arg("count", named[polygon].count));
        }
    }
}

}  // namespace

void checkMaterials(const LintedModel& linted, Findings& findings) {
    for (std::size_t i = 0; i < linted.model.materials.lines.size(); ++i) {
        checkPolygonList(*linted.source.srf, linted.source.material(i, listWord), findings);
        checkLine(linted, i, findings);
    }
    checkNaming(linted, findings);
}

}  // namespace vxbtool::lint
