#include <algorithm>
#include <charconv>
#include <vector>

#include "model/material.h"
#include "vxbtool/model_text/component_files.h"
#include "vxbtool/model_text/index_list.h"

namespace vxbtool::model_text {

std::uint32_t Materials::add(std::uint32_t flag, char shading, char kind,
                             std::span<const std::int32_t> lookNumbers) {
    looks.push_back({flag, shading, kind, static_cast<std::uint32_t>(numbers.size())});
    numbers.insert(numbers.end(), lookNumbers.begin(), lookNumbers.end());
    return static_cast<std::uint32_t>(looks.size() - 1);
}

namespace {

/// A reader takes 255 characters of a line, its line feed included.
constexpr std::size_t longestLine = 254;
/// Up to here a list of polygons goes on in its line: what can be seen at a glance.
constexpr std::size_t longestPolygonList = 60;

std::span<const std::int32_t> numbersOf(const Materials& materials, const Look& look) {
    return std::span(materials.numbers)
        .subspan(look.firstNumber, mqf2vxb::materialKind(look.kind).numbers());
}

/// The words behind the polygons. Corners and colours stand apart as long as the line has room.
std::string lookText(const Materials& materials, const Look& look) {
    const mqf2vxb::MaterialKind kind = mqf2vxb::materialKind(look.kind);
    std::array<char, 12> digits{};
    const auto append = [&](std::string& text, auto value, int base) {
        text.append(digits.data(),
                    std::to_chars(digits.data(), digits.data() + digits.size(), value, base).ptr);
    };
    std::string text = " ";
    append(text, look.flag, 16);
    text += {' ', look.shading, ' ', look.kind};
    const std::span<const std::int32_t> numbers = numbersOf(materials, look);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const bool corner = kind.textured && i >= kind.cornerStart() && i < kind.colourStart() &&
                            (i - kind.cornerStart()) % 2 == 0;
        const bool colour = i >= kind.colourStart() &&
                            (i - kind.colourStart()) % mqf2vxb::MaterialKind::colourNumbers == 0;
        const bool window = kind.windowed && i == mqf2vxb::MaterialKind::windowStart;
        text += i == 0 || corner || colour || window ? "  " : " ";
        append(text, numbers[i], 10);
    }
    return text;
}

/// The uses that one line of the file names.
struct Line {
    std::size_t first;
    std::size_t end;
};

/// Cuts the uses into lines.
class LineCutter {
public:
    explicit LineCutter(const Materials& materials) : uses_(materials.uses) {
        for (const Note& note : materials.notes) {
            starts_.push_back(note.before);
        }
    }

    /// The line that begins with a use; `polygons` becomes its list.
    Line next(std::size_t first, std::string& polygons) {
        polygons.clear();
        while (nextStart_ < starts_.size() && starts_[nextStart_] <= first) {
            ++nextStart_;
        }
        const std::size_t limit = nextStart_ < starts_.size()
                                      ? std::min(starts_[nextStart_], uses_.size())
                                      : uses_.size();
        std::size_t end = first;
        while (end < limit && uses_[end].look == uses_[first].look &&
               polygons.size() < longestPolygonList) {
            std::size_t runEnd = end + 1;
            while (runEnd < limit && uses_[runEnd].look == uses_[first].look &&
                   uses_[runEnd].polygon == uses_[runEnd - 1].polygon + 1) {
                ++runEnd;
            }
            if (!polygons.empty()) {
                polygons += ',';
            }
            appendRun(uses_[end].polygon, runEnd - end, polygons);
            end = runEnd;
        }
        return {first, end};
    }

private:
    const std::vector<LookUse>& uses_;
    std::vector<std::size_t> starts_;
    std::size_t nextStart_ = 0;
};

std::size_t lineNumber(const Materials& materials) {
    LineCutter cutter(materials);
    std::string polygons;
    std::size_t number = 0;
    for (std::size_t use = 0; use < materials.uses.size(); ++number) {
        use = cutter.next(use, polygons).end;
    }
    return number;
}

/// Blanks that only please the eye make room in a long line.
void closeUp(std::string& text) {
    const auto end =
        std::unique(text.begin(), text.end(), [](char a, char b) { return a == ' ' && b == ' '; });
    text.erase(end, text.end());
}

}  // namespace

void writeMaterials(const Materials& materials, const std::string& comment, TextFile& file) {
    file.put("@SRF970401\n");
    file.comment(comment);
    file.comment("number of lines");
    file.number(static_cast<std::int64_t>(lineNumber(materials)));
    file.put("\n# polygons, flag, shading, kind, numbers of the kind\n");
    NoteWriter noteWriter(materials.notes, file);
    LineCutter cutter(materials);
    std::string text;
    for (std::size_t use = 0; use < materials.uses.size();) {
        noteWriter.before(use);
        const Line line = cutter.next(use, text);
        text += lookText(materials, materials.looks[materials.uses[use].look]);
        if (text.size() > longestLine) {
            closeUp(text);
        }
        text += '\n';
        file.put(text);
        use = line.end;
    }
    noteWriter.before(materials.uses.size());
}

}  // namespace vxbtool::model_text
