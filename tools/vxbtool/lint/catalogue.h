#pragma once

#include <span>
#include <string_view>

#include "vxb/findings.h"

namespace vxbtool::lint {

using mqf2vxb::Severity;

/// One kind of finding. In the text, {name} stands for a value.
struct Kind {
    std::string_view code;  ///< never given to another kind
    Severity severity;
    std::string_view text;
};

namespace kind {

inline constexpr Kind cannotConvert{"L001", Severity::error, "{cause}"};

// Any text file.
inline constexpr Kind shortLine{
    "L002", Severity::warning,
    "the line ends before its last value: what is missing counts as 0 or as no name"};
inline constexpr Kind unreadable{
    "L003", Severity::warning,
    "\"{text}\" is not what the line needs here: this and what follows counts as 0 or as no name"};
inline constexpr Kind notANumber{"L004", Severity::warning,
                                 "\"{text}\" is no number and counts as {value}"};
inline constexpr Kind leftOver{"L005", Severity::warning, "nobody reads \"{text}\""};
inline constexpr Kind unreadLines{"L006", Severity::warning,
                                  "nobody reads the file from here on: its counts are reached"};

// Model description.
inline constexpr Kind unknownKey{"L007", Severity::warning,
                                 "no key begins this line, so nobody reads it"};
inline constexpr Kind keyAgain{"L008", Severity::warning,
                               "\"{key}\" stands again on a later line, and only that one counts"};
inline constexpr Kind groupKey{
    "L009", Severity::warning,
    "nobody reads the file of \"SQD=\": the group file is the one that the FRM file names"};

// Geometry.
inline constexpr Kind vertexWraps{
    "L010", Severity::warning,
    "{axis} of vertex {vertex} is {value:.7g} after pivots and scale and wraps to {written}"};
inline constexpr Kind normalWraps{
    "L011", Severity::warning,
    "{axis} of normal {normal} is {value:.7g}; below -8 or from 8 on it wraps"};
inline constexpr Kind normalLength{"L012", Severity::warning,
                                   "normal {normal} is {length:.4g} long, far from 1"};
inline constexpr Kind notFinite{"L013", Severity::warning,
                                "{axis} of {what} {index} is no finite number and is written as 0"};
inline constexpr Kind vertexUnused{"L014", Severity::warning,
                                   "no polygon that is drawn uses vertex {vertex}"};
inline constexpr Kind normalUnused{"L015", Severity::warning,
                                   "no polygon that is drawn uses normal {normal}"};
inline constexpr Kind cornerTwice{"L016", Severity::warning,
                                  "polygon {polygon} has vertex {vertex} at two of its corners"};
inline constexpr Kind noArea{"L017", Severity::warning,
                             "polygon {polygon} is written without any extent: nothing shows"};
inline constexpr Kind polygonUnnamed{"L018", Severity::warning,
                                     "no SRF line names polygon {polygon}: it is not drawn"};

// Materials.
inline constexpr Kind polygonAgain{"L019", Severity::warning,
                                   "polygon {polygon} is named again; it is drawn {count} times"};
inline constexpr Kind unknownShading{"L020", Severity::warning,
                                     "shading letter \"{letter}\" is neither F nor G"};
inline constexpr Kind unknownMaterial{
    "L021", Severity::warning,
    "kind letter \"{letter}\" is none of C, G, T, D, H, W, S and N: the polygons are black"};
inline constexpr Kind unknownFlag{"L022", Severity::warning,
                                  "bits 0x{bits:02x} of the flag 0x{flag:02x} mean nothing"};
inline constexpr Kind doubleLit{
    "L023", Severity::warning,
    "flag bit 0x80 (double image) without 0x01 (unlit) makes a code that has no packets"};
inline constexpr Kind colourLost{
    "L024", Severity::warning,
    "the colour of kind {letter} is not written for lit polygons: they need flag bit 0x01"};

// Textures.
inline constexpr Kind textureOutside{
    "L025", Severity::warning,
    "corner {corner} lies at {u}, {v}, outside image {image} of {width} x {height}"};
inline constexpr Kind windowOutside{
    "L026", Severity::warning,
    "the texture window reaches to {right}, {bottom}, outside image {image} of {width} x {height}"};
inline constexpr Kind windowCut{
    "L027", Severity::warning,
    "{value} of the texture window is no multiple of 8 texels in its page: packets cannot tell it"};
inline constexpr Kind imageOverlap{
    "L028", Severity::warning,
    "the {part} of image {image} overlaps the {otherPart} of image {other} in image memory"};
inline constexpr Kind imageUnused{"L029", Severity::warning,
                                  "no polygon that is drawn uses image {image}"};

// Hierarchy.
inline constexpr Kind vertexUnnamed{
    "L030", Severity::warning,
    "no coordinate line and no group names vertex {vertex}: it lies in coordinate 0"};
inline constexpr Kind vertexAgain{"L031", Severity::warning,
                                  "vertex {vertex} is named again under coordinate {coordinate}: "
                                  "polygons that begin with it are drawn there twice"};
inline constexpr Kind vertexRegrouped{
    "L032", Severity::warning, "vertex {vertex} is in an earlier group too; this one holds alone"};
inline constexpr Kind coordinateUnused{"L033", Severity::warning,
                                       "nothing lies in coordinate {coordinate}, hangs on it or "
                                       "moves it"};
inline constexpr Kind coordinateLoop{"L034", Severity::warning,
                                     "coordinate {coordinate} is its own ancestor"};
inline constexpr Kind valueCut{
    "L035", Severity::warning,
    "{value} does not fit 16 bits with a sign and is written as {written}"};
inline constexpr Kind objectsReplaced{
    "L036", Severity::warning,
    "a later line of coordinate {coordinate} replaces the object names of this one"};
inline constexpr Kind objectUnknown{"L037", Severity::warning, "no group has the name {name}"};
inline constexpr Kind groupUnused{"L038", Severity::warning,
                                  "no coordinate carries the group {name}"};
inline constexpr Kind pivotUnused{
    "L039", Severity::warning, "no vertex lies in coordinate {coordinate}: its pivot moves none"};

// Meshes.
inline constexpr Kind stripQuadrangle{
    "L040", Severity::warning,
    "polygon {polygon} is a quadrangle in a strip: only its corners 0 to 2 are drawn"};
inline constexpr Kind stripBreaks{
    "L041", Severity::warning,
    "polygon {polygon} lacks the edge {first}-{second} that it goes on from in its strip"};
inline constexpr Kind stripMixed{
    "L042", Severity::warning,
    "polygon {polygon} has another flag, shading or kind than the strip's first, which holds"};

// Motions.
inline constexpr Kind coordinateOutside{"L043", Severity::warning,
                                        "coordinate {coordinate} moves; the hierarchy has {count}"};
inline constexpr Kind nameUnknown{"L044", Severity::warning,
                                  "no step of the motion has the label {name}"};
inline constexpr Kind labelUnused{"L045", Severity::warning, "nothing names the label {label}"};
inline constexpr Kind labelLost{"L046", Severity::warning, "the label {label} has no step"};
inline constexpr Kind keyFrameUnused{"L047", Severity::warning,
                                     "no step shows key frame {keyFrame} of its type"};
inline constexpr Kind keyFrameWraps{
    "L048", Severity::warning,
    "value {value:.9g} of the key frame does not fit its {bits} bits and wraps to {written}"};
inline constexpr Kind keyFrameElsewhere{
    "L049", Severity::warning,
    "the motion has no key frames of this type: key frame {keyFrame} is counted over all motions"};
// Meshes again.
inline constexpr Kind stripNamesNothing{
    "L050", Severity::warning,
    "polygon {polygon} brings {what} {index} into its strip, which names nothing; the model has {count}"};

}  // namespace kind

/// All kinds in the order of their codes.
std::span<const Kind* const> kinds();

}  // namespace vxbtool::lint
