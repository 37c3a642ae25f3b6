#include "vxbtool/unpack/shown_key_frames.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

#include "vxbtool/unpack/key_frame_words.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::ControlKind;
using mqf2vxb::ControlWord;
using mqf2vxb::PrimitiveTypeCode;
using mqf2vxb::VxbFile;

/// What the steps from one to another show, the index 0 taken for the listed type.
std::vector<Shown> shownAsListed(const VxbFile& file, std::uint32_t first, std::uint32_t end) {
    const mqf2vxb::Animation& animation = file.animation;
    std::vector<Shown> result;
    for (std::uint32_t s = first; s < end; ++s) {
        const ControlWord control = mqf2vxb::controlWord(file.words[animation.controlOffset + s]);
        if (control.kind == ControlKind::keyFrame) {
            const PrimitiveTypeCode type = control.typeIndex < animation.types.size()
                                               ? animation.types[control.typeIndex]
                                               : bareType;
            result.push_back({s - first, control.target, type});
        }
    }
    return result;
}

/// What the steps of one motion show.
std::vector<Shown> shownBy(const VxbFile& file, std::uint32_t first, std::uint32_t end, bool bare,
                           const Reading& reading) {
    const mqf2vxb::Animation& animation = file.animation;
    std::vector<Shown> result = shownAsListed(file, first, end);
    if (animation.types.empty() || (reading.zero == Reading::Zero::listed && !bare)) {
        return result;
    }
    // A key frame of the listed type has room for its words, and a whole number of such frames
    // between it and the others.
    const PrimitiveTypeCode listed = animation.types.front();
    const std::uint32_t words = keyFrameWords(listed);
    std::set<std::uint32_t> starts;
    const auto hasRoom = [&](std::uint32_t offset) {
        const auto next =
            std::ranges::upper_bound(animation.keyFrames, offset, {}, &mqf2vxb::KeyFrame::offset);
        const std::uint32_t limit =
            next != animation.keyFrames.end() ? next->offset : animation.keyFrameWords;
        return limit >= offset && limit - offset >= words;
    };
    for (const Shown& shown : result) {
        if (shown.type == listed && hasRoom(shown.offset)) {
            starts.insert(shown.offset);
        }
    }
    std::optional<std::uint32_t> start;
    if (!starts.empty()) {
        const std::size_t wanted = std::min(reading.start, starts.size() - 1);
        start = *std::next(starts.begin(), static_cast<std::ptrdiff_t>(wanted));
    }
    // Key frames of one type lie side by side.
    std::uint32_t limit = animation.keyFrameWords;
    for (const Shown& shown : result) {
        if (shown.type != listed && start && shown.offset > *start) {
            limit = std::min(limit, shown.offset);
        }
    }
    for (Shown& shown : result) {
        const bool fits = !bare && start && shown.offset >= *start && shown.offset < limit &&
                          (shown.offset - *start) % words == 0 && hasRoom(shown.offset);
        if (shown.type == listed && !fits) {
            shown.type = bareType;
        }
    }
    return result;
}

}  // namespace

std::vector<std::vector<Shown>> shownKeyFrames(const VxbFile& file,
                                               const std::vector<std::uint32_t>& cuts,
                                               const Reading& reading) {
    std::vector<std::vector<Shown>> result;
    for (std::size_t m = 0; m + 1 < cuts.size(); ++m) {
        result.push_back(shownBy(file, cuts[m], cuts[m + 1], m >= reading.bareFrom, reading));
    }
    return result;
}

}  // namespace vxbtool::unpack
