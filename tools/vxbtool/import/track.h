#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "format/primitive_type.h"
#include "vxbtool/import/angles.h"

namespace vxbtool::importing {

/// What a coordinate is to show at one frame.
struct Sample {
    Vector translation;  ///< in units
    Quaternion rotation;
    Angles angles{};  ///< those of the rotation
    Vector scale{1, 1, 1};
};

/// One round of a coordinate's motion, frame by frame. The last sample is that of the frame that the next
/// round begins with.
struct Track {
    std::vector<Sample> samples;
    std::vector<std::uint32_t> wanted;  ///< frames that steps are to stand at, ascending
    std::vector<std::uint32_t> breaks;  ///< frames that steps have to stand at, ascending
    /// Whether further steps are put in where they take them to keep within the tolerance.
    bool refine = true;

    [[nodiscard]] std::uint32_t frames() const {
        return static_cast<std::uint32_t>(samples.size() - 1);
    }
};

/// How far what is shown may be from what is to be shown.
struct Tolerance {
    double units = 0.5;                    ///< along each axis
    double radians = 0.1 / 360 * 6.28319;  ///< a tenth of a degree
    double scale = 4.0 / 4096;
};

/// Lets the round end with the sample that it begins with, and brings angles that leave 16 bits back by
/// whole turns. Values must not go evenly over such a place, so that steps have to stand on both sides
/// of it.
void closeRound(Track& track);

/// Which parts of a coordinate a track has to give.
struct Parts {
    bool translation = false;
    bool rotation = false;
    bool scale = false;
};

/// The key-frame type of the fewest words that gives the parts: 16 bits for translations that fit, one
/// scale for three that are alike. Of two, the one that gives less besides.
mqf2vxb::PrimitiveTypeCode smallestType(const Track& track, const Parts& parts,
                                        const Tolerance& tolerance);

/// The values of a type's key frame as a file holds them: whole numbers, scales with 4096 as 1.0.
using KeyValues = std::vector<float>;
KeyValues keyValues(const Sample& sample, mqf2vxb::PrimitiveTypeCode type);

/// The largest differences between what is shown and what was to be shown.
struct TrackError {
    double units = 0;
    double radians = 0;
    double scale = 0;
};

struct Steps {
    std::vector<std::uint32_t> frames;  ///< ascending, the first is 0
    TrackError error;
};

/// Chooses the frames of the steps: as few of the wanted ones as keep within the tolerance, no two more
/// than 255 frames apart.
Steps chooseSteps(const Track& track, mqf2vxb::PrimitiveTypeCode type, const Tolerance& tolerance);

}  // namespace vxbtool::importing
