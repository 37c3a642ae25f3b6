#include "vxbtool/import/angles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace vxbtool::importing {
namespace {

constexpr double radiansOfTurn = 2 * std::numbers::pi;
constexpr double halfTurn = wholeTurn / 2;

/// The angle that says the same and lies nearest.
double nearest(double angle, double near) {
    return angle - std::round((angle - near) / wholeTurn) * wholeTurn;
}

double inTurns(double radians) { return radians / radiansOfTurn * wholeTurn; }

double distance(const Angles& a, const Angles& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    }
    return sum;
}

double angleOf(const Vector& a, const Vector& b) { return std::atan2((a ^ b).Length(), a * b); }

/// Of three axes that lean, those that lean as little for the first as they have to: the same as the
/// axes where these are square.
std::array<Vector, 3> squared(std::array<Vector, 3> axes) {
    constexpr double none = 1e-9;
    if (axes[0].Length() < none) {
        axes[0] = axes[1] ^ axes[2];
    }
    axes[0] = axes[0].Length() < none ? Vector(1, 0, 0) : axes[0].Normalize();
    axes[1] = axes[1] - axes[0] * (axes[0] * axes[1]);
    if (axes[1].Length() < none) {
        axes[1] = axes[2] ^ axes[0];
    }
    if (axes[1].Length() < none) {
        axes[1] = Vector(0, 0, 1) ^ axes[0];
    }
    if (axes[1].Length() < none) {
        axes[1] = {0, 1, 0};
    }
    axes[1].Normalize();
    axes[2] = axes[0] ^ axes[1];
    return axes;
}

}  // namespace

Quaternion rotationOf(const Angles& angles) {
    std::array<double, 3> sine{};
    std::array<double, 3> cosine{};
    for (std::size_t i = 0; i < angles.size(); ++i) {
        const double half = angles[i] / wholeTurn * radiansOfTurn / 2;
        sine[i] = std::sin(half);
        cosine[i] = std::cos(half);
    }
    const auto [sx, sy, sz] = sine;
    const auto [cx, cy, cz] = cosine;
    return {cx * cy * cz + sx * sy * sz, sx * cy * cz - cx * sy * sz, cx * sy * cz + sx * cy * sz,
            cx * cy * sz - sx * sy * cz};
}

Angles anglesNear(const Quaternion& rotation, const Angles& near) {
    const Matrix3 m = rotation.GetMatrix();
    const double level = std::hypot(m.c2, m.c3);
    constexpr double upright = 1e-6;
    if (level < upright) {
        // The axes of the angles about x and z fall together: only their sum or difference counts, and
        // the two share the way from where they were.
        const double side = m.c1 < 0 ? 1 : -1;
        const double together = inTurns(std::atan2(side * m.a2, m.b2));
        const double before = near[0] - side * near[2];
        const double way = (nearest(together, before) - before) / 2;
        return {near[0] + way, nearest(side * wholeTurn / 4, near[1]), near[2] - side * way};
    }
    Angles first{inTurns(std::atan2(m.c2, m.c3)), inTurns(std::atan2(-m.c1, level)),
                 inTurns(std::atan2(m.b1, m.a1))};
    Angles second{first[0] + halfTurn, halfTurn - first[1], first[2] + halfTurn};
    for (std::size_t i = 0; i < near.size(); ++i) {
        first[i] = nearest(first[i], near[i]);
        second[i] = nearest(second[i], near[i]);
    }
    return distance(second, near) < distance(first, near) ? second : first;
}

double angleBetween(const Quaternion& a, const Quaternion& b) {
    const double together = a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z;
    // The cosine says little of small angles: the length of what is left does.
    const double sign = together < 0 ? -1 : 1;
    const double apart = std::hypot(std::hypot(a.w - sign * b.w, a.x - sign * b.x),
                                    std::hypot(a.y - sign * b.y, a.z - sign * b.z));
    return 4 * std::asin(std::min(1.0, apart / 2));
}

Turned takeApart(const Matrix3& m) {
    std::array<Vector, 3> axes{{{m.a1, m.b1, m.c1}, {m.a2, m.b2, m.c2}, {m.a3, m.b3, m.c3}}};
    Turned turned;
    turned.scale = {axes[0].Length(), axes[1].Length(), axes[2].Length()};
    if (m.Determinant() < 0) {
        turned.scale *= -1.0;
        for (Vector& axis : axes) {
            axis *= -1.0;
        }
    }
    for (Vector& axis : axes) {
        axis.NormalizeSafe();
    }
    const std::array<Vector, 3> square = squared(axes);
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (axes[i].SquareLength() > 0) {
            turned.lean = std::max(turned.lean, angleOf(axes[i], square[i]));
        }
    }
    Matrix3 matrix;
    matrix.a1 = square[0].x, matrix.b1 = square[0].y, matrix.c1 = square[0].z;
    matrix.a2 = square[1].x, matrix.b2 = square[1].y, matrix.c2 = square[1].z;
    matrix.a3 = square[2].x, matrix.b3 = square[2].y, matrix.c3 = square[2].z;
    turned.rotation = Quaternion(matrix);
    turned.rotation.Normalize();
    return turned;
}

}  // namespace vxbtool::importing
