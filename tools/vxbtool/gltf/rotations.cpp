#include "vxbtool/gltf/rotations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace vxbtool::gltf {
namespace {

using Vector = std::array<double, 3>;
using Columns = std::array<Vector, 3>;

double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// Turns columns `a` and `b` of both so that those of `columns` stand across each other.
void turn(Columns& columns, Columns& turns, std::size_t a, std::size_t b) {
    const double share = dot(columns[a], columns[b]);
    if (share == 0) {
        return;
    }
    const double angle =
        std::atan2(2 * share, dot(columns[a], columns[a]) - dot(columns[b], columns[b])) / 2;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    for (Columns* both : {&columns, &turns}) {
        for (std::size_t i = 0; i < 3; ++i) {
            const double first = (*both)[a][i];
            const double second = (*both)[b][i];
            (*both)[a][i] = c * first + s * second;
            (*both)[b][i] = c * second - s * first;
        }
    }
}

scene::Matrix matrixOf(const Columns& columns) {
    scene::Matrix matrix{};
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        matrix[i] = static_cast<float>(columns[i % 3][i / 3]);
    }
    return matrix;
}

}  // namespace

Quaternion quaternion(const scene::Matrix& m) {
    const auto at = [&](std::size_t row, std::size_t column) {
        return double{m[row * 3 + column]};
    };
    // Each of the four squares by itself: the largest of them is exact enough to divide by.
    const std::array<double, 4> squares{
        1 + at(0, 0) - at(1, 1) - at(2, 2), 1 - at(0, 0) + at(1, 1) - at(2, 2),
        1 - at(0, 0) - at(1, 1) + at(2, 2), 1 + at(0, 0) + at(1, 1) + at(2, 2)};
    const auto largest = static_cast<std::size_t>(std::max_element(squares.begin(), squares.end()) -
                                                  squares.begin());
    std::array<double, 4> q{};
    if (largest == 3) {
        q = {at(2, 1) - at(1, 2), at(0, 2) - at(2, 0), at(1, 0) - at(0, 1), squares[3]};
    } else {
        const std::size_t i = largest;
        const std::size_t j = (i + 1) % 3;
        const std::size_t k = (i + 2) % 3;
        q[i] = squares[i];
        q[j] = at(i, j) + at(j, i);
        q[k] = at(i, k) + at(k, i);
        q[3] = at(k, j) - at(j, k);
    }
    const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    Quaternion result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = static_cast<float>(q[i] / length);
    }
    return result;
}

TurnedScale turnedScale(const scene::Matrix& matrix) {
    // The columns are turned two by two until all stand across each other: then they are the axes of
    // the last rotation with the scale on them.
    constexpr int rounds = 12;
    Columns columns{};
    Columns turns{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        columns[i % 3][i / 3] = double{matrix[i]};
    }
    for (int round = 0; round < rounds; ++round) {
        turn(columns, turns, 0, 1);
        turn(columns, turns, 0, 2);
        turn(columns, turns, 1, 2);
    }
    const scene::ScaledRotation last = scene::scaledRotation(matrixOf(columns));
    TurnedScale result{matrixOf(turns), last.scale, last.rotation};
    // The way back of a rotation is its mirror image at the diagonal.
    std::swap(result.first[1], result.first[3]);
    std::swap(result.first[2], result.first[6]);
    std::swap(result.first[5], result.first[7]);
    return result;
}

}  // namespace vxbtool::gltf
