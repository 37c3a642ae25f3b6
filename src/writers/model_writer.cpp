#include "writers/model_writer.h"

#include "files/output_word_stream.h"
#include "writers/animation_section.h"
#include "writers/coordinate_section.h"
#include "writers/header_sections.h"
#include "writers/image_section.h"
#include "writers/output_layout.h"
#include "writers/packet_writer.h"
#include "writers/point_sections.h"

namespace mqf2vxb {

void writeModel(const Model& model, const RunOptions& options, InputFiles& inputs,
                OutputFiles& outputs) {
    OutputWordStream stream(outputs, options.outputName,
                            options.hexOutput ? &options.hexName : nullptr);
    const OutputLayout layout = computeLayout(model);

    writeFileHeader(model, layout, stream);
    writeBlockTable(model, layout, stream);
    if (!model.coordinates.empty()) {
        writeCoordinateSection(model, layout, stream);
    }
    writePrimitiveHeaderSection(model, layout, stream);
    if (model.primitives.written()) {
        writePrimitiveHeaders(model, layout, stream);
        writePrimitivePackets(model, layout, stream);
        writeVertexSection(model, options.scale, layout, stream);
        writeNormalSection(model, layout, stream);
    }
    if (!model.motions.empty()) {
        writeAnimationSection(model, layout, stream);
    }
    if (imagesWritten(model)) {
        writeImageSection(model, layout, inputs, stream);
    }
    stream.checkPosition(layout.fileSize, "end of the file");

    stream.closeVxb();
    stream.closeHex();
}

}  // namespace mqf2vxb
