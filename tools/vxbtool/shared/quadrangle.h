#pragma once

#include <array>
#include <cmath>

namespace vxbtool {

using QuadranglePoint = std::array<double, 3>;

/// The cosine between the directions that the halves of a quadrangle look into, 0 1 2 and 1 2 3 as a
/// strip has them: negative when its corners run around its edge instead, 0 when the corners do not
/// tell.
inline double agreementOfHalves(const std::array<QuadranglePoint, 4>& corners) {
    const auto direction = [&](std::size_t a, std::size_t b, std::size_t c) {
        QuadranglePoint one{};
        QuadranglePoint other{};
        for (std::size_t i = 0; i < one.size(); ++i) {
            one[i] = corners[b][i] - corners[a][i];
            other[i] = corners[c][i] - corners[a][i];
        }
        return QuadranglePoint{one[1] * other[2] - one[2] * other[1],
                               one[2] * other[0] - one[0] * other[2],
                               one[0] * other[1] - one[1] * other[0]};
    };
    const auto dot = [](const QuadranglePoint& a, const QuadranglePoint& b) {
        return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
    };
    const QuadranglePoint first = direction(0, 1, 2);
    const QuadranglePoint second = direction(1, 3, 2);
    const double lengths = std::sqrt(dot(first, first)) * std::sqrt(dot(second, second));
    return lengths > 0 && std::isfinite(lengths) ? dot(first, second) / lengths : 0;
}

}  // namespace vxbtool
