#include "vxbtool/import/sampler.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vxbtool::importing {
namespace {

/// More than a matrix's rounding.
constexpr double slight = 1.0 / 1024;

Vector axis(const Matrix3& m, unsigned column) {
    return {m[0][column], m[1][column], m[2][column]};
}

Vector translationOf(const Matrix4& m) { return {m.a4, m.b4, m.c4}; }

Vector along(const Vector& a, const Vector& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }

double farthest(const Vector& v) { return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}); }

/// A coordinate as it rests.
struct Rest {
    explicit Rest(const model_text::Coordinate& coordinate)
        : translation(coordinate.translation[0], coordinate.translation[1],
                      coordinate.translation[2]) {
        for (unsigned i = 0; i < coordinate.matrix.size(); ++i) {
            matrix[i / 3][i % 3] = coordinate.matrix.at(i) / 4096.0;
        }
        turned = takeApart(matrix);
        mayBeTurned = std::min({turned.scale.x, turned.scale.y, turned.scale.z}) < slight;
    }

    Matrix3 matrix;
    Vector translation;
    Turned turned;
    bool mayBeTurned = false;  ///< other rotations make the same matrix
};

/// How far a coordinate goes from where it rests.
struct Departure {
    void take(const Matrix4& now, const Rest& rest) {
        units = std::max(units, farthest(translationOf(now) - rest.translation));
        for (unsigned i = 0; i < 3; ++i) {
            const Vector at = axis(rest.matrix, i);
            radians = std::max(radians, (axis(Matrix3(now), i) - at).Length() /
                                            std::max(at.Length(), 1.0 / 4096));
        }
    }

    double units = 0;
    double radians = 0;  // of the axes, in parts of their length
};

Matrix4 placeOf(const MovedCoordinate& moved, const NodePose& pose) {
    return moved.before * Matrix4(pose.scale, pose.rotation, pose.translation) * moved.after;
}

/// What a coordinate shows of its node's pose.
class Shown {
public:
    explicit Shown(const MovedCoordinate& moved)
        : moved_(moved), before_(moved.before), after_(takeApart(Matrix3(moved.after)).scale) {}

    /// Raises `lean` to that of the axes.
    Sample sample(const NodePose& pose, const Angles& near, double& lean) const {
        // Taken apart without the node's scale, which may be none.
        const Turned turned = takeApart(before_ * Matrix3(pose.rotation.GetMatrix()));
        lean = std::max(lean, turned.lean);
        Sample sample;
        sample.translation = translationOf(placeOf(moved_, pose));
        sample.rotation = turned.rotation;
        sample.angles = anglesNear(turned.rotation, near);
        sample.scale = along(along(turned.scale, pose.scale), after_);
        return sample;
    }

private:
    const MovedCoordinate& moved_;
    Matrix3 before_;
    Vector after_;
};

}  // namespace

Sampler::Sampler(const Animation& animation, std::optional<double> fps, const Tolerance& tolerance)
    : animation_(animation),
      fps_(fps),
      tolerance_(tolerance),
      seamless_(animation.length > 0 &&
                std::ranges::all_of(animation.moved,
                                    [&](const auto& moved) { return endsAsItBegins(moved); })),
      frames_(animation.length + (seamless_ ? 0 : 1)) {}

SampledTrack Sampler::sample(const MovedCoordinate& moved,
                             const model_text::Coordinate& restsAt) const {
    SampledTrack sampled;
    const Rest rest(restsAt);
    const Shown shown(moved);
    Departure departure;
    Parts differs;
    Angles near{};
    for (std::uint32_t frame = 0; frame <= frames_; ++frame) {
        const std::uint32_t shows = frame > animation_.length ? 0 : frame;
        const NodePose pose = moved.channel.at(animation_.tickOf(shows));
        const Sample sample = shown.sample(pose, near, sampled.lean);
        near = sample.angles;
        departure.take(placeOf(moved, pose), rest);
        differs.rotation = differs.rotation ||
                           angleBetween(sample.rotation, rest.turned.rotation) > tolerance_.radians;
        differs.scale =
            differs.scale || farthest(sample.scale - rest.turned.scale) > tolerance_.scale;
        sampled.track.samples.push_back(sample);
    }
    closeRound(sampled.track);
    sampled.parts.translation = departure.units > tolerance_.units;
    sampled.leftUnits = sampled.parts.translation ? 0 : departure.units;
    if (departure.radians > tolerance_.radians) {
        // A player need not take a matrix apart, and one that mirrors or is flat has several ways: only
        // a matrix of a rotation or of a scale alone keeps that when the other is given.
        sampled.parts.rotation =
            differs.rotation || rest.mayBeTurned || angleBetween(rest.turned.rotation, {}) > slight;
        sampled.parts.scale =
            differs.scale || farthest(rest.turned.scale - Vector(1, 1, 1)) > slight;
    } else {
        sampled.leftTurn = departure.radians;
    }
    takeWantedFrames(moved, sampled.track);
    return sampled;
}

bool Sampler::endsAsItBegins(const MovedCoordinate& moved) const {
    const Shown shown(moved);
    double lean = 0;
    const Sample first = shown.sample(moved.channel.at(animation_.tickOf(0)), {}, lean);
    const Sample last =
        shown.sample(moved.channel.at(animation_.tickOf(animation_.length)), {}, lean);
    return farthest(last.translation - first.translation) <= tolerance_.units &&
           angleBetween(first.rotation, last.rotation) <= tolerance_.radians &&
           farthest(last.scale - first.scale) <= tolerance_.scale;
}

void Sampler::takeWantedFrames(const MovedCoordinate& moved, Track& track) const {
    const auto want = [&](double frame) {
        if (frame > 0 && frame < frames_) {
            track.wanted.push_back(static_cast<std::uint32_t>(frame));
        }
    };
    if (fps_) {
        track.refine = false;
        const double apart = framesPerSecond / *fps_;
        for (std::uint32_t step = 1; step * apart < frames_; ++step) {
            want(std::round(step * apart));
        }
    } else {
        for (const double tick : moved.channel.times()) {
            const double frame = (tick - animation_.start) / animation_.ticksPerFrame;
            constexpr double whole = 1e-3;  // nearer than this to a frame is at it
            want(std::floor(frame + whole));
            want(std::ceil(frame - whole));
        }
    }
    if (!seamless_) {
        want(animation_.length);
    }
    std::ranges::sort(track.wanted);
    track.wanted.erase(std::unique(track.wanted.begin(), track.wanted.end()), track.wanted.end());
}

}  // namespace vxbtool::importing
