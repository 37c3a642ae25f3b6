#include "hierarchy/bnd_reader.h"

#include "hierarchy/token_reader.h"

namespace mqf2vxb {

void readMeshFile(Inputs& inputs, const std::string& fileName, Table<MeshRecord>& meshes) {
    constexpr std::size_t shortestNumber = 2;  // a digit and a separator
    const LineReader lines(inputs, fileName, "@BND970401");
    TokenReader tokens(lines);
    const std::int32_t meshNum = tokens.restOfLineCount(shortestNumber, "meshes");
    meshes.allocate(static_cast<std::size_t>(meshNum));
    for (MeshRecord& mesh : meshes) {
        const std::int32_t polyNum = tokens.wordCount(shortestNumber, "polygons");
        mesh.poly.resize(static_cast<std::size_t>(polyNum));
        for (std::int32_t& polygon : mesh.poly) {
            polygon = tokens.wordNumber();
        }
    }
    tokens.finish();
}

}  // namespace mqf2vxb
