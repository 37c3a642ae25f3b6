#pragma once

#include <array>
#include <vector>

#include "vxbtool/scene/scene.h"

namespace vxbtool::scene {

using Matrix = std::array<float, 9>;  ///< row by row

/// A matrix as a scale and a rotation behind it.
struct ScaledRotation {
    Matrix rotation{1, 0, 0, 0, 1, 0, 0, 0, 1};
    Vector3 scale{1, 1, 1};  ///< the first is negative for a matrix that mirrors
    /// How far what they make is from what the matrix does, of a point at distance 1: more than nothing
    /// for one with shear.
    float lean = 0;
};
ScaledRotation scaledRotation(const Matrix& matrix);

/// What a track makes of its coordinate at a frame; see placements() for frames behind its end.
Pose poseAt(const Track& track, double frame);

Vector3 transformed(const Matrix& matrix, const Vector3& vector);
Vector3 transformed(const Placement& placement, const Vector3& place);
/// The matrix of a placement, without its translation.
Matrix matrixOf(const Placement& placement);
/// Whether a matrix mirrors, so that what runs clockwise runs anticlockwise where the matrix puts it.
bool mirrors(const Matrix& matrix);
Vector3 minus(const Vector3& a, const Vector3& b);
Vector3 cross(const Vector3& a, const Vector3& b);
/// What becomes of the normal of a face when a matrix moves the face, and the way back, both but for
/// the length.
Vector3 transformedNormal(const Matrix& matrix, const Vector3& normal);
Vector3 normalBefore(const Matrix& matrix, const Vector3& moved);
/// Of length 1; nothing of a vector without a direction.
std::optional<Vector3> normalised(const Vector3& vector);

}  // namespace vxbtool::scene
