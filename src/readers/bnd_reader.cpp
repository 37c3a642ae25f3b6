#include "readers/bnd_reader.h"

#include "text/token_reader.h"

namespace mqf2vxb {

void readMeshFile(Inputs& inputs, const std::string& fileName, Table<MeshRecord>& meshes,
                  Table<MeshPolygon>& meshPolygons) {
    constexpr std::size_t shortestNumber = 2;  // a digit and a separator
    const LineReader lines(inputs, fileName, "@BND970401");
    TokenReader tokens(lines);
    const std::int32_t meshNum = tokens.restOfLineCount(shortestNumber, "meshes");
    meshes.allocate(static_cast<std::size_t>(meshNum));
    meshPolygons.reserve(tokens.mostRecords(shortestNumber));
    for (MeshRecord& mesh : meshes) {
        const std::int32_t polyNum = tokens.wordCount(shortestNumber, "polygons");
        mesh.firstPolygon = static_cast<std::uint32_t>(meshPolygons.size());
        mesh.polyNum = static_cast<std::uint32_t>(polyNum);
        for (std::int32_t i = 0; i < polyNum; ++i) {
            meshPolygons.append({tokens.wordNumber()});
        }
    }
    tokens.finish();
}

}  // namespace mqf2vxb
