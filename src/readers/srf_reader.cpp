#include "readers/srf_reader.h"

#include <algorithm>
#include <span>

#include "text/line_reader.h"
#include "text/plain_line.h"
#include "text/scan.h"

namespace mqf2vxb {
namespace {

struct PolygonRange {
    std::int32_t first;
    std::int32_t last;
};

/// Walks the polygon list of one line: numbers and ranges, separated by commas. Whatever stands
/// between the digits of an item and the next comma is skipped.
class PolygonList {
public:
    PolygonList(const LineReader& reader, std::string_view list) : reader_(reader), rest_(list) {}

    /// Takes the next item; false behind the last.
    bool next(PolygonRange& range) {
        if (rest_.empty()) {
            return false;
        }
        range.first = number();
        range.last = range.first;
        if (rest_.starts_with('-')) {
            rest_.remove_prefix(1);
            range.last = number();
            if (range.last < range.first) {
                reader_.refuseLine("range " + std::to_string(range.first) + "-" +
                                   std::to_string(range.last) + " runs backwards");
            }
        }
        const std::size_t comma = std::min(rest_.find(','), rest_.size());
        rest_.remove_prefix(comma);
        if (rest_ == ",") {
            reader_.refuseLine("the polygon list ends with a comma");
        }
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
        return true;
    }

private:
    std::int32_t number() {
        if (rest_.empty() || !isDigit(rest_.front())) {
            reader_.refuseLine("an item of the polygon list does not begin with a digit");
        }
        const std::string_view digits = rest_;
        std::int32_t value = 0;
        if (!scanNineDigits(rest_, value)) {
            rest_ = digits;
            if (scanInteger(rest_, value) == Scanned::outOfRange) {
                reader_.refuseLine("number does not fit 32 bits");
            }
        }
        return value;
    }

    const LineReader& reader_;
    std::string_view rest_;
};

/// The next word between blanks; a line that lacks one is refused.
std::string_view takeWord(const LineReader& reader, std::string_view& rest) {
    std::size_t start = 0;
    while (start < rest.size() && isBlank(rest[start])) {
        ++start;
    }
    std::size_t end = start;
    while (end < rest.size() && !isBlank(rest[end])) {
        ++end;
    }
    if (start == end) {
        reader.refuseLine("fewer than four words");
    }
    const std::string_view word = rest.substr(start, end - start);
    rest.remove_prefix(end);
    return word;
}

/// Scans the numbers that the kind has; those that are not there are 0.
void parseMaterialNumbers(const LineReader& reader, std::string_view text, MaterialKind kind,
                          Table<std::int32_t>& numbers) {
    LineScanner scanner(reader, text);
    scanner.scan(std::span(numbers.extend(kind.numbers()), kind.numbers()));
    scanner.finish();
}

void addRecords(const LineReader& reader, const PolygonRange& range, std::uint32_t line,
                Table<MaterialRecord>& records) {
    const auto number = static_cast<std::size_t>(range.last - range.first) + 1;
    if (number > mostMaterials - records.size()) {
        reader.refuseLine("more than 16777216 material records");
    }
    for (std::int32_t polygon = range.first;; ++polygon) {
        MaterialRecord record;
        record.polygon = polygon;
        record.line = line;
        records.append(record);
        if (polygon == range.last) {
            break;
        }
    }
}

/// Scans what stands between the polygon list and the numbers. True when each field is a word of
/// its own.
template <class Scanner>
bool scanAppearance(Scanner& scanner, MaterialLine& line) {
    bool words = scanner.scan(Hex{line.flag}) && scanner.atBlankOrEnd();
    words = scanner.scan(Letter{line.shading}) && scanner.atBlankOrEnd() && words;
    return scanner.scan(Letter{line.kind}) && scanner.atBlankOrEnd() && words;
}

/// Scans the words between the polygon list and the numbers. Returns the rest of the line from the
/// fifth word on, also when a field ends inside a word: "8L" holds the flag and the shading.
std::string_view scanWords(const LineReader& reader, std::string_view rest, MaterialLine& line) {
    LineScanner scanner(reader, rest);
    if (scanAppearance(scanner, line)) {
        return scanner.rest();
    }
    const std::string_view flag = takeWord(reader, rest);
    takeWord(reader, rest);
    takeWord(reader, rest);
    if (!LineScanner(reader, flag).scan(Hex{line.flag})) {
        reader.refuseLine("flag is not a hexadecimal number");
    }
    return rest;
}

/// Adds a line and the records of its polygon list; the line's numbers are in the table already.
void addLine(const LineReader& reader, const MaterialLine& line, std::string_view list,
             MaterialTable& materials) {
    const auto index = static_cast<std::uint32_t>(materials.lines.size());
    materials.lines.append(line);
    PolygonList items(reader, list);
    PolygonRange range{};
    while (items.next(range)) {
        addRecords(reader, range, index, materials.records);
    }
}

/// Reads the next line when it is plain and whole; false when it has to be read the general way.
bool readPlainLine(LineReader& reader, MaterialTable& materials) {
    PlainLine plain(reader);
    MaterialLine line;
    std::string_view list;
    if (!plain || !plain.scanNumberWord(list) || !scanAppearance(plain, line)) {
        return false;
    }
    line.firstNumber = materials.numbers.size();
    const std::size_t number = materialKind(line.kind).numbers();
    if (!plain.scan(std::span(materials.numbers.extend(number), number)) || !plain.finish(reader)) {
        materials.numbers.shrink(line.firstNumber);
        return false;
    }
    addLine(reader, line, list, materials);
    return true;
}

void readMaterialLine(const LineReader& reader, MaterialTable& materials) {
    std::string_view rest = reader.line();
    const std::string_view list = takeWord(reader, rest);
    const std::size_t flag = rest.find_first_not_of(" \t");
    if (flag != std::string_view::npos && (rest[flag] == '-' || rest[flag] == ',')) {
        reader.refuseLine("a blank inside the polygon list");
    }

    MaterialLine line;
    rest = scanWords(reader, rest, line);
    line.firstNumber = materials.numbers.size();
    parseMaterialNumbers(reader, rest, materialKind(line.kind), materials.numbers);
    addLine(reader, line, list, materials);
}

}  // namespace

void readMaterials(Inputs& inputs, const std::string& fileName, MaterialTable& materials) {
    constexpr std::size_t shortestLine = 8;  // "0 0 F X" and its line feed
    LineReader reader(inputs, fileName, "@SRF970401");
    reader.requireLine("its count");
    std::int32_t lines = 0;
    scanLine(reader, lines);
    reader.checkCount(lines, shortestLine, "material lines");
    materials.lines.reserve(static_cast<std::size_t>(lines));
    materials.records.reserve(static_cast<std::size_t>(lines));
    // Room for as many numbers as most files have: a quarter of their characters.
    materials.numbers.reserve(reader.rest().size() / 4);
    for (std::int32_t i = 0; i < lines; ++i) {
        if (!readPlainLine(reader, materials)) {
            reader.requireLine("its last material line");
            readMaterialLine(reader, materials);
        }
    }
}

}  // namespace mqf2vxb
