#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>
#include <set>
#include <vector>

#include "vxbtool/import/faces.h"
#include "vxbtool/import/simplifying.h"
#include "vxbtool/import/smoothing.h"

namespace vxbtool::importing {
namespace {

/// A mesh of these points.
std::unique_ptr<aiMesh> meshOf(const std::vector<aiVector3D>& points) {
    auto mesh = std::make_unique<aiMesh>();
    mesh->mNumVertices = static_cast<unsigned>(points.size());
    mesh->mVertices = new aiVector3D[points.size()];
    std::copy(points.begin(), points.end(), mesh->mVertices);
    return mesh;
}

std::vector<Face> cut(const aiMesh& mesh) {
    std::vector<unsigned> corners;
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
        corners.push_back(i);
    }
    std::vector<Face> faces;
    cutPolygon(mesh, corners, faces);
    return faces;
}

Vector frontOfFace(const aiMesh& mesh, const Face& face) {
    std::vector<Vector> ring;
    for (std::size_t k = 0; k < face.cornerNum; ++k) {
        ring.push_back(vectorOf(mesh.mVertices[face.vertices.at(k)]));
    }
    return frontOf(ring);
}

struct Outline {
    const char* what;
    std::vector<std::pair<float, float>> corners;  ///< anticlockwise
    double area;
    std::size_t faces;  ///< at most: pieces without an area are left out
};

/// Pieces of a polygon look where it looks and cover it once, whichever way it is turned.
TEST(ImportShapes, PolygonsAreCutIntoPiecesThatCoverThem) {
    const std::vector<Outline> outlines{
        {"square", {{0, 0}, {4, 0}, {4, 4}, {0, 4}}, 16, 1},
        {"arrow, whose tip comes first", {{4, 0}, {0, 3}, {1, 0}, {0, -3}}, 9, 1},
        {"arrow, whose tip comes second", {{0, -3}, {4, 0}, {0, 3}, {1, 0}}, 9, 1},
        {"L", {{0, 0}, {3, 0}, {3, 1}, {1, 1}, {1, 3}, {0, 3}}, 5, 4},
        {"U", {{0, 0}, {5, 0}, {5, 4}, {4, 4}, {4, 1}, {1, 1}, {1, 4}, {0, 4}}, 11, 6},
        {"comb",
         {{0, 0},
          {7, 0},
          {7, 3},
          {6, 3},
          {6, 1},
          {4, 1},
          {4, 3},
          {3, 3},
          {3, 1},
          {1, 1},
          {1, 3},
          {0, 3}},
         13,
         10},
        {"hook around a corner",
         {{0, 0}, {6, 0}, {6, 5}, {2, 5}, {2, 2}, {3, 2}, {3, 4}, {5, 4}, {5, 1}, {0, 1}},
         15,
         8},
        {"nothing", {{0, 0}, {3, 0}, {6, 0}}, 0, 0},
    };
    using Turn = aiVector3D (*)(float, float);
    const std::vector<Turn> turns{[](float x, float y) { return aiVector3D(x, y, 0.1F * x); },
                                  [](float x, float y) { return aiVector3D(-x, y, 0.1F * y); },
                                  [](float x, float y) { return aiVector3D(y, 0.1F * x, x); },
                                  [](float x, float y) { return aiVector3D(x, 0.2F * x, y); },
                                  [](float x, float y) { return aiVector3D(0.1F * y, x, y); },
                                  [](float x, float y) { return aiVector3D(0.3F * y, y, x); }};
    for (const Outline& outline : outlines) {
        for (std::size_t t = 0; t < turns.size(); ++t) {
            SCOPED_TRACE(outline.what);
            SCOPED_TRACE(t);
            std::vector<aiVector3D> points;
            std::vector<Vector> ring;
            for (const auto& [x, y] : outline.corners) {
                points.push_back(turns[t](x, y));
                ring.push_back(vectorOf(points.back()));
            }
            const auto mesh = meshOf(points);
            const Vector front = frontOf(ring);
            const std::vector<Face> faces = cut(*mesh);
            EXPECT_LE(faces.size(), outline.faces);
            double area = 0;
            for (const Face& face : faces) {
                const Vector own = frontOfFace(*mesh, face);
                EXPECT_GT(own * front, 0);
                area += own.Length() / 2;
            }
            EXPECT_NEAR(area, front.Length() / 2, 1e-4);
            if (t == 0) {
                EXPECT_NEAR(area, outline.area * std::sqrt(1.01), 1e-4);
            }
        }
    }
}

/// A quadrangle that is bent along its diagonal becomes two triangles, a large polygon a fan.
TEST(ImportShapes, BentQuadranglesAndLargePolygonsBecomeTriangles) {
    EXPECT_EQ(cut(*meshOf({{0, 0, 0}, {4, 0, 1}, {4, 4, 0}, {0, 4, 1}})).size(), 2U);
    std::vector<aiVector3D> circle;
    for (int i = 0; i < 3000; ++i) {
        const auto angle = static_cast<float>(i) * 0.0020943951F;
        circle.emplace_back(1000 * std::cos(angle), 1000 * std::sin(angle), 0.0F);
    }
    const auto mesh = meshOf(circle);
    double area = 0;
    for (const Face& face : cut(*mesh)) {
        area += frontOfFace(*mesh, face).z / 2;
    }
    EXPECT_NEAR(area, 3141590, 300);
}

/// A long and thin outline has ears at its two ends only, a star one at each tip.
TEST(ImportShapes, IntricateOutlinesAreCutExactly) {
    constexpr int corners = 1200;
    const auto at = [](float radius, float angle) {
        return aiVector3D(radius * std::cos(angle), radius * std::sin(angle), 0);
    };
    std::vector<aiVector3D> spiral, star;
    for (int i = 0; i < corners / 2; ++i) {
        const auto turn = static_cast<float>(i) * 0.1F;
        spiral.push_back(at(50 + 2 * turn, turn));
    }
    for (int i = corners / 2; i-- > 0;) {
        const auto turn = static_cast<float>(i) * 0.1F;
        spiral.push_back(at(49 + 2 * turn, turn));
    }
    for (int i = 0; i < corners; ++i) {
        const float radius = i % 2 == 0 ? 1000.0F : static_cast<float>(100 + i * 37 % 300);
        star.push_back(at(radius, static_cast<float>(i) * 6.2831853F / corners));
    }
    for (const auto& outline : {spiral, star}) {
        const auto mesh = meshOf(outline);
        std::vector<unsigned> all(mesh->mNumVertices);
        std::iota(all.begin(), all.end(), 0U);
        std::vector<Vector> ring;
        for (const aiVector3D& point : outline) {
            ring.push_back(vectorOf(point));
        }
        std::vector<Face> faces;
        EXPECT_TRUE(cutPolygon(*mesh, all, faces));
        double area = 0;
        for (const Face& face : faces) {
            area += std::abs(frontOfFace(*mesh, face).z);
        }
        EXPECT_NEAR(area / std::abs(frontOf(ring).z), 1, 1e-4);
    }
    // One that crosses itself everywhere has no such pieces, and says so.
    std::vector<aiVector3D> tangle;
    for (int i = 0; i < corners; ++i) {
        tangle.emplace_back(static_cast<float>(i * 7919 % 1009), static_cast<float>(i * i % 997),
                            0.0F);
    }
    const auto mesh = meshOf(tangle);
    std::vector<unsigned> all(mesh->mNumVertices);
    std::iota(all.begin(), all.end(), 0U);
    std::vector<Face> faces;
    EXPECT_FALSE(cutPolygon(*mesh, all, faces));
}

/// A roof of two sides, one of them ten times as long, whose ridge bends by an angle, and a wall below
/// one of them.
TEST(ImportShapes, NormalsAreThoseOfTheFacesThatBelongTogether) {
    // The ridge runs along z; the sides fall by 30 degrees to the left and to the right.
    const float down = std::tan(30 * 3.14159265F / 180);
    const auto mesh = meshOf({{0, 0, 0},
                              {0, 0, -1},
                              {-1, -down, -1},
                              {-1, -down, 0},
                              {0, 0, 0},
                              {10, -10 * down, 0},
                              {10, -10 * down, -1},
                              {0, 0, -1}});
    const std::vector<Face> faces{{4, {0, 1, 2, 3}}, {4, {4, 5, 6, 7}}};
    const Vector left = frontOfFace(*mesh, faces[0]);
    const Vector right = frontOfFace(*mesh, faces[1]);
    EXPECT_NEAR(left.y / left.Length(), std::cos(30 * 3.14159265 / 180), 1e-4);
    const auto apart = [](const Vector& a, const Vector& b) {
        return std::acos(std::min(1.0, (a * b) / (a.Length() * b.Length()))) * 180 / 3.14159265;
    };
    // They meet at 60 degrees: below that each keeps its own.
    const std::vector<Vector> sharp = smoothNormals(*mesh, faces, 59);
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(apart(sharp[k], left), 0, 0.1);
        EXPECT_NEAR(apart(sharp[4 + k], right), 0, 0.1);
    }
    const std::vector<Vector> smooth = smoothNormals(*mesh, faces, 61);
    for (const std::size_t ridge : {0U, 1U, 4U, 7U}) {
        // The larger face has the larger share.
        EXPECT_NEAR(apart(smooth[ridge], left + right), 0, 0.1) << ridge;
        EXPECT_LT(apart(smooth[ridge], right), 10) << ridge;
    }
    for (const std::size_t eaves : {2U, 3U}) {
        EXPECT_NEAR(apart(smooth[eaves], left), 0, 0.1) << eaves;
        EXPECT_NEAR(apart(smooth[3 + eaves], right), 0, 0.1) << eaves;
    }
}

/// A plate with a hill: fewer triangles, still where it was.
TEST(ImportShapes, SimplifiedMeshesHaveNoMoreTrianglesThanAskedFor) {
    constexpr unsigned side = 20;
    std::vector<aiVector3D> points;
    for (unsigned i = 0; i < side * side; ++i) {
        const auto x = static_cast<float>(i % side), y = static_cast<float>(i / side);
        points.emplace_back(x, y, std::exp(-((x - 9) * (x - 9) + (y - 9) * (y - 9)) / 20) * 5);
    }
    const auto mesh = meshOf(points);
    std::vector<Face> faces;
    for (unsigned y = 0; y + 1 < side; ++y) {
        for (unsigned x = 0; x + 1 < side; ++x) {
            const unsigned at = y * side + x;
            faces.push_back({4, {at, at + 1, at + side + 1, at + side}});
        }
    }
    EXPECT_EQ(triangleCount(faces), 722U);
    EXPECT_EQ(simplified(*mesh, faces, 722).size(), faces.size());
    for (const std::size_t most : {500U, 100U, 20U}) {
        const std::vector<Face> fewer = simplified(*mesh, faces, most);
        EXPECT_LE(triangleCount(fewer), most);
        EXPECT_GT(triangleCount(fewer), most / 2);
        double area = 0;
        float highest = 0;
        for (const Face& face : fewer) {
            area += frontOfFace(*mesh, face).z / 2;
            for (const std::uint32_t vertex : face.vertices) {
                highest = std::max(highest, mesh->mVertices[vertex].z);
            }
        }
        EXPECT_NEAR(area, 361, 25) << most;  // seen from above
        EXPECT_GT(highest, 3) << most;
    }
    // Where texture coordinates differ at every edge, edges have to go as well.
    std::vector<aiVector3D> apart;
    std::vector<Face> separate;
    for (const Face& face : faces) {
        const auto first = static_cast<unsigned>(apart.size());
        for (const std::uint32_t vertex : face.vertices) {
            apart.push_back(points[vertex]);
        }
        separate.push_back({4, {first, first + 1, first + 2, first + 3}});
    }
    const auto torn = meshOf(apart);
    torn->mTextureCoords[0] = new aiVector3D[apart.size()];
    for (std::size_t i = 0; i < apart.size(); ++i) {
        torn->mTextureCoords[0][i] = {static_cast<float>(i), 0, 0};
    }
    const std::vector<Face> few = simplified(*torn, separate, 100);
    EXPECT_LE(triangleCount(few), 100U);
    EXPECT_GT(triangleCount(few), 10U);
}

/// What lies there several times counts once, and triangles that all meet in one vertex are thinned out
/// too.
TEST(ImportShapes, RepeatedAndCrowdedTrianglesAreSimplified) {
    const auto plate = meshOf({{0, 0, 0}, {9, 0, 0}, {9, 9, 0}, {0, 9, 0}});
    std::vector<Face> repeated;
    for (unsigned i = 0; i < 50; ++i) {
        repeated.push_back({3, {i % 3, (i + 1) % 3, (i + 2) % 3, 0}});
        repeated.push_back({3, {0, 2, 3, 0}});
    }
    const std::vector<Face> once = simplified(*plate, repeated, 3);
    double area = 0;
    for (const Face& face : once) {
        area += frontOfFace(*plate, face).z / 2;
    }
    EXPECT_EQ(once.size(), 2U);
    EXPECT_NEAR(area, 81, 1e-4);

    constexpr unsigned rim = 6000;
    std::vector<aiVector3D> cone{{0, 0, 50}};
    std::vector<Face> faces;
    for (unsigned i = 0; i < rim; ++i) {
        const auto angle = static_cast<float>(i) * 6.2831853F / rim;
        cone.emplace_back(100 * std::cos(angle), 100 * std::sin(angle), 0.0F);
        faces.push_back({3, {0, i + 1, (i + 1) % rim + 1, 0}});
    }
    const auto mesh = meshOf(cone);
    const std::vector<Face> fewer = simplified(*mesh, faces, 200);
    EXPECT_LE(triangleCount(fewer), 200U);
    EXPECT_GT(triangleCount(fewer), 10U);
}

}  // namespace
}  // namespace vxbtool::importing
