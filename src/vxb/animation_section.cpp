// The animation section: motions with their animated coordinates, key-frame types, control words
// and key frames.

#include <algorithm>

#include "format/format.h"
#include "vxb/reading.h"
#include "vxb/word_names.h"

namespace mqf2vxb::reading {
namespace {

using format::bit31;
using namespace global_header;

constexpr GlobalHeaderKind header = GlobalHeaderKind::animation;
constexpr std::uint32_t motionWords = format::motionHeaderSize;
constexpr std::uint32_t indexWords = format::animationIndexSize;
/// Six bits of a control word hold the index of a type.
constexpr std::uint32_t mostTypes = 64;

bool isMotion(std::uint32_t word) { return (word & ~type_code::first) == type_code::animation; }
bool isCoordinatePointer(std::uint32_t word) { return word >> 16U == format::coordinatePointer; }

/// Whether a primitive that uses this global header begins at an offset: two of its three marks
/// suffice.
bool looksLikePrimitive(const Reading& r, std::uint32_t offset, std::uint32_t globalHeader) {
    if (offset >= r.end() || r.end() - offset < format::primitiveHeaderSize) {
        return false;
    }
    const std::uint32_t next = r.at(offset);
    const std::uint32_t types = r.at(offset + 2);
    const bool chain = next == format::endOfChain || (next > offset && next < r.end());
    const bool pointer = r.at(offset + 1) == globalHeader;
    const bool number = (types & bit31) != 0 && (types & ~bit31) < r.end() - offset;
    return static_cast<int>(chain) + static_cast<int>(pointer) + static_cast<int>(number) >= 2;
}

/// Where the primitive begins that a word leads to; when there is none, the first place from the
/// cursor on that is one, and the word is reported.
std::uint32_t findPrimitive(Reading& r, std::uint32_t word, std::string_view name,
                            GlobalHeaderKind kind) {
    const std::uint32_t globalHeader = r.file.globalHeader(kind)->offset;
    std::uint32_t place = r.at(word) & ~bit31;
    if (place < r.cursor() || !looksLikePrimitive(r, place, globalHeader)) {
        place = r.cursor();
        while (place < r.end() &&
               (r.at(place + 1) != globalHeader || !looksLikePrimitive(r, place, globalHeader))) {
            ++place;
        }
    }
    if (place < r.end()) {
        r.checkOffset(word, name, place);
    } else {
        r.report(finding::offsetOutside, word, r.at(word), {}, name);
    }
    return place;
}

void readAnimatedCoordinate(Reading& r, std::uint32_t limit) {
    AnimatedCoordinate animated;
    const std::uint32_t offset = r.cursor();
    animated.offset = offset;
    const std::uint32_t pointer = r.at(offset);
    const std::uint32_t place = pointer & 0xFFFFU;
    constexpr std::uint32_t recordWords = format::coordinateSize;
    animated.coordinate = place / recordWords;
    if (!isCoordinatePointer(pointer) || place % recordWords != 1) {
        r.report(finding::animatedMisses, offset, pointer, {}, word_name::coordinateOffset);
    } else if (animated.coordinate >= r.file.coordinates.size()) {
        r.report(finding::animatedOutside, offset, animated.coordinate,
                 static_cast<std::uint32_t>(r.file.coordinates.size()));
    }

    // The number of headers and the size should say the same. Where they differ, the size counts if
    // it leads to the next record or to the end.
    const std::uint32_t numberSize = r.at(offset + 1);
    const std::uint32_t size = numberSize & format::largestSize;
    animated.sequenceNum = numberSize >> 16U & format::largestNumber;
    if ((numberSize & bit31) != 0) {
        r.report(finding::bit31Set, offset + 1, numberSize, numberSize & ~bit31,
                 word_name::sequenceHeaderNumberSize);
    }
    if (size != indexWords + animated.sequenceNum) {
        const std::uint32_t behind = r.at(std::uint64_t{offset} + size);
        const bool leadsOn =
            size >= indexWords &&
            (offset + size == limit || isCoordinatePointer(behind) || isMotion(behind));
        if (leadsOn) {
            r.checkCount(offset + 1, word_name::sequenceHeaderNumberSize, animated.sequenceNum,
                         size - indexWords);
            animated.sequenceNum = size - indexWords;
        } else {
            r.report(finding::sizeDisagrees, offset + 1, size, indexWords + animated.sequenceNum,
                     word_name::sequenceHeaderNumberSize);
        }
    }
    const std::uint32_t words = r.take(
        Part::animatedCoordinate, static_cast<std::uint32_t>(r.file.animation.coordinates.size()),
        indexWords + animated.sequenceNum, "an animated coordinate", limit);
    animated.sequenceNum = words > indexWords ? words - indexWords : 0;
    animated.startStep = r.at(offset + 3) >> 16U;
    r.file.animation.coordinates.push_back(animated);
    r.checkZero(offset + 2, word_name::sequencePointer);
    if ((r.at(offset + 3) & 0xFFFFU) != 0) {
        r.report(finding::notZero, offset + 3, r.at(offset + 3) & 0xFFFFU, 0,
                 "the half before a start step");
    }
    r.checkZero(offset + 4, "the word behind a start step");
    r.checkZero(offset + 5, "the second word behind a start step");
}

void readMotion(Reading& r, std::uint32_t limit) {
    Motion motion;
    const std::uint32_t offset = r.cursor();
    motion.offset = offset;
    motion.firstCoordinate = static_cast<std::uint32_t>(r.file.animation.coordinates.size());
    const bool first = r.file.animation.motions.empty();
    const bool marked = (r.at(offset) & type_code::first) != 0;
    if (!isMotion(r.at(offset))) {
        r.report(finding::unknownType, offset, r.at(offset), {}, word_name::animationType);
    } else if (first != marked) {
        r.report(first ? finding::bit23Missing : finding::bit23Set, offset, r.at(offset),
                 r.at(offset) ^ type_code::first, word_name::animationType);
    }
    r.take(Part::motion, static_cast<std::uint32_t>(r.file.animation.motions.size()), motionWords,
           "a motion", limit);
    r.checkBit31(offset + 1, word_name::indexNumberSize);
    const std::uint32_t number = r.at(offset + 1) >> 16U & format::largestNumber;
    const std::uint32_t size = r.at(offset + 1) & format::largestSize;
    while (r.cursor() < limit && !isMotion(r.at(r.cursor())) &&
           (motion.coordinateNum < number || isCoordinatePointer(r.at(r.cursor())))) {
        readAnimatedCoordinate(r, limit);
        ++motion.coordinateNum;
    }
    r.checkCount(offset + 1, word_name::indexNumberSize, number, motion.coordinateNum);
    if (size != r.cursor() - offset - 1) {
        r.report(finding::sizeDisagrees, offset + 1, size, r.cursor() - offset - 1,
                 word_name::indexNumberSize);
    }
    r.file.animation.motions.push_back(motion);
}

void readTypes(Reading& r, std::uint32_t limit) {
    const std::uint32_t offset = r.cursor();
    r.checkBit31(offset, word_name::animationPacketTypeNumber);
    std::uint32_t number = r.at(offset) & ~bit31;
    // The control words begin behind the types; that place and the number have to agree.
    const auto controls = r.top(header, controlTop);
    const bool controlsFit = controls && *controls > offset && *controls <= limit;
    const std::uint32_t between = controlsFit ? *controls - offset - 1 : 0;
    const auto allTypes = [&](std::uint32_t count) {
        for (std::uint32_t i = 1; i <= count; ++i) {
            if (findKeyFrameForm(r.at(std::uint64_t{offset} + i)) == nullptr) {
                return false;
            }
        }
        return true;
    };
    if (controlsFit && between != number && between <= mostTypes &&
        (number > mostTypes || number < between || !allTypes(number)) && allTypes(between)) {
        r.checkCount(offset, word_name::animationPacketTypeNumber, number, between);
        number = between;
    }
    const std::uint32_t words =
        r.take(Part::keyFrameTypes, 0, std::uint64_t{number} + 1, "the types of key frames", limit);
    r.checkTop(header, controlTop, r.cursor());
    for (std::uint32_t i = 1; i < words; ++i) {
        const std::uint32_t type = r.at(offset + i);
        std::vector<PrimitiveTypeCode>& types = r.file.animation.types;
        if (type == type_code::animation || findKeyFrameForm(type) == nullptr) {
            r.report(finding::unknownType, offset + i, type, {}, word_name::animationPacketType);
        } else if (std::find(types.begin(), types.end(), type) != types.end()) {
            r.report(finding::typeTwice, offset + i, type, {}, word_name::animationPacketType);
        }
        // More are listed only in a damaged file, and no control word can name them.
        if (types.size() < mostTypes) {
            types.push_back(type);
        }
    }
}

/// Checks that a word names a control word. A file without any leaves 0 there.
void checkStep(Reading& r, std::uint32_t offset, std::uint32_t step, std::string_view name) {
    const std::uint32_t number = r.file.animation.controlNum;
    if (step >= number && step != 0) {
        r.report(finding::stepOutside, offset, step, number, name);
    }
}

void checkAnimatedCoordinates(Reading& r) {
    for (const AnimatedCoordinate& animated : r.file.animation.coordinates) {
        if (animated.startStep == format::unresolvedSequence) {
            r.report(finding::startUnresolved, animated.offset + 3, animated.startStep);
        } else {
            checkStep(r, animated.offset + 3, animated.startStep, "the start step");
        }
        for (std::uint32_t i = 0; i < animated.sequenceNum; ++i) {
            const std::uint32_t offset = animated.offset + indexWords + i;
            checkStep(r, offset, r.at(offset) & 0xFFFFU, "a sequence header");
        }
    }
}

void readKeyFrameControl(Reading& r, std::uint32_t offset) {
    Animation& animation = r.file.animation;
    const ControlWord control = controlWord(r.at(offset));
    const KeyFrame frame{control.target, control.typeIndex};
    const auto types = static_cast<std::uint32_t>(animation.types.size());
    if (frame.typeIndex >= std::max(types, 1U)) {
        r.report(finding::keyFrameTypeOutside, offset, frame.typeIndex, types);
        return;
    }
    // Index 0 may also mean the bare type, whose frames have one word.
    const KeyFrameForm* form = keyFrameForm(animation, frame.typeIndex);
    const auto words =
        form != nullptr && frame.typeIndex > 0 ? static_cast<std::uint32_t>(form->words()) : 1;
    if (frame.offset > animation.keyFrameWords) {
        r.report(finding::keyFrameOutside, offset, frame.offset, animation.keyFrameWords);
    } else if (frame.offset + words > animation.keyFrameWords) {
        r.report(finding::keyFramePastEnd, offset, frame.offset, animation.keyFrameWords);
    } else {
        animation.keyFrames.push_back(frame);
    }
}

void readControl(Reading& r, std::uint32_t offset) {
    const std::uint32_t word = r.at(offset);
    const ControlWord control = controlWord(word);
    switch (control.kind) {
    case ControlKind::keyFrame: readKeyFrameControl(r, offset); break;
    case ControlKind::jump: checkStep(r, offset, control.target, "a jump"); break;
    case ControlKind::end:
        // Behind the kind stand six zero bits, a set one, seven of the author's and zeros.
        if ((word & 0x3F80FFFFU) != type_code::first) {
            r.report(finding::unknownControl, offset, word);
        }
        break;
    case ControlKind::unknown: r.report(finding::unknownControl, offset, word); break;
    }
}

/// Puts the key frames into their order, each once.
void sortKeyFrames(Animation& animation) {
    const auto before = [](const KeyFrame& a, const KeyFrame& b) {
        return a.offset != b.offset ? a.offset < b.offset : a.typeIndex < b.typeIndex;
    };
    std::vector<KeyFrame>& frames = animation.keyFrames;
    std::sort(frames.begin(), frames.end(), before);
    const auto same = [](const KeyFrame& a, const KeyFrame& b) {
        return a.offset == b.offset && a.typeIndex == b.typeIndex;
    };
    frames.erase(std::unique(frames.begin(), frames.end(), same), frames.end());
}

/// Key frames whose type is certain do not share words.
void checkKeyFrames(Reading& r) {
    const Animation& animation = r.file.animation;
    std::uint32_t end = 0;
    for (const KeyFrame& frame : animation.keyFrames) {
        const KeyFrameForm* form = keyFrameForm(animation, frame.typeIndex);
        if (frame.typeIndex == 0 || form == nullptr) {
            continue;
        }
        if (frame.offset < end) {
            r.report(finding::keyFramesOverlap, animation.keyFrameOffset + frame.offset,
                     frame.offset, end);
        }
        end = std::max(end, frame.offset + static_cast<std::uint32_t>(form->words()));
    }
}

void readControlsAndKeyFrames(Reading& r, std::uint32_t limit) {
    Animation& animation = r.file.animation;
    const auto matrix = r.top(header, matrixTop);
    animation.controlOffset = r.cursor();
    if (!matrix || *matrix < r.cursor() || *matrix > limit) {
        const std::uint32_t place = r.file.globalHeader(header)->offset + matrixTop;
        r.report(finding::offsetOutside, place, r.at(place), {},
                 globalHeaderWord(header, matrixTop));
        r.take(Part::controlWords, 0, limit - r.cursor(), "control words", limit);
        return;  // without it control words and key frames cannot be told apart
    }
    r.checkTop(header, matrixTop, *matrix);
    animation.controlNum = *matrix - r.cursor();
    r.take(Part::controlWords, 0, animation.controlNum, "control words", limit);
    animation.keyFrameOffset = r.cursor();
    animation.keyFrameWords = limit - r.cursor();
    r.take(Part::keyFrames, 0, animation.keyFrameWords, "key frames", limit);
    for (std::uint32_t i = 0; i < animation.controlNum; ++i) {
        readControl(r, animation.controlOffset + i);
    }
    sortKeyFrames(animation);
    checkKeyFrames(r);
    checkAnimatedCoordinates(r);
}

void readMotions(Reading& r, std::uint32_t limit) {
    const std::uint32_t offset = r.cursor();
    r.take(Part::animationHeader, 0, format::primitiveHeaderSize, "the animation header", limit);
    r.checkOffset(offset + 1, word_name::animationPrimitiveGlobalHeaderPointer,
                  r.file.globalHeader(header)->offset);
    r.checkBit31(offset + 2, word_name::animationTypeNumber);
    const std::uint32_t number = r.at(offset + 2) & ~bit31;
    const auto named = r.top(header, complementFunctionTop);
    // The types begin with a number that carries bit 31 and is small.
    const bool namedFits = named && *named >= r.cursor() && *named < limit &&
                           (r.at(*named) & bit31) != 0 && (r.at(*named) & ~bit31) <= mostTypes;
    const std::uint32_t motionsEnd = namedFits ? *named : limit;
    Animation& animation = r.file.animation;
    while (r.cursor() < motionsEnd &&
           (animation.motions.size() < number || isMotion(r.at(r.cursor()))) &&
           (namedFits || (r.at(r.cursor()) & bit31) == 0)) {
        readMotion(r, motionsEnd);
    }
    r.checkCount(offset + 2, word_name::animationTypeNumber, number,
                 static_cast<std::uint32_t>(animation.motions.size()));
    if ((r.at(r.cursor()) & bit31) == 0 && namedFits) {
        r.skipTo(*named);
    }
    r.checkTop(header, complementFunctionTop, r.cursor());
}

}  // namespace

void findLaterSections(Reading& r) {
    constexpr std::uint32_t preBlock = 4;
    r.polygonsEnd = r.end();
    for (const GlobalHeaderKind kind : {header, GlobalHeaderKind::image}) {
        if (r.file.globalHeader(kind)) {
            r.polygonsEnd = findPrimitive(r, preBlock, word_name::prePrimitiveTop, kind);
            return;
        }
    }
    r.checkOffset(preBlock, word_name::prePrimitiveTop, 0);
}

void readAnimation(Reading& r) {
    r.imagesStart = r.polygonsEnd;
    if (!r.file.globalHeader(header)) {
        return;
    }
    r.skipTo(r.polygonsEnd);
    const std::uint32_t offset = r.cursor();
    r.imagesStart = r.end();
    if (offset >= r.end()) {
        return;
    }
    if (r.file.globalHeader(GlobalHeaderKind::image)) {
        r.imagesStart =
            findPrimitive(r, offset, word_name::nextPrimitivePointer, GlobalHeaderKind::image);
    } else {
        r.checkChainEnd(offset);
    }
    readMotions(r, r.imagesStart);
    readTypes(r, r.imagesStart);
    readControlsAndKeyFrames(r, r.imagesStart);
}

}  // namespace mqf2vxb::reading
