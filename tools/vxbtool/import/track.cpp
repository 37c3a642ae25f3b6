#include "vxbtool/import/track.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "format/key_frame_forms.h"

namespace vxbtool::importing {
namespace {

using mqf2vxb::KeyFrameForm;
using mqf2vxb::PrimitiveTypeCode;

constexpr double one = 4096;  // as a scale
constexpr double largest16Bits = std::numeric_limits<std::int16_t>::max();
constexpr std::uint32_t longestStep = 255;

// The digits of a type's code.
constexpr unsigned scaleDigit(PrimitiveTypeCode type) { return type >> 8U & 0xFU; }
constexpr unsigned rotationDigit(PrimitiveTypeCode type) { return type >> 4U & 0xFU; }
constexpr unsigned translationDigit(PrimitiveTypeCode type) { return type & 0xFU; }
constexpr unsigned oneScale = 9;
constexpr unsigned narrow = 9;

std::array<double, 3> listed(const Vector& v) { return {v.x, v.y, v.z}; }

double spread(const Vector& v) { return std::max({v.x, v.y, v.z}) - std::min({v.x, v.y, v.z}); }

float fixed(double scale) {
    return static_cast<float>(
        std::clamp(std::round(scale * one), -largest16Bits - 1, largest16Bits));
}

/// What a player shows of key values.
struct ShownPose {
    Vector translation;
    Angles angles{};
    Vector scale;
};

ShownPose shownOf(const Sample& sample, PrimitiveTypeCode type) {
    const KeyValues values = keyValues(sample, type);
    ShownPose shown;
    std::size_t i = 0;
    if (translationDigit(type) != 0) {
        shown.translation = {values[i], values[i + 1], values[i + 2]};
        i += 3;
    }
    if (rotationDigit(type) != 0) {
        shown.angles = {values[i], values[i + 1], values[i + 2]};
        i += 3;
    }
    if (scaleDigit(type) == oneScale) {
        shown.scale = {values[i] / one, values[i] / one, values[i] / one};
    } else if (scaleDigit(type) != 0) {
        shown.scale = {values[i] / one, values[i + 1] / one, values[i + 2] / one};
    }
    return shown;
}

class StepChooser {
public:
    StepChooser(const Track& track, PrimitiveTypeCode type, const Tolerance& tolerance)
        : track_(track), type_(type), tolerance_(tolerance) {
        shown_.reserve(track.samples.size());
        for (const Sample& sample : track.samples) {
            shown_.push_back(shownOf(sample, type));
        }
    }

    Steps choose() {
        Steps steps;
        for (std::uint32_t frame = 0; frame < track_.frames();) {
            steps.frames.push_back(frame);
            const std::uint32_t next = nextStep(frame);
            for (std::uint32_t f = frame; f < next; ++f) {
                take(differenceAt(frame, next, f), steps.error);
            }
            frame = next;
        }
        return steps;
    }

private:
    static void take(const TrackError& found, TrackError& largest) {
        largest.units = std::max(largest.units, found.units);
        largest.radians = std::max(largest.radians, found.radians);
        largest.scale = std::max(largest.scale, found.scale);
    }

    /// `first` and `next` are steps with `frame` between them.
    [[nodiscard]] TrackError differenceAt(std::uint32_t first, std::uint32_t next,
                                          std::uint32_t frame) const {
        const double part = static_cast<double>(frame - first) / static_cast<double>(next - first);
        const ShownPose& a = shown_[first];
        const ShownPose& b = shown_[next];
        const Sample& sample = track_.samples[frame];
        TrackError error;
        if (translationDigit(type_) != 0) {
            const Vector apart =
                a.translation + (b.translation - a.translation) * part - sample.translation;
            error.units = std::max({std::abs(apart.x), std::abs(apart.y), std::abs(apart.z)});
        }
        if (scaleDigit(type_) != 0) {
            const Vector apart = a.scale + (b.scale - a.scale) * part - sample.scale;
            error.scale = std::max({std::abs(apart.x), std::abs(apart.y), std::abs(apart.z)});
        }
        if (rotationDigit(type_) != 0) {
            Angles angles{};
            for (std::size_t i = 0; i < angles.size(); ++i) {
                angles[i] = a.angles[i] + (b.angles[i] - a.angles[i]) * part;
            }
            error.radians = angleBetween(rotationOf(angles), sample.rotation);
        }
        return error;
    }

    /// Whether a step at `first` may be followed by one at `next`.
    [[nodiscard]] bool mayFollow(std::uint32_t first, std::uint32_t next) const {
        for (std::uint32_t frame = first + 1; frame < next; ++frame) {
            const TrackError error = differenceAt(first, next, frame);
            if (error.units > tolerance_.units + 1e-6 || error.radians > tolerance_.radians ||
                error.scale > tolerance_.scale) {
                return false;
            }
        }
        return true;
    }

    /// The last of `count` ascending frames that may follow, found by doubling and halving; empty when
    /// the first does not.
    template <class FrameAt>
    std::optional<std::uint32_t> farthest(std::uint32_t first, std::size_t count,
                                          FrameAt frameAt) const {
        std::size_t good = 0;  // as many frames, the last of which may follow
        std::size_t bad = 1;
        while (bad <= count && mayFollow(first, frameAt(bad - 1))) {
            good = bad;
            bad = bad == count ? count + 1 : std::min(bad * 2, count);
        }
        while (bad - good > 1) {
            const std::size_t middle = good + (bad - good) / 2;
            (mayFollow(first, frameAt(middle - 1)) ? good : bad) = middle;
        }
        return good > 0 ? std::optional(frameAt(good - 1)) : std::nullopt;
    }

    std::uint32_t nextStep(std::uint32_t frame) const {
        std::uint32_t limit = std::min(frame + longestStep, track_.frames());
        const auto nextBreak = std::upper_bound(track_.breaks.begin(), track_.breaks.end(), frame);
        if (nextBreak != track_.breaks.end()) {
            limit = std::min(limit, *nextBreak);
        }
        const auto from = std::upper_bound(track_.wanted.begin(), track_.wanted.end(), frame);
        const auto to = std::lower_bound(from, track_.wanted.end(), limit);
        const auto wanted = static_cast<std::size_t>(to - from);
        const auto wantedAt = [&](std::size_t i) {
            return i < wanted ? from[static_cast<std::ptrdiff_t>(i)] : limit;
        };
        if (const auto found = farthest(frame, wanted + 1, wantedAt)) {
            return *found;
        }
        const std::uint32_t first = wantedAt(0);
        if (!track_.refine) {
            return first;
        }
        // Neighbouring frames may always follow each other.
        return *farthest(frame, first - frame - 1,
                         [&](std::size_t i) { return frame + 1 + static_cast<std::uint32_t>(i); });
    }

    const Track& track_;
    PrimitiveTypeCode type_;
    Tolerance tolerance_;
    std::vector<ShownPose> shown_;
};

}  // namespace

void closeRound(Track& track) {
    constexpr double farOff = 30000;
    std::vector<std::uint32_t>& breaks = track.breaks;
    const std::uint32_t frames = track.frames();
    std::array<double, 3> back{};
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        Angles& angles = track.samples[frame].angles;
        bool turned = false;
        for (std::size_t i = 0; i < angles.size(); ++i) {
            if (std::abs(angles[i] - back[i]) > farOff) {
                back[i] = std::round(angles[i] / wholeTurn) * wholeTurn;
                turned = true;
            }
            angles[i] -= back[i];
        }
        if (turned && frame > 0) {
            breaks.insert(breaks.end(), {frame - 1, frame});
        }
    }
    // The round ends with the angles it begins with, however many turns it made.
    Sample& end = track.samples[frames];
    const Angles& first = track.samples[0].angles;
    for (std::size_t i = 0; i < first.size(); ++i) {
        if (std::abs(end.angles[i] - back[i] - first[i]) > 1 && frames > 0) {
            breaks.push_back(frames - 1);
            break;
        }
    }
    end = track.samples[0];
}

KeyValues keyValues(const Sample& sample, PrimitiveTypeCode type) {
    KeyValues values;
    if (translationDigit(type) != 0) {
        for (const double value : listed(sample.translation)) {
            values.push_back(static_cast<float>(std::round(value)));
        }
    }
    if (rotationDigit(type) != 0) {
        for (const double angle : sample.angles) {
            values.push_back(static_cast<float>(std::round(angle)));
        }
    }
    if (scaleDigit(type) == oneScale) {
        values.push_back(fixed((sample.scale.x + sample.scale.y + sample.scale.z) / 3));
    } else if (scaleDigit(type) != 0) {
        for (const double scale : listed(sample.scale)) {
            values.push_back(fixed(scale));
        }
    }
    return values;
}

PrimitiveTypeCode smallestType(const Track& track, const Parts& parts, const Tolerance& tolerance) {
    const auto fits = [](const Sample& sample) {
        return std::ranges::all_of(listed(sample.translation),
                                   [](double value) { return std::abs(value) <= largest16Bits; });
    };
    const auto alike = [&](const Sample& sample) {
        return spread(sample.scale) <= tolerance.scale;
    };
    std::vector<unsigned> translations{1};
    std::vector<unsigned> scales{1};
    if (std::ranges::all_of(track.samples, fits)) {
        translations.push_back(narrow);
    }
    if (std::ranges::all_of(track.samples, alike)) {
        scales.push_back(oneScale);
    }
    if (!parts.translation) {
        translations.push_back(0);
    }
    if (!parts.scale) {
        scales.push_back(0);
    }
    std::pair best{SIZE_MAX, SIZE_MAX};  // words and values
    PrimitiveTypeCode bestType = 0;
    for (const unsigned s : scales) {
        for (const unsigned t : translations) {
            for (const unsigned r : {1U, parts.rotation ? 1U : 0U}) {
                const PrimitiveTypeCode type =
                    mqf2vxb::type_code::animation | s << 8U | r << 4U | t;
                const KeyFrameForm* const form = mqf2vxb::findKeyFrameForm(type);
                if (type != mqf2vxb::type_code::animation && form != nullptr &&
                    std::pair(form->words(), form->values()) < best) {
                    best = {form->words(), form->values()};
                    bestType = type;
                }
            }
        }
    }
    return bestType;
}

Steps chooseSteps(const Track& track, PrimitiveTypeCode type, const Tolerance& tolerance) {
    return StepChooser(track, type, tolerance).choose();
}

}  // namespace vxbtool::importing
