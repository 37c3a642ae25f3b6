#pragma once

#include <array>

#include "base/finding_kind.h"

namespace vxbtool::lint {

using mqf2vxb::FindingKind;
using mqf2vxb::Severity;

/// All kinds of findings of lint. In the text, {name} stands for a value.
inline constexpr std::array kinds{
    FindingKind{"L001", Severity::error, "{cause}"},
    FindingKind{"L002", Severity::warning,
                "the line ends before its last value: what is missing counts as 0 or as no name"},
    FindingKind{
        "L003", Severity::warning,
        "\"{text}\" is not what the line needs here: this and what follows counts as 0 or as no name"},
    FindingKind{"L004", Severity::warning, "\"{text}\" is no number and counts as {value}"},
    FindingKind{"L005", Severity::warning, "\"{text}\" is ignored"},
    FindingKind{"L006", Severity::warning,
                "the file is ignored from here on: its counts are reached"},
    FindingKind{"L007", Severity::warning, "no key begins this line, so it is ignored{hint}"},
    FindingKind{"L008", Severity::warning,
                "\"{key}\" stands again on a later line, and only that one counts"},
    FindingKind{
        "L009", Severity::warning,
        "the file of \"SQD=\" is ignored: the group file is the one that the FRM file names"},
    FindingKind{
        "L010", Severity::warning,
        "{axis} of vertex {vertex} is {value:.7g} after pivots and scale and wraps to {written}"},
    FindingKind{"L011", Severity::warning,
                "{axis} of normal {normal} is {value:.7g}; below -8 or from 8 on it wraps"},
    FindingKind{"L012", Severity::warning, "normal {normal} is {length:.4g} long, far from 1"},
    FindingKind{"L013", Severity::warning,
                "{axis} of {what} {index} is no finite number and is written as 0"},
    FindingKind{"L014", Severity::warning, "no polygon that is drawn uses vertex {vertex}"},
    FindingKind{"L015", Severity::warning, "no polygon that is drawn uses normal {normal}"},
    FindingKind{"L016", Severity::warning,
                "polygon {polygon} has vertex {vertex} at two of its corners"},
    FindingKind{"L017", Severity::warning,
                "polygon {polygon} is written without any extent: nothing shows"},
    FindingKind{"L018", Severity::warning, "no SRF line names polygon {polygon}: it is not drawn"},
    FindingKind{"L019", Severity::warning,
                "polygon {polygon} is named again; it is drawn {count} times"},
    FindingKind{"L020", Severity::warning, "shading letter \"{letter}\" is neither F nor G"},
    FindingKind{
        "L021", Severity::warning,
        "kind letter \"{letter}\" is none of C, G, T, D, H, W, S and N: the polygons are black"},
    FindingKind{"L022", Severity::warning,
                "bits 0x{bits:02x} of the flag 0x{flag:02x} mean nothing"},
    FindingKind{
        "L023", Severity::warning,
        "flag bit 0x80 (double image) without 0x01 (unlit) makes a code that has no packets"},
    FindingKind{
        "L024", Severity::warning,
        "the colour of kind {letter} is not written for lit polygons: they need flag bit 0x01"},
    FindingKind{"L025", Severity::warning,
                "corner {corner} lies at {u}, {v}, outside image {image} of {width} x {height}"},
    FindingKind{
        "L026", Severity::warning,
        "the texture window reaches to {right}, {bottom}, outside image {image} of {width} x {height}"},
    FindingKind{
        "L027", Severity::warning,
        "{value} of the texture window is no multiple of 8 texels in its page: packets cannot tell it"},
    FindingKind{
        "L028", Severity::warning,
        "the {part} of image {image} overlaps the {otherPart} of image {other} in image memory"},
    FindingKind{"L029", Severity::warning, "no polygon that is drawn uses image {image}"},
    FindingKind{"L030", Severity::warning,
                "no coordinate line and no group names vertex {vertex}: it lies in coordinate 0"},
    FindingKind{
        "L031", Severity::warning,
        "vertex {vertex} is named again under coordinate {coordinate}: polygons that begin with it are drawn there twice"},
    FindingKind{"L032", Severity::warning,
                "vertex {vertex} is in an earlier group too; this one holds alone"},
    FindingKind{"L033", Severity::warning,
                "nothing lies in coordinate {coordinate}, hangs on it or moves it"},
    FindingKind{"L034", Severity::warning, "coordinate {coordinate} is its own ancestor"},
    FindingKind{"L035", Severity::warning,
                "{value} does not fit 16 bits with a sign and is written as {written}"},
    FindingKind{"L036", Severity::warning,
                "a later line of coordinate {coordinate} replaces the object names of this one"},
    FindingKind{"L037", Severity::warning, "no group has the name {name}"},
    FindingKind{"L038", Severity::warning, "no coordinate carries the group {name}"},
    FindingKind{"L039", Severity::warning,
                "no vertex lies in coordinate {coordinate}: its pivot moves none"},
    FindingKind{"L040", Severity::warning,
                "polygon {polygon} is a quadrangle in a strip: only its corners 0 to 2 are drawn"},
    FindingKind{
        "L041", Severity::warning,
        "polygon {polygon} lacks the edge {first}-{second} that it goes on from in its strip"},
    FindingKind{
        "L042", Severity::warning,
        "polygon {polygon} has another flag, shading or kind than the strip's first, which holds"},
    FindingKind{"L043", Severity::warning,
                "coordinate {coordinate} moves; the hierarchy has {count}"},
    FindingKind{"L044", Severity::warning, "no step of the motion has the label {name}"},
    FindingKind{"L045", Severity::warning, "nothing names the label {label}"},
    FindingKind{"L046", Severity::warning, "the label {label} has no step"},
    FindingKind{"L047", Severity::warning, "no step shows key frame {keyFrame} of its type"},
    FindingKind{
        "L048", Severity::warning,
        "value {value:.9g} of the key frame does not fit its {bits} bits and wraps to {written}"},
    FindingKind{
        "L049", Severity::warning,
        "the motion has no key frames of this type: key frame {keyFrame} is counted over all motions"},
    FindingKind{
        "L050", Severity::warning,
        "polygon {polygon} brings {what} {index} into its strip, which names nothing; the model has {count}"},
    FindingKind{"L051", Severity::warning,
                "polygon {polygon} is named again; with a mesh file only the first line counts"},
    FindingKind{"L052", Severity::error,
                "polygon {polygon} names vertex {index}, and there are {count}"},
    FindingKind{"L053", Severity::error,
                "polygon {polygon} names normal {index}, and there are {count}"},
    FindingKind{"L054", Severity::error, "the line names polygon {polygon}, and there are {count}"},
    FindingKind{"L055", Severity::error, "texture {texture} is named, and there are {count}"},
    FindingKind{"L056", Severity::error, "the colour {value} is not from 0 to 255"},
    FindingKind{"L057", Severity::error,
                "mesh {mesh} names polygon {polygon}, and there are {count}"},
    FindingKind{"L058", Severity::error,
                "mesh {mesh} names polygon {polygon}, which no SRF line names"},
    FindingKind{"L059", Severity::error, "polygon {polygon} of mesh {mesh} is in mesh {other} too"},
    FindingKind{"L060", Severity::error, "mesh {mesh} has no polygons"},
    FindingKind{"L061", Severity::error, "polygon {polygon} is in no mesh"},
    FindingKind{"L062", Severity::error,
                "no key names a geometry file (GEO=), and other files name its records"},
    FindingKind{
        "L063", Severity::error,
        "polygon {polygon} with image {image}: corner {corner} at {u}, {v} lies on another page of image memory than corner {first} at {u0}, {v0}"},
    FindingKind{"L064", Severity::error,
                "polygon {polygon} is a {shape}, and {shape}s are drawn in strips only"},
    FindingKind{
        "L065", Severity::error,
        "polygon {polygon} is of kind {kind}; 0 is a triangle, 1 a quadrangle, 2 a line, 3 a sprite"},
    FindingKind{"L066", Severity::error,
                "no packets can draw polygon {polygon} with this flag, shading and kind together"},
    FindingKind{"L067", Severity::error,
                "key frame {keyFrame} is named, and the motion has {count} of this type"},
    FindingKind{"L068", Severity::error, "no key frames have this type"},
    FindingKind{"L069", Severity::error,
                "a second group of key frames of this type, which SEQ lines name"},
    FindingKind{
        "L070", Severity::warning,
        "polygon {polygon} has its corners {way}, most quadrangles have them {others}: it is drawn crossed"},
    FindingKind{"L071", Severity::warning,
                "polygon {polygon} is not flat: its halves meet at {degrees:.0f} degrees"},
    FindingKind{"L072", Severity::warning,
                "polygon {polygon} has the corners of polygon {other} and runs the same way"},
    FindingKind{"L073", Severity::warning, "vertex {vertex} lies where vertex {other} lies"},
    FindingKind{"L074", Severity::warning,
                "normal {normal} of polygon {polygon} points to the back of it"},
    FindingKind{
        "L075", Severity::warning,
        "polygon {polygon} runs the other way around than the polygons that it is connected with"},
    FindingKind{
        "L076", Severity::warning,
        "the colour table of image {image} begins at column {x}, which is no multiple of 16: packets cannot tell it"},
    FindingKind{
        "L077", Severity::warning,
        "the {part} of image {image} reaches to {right}, {bottom}; packets reach 1024 columns and 1024 lines of image memory"},
    FindingKind{
        "L078", Severity::warning,
        "image {image} has {bits} bits a pixel and no colour table, and none lies at 0, 0 where it would be looked for"},
    FindingKind{
        "L079", Severity::warning,
        "the header of the {part} of image {image} tells {width} x {height}, which is {words} words of data; there are {data}"},
    FindingKind{"L080", Severity::warning,
                "{bytes} bytes stand behind the last block of image {image}"},
    FindingKind{
        "L081", Severity::warning,
        "the colour table of image {image} has {colours} colours; {bits} bits a pixel need {needed}"},
    FindingKind{"L082", Severity::warning,
                "image {image} has 16 bits a pixel and a colour table, which nothing uses"},
    FindingKind{"L083", Severity::warning,
                "images {other} and {image} lie in one place and have different depths"},
    FindingKind{
        "L084", Severity::warning,
        "coordinate {coordinate} does not have 16 values in its lines: one too few or too many, and all behind it slide"},
    FindingKind{"L085", Severity::warning,
                "the motion ends with a SEQ line: behind it stands no END or GOTO"},
    FindingKind{"L086", Severity::warning,
                "coordinate {coordinate} is animated a second time in this motion"},
};
static_assert(codesAscend(kinds));

namespace kind {

inline constexpr const FindingKind& cannotConvert = findingKind(kinds, "L001");

// Any text file.
inline constexpr const FindingKind& shortLine = findingKind(kinds, "L002");
inline constexpr const FindingKind& unreadable = findingKind(kinds, "L003");
inline constexpr const FindingKind& notANumber = findingKind(kinds, "L004");
inline constexpr const FindingKind& leftOver = findingKind(kinds, "L005");
inline constexpr const FindingKind& unreadLines = findingKind(kinds, "L006");

// Model description.
inline constexpr const FindingKind& unknownKey = findingKind(kinds, "L007");
inline constexpr const FindingKind& keyAgain = findingKind(kinds, "L008");
inline constexpr const FindingKind& groupKey = findingKind(kinds, "L009");

// Geometry.
inline constexpr const FindingKind& vertexWraps = findingKind(kinds, "L010");
inline constexpr const FindingKind& normalWraps = findingKind(kinds, "L011");
inline constexpr const FindingKind& normalLength = findingKind(kinds, "L012");
inline constexpr const FindingKind& notFinite = findingKind(kinds, "L013");
inline constexpr const FindingKind& vertexUnused = findingKind(kinds, "L014");
inline constexpr const FindingKind& normalUnused = findingKind(kinds, "L015");
inline constexpr const FindingKind& cornerTwice = findingKind(kinds, "L016");
inline constexpr const FindingKind& noArea = findingKind(kinds, "L017");
inline constexpr const FindingKind& polygonUnnamed = findingKind(kinds, "L018");

// Materials.
inline constexpr const FindingKind& polygonAgain = findingKind(kinds, "L019");
inline constexpr const FindingKind& unknownShading = findingKind(kinds, "L020");
inline constexpr const FindingKind& unknownMaterial = findingKind(kinds, "L021");
inline constexpr const FindingKind& unknownFlag = findingKind(kinds, "L022");
inline constexpr const FindingKind& doubleLit = findingKind(kinds, "L023");
inline constexpr const FindingKind& colourLost = findingKind(kinds, "L024");

// Textures.
inline constexpr const FindingKind& textureOutside = findingKind(kinds, "L025");
inline constexpr const FindingKind& windowOutside = findingKind(kinds, "L026");
inline constexpr const FindingKind& windowCut = findingKind(kinds, "L027");
inline constexpr const FindingKind& imageOverlap = findingKind(kinds, "L028");
inline constexpr const FindingKind& imageUnused = findingKind(kinds, "L029");

// Hierarchy.
inline constexpr const FindingKind& vertexUnnamed = findingKind(kinds, "L030");
inline constexpr const FindingKind& vertexAgain = findingKind(kinds, "L031");
inline constexpr const FindingKind& vertexRegrouped = findingKind(kinds, "L032");
inline constexpr const FindingKind& coordinateUnused = findingKind(kinds, "L033");
inline constexpr const FindingKind& coordinateLoop = findingKind(kinds, "L034");
inline constexpr const FindingKind& valueCut = findingKind(kinds, "L035");
inline constexpr const FindingKind& objectsReplaced = findingKind(kinds, "L036");
inline constexpr const FindingKind& objectUnknown = findingKind(kinds, "L037");
inline constexpr const FindingKind& groupUnused = findingKind(kinds, "L038");
inline constexpr const FindingKind& pivotUnused = findingKind(kinds, "L039");

// Meshes.
inline constexpr const FindingKind& stripQuadrangle = findingKind(kinds, "L040");
inline constexpr const FindingKind& stripBreaks = findingKind(kinds, "L041");
inline constexpr const FindingKind& stripMixed = findingKind(kinds, "L042");

// Motions.
inline constexpr const FindingKind& coordinateOutside = findingKind(kinds, "L043");
inline constexpr const FindingKind& nameUnknown = findingKind(kinds, "L044");
inline constexpr const FindingKind& labelUnused = findingKind(kinds, "L045");
inline constexpr const FindingKind& labelLost = findingKind(kinds, "L046");
inline constexpr const FindingKind& keyFrameUnused = findingKind(kinds, "L047");
inline constexpr const FindingKind& keyFrameWraps = findingKind(kinds, "L048");
inline constexpr const FindingKind& keyFrameElsewhere = findingKind(kinds, "L049");

// Meshes again.
inline constexpr const FindingKind& stripNamesNothing = findingKind(kinds, "L050");
inline constexpr const FindingKind& polygonAgainInMesh = findingKind(kinds, "L051");

// What a model fails of.
inline constexpr const FindingKind& noVertex = findingKind(kinds, "L052");
inline constexpr const FindingKind& noNormal = findingKind(kinds, "L053");
inline constexpr const FindingKind& noPolygon = findingKind(kinds, "L054");
inline constexpr const FindingKind& noTexture = findingKind(kinds, "L055");
inline constexpr const FindingKind& noColour = findingKind(kinds, "L056");
inline constexpr const FindingKind& noMeshPolygon = findingKind(kinds, "L057");
inline constexpr const FindingKind& meshPolygonPlain = findingKind(kinds, "L058");
inline constexpr const FindingKind& meshPolygonTaken = findingKind(kinds, "L059");
inline constexpr const FindingKind& meshEmpty = findingKind(kinds, "L060");
inline constexpr const FindingKind& polygonInNoMesh = findingKind(kinds, "L061");
inline constexpr const FindingKind& noGeometry = findingKind(kinds, "L062");
inline constexpr const FindingKind& pageEdge = findingKind(kinds, "L063");
inline constexpr const FindingKind& notByItself = findingKind(kinds, "L064");
inline constexpr const FindingKind& unknownPolygonKind = findingKind(kinds, "L065");
inline constexpr const FindingKind& noPacketForm = findingKind(kinds, "L066");
inline constexpr const FindingKind& noKeyFrame = findingKind(kinds, "L067");
inline constexpr const FindingKind& noKeyFrameType = findingKind(kinds, "L068");
inline constexpr const FindingKind& keyFrameTypeAgain = findingKind(kinds, "L069");

// Shapes.
inline constexpr const FindingKind& crossedQuadrangle = findingKind(kinds, "L070");
inline constexpr const FindingKind& bentQuadrangle = findingKind(kinds, "L071");
inline constexpr const FindingKind& polygonTwin = findingKind(kinds, "L072");
inline constexpr const FindingKind& vertexTwin = findingKind(kinds, "L073");
inline constexpr const FindingKind& normalAway = findingKind(kinds, "L074");
inline constexpr const FindingKind& windsAgainst = findingKind(kinds, "L075");

// Images.
inline constexpr const FindingKind& tableColumn = findingKind(kinds, "L076");
inline constexpr const FindingKind& outsideMemory = findingKind(kinds, "L077");
inline constexpr const FindingKind& tableMissing = findingKind(kinds, "L078");
inline constexpr const FindingKind& sizeDisagrees = findingKind(kinds, "L079");
inline constexpr const FindingKind& bytesLeft = findingKind(kinds, "L080");
inline constexpr const FindingKind& tableSize = findingKind(kinds, "L081");
inline constexpr const FindingKind& tableUnused = findingKind(kinds, "L082");
inline constexpr const FindingKind& twoDepths = findingKind(kinds, "L083");

// Hierarchy and motions again.
inline constexpr const FindingKind& valuesSlide = findingKind(kinds, "L084");
inline constexpr const FindingKind& endsWithSeq = findingKind(kinds, "L085");
inline constexpr const FindingKind& animatedAgain = findingKind(kinds, "L086");

}  // namespace kind
}  // namespace vxbtool::lint
