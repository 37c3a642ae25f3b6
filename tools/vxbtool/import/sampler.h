#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "vxbtool/import/animations.h"
#include "vxbtool/import/track.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::importing {

/// One coordinate in one animation, frame by frame.
struct SampledTrack {
    Track track;
    Parts parts;           ///< those that are not as they rest
    double leftUnits = 0;  ///< how far those that are left out are from rest, in units
    double leftTurn = 0;   ///< and in radians
    double lean = 0;  ///< how far the source's axes lean away from what can be shown, in radians
};

/// Samples the coordinates of an animation.
class Sampler {
public:
    /// `fps` is how many steps a second are wanted instead of those of the source's keys.
    Sampler(const Animation& animation, std::optional<double> fps, const Tolerance& tolerance);

    /// The length of a round. One that ends as it begins has the animation's length; another takes a
    /// frame more to get back.
    [[nodiscard]] std::uint32_t frames() const { return frames_; }

    [[nodiscard]] SampledTrack sample(const MovedCoordinate& moved,
                                      const model_text::Coordinate& rest) const;

private:
    [[nodiscard]] bool endsAsItBegins(const MovedCoordinate& moved) const;
    void takeWantedFrames(const MovedCoordinate& moved, Track& track) const;

    const Animation& animation_;
    std::optional<double> fps_;
    Tolerance tolerance_;
    bool seamless_ = false;
    std::uint32_t frames_ = 0;
};

}  // namespace vxbtool::importing
