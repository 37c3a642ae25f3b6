#include "vxbtool/import/model_builder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include <fmt/core.h>

#include "model/material.h"
#include "vxbtool/import/point_table.h"
#include "vxbtool/import/round_polygons.h"
#include "vxbtool/import/source.h"
#include "vxbtool/import/strips.h"
#include "vxbtool/model_text/shortest_fixed.h"

namespace vxbtool::importing {
namespace {

constexpr std::uint32_t sharedGroup = std::numeric_limits<std::uint32_t>::max();

/// Counts the polygons of each type under each coordinate, as groups of packets do.
class TypeCounts {
public:
    explicit TypeCounts(const CoordinateMap& map) : map_(map) {}

    void add(const RoundPolygon& rounded, const model_text::Look& look) {
        const std::uint32_t owner = rounded.shared ? sharedGroup : rounded.points[0].coordinate;
        const mqf2vxb::MaterialKind kind = mqf2vxb::materialKind(look.kind);
        ++counts_[{owner, look.flag, look.shading, kind.textured, kind.windowed, kind.colours > 1,
                   rounded.polygon.cornerNum}];
    }

    void check() const {
        constexpr std::size_t most = 32767;
        for (const auto& [key, count] : counts_) {
            if (count <= most) {
                continue;
            }
            const std::uint32_t owner = std::get<0>(key);
            const std::string where =
                owner == sharedGroup
                    ? "over joints"
                    : fmt::format("of node \"{}\"", map_.coordinates[owner].node->mName.C_Str());
            throw ImportFault(
                fmt::format("{} {} {} are of one type; {} are the most (see --triangles)", count,
                            std::get<6>(key) == 3 ? "triangles" : "quadrangles", where, most));
        }
    }

private:
    using Key = std::tuple<std::uint32_t, std::uint32_t, char, bool, bool, bool, std::uint8_t>;

    const CoordinateMap& map_;
    std::map<Key, std::size_t> counts_;
};

void checkNumber(std::size_t count, const char* what) {
    constexpr std::size_t most = 65536;
    if (count > most) {
        throw ImportFault(fmt::format("the model has {} different {}; packets can name {} (see "
                                      "--triangles)",
                                      count, what, most));
    }
}

/// Writes the rounded polygons down.
class SurfaceBuilder {
public:
    SurfaceBuilder(const aiScene& scene, const CoordinateMap& map, const Shape& shape,
                   LookMaker& looks, model_text::ModelText& model)
        : scene_(scene), map_(map), shape_(shape), looks_(looks), model_(model) {}

    SurfaceCounts build(std::vector<RoundPolygon>& polygons, bool strips) {
        addPoints(polygons);
        SurfaceCounts counts;
        if (strips) {
            counts.meshes = makeStrips(polygons);
        }
        addPolygons(polygons, counts);
        addVertices();
        addNormals();
        counts.vertices = vertices_.points().size();
        counts.normals = normals_.points().size();
        return counts;
    }

private:
    void addPoints(const std::vector<RoundPolygon>& polygons) {
        for (const RoundPolygon& rounded : polygons) {
            model_text::Polygon polygon;
            polygon.shape = rounded.polygon.cornerNum == 4 ? model_text::PolygonShape::quadrangle
                                                           : model_text::PolygonShape::triangle;
            const bool lit = looks_.lit(rounded.polygon);
            bool smooth = rounded.shared;
            for (std::size_t k = 0; k < rounded.polygon.cornerNum; ++k) {
                polygon.vertices.at(k) = vertices_.add(rounded.points.at(k));
            }
            std::array<WholePoint, 4> normals;
            for (std::size_t k = 0; lit && k < rounded.polygon.cornerNum; ++k) {
                normals.at(k) = wholeNormal(rounded, k);
                smooth = smooth || normals.at(k) != normals.front();
            }
            // A flat polygon has one normal. A shared one keeps one for each corner: they lie in
            // different spaces.
            for (std::size_t k = 0; lit && k < rounded.polygon.cornerNum; ++k) {
                polygon.normals.at(k) =
                    smooth || k == 0 ? normals_.add(normals.at(k)) : polygon.normals[0];
            }
            written_.push_back(polygon);
            smooth_.push_back(static_cast<char>(smooth));
        }
        checkNumber(vertices_.points().size(), "vertices");
        checkNumber(normals_.points().size(), "normals");
        renumber(polygons);
    }

    void renumber(const std::vector<RoundPolygon>& polygons) {
        const std::vector<std::uint32_t> vertexOf = vertices_.order();
        const std::vector<std::uint32_t> normalOf = normals_.order();
        // An unlit polygon names a normal that is not there, so that it claims none.
        const auto noNormal = static_cast<std::uint32_t>(normalOf.size());
        for (std::size_t p = 0; p < written_.size(); ++p) {
            model_text::Polygon& polygon = written_[p];
            const std::size_t corners = polygons[p].polygon.cornerNum;
            for (std::size_t k = 0; k < corners; ++k) {
                polygon.vertices.at(k) = vertexOf[polygon.vertices.at(k)];
                polygon.normals.at(k) =
                    looks_.lit(polygons[p].polygon) ? normalOf[polygon.normals.at(k)] : noNormal;
            }
            if (corners == 3) {
                polygon.normals[3] = polygon.normals[2];
                polygon.vertices[3] = polygon.vertices[2];
            }
        }
    }

    /// Puts the polygons into the order of strips and the model's meshes. A strip has polygons of one
    /// part and look under one coordinate; others are meshes by themselves.
    std::size_t makeStrips(std::vector<RoundPolygon>& polygons) {
        model_text::Materials looks;
        using Group = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, char, char>;
        std::map<Group, std::vector<std::uint32_t>> groups;
        std::vector<std::vector<Strip::Step>> meshes;
        for (std::uint32_t p = 0; p < polygons.size(); ++p) {
            const RoundPolygon& rounded = polygons[p];
            if (rounded.shared || rounded.polygon.cornerNum == 4) {
                meshes.push_back({{p, 0}});
                continue;
            }
            const model_text::Look look =
                looks.looks[looks_.add(rounded.polygon, smooth_[p] != 0 ? 'G' : 'F', looks)];
            groups[{rounded.polygon.part, rounded.points[0].coordinate, look.flag, look.shading,
                    look.kind}]
                .push_back(p);
        }
        for (const auto& [group, members] : groups) {
            std::vector<std::array<std::uint32_t, 3>> triangles;
            for (const std::uint32_t p : members) {
                const auto& v = written_[p].vertices;
                triangles.push_back({v[0], v[1], v[2]});
            }
            for (Strip& strip : findStrips(triangles)) {
                for (Strip::Step& step : strip.steps) {
                    step.triangle = members[step.triangle];
                }
                meshes.push_back(std::move(strip.steps));
            }
        }
        // In the order of the parts, and in a part of what was there first.
        std::ranges::sort(meshes, {}, [&](const std::vector<Strip::Step>& mesh) {
            return std::pair(polygons[mesh.front().triangle].polygon.part, mesh.front().triangle);
        });
        reorder(meshes, polygons);
        return meshes.size();
    }

    void reorder(const std::vector<std::vector<Strip::Step>>& meshes,
                 std::vector<RoundPolygon>& polygons) {
        model_text::Meshes& result = model_.meshes.emplace();
        std::vector<RoundPolygon> ordered;
        std::vector<model_text::Polygon> written;
        std::vector<char> smooth;
        for (const std::vector<Strip::Step>& mesh : meshes) {
            for (const Strip::Step& step : mesh) {
                RoundPolygon rounded = polygons[step.triangle];
                model_text::Polygon polygon = written_[step.triangle];
                // The strip goes on from a triangle's last two corners.
                const auto turn = [&](auto& corners) {
                    std::rotate(corners.begin(), corners.begin() + step.firstCorner,
                                corners.begin() + rounded.polygon.cornerNum);
                };
                turn(rounded.points);
                turn(rounded.polygon.corners);
                turn(polygon.vertices);
                if (smooth_[step.triangle] != 0) {
                    turn(polygon.normals);
                }
                result.polygons.push_back(static_cast<std::uint32_t>(ordered.size()));
                ordered.push_back(rounded);
                written.push_back(polygon);
                smooth.push_back(smooth_[step.triangle]);
            }
            result.ends.push_back(ordered.size());
        }
        polygons = std::move(ordered);
        written_ = std::move(written);
        smooth_ = std::move(smooth);
    }

    void addPolygons(const std::vector<RoundPolygon>& polygons, SurfaceCounts& counts) {
        model_text::Geometry& geometry = model_.geometry.emplace();
        model_text::Materials& materials = model_.materials.emplace();
        TypeCounts types(map_);
        std::optional<std::uint32_t> part;
        for (std::size_t p = 0; p < polygons.size(); ++p) {
            const RoundPolygon& rounded = polygons[p];
            if (part != rounded.polygon.part) {
                part = rounded.polygon.part;
                addPartNotes(shape_.parts[*part], p);
            }
            const std::uint32_t look =
                looks_.add(rounded.polygon, smooth_[p] != 0 ? 'G' : 'F', materials);
            types.add(rounded, materials.looks[look]);
            materials.uses.push_back({static_cast<std::uint32_t>(p), look});
            ++(rounded.polygon.cornerNum == 4 ? counts.quadrangles : counts.triangles);
            counts.shared += rounded.shared ? 1 : 0;
        }
        types.check();
        geometry.polygons = std::move(written_);
    }

    void addPartNotes(const Part& part, std::size_t polygon) {
        const std::string mesh = part.mesh->mName.C_Str();
        const std::string node = map_.coordinates[part.coordinate].node->mName.C_Str();
        model_.geometry->polygonNotes.push_back(
            {polygon, mesh.empty() || mesh == node ? node : fmt::format("{}: {}", node, mesh)});
        aiString material;
        scene_.mMaterials[part.material]->Get(AI_MATKEY_NAME, material);
        model_.materials->notes.push_back({polygon, material.C_Str()});
    }

    void addVertices() {
        model_text::Geometry& geometry = *model_.geometry;
        model_text::Hierarchy& hierarchy = *model_.hierarchy;
        std::optional<std::uint32_t> coordinate;
        for (const WholePoint& point : vertices_.points()) {
            const auto number = static_cast<std::uint32_t>(geometry.vertices.size());
            if (coordinate != point.coordinate) {
                coordinate = point.coordinate;
                const std::string name = map_.coordinates[*coordinate].node->mName.C_Str();
                geometry.vertexNotes.push_back({number, name});
                hierarchy.assignments.push_back({*coordinate, {}});
            }
            hierarchy.assignments.back().vertices.push_back(number);
            geometry.vertices.push_back({static_cast<float>(point.at[0]),
                                         static_cast<float>(point.at[1]),
                                         static_cast<float>(point.at[2])});
        }
    }

    void addNormals() {
        for (const WholePoint& normal : normals_.points()) {
            const auto value = [&](std::size_t axis) {
                return model_text::shortestFixed(static_cast<std::int16_t>(normal.at.at(axis)));
            };
            model_.geometry->normals.push_back({value(0), value(1), value(2)});
        }
    }

    const aiScene& scene_;
    const CoordinateMap& map_;
    const Shape& shape_;
    LookMaker& looks_;
    model_text::ModelText& model_;
    PointTable vertices_;
    PointTable normals_;
    std::vector<model_text::Polygon> written_;
    std::vector<char> smooth_;  ///< of each polygon: whether its corners have normals of their own
};

model_text::Hierarchy hierarchyOf(const CoordinateMap& map, const PlacedCoordinates& placed) {
    model_text::Hierarchy hierarchy;
    hierarchy.coordinates = placed.coordinates;
    for (std::size_t c = 0; c < map.coordinates.size(); ++c) {
        hierarchy.coordinateNotes.push_back({c, map.coordinates[c].node->mName.C_Str()});
    }
    return hierarchy;
}

}  // namespace

SurfaceCounts buildSurface(const aiScene& scene, const CoordinateMap& map,
                           const PlacedCoordinates& placed, const Shape& shape, LookMaker& looks,
                           bool strips, Dropped& dropped, model_text::ModelText& model) {
    model.hierarchy = hierarchyOf(map, placed);
    std::vector<RoundPolygon> polygons = roundPolygons(shape, strips, dropped);
    SurfaceCounts counts = SurfaceBuilder(scene, map, shape, looks, model).build(polygons, strips);
    counts.positionError = largestError(placed, shape, polygons);
    return counts;
}

}  // namespace vxbtool::importing
