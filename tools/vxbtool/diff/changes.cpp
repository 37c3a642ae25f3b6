#include "vxbtool/diff/changes.h"

#include <utility>

namespace vxbtool::diff {

std::string_view nameOf(ChangeKind kind) {
    constexpr std::array<std::string_view, changeKindNum> names{"coordinate-added",
                                                                "coordinate-removed",
                                                                "coordinate-matrix",
                                                                "coordinate-translation",
                                                                "coordinate-angles",
                                                                "coordinate-parent",
                                                                "coordinate-objects",
                                                                "polygon-added",
                                                                "polygon-removed",
                                                                "polygon-form",
                                                                "polygon-colours",
                                                                "polygon-texels",
                                                                "polygon-texture",
                                                                "polygon-winding",
                                                                "polygon-numbers",
                                                                "vertex-number",
                                                                "vertex-moved",
                                                                "vertex-unused",
                                                                "normal-number",
                                                                "normal-turned",
                                                                "normal-unused",
                                                                "motion-added",
                                                                "motion-removed",
                                                                "motion-coordinates",
                                                                "motion-start",
                                                                "motion-headers",
                                                                "motion-steps",
                                                                "motion-types",
                                                                "step-frames",
                                                                "step-key-frame",
                                                                "step-other",
                                                                "image-added",
                                                                "image-removed",
                                                                "image-position",
                                                                "image-size",
                                                                "image-depth",
                                                                "image-texels",
                                                                "image-colours",
                                                                "image-order",
                                                                "order",
                                                                "words"};
    return names[static_cast<std::size_t>(kind)];
}

void Changes::add(ChangeKind kind, std::string place, std::string text, std::size_t count) {
    if (keeps(kind)) {
        kept_.push_back({kind, std::move(place), std::move(text), count});
    }
    this->count(kind);
}

}  // namespace vxbtool::diff
