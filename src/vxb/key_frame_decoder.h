#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "vxb/vxb_file.h"

namespace mqf2vxb {

/// Words among the key frames: a key frame, or one word when the file does not tell the form of what
/// stands there.
struct KeyFramePiece {
    std::uint32_t offset = 0;  ///< in the file
    std::uint32_t words = 1;
    const KeyFrameForm* form = nullptr;  ///< null when it is not known
    std::uint32_t typeIndex = 0;
    bool used = false;  ///< whether a control word leads here
};

/// Calls `visit(piece)` for all words of the region of key frames, in their order.
template <typename Visit>
void forEachKeyFrame(const VxbFile& file, const Region& region, Visit&& visit) {
    const std::vector<KeyFrame>& frames = file.animation.keyFrames;
    auto frame = frames.begin();
    for (std::uint32_t offset = region.offset; offset < region.end();) {
        const std::uint32_t place = offset - region.offset;
        while (frame != frames.end() && frame->offset < place) {
            ++frame;
        }
        KeyFramePiece piece;
        piece.offset = offset;
        if (frame != frames.end() && frame->offset == place) {
            const KeyFrameForm* form = keyFrameForm(file.animation, frame->typeIndex);
            const auto behind = std::find_if(
                frame, frames.end(), [&](const KeyFrame& other) { return other.offset > place; });
            const std::uint32_t room =
                (behind != frames.end() ? behind->offset : region.words) - place;
            piece.used = true;
            piece.typeIndex = frame->typeIndex;
            if (form != nullptr && hasListedForm(frame->typeIndex, *form, room)) {
                piece.form = form;
                piece.words =
                    std::min(static_cast<std::uint32_t>(form->words()), region.end() - offset);
            }
        }
        visit(static_cast<const KeyFramePiece&>(piece));
        offset += piece.words;
    }
}

}  // namespace mqf2vxb
