#include "vxbtool/lint/catalogue.h"

#include <array>

namespace vxbtool::lint {
namespace {

constexpr std::array all{
    &kind::cannotConvert,
    &kind::shortLine,
    &kind::unreadable,
    &kind::notANumber,
    &kind::leftOver,
    &kind::unreadLines,
    &kind::unknownKey,
    &kind::keyAgain,
    &kind::groupKey,
    &kind::vertexWraps,
    &kind::normalWraps,
    &kind::normalLength,
    &kind::notFinite,
    &kind::vertexUnused,
    &kind::normalUnused,
    &kind::cornerTwice,
    &kind::noArea,
    &kind::polygonUnnamed,
    &kind::polygonAgain,
    &kind::unknownShading,
    &kind::unknownMaterial,
    &kind::unknownFlag,
    &kind::doubleLit,
    &kind::colourLost,
    &kind::textureOutside,
    &kind::windowOutside,
    &kind::windowCut,
    &kind::imageOverlap,
    &kind::imageUnused,
    &kind::vertexUnnamed,
    &kind::vertexAgain,
    &kind::vertexRegrouped,
    &kind::coordinateUnused,
    &kind::coordinateLoop,
    &kind::valueCut,
    &kind::objectsReplaced,
    &kind::objectUnknown,
    &kind::groupUnused,
    &kind::pivotUnused,
    &kind::stripQuadrangle,
    &kind::stripBreaks,
    &kind::stripMixed,
    &kind::coordinateOutside,
    &kind::nameUnknown,
    &kind::labelUnused,
    &kind::labelLost,
    &kind::keyFrameUnused,
    &kind::keyFrameWraps,
    &kind::keyFrameElsewhere,
    &kind::stripNamesNothing,
};

}  // namespace

std::span<const Kind* const> kinds() { return all; }

}  // namespace vxbtool::lint
