#include "vxbtool/shared/closest.h"

#include <algorithm>
#include <vector>

#include <fmt/core.h>

namespace vxbtool {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

/// How many changes make one word of the other: characters changed, added or left out, or two
/// neighbours exchanged.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> table(a.size() + 1,
                                                std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                table[i][j] = i + j;
                continue;
            }
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            table[i][j] = std::min(
                {table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                lower(a[i - 2]) == lower(b[j - 1])) {
                table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
            }
        }
    }
    return table[a.size()][b.size()];
}

}  // namespace

std::string closest(std::string_view word, std::span<const std::string> candidates) {
    constexpr std::size_t longest =
        64;  // nobody mistypes more, and the table grows with the square
    std::string best;
    std::size_t least = longest;
    for (const std::string& candidate : candidates) {
        if (word.empty() || word.size() > longest) {
            break;
        }
        const std::size_t changes = distance(word, candidate);
        if (changes < least && 3 * changes <= std::max<std::size_t>(candidate.size(), 3)) {
            least = changes;
            best = candidate;
        }
    }
    return best;
}

std::string didYouMean(std::string_view word, std::span<const std::string> candidates) {
    const std::string candidate = closest(word, candidates);
    return candidate.empty() ? "" : fmt::format("; did you mean \"{}\"?", candidate);
}

}  // namespace vxbtool
