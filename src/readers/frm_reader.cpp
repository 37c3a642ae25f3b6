#include "readers/frm_reader.h"

#include "text/token_reader.h"

namespace mqf2vxb {
namespace {

/// Fifteen digits with a separator behind each, and a line feed as the parent's line.
constexpr std::size_t shortestCoordinate = 31;
/// A few ranges under many coordinates can make every vertex a long list of its own.
constexpr std::size_t mostLists = std::size_t{1} << 20U;
/// One character and a separator.
constexpr std::size_t shortestItem = 2;

std::string readGroupFileName(TokenReader& tokens) {
    tokens.skipPast('=');
    const std::string_view line = tokens.restOfLine();
    return std::string(line.substr(0, line.find_first_of(" \t")));
}

void readCoordinate(TokenReader& tokens, const Table<CoordinateRecord>& coordinates,
                    CoordinateRecord& coordinate) {
    for (std::int16_t& value : coordinate.matrix) {
        value = tokens.wordNumber16();
    }
    for (std::int32_t& value : coordinate.translation) {
        value = tokens.wordNumber();
    }
    for (std::int16_t& value : coordinate.extra) {
        value = tokens.wordNumber16();
    }
    coordinate.parent = tokens.number(tokens.restOfLine());
    coordinates.checkArea(coordinate.parent);
}

/// The coordinate that the next assignment line names; null at the end of the file.
CoordinateRecord* nextAssignment(TokenReader& tokens, Table<CoordinateRecord>& coordinates,
                                 std::int32_t& index) {
    const auto word = tokens.checkedWord();
    if (!word) {
        return nullptr;
    }
    index = tokens.number(*word);
    CoordinateRecord& coordinate = coordinates.at(index);
    coordinate.hasObjects = true;
    return &coordinate;
}

void readObjectNames(TokenReader& tokens, Table<CoordinateRecord>& coordinates) {
    std::int32_t index = 0;
    while (CoordinateRecord* coordinate = nextAssignment(tokens, coordinates, index)) {
        const std::int32_t number = tokens.wordCount(shortestItem, "object names");
        coordinate->objectName.allocate(static_cast<std::size_t>(number));
        for (std::string& name : coordinate->objectName) {
            name = tokens.item();
        }
    }
}

void readVertexLists(TokenReader& tokens, Table<CoordinateRecord>& coordinates,
                     Table<VertexRecord>& vertices, CoordinateLists& lists) {
    for (VertexRecord& vertex : vertices) {
        vertex.cno = CoordinateListId::empty;
    }
    std::int32_t index = 0;
    std::int64_t named = 0;
    while (nextAssignment(tokens, coordinates, index) != nullptr) {
        readNamedIndices(tokens, named, [&](std::int64_t v) {
            VertexRecord& vertex = vertices.at(v);
            vertex.cno = lists.append(vertex.cno, index);
            if (lists.size() > mostLists) {
                tokens.refuse("more than 1048576 different lists of coordinates");
            }
        });
    }
    for (VertexRecord& vertex : vertices) {
        if (vertex.cno == CoordinateListId::empty) {
            vertex.cno = CoordinateListId::origin;
        }
    }
}

}  // namespace

bool isGroupMode(const std::string& groupFileName) { return groupFileName != "NULL"; }

std::string readCoordinateFile(Inputs& inputs, const std::string& fileName,
                               Table<CoordinateRecord>& coordinates, Table<VertexRecord>& vertices,
                               CoordinateLists& lists) {
    const LineReader lines(inputs, fileName, "@FRM970401");
    TokenReader tokens(lines);
    std::string groupFileName = readGroupFileName(tokens);
    const std::int32_t coordinateNum = tokens.restOfLineCount(shortestCoordinate, "coordinates");
    coordinates.allocate(static_cast<std::size_t>(coordinateNum));
    withPlace(tokens, [&] {
        for (CoordinateRecord& coordinate : coordinates) {
            readCoordinate(tokens, coordinates, coordinate);
        }
        if (isGroupMode(groupFileName)) {
            readObjectNames(tokens, coordinates);
        } else {
            readVertexLists(tokens, coordinates, vertices, lists);
        }
    });
    return groupFileName;
}

}  // namespace mqf2vxb
