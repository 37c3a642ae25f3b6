// What a test of imported models asks of their sources.
//     surface_distance SOURCE                 tells what Assimp makes of it
//     surface_distance SOURCE SCALE EXPORT    and how far the surfaces of both are apart, both ways, where a
//                                             length of the source is SCALE units and one of the
//                                             export is 1000
// Prints one line of JSON.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include "surface.h"

namespace {

using namespace surface_distance;

struct Counts {
    unsigned polygons = 0;
    unsigned bones = 0;
};

Counts counts(const aiScene& scene) {
    Counts result;
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        const aiMesh& mesh = *scene.mMeshes[m];
        result.bones += mesh.mNumBones;
        for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
            result.polygons += mesh.mFaces[f].mNumIndices >= 3 ? 1 : 0;
        }
    }
    return result;
}

struct Farthest {
    double distance = 0;
    Vector from;
};

Farthest farthest(const std::vector<Triangle>& from, const std::vector<Triangle>& to) {
    constexpr std::size_t points = 20'000;
    const Distances distances(to);
    Farthest result;
    for (const Vector& point : pointsOn(from, points)) {
        const double distance = distances.from(point);
        if (distance > result.distance) {
            result = {distance, point};
        }
    }
    return result;
}

void print(const char* name, const Farthest& found) {
    std::printf(R"(, "%s": %.4f, "%sAt": [%.2f, %.2f, %.2f])", name, std::min(found.distance, 1e30),
                name, found.from.x, found.from.y, found.from.z);
}

}  // namespace

int main(int argc, char** argv) {
    const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
    if (argc != 2 && argc != 4) {
        std::fputs("usage: surface_distance SOURCE [SCALE EXPORT]\n", stderr);
        return 2;
    }
    Assimp::Importer sourceImporter;
    const aiScene* source = sourceImporter.ReadFile(arguments[1], 0);
    if (source == nullptr || source->mRootNode == nullptr) {
        std::printf("{\"loads\": false}\n");
        return 0;
    }
    const Counts found = counts(*source);
    std::printf(R"({"loads": true, "polygons": %u, "bones": %u)", found.polygons, found.bones);
    if (argc == 4) {
        Assimp::Importer exportImporter;
        const aiScene* exported = exportImporter.ReadFile(arguments[3], 0);
        if (exported == nullptr || exported->mRootNode == nullptr) {
            std::fprintf(stderr, "%s: %s\n", arguments[3], exportImporter.GetErrorString());
            return 1;
        }
        constexpr double unitsOfMetre = 1000;
        const Surface before = surfaceOf(*source, std::strtod(arguments[2], nullptr));
        const Surface after = surfaceOf(*exported, unitsOfMetre);
        print("toExport", farthest(before.certain, after.triangles));
        print("toSource", farthest(after.certain, before.triangles));
        std::printf(R"(, "roundedIn": %.6f)", after.largestScale / unitsOfMetre);
    }
    std::printf("}\n");
    return 0;
}
