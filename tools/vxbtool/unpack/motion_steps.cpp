#include "vxbtool/unpack/motion_steps.h"

#include <algorithm>
#include <array>

#include "format/format.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::ControlKind;
using mqf2vxb::ControlWord;
using mqf2vxb::VxbFile;

constexpr std::uint32_t lowHalf = 0xFFFF;

/// The smallest and the largest step that a motion names.
struct Range {
    std::uint32_t first = 0xFFFFFFFFU;
    std::uint32_t last = 0;

    void add(std::uint32_t step) {
        first = std::min(first, step);
        last = std::max(last, step);
    }
    [[nodiscard]] bool empty() const { return first > last; }
};

Range namedSteps(const VxbFile& file, const mqf2vxb::Motion& motion) {
    const mqf2vxb::Animation& animation = file.animation;
    Range range;
    const auto add = [&](std::uint32_t step) {
        if (step < animation.controlNum) {
            range.add(step);
        }
    };
    for (std::uint32_t i = 0; i < motion.coordinateNum; ++i) {
        const mqf2vxb::AnimatedCoordinate& coordinate =
            animation.coordinates[motion.firstCoordinate + i];
        if (coordinate.startStep != mqf2vxb::format::unresolvedSequence) {
            add(coordinate.startStep);
        }
        for (std::uint32_t k = 0; k < coordinate.sequenceNum; ++k) {
            const std::uint32_t header =
                file.words[coordinate.offset + mqf2vxb::format::animationIndexSize + k];
            if ((header & lowHalf) != 0) {  // 0 may be a label that stands nowhere
                add(header & lowHalf);
            }
        }
    }
    return range;
}

class StepCutter {
public:
    explicit StepCutter(const VxbFile& file)
        : file_(file), number_(file.animation.controlNum), quality_(std::size_t{number_} + 1, 0) {
        markJumps();
        markEnds();
        markKeyFrames();
        for (std::uint32_t place = 0; place < quality_.size(); ++place) {
            if (quality_[place] >= 0) {
                placesOf_[static_cast<std::size_t>(quality_[place])].push_back(place);
            }
        }
    }

    std::vector<std::uint32_t> cut() {
        const std::vector<mqf2vxb::Motion>& motions = file_.animation.motions;
        std::vector<Range> named;
        named.reserve(motions.size());
        for (const mqf2vxb::Motion& motion : motions) {
            named.push_back(namedSteps(file_, motion));
        }
        // A motion begins at or before the first step that it or one behind it names.
        std::vector<std::uint32_t> latest(motions.size(), number_);
        for (std::size_t m = motions.size(); m-- > 1;) {
            latest[m] = std::min(m + 1 < motions.size() ? latest[m + 1] : number_,
                                 named[m].empty() ? number_ : named[m].first);
        }
        std::vector<std::uint32_t> cuts{0};
        std::uint32_t earliest = 0;
        for (std::size_t m = 1; m < motions.size(); ++m) {
            if (!named[m - 1].empty()) {
                earliest = std::max(earliest, named[m - 1].last + 1);
            }
            cuts.push_back(best(cuts.back(), std::max(earliest, cuts.back()), latest[m]));
        }
        cuts.push_back(number_);
        return cuts;
    }

private:
    static constexpr int insideJump = -100;

    [[nodiscard]] ControlWord step(std::uint32_t index) const {
        return mqf2vxb::controlWord(file_.words[file_.animation.controlOffset + index]);
    }

    /// The last place of the best quality from one place to another, which a motion names: most begin
    /// with what they name first. The first one where none names any. One that leaves the motion before
    /// without steps only if there is no better.
    [[nodiscard]] std::uint32_t best(std::uint32_t before, std::uint32_t from,
                                     std::uint32_t to) const {
        for (int quality = whole; quality > 0; --quality) {
            const std::uint32_t next = nextOf(quality, std::max(from, before + 1));
            if (next <= to) {
                return to < number_ ? lastOf(quality, to) : next;
            }
        }
        const std::uint32_t next = nextOf(0, from);
        return next <= to ? next : std::min(from, number_);
    }
    /// The first place of this quality from a place on; behind the last when there is none.
    [[nodiscard]] std::uint32_t nextOf(int quality, std::uint32_t from) const {
        const std::vector<std::uint32_t>& places = placesOf_[static_cast<std::size_t>(quality)];
        const auto next = std::lower_bound(places.begin(), places.end(), from);
        return next != places.end() ? *next : number_ + 1;
    }

    /// The last place of a quality up to a place, of those before which there is one.
    [[nodiscard]] std::uint32_t lastOf(int quality, std::uint32_t to) const {
        const std::vector<std::uint32_t>& places = placesOf_[static_cast<std::size_t>(quality)];
        return *(std::upper_bound(places.begin(), places.end(), to) - 1);
    }

    static constexpr int behindEnd = 2;
    static constexpr int keyFramesRise = 1;
    static constexpr int whole = behindEnd + keyFramesRise;

    void markJumps() {
        std::vector<int> change(quality_.size() + 1, 0);
        for (std::uint32_t s = 0; s < number_; ++s) {
            const ControlWord control = step(s);
            if (control.kind == ControlKind::jump && control.target != 0 &&
                control.target < number_) {
                ++change[std::min(s, control.target) + 1];
                --change[std::max(s, control.target) + 1];
            }
        }
        int open = 0;
        for (std::size_t place = 0; place < quality_.size(); ++place) {
            open += change[place];
            quality_[place] += open > 0 ? insideJump : 0;
        }
    }

    void markEnds() {
        for (std::uint32_t s = 0; s < number_; ++s) {
            quality_[s + 1] += step(s).kind == ControlKind::end ? behindEnd : 0;
        }
    }

    void markKeyFrames() {
        std::vector<std::uint32_t> smallestBehind(quality_.size(), 0xFFFFFFFFU);
        for (std::uint32_t s = number_; s-- > 0;) {
            smallestBehind[s] = smallestBehind[s + 1];
            if (step(s).kind == ControlKind::keyFrame) {
                smallestBehind[s] = std::min(smallestBehind[s], step(s).target);
            }
        }
        std::int64_t largestBefore = -1;
        for (std::uint32_t place = 0; place < quality_.size(); ++place) {
            quality_[place] += largestBefore < smallestBehind[place] ? keyFramesRise : 0;
            if (place < number_ && step(place).kind == ControlKind::keyFrame) {
                largestBefore = std::max<std::int64_t>(largestBefore, step(place).target);
            }
        }
    }

    const VxbFile& file_;
    std::uint32_t number_;
    std::vector<int> quality_;  // of a cut before each step
    std::array<std::vector<std::uint32_t>, whole + 1> placesOf_;
};

}  // namespace

std::vector<std::uint32_t> cutSteps(const VxbFile& file) { return StepCutter(file).cut(); }

}  // namespace vxbtool::unpack
