#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

#include "format/fixed_point.h"
#include "format/format.h"
#include "vxbtool/lint/fixed_width.h"
#include "vxbtool/lint/model_checks.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

constexpr std::array<std::string_view, 3> axes{"x", "y", "z"};

std::array<float, 3> valuesOf(const VertexRecord& point) { return {point.x, point.y, point.z}; }

std::size_t numberOf(const VertexRecord& point) { return static_cast<std::size_t>(point.index); }

/// A vertex as it is written, before it wraps.
using WrittenPoint = std::array<std::int64_t, 3>;

class GeometryCheck {
public:
    GeometryCheck(const LintedModel& linted, Findings& findings)
        : linted_(linted),
          model_(linted.model),
          findings_(findings),
          written_(model_.vertices.size()),
          wraps_(model_.vertices.size()),
          vertexUsed_(model_.vertices.size()),
          normalUsed_(model_.normals.size()),
          polygonNamed_(linted.polygons.size()) {}

    void check() {
        for (const VertexRecord& vertex : model_.vertices) {
            checkVertex(vertex);
        }
        for (const NormalRecord& normal : model_.normals) {
            checkNormal(normal);
        }
        for (const MaterialRecord& material : model_.materials.records) {
            const auto number = static_cast<std::size_t>(material.polygon);
            if (!polygonNamed_[number]) {
                polygonNamed_[number] = true;
                checkPolygon(material, linted_.polygons[number], number);
            }
        }
        checkUse();
    }

private:
    void checkVertex(const VertexRecord& vertex) {
        const std::size_t number = numberOf(vertex);
        const std::array<float, 3> values = valuesOf(vertex);
        for (std::size_t axis = 0; axis < axes.size(); ++axis) {
            const double value = double{values[axis]} * linted_.scale;
            if (!std::isfinite(value)) {
                findings_.add(kind::notFinite, linted_.source.vertex(number, axis),
                              fmt::arg("axis", axes[axis]), fmt::arg("what", "vertex"),
                              fmt::arg("index", number));
            } else if (fits<std::int16_t>(value)) {
                written_[number][axis] = static_cast<std::int64_t>(value);
            } else {
                wraps_[number] = true;
                findings_.add(
                    kind::vertexWraps, linted_.source.vertex(number, axis),
                    fmt::arg("axis", axes[axis]), fmt::arg("vertex", number),
                    fmt::arg("value", value),
                    fmt::arg("written", static_cast<std::int16_t>(truncated(value) & 0xFFFFU)));
            }
        }
    }

    void checkNormal(const NormalRecord& normal) {
        const std::size_t number = numberOf(normal);
        const std::array<float, 3> values = valuesOf(normal);
        double square = 0;
        bool sound = true;
        for (std::size_t axis = 0; axis < axes.size(); ++axis) {
            const double value = values[axis];
            square += value * value;
            if (!std::isfinite(value)) {
                sound = false;
                findings_.add(kind::notFinite, linted_.source.normal(number, axis),
                              fmt::arg("axis", axes[axis]), fmt::arg("what", "normal"),
                              fmt::arg("index", number));
            } else if (!fits<std::int16_t>(value * format::normalScale)) {
                sound = false;
                findings_.add(kind::normalWraps, linted_.source.normal(number, axis),
                              fmt::arg("axis", axes[axis]), fmt::arg("normal", number),
                              fmt::arg("value", value));
            }
        }
        constexpr double farFromUnit = 0.1;
        const double length = std::sqrt(square);
        if (sound && std::fabs(length - 1) > farFromUnit) {
            findings_.add(kind::normalLength, linted_.source.normal(number),
                          fmt::arg("normal", number), fmt::arg("length", length));
        }
    }

    void checkPolygon(const MaterialRecord& material, const PolygonRecord& polygon,
                      std::size_t number) {
        const std::size_t corners = vertexCount(polygon.type);
        for (std::size_t k = 0; k < corners; ++k) {
            vertexUsed_[static_cast<std::size_t>(polygon.vertex[k])] = true;
            // An unlit polygon may name any normal.
            const auto normal = static_cast<std::size_t>(polygon.normal[k]);
            if (normal < normalUsed_.size()) {
                normalUsed_[normal] = true;
            }
        }
        const auto* const end = polygon.vertex.begin() + corners;
        for (const auto* corner = polygon.vertex.begin(); corner != end; ++corner) {
            if (std::find(corner + 1, end, *corner) != end) {
                findings_.add(kind::cornerTwice, linted_.source.polygon(number),
                              fmt::arg("polygon", number), fmt::arg("vertex", *corner));
                return;
            }
        }
        if (hasNoExtent(material, polygon)) {
            findings_.add(kind::noArea, linted_.source.polygon(number),
                          fmt::arg("polygon", number));
        }
    }

    /// Judges by what is written. Vertices in different coordinates cannot be compared, and of
    /// those that wrap something is said already.
    [[nodiscard]] bool hasNoExtent(const MaterialRecord& material,
                                   const PolygonRecord& polygon) const {
        if (polygon.type == polygon_type::sprite) {
            return polygon.vertex[1] == 0 || polygon.vertex[2] == 0;
        }
        const auto corner = [&](std::size_t k) {
            return static_cast<std::size_t>(polygon.vertex[k]);
        };
        const std::size_t corners = vertexCount(polygon.type);
        if (material.cno == CoordinateListId::shared) {
            return false;
        }
        for (std::size_t k = 0; k < corners; ++k) {
            if (wraps_[corner(k)]) {
                return false;
            }
        }
        switch (polygon.type) {
        case polygon_type::line: return written_[corner(0)] == written_[corner(1)];
        case polygon_type::quadrangle:
            return onOneLine(corner(0), corner(1), corner(2)) &&
                   onOneLine(corner(1), corner(2), corner(3));
        case polygon_type::triangle: return onOneLine(corner(0), corner(1), corner(2));
        default: return false;
        }
    }

    [[nodiscard]] bool onOneLine(std::size_t a, std::size_t b, std::size_t c) const {
        const auto side = [&](std::size_t end, std::size_t axis) {
            return written_[end][axis] - written_[a][axis];
        };
        for (std::size_t axis = 0; axis < axes.size(); ++axis) {
            const std::size_t next = (axis + 1) % axes.size();
            if (side(b, axis) * side(c, next) != side(b, next) * side(c, axis)) {
                return false;
            }
        }
        return true;
    }

    void checkUse() {
        for (std::size_t v = 0; v < vertexUsed_.size(); ++v) {
            if (!vertexUsed_[v]) {
                findings_.add(kind::vertexUnused, linted_.source.vertex(v), fmt::arg("vertex", v));
            }
        }
        for (std::size_t n = 0; n < normalUsed_.size(); ++n) {
            if (!normalUsed_[n]) {
                findings_.add(kind::normalUnused, linted_.source.normal(n), fmt::arg("normal", n));
            }
        }
        for (std::size_t p = 0; p < polygonNamed_.size(); ++p) {
            if (!polygonNamed_[p]) {
                findings_.add(kind::polygonUnnamed, linted_.source.polygon(p),
                              fmt::arg("polygon", p));
            }
        }
    }

    const LintedModel& linted_;
    const Model& model_;
    Findings& findings_;
    // By the numbers of the GEO file.
    std::vector<WrittenPoint> written_;
    std::vector<bool> wraps_;
    std::vector<bool> vertexUsed_;
    std::vector<bool> normalUsed_;
    std::vector<bool> polygonNamed_;
};

}  // namespace

void checkGeometry(const LintedModel& linted, Findings& findings) {
    GeometryCheck(linted, findings).check();
}

}  // namespace vxbtool::lint
