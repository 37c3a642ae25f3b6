#include "animation/motion_reader.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "animation/key_frame_forms.h"
#include "driver/diagnostics.h"
#include "driver/line_reader.h"
#include "driver/scan.h"

namespace mqf2vxb {
namespace {

/// The first word of a line of one letter and its line feed.
constexpr std::size_t shortestLine = 2;

// The bit fields of a control word.
constexpr std::uint32_t gotoKind = 0x80000000;
constexpr std::uint32_t endKind = 0x80000000 | 0x40000000 | 0x00800000;
constexpr unsigned firstNumberShift = 23;  // GOTO
constexpr unsigned numberShift = 16;
constexpr std::uint32_t largest7Bits = 0x7F;
constexpr std::uint32_t largest8Bits = 0xFF;
constexpr std::uint32_t largest16Bits = 0xFFFF;
constexpr std::uint32_t largest32Bits = 0xFFFFFFFF;

std::string_view firstWord(const LineReader& reader) {
    std::string_view rest = reader.line();
    return scanWord(rest);
}

void checkWidth(const LineReader& reader, std::int64_t value, std::uint32_t largest) {
    if (value < 0) {
        reader.refuseLine("negative number " + std::to_string(value));
    }
    if (value > largest) {
        reader.refuseLine("number " + std::to_string(value) + " is above " +
                          std::to_string(largest));
    }
}

/// A key-frame type as the files write it: "ps0r1t1".
struct CodeText {
    char letter = 0;
    std::int32_t s = 0;
    std::int32_t r = 0;
    std::int32_t t = 0;
};

/// Scans the words of a line that come before its code text, the code text and what follows it.
template <class Before, class... After>
void scanCodeLine(const LineReader& reader, Before& before, CodeText& code, After&... after) {
    std::string keyword;
    LineScanner scanner(reader);
    scanner.scan(Word{keyword}) && before(scanner) && scanner.scan(Letter{code.letter}) &&
        scanner.scan(Literal{"s"}) && scanner.scan(code.s) && scanner.scan(Literal{"r"}) &&
        scanner.scan(code.r) && scanner.scan(Literal{"t"}) && scanner.scan(code.t) &&
        (scanner.scan(after) && ...);
    scanner.finish();
}

PrimitiveTypeCode keyFrameType(const CodeText& code, std::string_view location) {
    constexpr PrimitiveTypeCode letterM = 0x1000;
    if (code.letter != 'p' && code.letter != 'm') {
        nameMismatch(location, std::string(code.letter != 0 ? 1 : 0, code.letter));
    }
    return type_code::animation | (code.letter == 'm' ? letterM : 0) |
           static_cast<std::uint32_t>(code.s) << 8U | static_cast<std::uint32_t>(code.r) << 4U |
           static_cast<std::uint32_t>(code.t);
}

void readTarget(LineReader& reader, MotionRecord& motion) {
    reader.requireLine("its target");
    const std::string_view target = firstWord(reader);
    if (target != "COORDINATE") {
        nameMismatch("atcheck", target);
    }
    motion.type = type_code::animation;
}

AnimationSequenceHeaderRecord readSequenceHeader(LineReader& reader) {
    using Kind = AnimationSequenceHeaderRecord::Kind;
    reader.requireLine("its sequence headers");
    AnimationSequenceHeaderRecord header;
    const std::string_view word = firstWord(reader);
    std::string keyword;
    if (word == "START") {
        std::uint32_t number = 0;
        header.headerKind = Kind::start;
        scanLine(reader, Word{keyword}, Word{header.name}, HexNumber{number});
        checkWidth(reader, number, largest16Bits);
        header.value = number << numberShift;
    } else if (word == "KEY2") {
        header.headerKind = Kind::key2;
        scanLine(reader, Word{keyword}, Word{header.name}, Word{header.name2});
    } else {
        nameMismatch("seqhcheck", word);
    }
    return header;
}

void readIndexTable(LineReader& reader, MotionRecord& motion) {
    reader.requireLine("its number of coordinates");
    std::int32_t indexNum = 0;
    scanLine(reader, indexNum);
    reader.checkCount(indexNum, shortestLine, "coordinates");
    motion.indexTable.allocate(static_cast<std::size_t>(indexNum));
    for (AnimationIndexRecord& index : motion.indexTable) {
        reader.requireLine("its coordinates");
        std::int32_t seqHeaderNum = 0;
        scanLine(reader, index.coord, seqHeaderNum, Word{index.name});
        if (index.coord < 0) {
            reader.refuseLine("negative coordinate " + std::to_string(index.coord));
        }
        constexpr std::int32_t largestCoordinate = 3276;  // its record's offset fills 16 bits
        if (index.coord > largestCoordinate) {
            reader.refuseLine("coordinate " + std::to_string(index.coord) + " is above 3276");
        }
        reader.checkCount(seqHeaderNum, shortestLine, "sequence headers");
        index.seqHeaderTable.allocate(static_cast<std::size_t>(seqHeaderNum));
        for (AnimationSequenceHeaderRecord& header : index.seqHeaderTable) {
            header = readSequenceHeader(reader);
        }
    }
}

/// Reads the current line as a step of the sequence; false when it is a label.
bool readStep(const LineReader& reader, AnimationSequenceRecord& step) {
    using Kind = AnimationSequenceRecord::Kind;
    const std::string_view word = firstWord(reader);
    std::string keyword;
    if (word == "SEQ") {
        step.kind = Kind::seq;
        std::int32_t number = 0;
        std::int32_t keyFrame = 0;
        CodeText code;
        auto before = [&](LineScanner& scanner) { return scanner.scan(number); };
        scanCodeLine(reader, before, code, keyFrame);
        step.type = keyFrameType(code, "seqcheck");
        checkWidth(reader, number, largest8Bits);
        checkWidth(reader, keyFrame, largest32Bits);
        step.control = static_cast<std::uint32_t>(number) << numberShift;
        step.keyFrame = static_cast<std::uint32_t>(keyFrame);
    } else if (word == "GOTO") {
        step.kind = Kind::goTo;
        std::uint32_t first = 0;
        std::uint32_t second = 0;
        scanLine(reader, Word{keyword}, Word{step.target}, HexNumber{first}, HexNumber{second});
        checkWidth(reader, first, largest7Bits);
        checkWidth(reader, second, largest7Bits);
        step.control = gotoKind | first << firstNumberShift | second << numberShift;
    } else if (word == "END") {
        step.kind = Kind::end;
        std::uint32_t number = 0;
        scanLine(reader, Word{keyword}, HexNumber{number});
        checkWidth(reader, number, largest7Bits);
        step.control = endKind | number << numberShift;
    } else {
        return false;
    }
    return true;
}

/// Reads the steps and their labels, up to the first TYPE line, which is the current one then.
void readSequence(LineReader& reader, MotionRecord& motion) {
    std::string label;
    reader.requireLine("its first TYPE line");
    while (firstWord(reader) != "TYPE") {
        AnimationSequenceRecord step;
        if (readStep(reader, step)) {
            step.label = std::exchange(label, {});
            motion.seqTable.append(std::move(step));
        } else {
            scanLine(reader, Word{label});
        }
        reader.requireLine("its first TYPE line");
    }
}

AnimationPacketRecord readKeyFrame(const LineReader& reader, PrimitiveTypeCode type) {
    const KeyFrameForm* form = findKeyFrameForm(type);
    if (form == nullptr) {
        typeMismatch("aptcheck", type);
    }
    AnimationPacketRecord packet;
    LineScanner scanner(reader);
    for (float& value : std::span(packet.values).first(form->values())) {
        scanner.scan(value);
    }
    scanner.finish();
    return packet;
}

/// Reads the key frames by type, from the current TYPE line to the end of the file.
void readKeyFrames(LineReader& reader, MotionRecord& motion) {
    do {
        if (firstWord(reader) == "TYPE") {
            CodeText code;
            auto before = [](LineScanner&) { return true; };
            scanCodeLine(reader, before, code);
            AnimationPacketTypeRecord group;
            group.type = keyFrameType(code, "aptcheck");
            motion.packetTypeTable.append(std::move(group));
        } else {
            AnimationPacketTypeRecord& group =
                motion.packetTypeTable[motion.packetTypeTable.size() - 1];
            group.packetTable.append(readKeyFrame(reader, group.type));
        }
    } while (reader.readLine());
}

}  // namespace

void readMotions(Inputs& inputs, Table<MotionRecord>& motions) {
    for (MotionRecord& motion : motions) {
        LineReader reader(inputs, motion.name, "@CLP970401");
        readTarget(reader, motion);
        readIndexTable(reader, motion);
        readSequence(reader, motion);
        readKeyFrames(reader, motion);
    }
}

}  // namespace mqf2vxb
