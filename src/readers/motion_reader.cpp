#include "readers/motion_reader.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "base/diagnostics.h"
#include "format/key_frame_forms.h"
#include "readers/sequence_names.h"
#include "text/line_reader.h"
#include "text/plain_line.h"

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

std::string_view firstWord(const LineReader& reader) {
    std::string_view rest = reader.line();
    return scanWord(rest);
}

[[noreturn]] void refuseNumber(const LineReader& reader, std::int64_t value,
                               std::uint32_t largest) {
    if (value < 0) {
        reader.refuseLine("negative number " + std::to_string(value));
    }
    reader.refuseLine("number " + std::to_string(value) + " is above " + std::to_string(largest));
}

void checkWidth(const LineReader& reader, std::int64_t value, std::uint32_t largest) {
    if (value < 0 || value > largest) [[unlikely]] {
        refuseNumber(reader, value, largest);
    }
}

/// A key-frame type as the files write it: "ps0r1t1".
struct CodeText {
    char letter = 0;
    std::int32_t s = 0;
    std::int32_t r = 0;
    std::int32_t t = 0;
};

/// Takes apart a code whose numbers have one digit each; false when the text is no such code.
bool readShortCode(const std::array<char, 8>& text, CodeText& code) {
    const auto [letter, s, scale, r, rotation, t, translation, blank] = text;
    if (s != 's' || r != 'r' || t != 't' || !isDigit(scale) || !isDigit(rotation) ||
        !isDigit(translation)) {
        return false;
    }
    code = {letter, scale - '0', rotation - '0', translation - '0'};
    return true;
}

/// The next data line, whose first word says what fields it has.
class WordLine {
public:
    /// `what` names the line when the file ends before it.
    WordLine(LineReader& reader, std::string_view what)
        : reader_(reader), what_(what), plain_(reader) {
        if (!plain_ || !plain_.scan(WordView{word_}) || word_.starts_with('#')) {
            take();
            word_ = firstWord(reader_);
        }
    }

    [[nodiscard]] std::string_view word() const { return word_; }
    /// Whether the word is this one. With a size that the compiler knows, that is one comparison.
    template <std::size_t size>
    [[nodiscard]] bool is(const char (&keyword)[size]) const {
        return word_.size() == size - 1 &&
               std::char_traits<char>::compare(word_.data(), keyword, size - 1) == 0;
    }

    /// Makes the line the reader's current one, unless it is that already.
    void take() {
        if (!taken_) {
            reader_.requireLine(what_);
            taken_ = true;
        }
    }

    /// Takes the line and scans the fields behind its word as scanLine does.
    template <class... Field>
    void scan(Field&&... field) {
        if (!scanPlain(field...)) {
            scanAnyway(field...);
        }
    }
    /// The first half of scan: false when the fields are not there in their plain form.
    template <class... Field>
    bool scanPlain(Field&&... field) {
        if (taken_ || !(plain_.scan(field) && ...) || !plain_.finish(reader_)) {
            return false;
        }
        taken_ = true;
        return true;
    }
    /// The other half: of a line that is taken already too.
    template <class... Field>
    void scanAnyway(Field&&... field) {
        take();
        scanLine(reader_, WordView{word_}, field...);
    }

private:
    LineReader& reader_;
    std::string_view what_;
    PlainLine plain_;
    std::string_view word_;
    bool taken_ = false;
};

PrimitiveTypeCode keyFrameType(const LineReader& reader, const CodeText& code,
                               std::string_view location) {
    constexpr PrimitiveTypeCode letterM = 0x1000;
    if (code.letter != 'p' && code.letter != 'm') {
        nameMismatch(location, std::string(code.letter != 0 ? 1 : 0, code.letter),
                     {"the type of key frames is missing, which begins with p or m: ps0r1t0",
                      reader.place()});
    }
    return type_code::animation | (code.letter == 'm' ? letterM : 0) |
           static_cast<std::uint32_t>(code.s) << 8U | static_cast<std::uint32_t>(code.r) << 4U |
           static_cast<std::uint32_t>(code.t);
}

void readTarget(LineReader& reader, MotionRecord& motion) {
    reader.requireLine("its target");
    const std::string_view target = firstWord(reader);
    if (target != "COORDINATE") {
        nameMismatch("atcheck", target,
                     {"the target is COORDINATE, not " + std::string(target), reader.place()});
    }
    motion.type = type_code::animation;
}

/// `announced` is how many the coordinate announced.
AnimationSequenceHeaderRecord readSequenceHeader(LineReader& reader, std::int32_t announced,
                                                 SequenceNames& names) {
    WordLine line(reader, "its sequence headers");
    AnimationSequenceHeaderRecord header;
    HeaderNames named;
    if (line.is("START")) {
        std::uint32_t number = 0;
        line.scan(WordView{named.name}, HexNumber{number});
        header.value = number << numberShift;  // of a longer number its low 16 bits
    } else if (line.is("KEY2")) {
        line.scan(WordView{named.name}, WordView{named.second});
    } else {
        line.take();
        nameMismatch("seqhcheck", line.word(),
                     {"\"" + std::string(line.word()) +
                          "\" begins no sequence header, START and KEY2 do; the coordinate above "
                          "announces " +
                          std::to_string(announced),
                      reader.place()});
    }
    names.headers.append(named);
    return header;
}

void readIndexTable(LineReader& reader, MotionRecord& motion, SequenceNames& names) {
    reader.requireLine("its number of coordinates");
    std::int32_t indexNum = 0;
    scanLine(reader, indexNum);
    reader.checkCount(indexNum, shortestLine, "coordinates");
    motion.indexTable.allocate(static_cast<std::size_t>(indexNum));
    for (AnimationIndexRecord& index : motion.indexTable) {
        std::int32_t seqHeaderNum = 0;
        std::string_view start;
        requireFields(reader, "its coordinates", index.coord, seqHeaderNum, WordView{start});
        names.starts.append(start);
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
            header = readSequenceHeader(reader, seqHeaderNum, names);
        }
    }
}

/// Reads a line of the sequence as a step; false when it is a label.
bool readStep(const LineReader& reader, WordLine& line, AnimationSequenceRecord& step,
              std::string_view& target) {
    if (line.is("SEQ")) {
        std::int32_t number = 0;
        std::int32_t keyFrame = 0;
        CodeText code;
        // Nearly every code has one digit for each of its numbers and can be taken as a whole.
        std::array<char, 8> text{};
        if (!line.scanPlain(number, text, keyFrame) || !readShortCode(text, code)) {
            keyFrame = 0;  // the general scan may end before it
            line.scanAnyway(number, Letter{code.letter}, Literal{"s"}, code.s, Literal{"r"}, code.r,
                            Literal{"t"}, code.t, keyFrame);
        }
        step.type = keyFrameType(reader, code, "seqcheck");
        checkWidth(reader, number, largest8Bits);
        step.control = static_cast<std::uint32_t>(number) << numberShift;
        step.keyFrame = static_cast<std::uint32_t>(keyFrame);
    } else if (line.is("GOTO")) {
        std::uint32_t first = 0;
        std::uint32_t second = 0;
        line.scan(WordView{target}, HexNumber{first}, HexNumber{second});
        checkWidth(reader, first, largest7Bits);
        checkWidth(reader, second, largest7Bits);
        step.control = gotoKind | first << firstNumberShift | second << numberShift;
    } else if (line.is("END")) {
        std::uint32_t number = 0;
        line.scan(HexNumber{number});
        checkWidth(reader, number, largest7Bits);
        step.control = endKind | number << numberShift;
    } else {
        line.scan();
        return false;
    }
    return true;
}

/// Reads the steps and their labels, up to the first TYPE line, which is the current one then.
void readSequence(LineReader& reader, MotionRecord& motion, SequenceNames& names) {
    std::string_view label;
    while (true) {
        WordLine line(reader, "its first TYPE line");
        if (line.is("TYPE")) {
            line.take();
            return;
        }
        AnimationSequenceRecord step;
        std::string_view target;
        if (!readStep(reader, line, step, target)) {
            label = line.word();
            continue;
        }
        const auto number = static_cast<std::uint32_t>(motion.seqTable.size());
        motion.seqTable.append(step);
        if (!label.empty()) {
            names.labels.append({std::exchange(label, {}), number});
        }
        if (!target.empty()) {
            names.targets.append({target, number});
        }
    }
}

AnimationPacketTypeRecord readGroup(const LineReader& reader) {
    std::string_view keyword;
    CodeText code;
    scanLine(reader, WordView{keyword}, Letter{code.letter}, Literal{"s"}, code.s, Literal{"r"},
             code.r, Literal{"t"}, code.t);
    AnimationPacketTypeRecord group;
    group.type = keyFrameType(reader, code, "aptcheck");
    return group;
}

/// Values that the line does not have are 0.
void scanKeyFrame(const LineReader& reader, std::span<float> values) {
    std::fill(values.begin(), values.end(), 0.0F);
    LineScanner scanner(reader);
    for (float& value : values) {
        scanner.scan(value);
    }
    scanner.finish();
}

/// Goes to the next line when it is a key frame in its plain form; false, and the reader stays
/// where it is, when it is not.
bool takePlainKeyFrame(LineReader& reader, std::span<float> values) {
    PlainLine plain(reader);
    return plain &&
           std::all_of(values.begin(), values.end(),
                       [&plain](float& value) { return plain.scan(value); }) &&
           plain.finish(reader);
}

/// Reads the key frames by type, from the current TYPE line to the end of the file.
void readKeyFrames(LineReader& reader, MotionRecord& motion) {
    AnimationPacketTypeRecord* group = nullptr;
    const KeyFrameForm* form = nullptr;
    std::array<float, KeyFrameForm::mostValues> room{};
    std::span<float> values;
    const char* typeLine = nullptr;
    const auto addKeyFrame = [&] {
        group->packetTable.appendAll(values);
        ++group->packetNum;
    };
    do {
        if (firstWord(reader) == "TYPE") {
            group = &motion.packetTypeTable.append(readGroup(reader));
            typeLine = reader.line().data();
            form = findKeyFrameForm(group->type);
            values = std::span(room).first(form != nullptr ? form->values() : 0);
        } else if (form == nullptr) {
            typeMismatch(
                "aptcheck", group->type,
                {"no key frames have this type", {reader.fileName(), reader.lineNumber(typeLine)}});
        } else {
            scanKeyFrame(reader, values);
            addKeyFrame();
        }
        while (form != nullptr && takePlainKeyFrame(reader, values)) {
            addKeyFrame();
        }
    } while (reader.readLine());
}

}  // namespace

void readMotions(Inputs& inputs, Table<MotionRecord>& motions) {
    SequenceNames names;
    std::uint32_t firstSeqNo = 0;
    for (MotionRecord& motion : motions) {
        LineReader reader(inputs, motion.name, "@CLP970401");
        readTarget(reader, motion);
        readIndexTable(reader, motion, names);
        readSequence(reader, motion, names);
        readKeyFrames(reader, motion);
        resolveNames(names, firstSeqNo, motion);
        names.clear();
        firstSeqNo += static_cast<std::uint32_t>(motion.seqTable.size());
    }
}

}  // namespace mqf2vxb
