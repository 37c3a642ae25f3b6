#include "input/srf_reader.h"

#include <charconv>
#include <limits>

#include "driver/line_reader.h"

namespace mqf2vxb {
namespace {

constexpr bool isBlank(char c) { return c == ' ' || c == '\t'; }
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

struct PolygonRange {
    std::int32_t first;
    std::int32_t last;
};

/// Walks the polygon list of one line: numbers and ranges, separated by commas.
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
        if (rest_.starts_with(',')) {
            rest_.remove_prefix(1);
            if (rest_.empty()) {
                reader_.refuseLine("the polygon list ends with a comma");
            }
        } else if (!rest_.empty()) {
            reader_.refuseLine("\"" + std::string(rest_) + "\" in the polygon list");
        }
        return true;
    }

private:
    std::int32_t number() {
        if (rest_.empty() || !isDigit(rest_.front())) {
            reader_.refuseLine("an item of the polygon list does not begin with a digit");
        }
        std::int32_t value = 0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        if (error != std::errc()) {
            reader_.refuseLine("number does not fit 32 bits");
        }
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
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

void addRecords(const LineReader& reader, const PolygonRange& range, std::uint32_t appearance,
                Table<MaterialRecord>& records) {
    const auto number = static_cast<std::size_t>(range.last - range.first) + 1;
    if (number > mostMaterials - records.size()) {
        reader.refuseLine("more than 16777216 material records");
    }
    for (std::int32_t polygon = range.first;; ++polygon) {
        MaterialRecord record;
        record.polygon = polygon;
        record.appearance = appearance;
        records.append(record);
        if (polygon == range.last) {
            break;
        }
    }
}

void readMaterialLine(const LineReader& reader, MaterialTable& materials) {
    std::string_view rest = reader.line();
    const std::string_view list = takeWord(reader, rest);
    const std::string_view afterList = rest;
    const std::string_view flag = takeWord(reader, rest);
    takeWord(reader, rest);
    takeWord(reader, rest);
    if (flag.front() == '-' || flag.front() == ',') {
        reader.refuseLine("a blank inside the polygon list");
    }

    MaterialAppearance appearance;
    LineScanner words(reader, afterList);
    if (!words.scan(Hex{appearance.flag}) || !words.scan(Letter{appearance.shading}) ||
        !words.scan(Letter{appearance.kind})) {
        reader.refuseLine("flag is not a hexadecimal number");
    }
    LineScanner numbers(reader, rest);
    parseMaterialNumbers(numbers, appearance);
    numbers.finish();

    const auto index = static_cast<std::uint32_t>(materials.appearances.size());
    materials.appearances.append(appearance);
    PolygonList items(reader, list);
    PolygonRange range{};
    while (items.next(range)) {
        addRecords(reader, range, index, materials.records);
    }
}

}  // namespace

void parseMaterialNumbers(LineScanner& scanner, MaterialAppearance& appearance) {
    const auto scan = [&](std::int32_t& value) { scanner.scan(value); };
    if (appearance.textured()) {
        scan(appearance.texture);
        if (appearance.windowed()) {
            scan(appearance.windowWidth);
            scan(appearance.windowHeight);
            scan(appearance.windowX);
            scan(appearance.windowY);
        }
        for (std::size_t i = 0; i < appearance.u.size(); ++i) {
            scan(appearance.u[i]);
            scan(appearance.v[i]);
        }
    }
    const std::size_t colours = appearance.colourPerVertex() ? appearance.r.size()
                                : appearance.oneColour()     ? 1
                                                             : 0;
    for (std::size_t i = 0; i < colours; ++i) {
        scan(appearance.r[i]);
        scan(appearance.g[i]);
        scan(appearance.b[i]);
    }
}

void readMaterials(Inputs& inputs, const std::string& fileName, MaterialTable& materials) {
    constexpr std::size_t shortestLine = 8;  // "0 0 F X" and its line feed
    LineReader reader(inputs, fileName, "@SRF970401");
    reader.requireLine("its count");
    std::int32_t lines = 0;
    scanLine(reader, lines);
    reader.checkCount(lines, shortestLine, "material lines");
    for (std::int32_t i = 0; i < lines; ++i) {
        reader.requireLine("its last material line");
        readMaterialLine(reader, materials);
    }
}

}  // namespace mqf2vxb
