#include <string>

#include <fmt/core.h>

#include "format/key_frame_forms.h"
#include "vxbtool/model_text/component_files.h"

namespace vxbtool::model_text {
namespace {

/// A key-frame type as its lines say it, such as "ps0r1t0".
std::string typeText(mqf2vxb::PrimitiveTypeCode type) {
    return fmt::format("{}s{}r{}t{}", (type & 0x1000U) != 0 ? 'm' : 'p', type >> 8U & 0xFU,
                       type >> 4U & 0xFU, type & 0xFU);
}

void writeCoordinate(const AnimatedCoordinate& coordinate, TextFile& file) {
    file.put(fmt::format("{} {} {}\n", coordinate.coordinate, coordinate.headers.size(),
                         coordinate.start));
    for (const SequenceHeader& header : coordinate.headers) {
        file.put(header.key2 ? fmt::format("KEY2 {} {}\n", header.label, header.second)
                             : fmt::format("START {} {:#x}\n", header.label, header.number));
    }
}

void writeStep(const Step& step, TextFile& file) {
    if (!step.label.empty()) {
        file.put(step.label);
        file.put("\n");
    }
    switch (step.kind) {
    case StepKind::keyFrame:
        file.put(fmt::format("SEQ {} {} {}\n", step.number, typeText(step.type), step.keyFrame));
        break;
    case StepKind::jump:
        file.put(fmt::format("GOTO {} {:#x} {:#x}\n", step.target, step.number, step.second));
        break;
    case StepKind::end: file.put(fmt::format("END {:#x}\n", step.number)); break;
    }
}

void writeGroup(const KeyFrameGroup& group, TextFile& file) {
    file.put(fmt::format("TYPE {}\n", typeText(group.type)));
    const mqf2vxb::KeyFrameForm* const form = mqf2vxb::findKeyFrameForm(group.type);
    const std::size_t number = form != nullptr ? form->values() : 0;
    NoteWriter notes(group.notes, file);
    std::size_t value = 0;
    for (std::size_t frame = 0; number > 0 && value + number <= group.values.size(); ++frame) {
        notes.before(frame);
        for (std::size_t i = 0; i < number; ++i) {
            file.put(i == 0 ? "" : " ");
            file.real(group.values[value++]);
        }
        file.put("\n");
    }
}

}  // namespace

void writeMotion(const Motion& motion, TextFile& file) {
    file.put("@CLP970401\n");
    file.comment(motion.comment);
    file.put(
        "COORDINATE\n# number of coordinates; each with its sequence headers and first step\n");
    file.number(static_cast<std::int64_t>(motion.coordinates.size()));
    file.put("\n");
    NoteWriter coordinateNotes(motion.coordinateNotes, file);
    for (std::size_t i = 0; i < motion.coordinates.size(); ++i) {
        coordinateNotes.before(i);
        writeCoordinate(motion.coordinates[i], file);
    }
    file.put("# steps\n");
    NoteWriter stepNotes(motion.stepNotes, file);
    for (std::size_t i = 0; i < motion.steps.size(); ++i) {
        stepNotes.before(i);
        writeStep(motion.steps[i], file);
    }
    file.put("# key frames: translation, rotation and scale, as far as the type has them\n");
    for (const KeyFrameGroup& group : motion.groups) {
        writeGroup(group, file);
    }
}

}  // namespace vxbtool::model_text
