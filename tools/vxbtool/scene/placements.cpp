#include "vxbtool/scene/placements.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vxbtool::scene {
namespace {

float dot(const Vector3& a, const Vector3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vector3 column(const Matrix& matrix, std::size_t i) {
    return {matrix[i], matrix[i + 3], matrix[i + 6]};
}

void setColumn(Matrix& matrix, std::size_t i, const Vector3& column) {
    for (std::size_t row = 0; row < 3; ++row) {
        matrix[row * 3 + i] = column[row];
    }
}

Matrix scaled(const Matrix& rotation, const Vector3& scale) {
    Matrix result = rotation;
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] *= scale[i % 3];
    }
    return result;
}

Placement placement(const Matrix& matrix, const Vector3& translation) {
    Placement result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t i = 0; i < 3; ++i) {
            result[row * 4 + i] = matrix[row * 3 + i];
        }
        result[row * 4 + 3] = translation[row];
    }
    return result;
}

/// First `inner`, then `outer`.
Placement product(const Placement& outer, const Placement& inner) {
    Placement result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t i = 0; i < 4; ++i) {
            float sum = i == 3 ? outer[row * 4 + 3] : 0;
            for (std::size_t k = 0; k < 3; ++k) {
                sum += outer[row * 4 + k] * inner[k * 4 + i];
            }
            result[row * 4 + i] = sum;
        }
    }
    return result;
}

/// Makes placements in the model of those in their parents.
std::vector<Placement> inModel(const Scene& scene, std::vector<Placement> places) {
    std::vector<bool> done(places.size());
    std::vector<std::uint32_t> ahead;
    for (std::uint32_t start = 0; start < places.size(); ++start) {
        for (std::optional<std::uint32_t> c = start; c && !done[*c];
             c = scene.coordinates[*c].parent) {
            ahead.push_back(*c);
        }
        while (!ahead.empty()) {
            const std::uint32_t c = ahead.back();
            ahead.pop_back();
            if (const auto parent = scene.coordinates[c].parent) {
                places[c] = product(places[*parent], places[c]);
            }
            done[c] = true;
        }
    }
    return places;
}

std::vector<Placement> atRest(const Scene& scene) {
    std::vector<Placement> places;
    places.reserve(scene.coordinates.size());
    for (const Coordinate& coordinate : scene.coordinates) {
        places.push_back(placement(coordinate.matrix, coordinate.translation));
    }
    return places;
}

Vector3 between(const Vector3& a, const Vector3& b, double share) {
    Vector3 result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = static_cast<float>(a[i] + (double{b[i]} - a[i]) * share);
    }
    return result;
}

}  // namespace

Vector3 transformed(const Matrix& matrix, const Vector3& vector) {
    Vector3 result{};
    for (std::size_t row = 0; row < 3; ++row) {
        result[row] = matrix[row * 3] * vector[0] + matrix[row * 3 + 1] * vector[1] +
                      matrix[row * 3 + 2] * vector[2];
    }
    return result;
}

Vector3 transformed(const Placement& placement, const Vector3& place) {
    Vector3 result = transformed(matrixOf(placement), place);
    for (std::size_t row = 0; row < 3; ++row) {
        result[row] += placement[row * 4 + 3];
    }
    return result;
}

Matrix matrixOf(const Placement& placement) {
    Matrix matrix{};
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        matrix[i] = placement[i / 3 * 4 + i % 3];
    }
    return matrix;
}

Vector3 minus(const Vector3& a, const Vector3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Vector3 cross(const Vector3& a, const Vector3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

bool mirrors(const Matrix& matrix) {
    // What rounding makes of a matrix without depth mirrors nothing.
    constexpr double slight = 1e-6;
    std::array<double, 9> m{};
    std::copy(matrix.begin(), matrix.end(), m.begin());
    const auto minor = [&](std::size_t a, std::size_t b) {
        return m[3 + a] * m[6 + b] - m[3 + b] * m[6 + a];
    };
    const auto length = [&](std::size_t i) { return std::hypot(m[i], m[i + 3], m[i + 6]); };
    const double volume = m[0] * minor(1, 2) - m[1] * minor(0, 2) + m[2] * minor(0, 1);
    return volume < -slight * length(0) * length(1) * length(2);
}

Vector3 transformedNormal(const Matrix& m, const Vector3& normal) {
    const Vector3 x{m[0], m[3], m[6]};
    const Vector3 y{m[1], m[4], m[7]};
    const Vector3 z{m[2], m[5], m[8]};
    const std::array<Vector3, 3> across{cross(y, z), cross(z, x), cross(x, y)};
    const bool mirrored = mirrors(m);
    Vector3 result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            result[k] += (mirrored ? -normal[i] : normal[i]) * across[i][k];
        }
    }
    return result;
}

Vector3 normalBefore(const Matrix& m, const Vector3& moved) {
    return {m[0] * moved[0] + m[3] * moved[1] + m[6] * moved[2],
            m[1] * moved[0] + m[4] * moved[1] + m[7] * moved[2],
            m[2] * moved[0] + m[5] * moved[1] + m[8] * moved[2]};
}

std::optional<Vector3> normalised(const Vector3& vector) {
    const float length = std::sqrt(dot(vector, vector));
    if (!(length > 0) || !std::isfinite(length)) {
        return std::nullopt;
    }
    return Vector3{vector[0] / length, vector[1] / length, vector[2] / length};
}

std::array<float, 9> rotation(const Vector3& angles) {
    const auto sine = [&](std::size_t i) { return std::sin(double{angles[i]}); };
    const auto cosine = [&](std::size_t i) { return std::cos(double{angles[i]}); };
    const double sx = sine(0), sy = sine(1), sz = sine(2);
    const double cx = cosine(0), cy = cosine(1), cz = cosine(2);
    const std::array<double, 9> exact{cz * cy,
                                      cz * sy * sx - sz * cx,
                                      cz * sy * cx + sz * sx,  //
                                      sz * cy,
                                      sz * sy * sx + cz * cx,
                                      sz * sy * cx - cz * sx,  //
                                      -sy,
                                      cy * sx,
                                      cy * cx};
    Matrix result{};
    std::transform(exact.begin(), exact.end(), result.begin(),
                   [](double value) { return static_cast<float>(value); });
    return result;
}

ScaledRotation scaledRotation(const Matrix& matrix) {
    constexpr float small = 1e-6F;
    ScaledRotation result;
    std::array<Vector3, 3> axes{};
    for (std::size_t i = 0; i < 3; ++i) {
        const Vector3 whole = column(matrix, i);
        result.scale[i] = std::sqrt(dot(whole, whole));
        Vector3 axis = whole;
        // What it has of the axes before it is no rotation.
        for (std::size_t before = 0; before < i; ++before) {
            const float share = dot(axis, axes[before]);
            for (std::size_t k = 0; k < 3; ++k) {
                axis[k] -= share * axes[before][k];
            }
        }
        const auto unit = normalised(axis);
        if (unit && std::sqrt(dot(axis, axis)) > small) {
            axes[i] = *unit;
            continue;
        }
        // For a scale of 0 that of a right-handed three, as far as the others tell.
        if (i == 2) {
            axes[i] = cross(axes[0], axes[1]);
        } else if (i == 1) {
            axes[i] =
                normalised(cross(column(matrix, 2), axes[0]))
                    .value_or(normalised(cross({0, 0, 1}, axes[0])).value_or(Vector3{0, 1, 0}));
        } else {
            axes[i] =
                normalised(cross(column(matrix, 1), column(matrix, 2))).value_or(Vector3{1, 0, 0});
        }
    }
    if (dot(cross(axes[0], axes[1]), axes[2]) < 0) {
        result.scale[0] = -result.scale[0];
        axes[0] = {-axes[0][0], -axes[0][1], -axes[0][2]};
    }
    for (std::size_t i = 0; i < 3; ++i) {
        setColumn(result.rotation, i, axes[i]);
    }
    const Matrix made = scaled(result.rotation, result.scale);
    float sum = 0;
    for (std::size_t i = 0; i < made.size(); ++i) {
        sum += (made[i] - matrix[i]) * (made[i] - matrix[i]);
    }
    result.lean = std::sqrt(sum);
    return result;
}

Pose poseAt(const Track& track, double frame) {
    Pose pose;
    if (track.keys.empty()) {
        return pose;
    }
    const double round = track.frames - track.loopFrom;
    if (track.loops && frame > track.frames && round > 0) {
        frame = track.loopFrom + std::fmod(frame - track.loopFrom, round);
    }
    const auto behind = std::upper_bound(track.keys.begin() + 1, track.keys.end(), frame,
                                         [](double at, const Key& key) { return at < key.frame; });
    const auto at = behind - 1;
    const auto set = [&](std::optional<Vector3> Pose::*part) {
        auto holder = at;
        while (!(holder->pose.*part) && holder != track.keys.begin()) {
            --holder;
        }
        pose.*part = holder->pose.*part;
        const bool moves = holder == at && at->even && behind != track.keys.end() && pose.*part &&
                           behind->pose.*part;
        if (moves && frame > at->frame) {
            const double share = (frame - at->frame) / (behind->frame - at->frame);
            pose.*part = between(*(pose.*part), *(behind->pose.*part), share);
        }
    };
    set(&Pose::translation);
    set(&Pose::angles);
    set(&Pose::scale);
    return pose;
}

std::vector<Placement> placements(const Scene& scene) { return inModel(scene, atRest(scene)); }

std::vector<Placement> placements(const Scene& scene, const Motion& motion, double frame) {
    std::vector<Placement> places = atRest(scene);
    for (const Track& track : motion.tracks) {
        const Coordinate& coordinate = scene.coordinates[track.coordinate];
        const Pose pose = poseAt(track, frame);
        Matrix matrix = coordinate.matrix;
        if (pose.angles || pose.scale) {
            const ScaledRotation rest = scaledRotation(matrix);
            matrix = scaled(pose.angles ? rotation(*pose.angles) : rest.rotation,
                            pose.scale.value_or(rest.scale));
        }
        places[track.coordinate] =
            placement(matrix, pose.translation.value_or(coordinate.translation));
    }
    return inModel(scene, std::move(places));
}

}  // namespace vxbtool::scene
