#include "run/convert.h"

#include <cstdio>
#include <span>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "files/disk_files.h"
#include "organise/image_types.h"
#include "organise/limits.h"
#include "organise/mesh_organisation.h"
#include "organise/organisation.h"
#include "organise/packet_check.h"
#include "organise/pivots.h"
#include "organise/preparation.h"
#include "organise/primitive_bodies.h"
#include "organise/shared_primitives.h"
#include "readers/axs_reader.h"
#include "readers/bnd_reader.h"
#include "readers/frm_reader.h"
#include "readers/geo_reader.h"
#include "readers/motion_reader.h"
#include "readers/mqf_reader.h"
#include "readers/pxl_reader.h"
#include "readers/sqx_reader.h"
#include "readers/srf_reader.h"
#include "run/command_line.h"
#include "writers/model_writer.h"

namespace mqf2vxb {
namespace {

void print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

}  // namespace

void readPart(ModelPart part, const std::string& mqfName, Inputs& inputs, Model& model) {
    const ModelDescription& description = model.description;
    switch (part) {
    case ModelPart::description:
        return readModelDescription(inputs, mqfName, model.description, model.images,
                                    model.motions);
    case ModelPart::images: return readImages(inputs, model.images);
    case ModelPart::geometry:
        if (description.geo.given) {
            readGeometry(inputs, description.geo.fileName, model.vertices, model.normals,
                         model.polygons);
        }
        return;
    case ModelPart::materials:
        if (description.srf.given) {
            readMaterials(inputs, description.srf.fileName, model.materials);
        }
        return;
    case ModelPart::meshes:
        if (description.bnd.given) {
            readMeshFile(inputs, description.bnd.fileName, model.meshes, model.meshPolygons);
        }
        return;
    case ModelPart::pivots:
        if (description.axs.given) {
            readPivots(inputs, description.axs.fileName, model.pivots);
        }
        return;
    case ModelPart::coordinates:
        if (description.frm.given) {
            model.GroupFileName =
                readCoordinateFile(inputs, description.frm.fileName, model.coordinates,
                                   model.vertices, model.coordinateLists);
        }
        return;
    case ModelPart::groups:
        if (description.frm.given && isGroupMode(model.GroupFileName)) {
            readGroupFile(inputs, model.GroupFileName, model.coordinates, model.vertices,
                          model.coordinateLists, model.orphans);
        }
        return;
    case ModelPart::motions: return readMotions(inputs, model.motions);
    }
}

void readModel(const std::string& mqfName, Inputs& inputs, Model& model) {
    for (const ModelPart part : modelParts) {
        readPart(part, mqfName, inputs, model);
    }
}

void organiseModel(const RunOptions& options, Model& model) {
    organisePolygons(model);
    if (model.description.bnd.given) {
        organiseMeshes(model);
        buildMeshPrimitiveBodies(model);
    } else {
        buildPrimitiveBodies(model);
    }
    if (options.imageOutput) {
        model.malimage = makeImageTypes(model.images);
    }
    prepareAnimation(model);

    assignNormalCoordinates(model);
    if (model.primitives.hasShared()) {
        countSharedPerCoordinate(model);
        prepareSharedPrimitives(model);
    }
    applyPivots(model);
    // From here on no table changes.

    checkLimits(model);
    checkPackets(model);
}

void checkOutputNames(const RunOptions& options, const Inputs& inputs, const OutputFiles& outputs) {
    const auto checkInputs = [&](const std::string& output) {
        if (!outputs.exists(output)) {
            return;  // no input is this file, since all inputs exist
        }
        for (const std::string& input : inputs.names()) {
            if (outputs.same(output, input)) {
                notCorrectData({output}, "the output is the same file as the input " + input);
            }
        }
    };
    checkInputs(options.outputName);
    if (options.hexOutput) {
        checkInputs(options.hexName);
        if (outputs.same(options.hexName, options.outputName)) {
            notCorrectData({options.hexName},
                           "the hex text is the same file as the output " + options.outputName);
        }
    }
}

void convert(RunOptions options, const std::string& mqfName, InputFiles& inputFiles,
             OutputFiles& outputFiles) {
    withMemory([&] {
        Inputs inputs(inputFiles);
        Model model;
        readModel(mqfName, inputs, model);
        organiseModel(options, model);
        makeOutputName(mqfName, options);
        checkOutputNames(options, inputs, outputFiles);
        writeModel(model, options, inputFiles, outputFiles);
    });
}

void run(int argumentCount, const char* const* arguments) {
    print(bannerText());
    try {
        const std::span<const char* const> all(arguments, static_cast<std::size_t>(argumentCount));
        RunOptions options;
        const std::size_t mqfIndex = getOptions(all, options);
        if (mqfIndex >= all.size()) {
            print(usageText());
            return;
        }
        DiskInputFiles inputFiles;
        DiskOutputFiles outputFiles;
        convert(std::move(options), all[mqfIndex], inputFiles, outputFiles);
    } catch (const Report& report) {
        print(report.text());
    }
}

}  // namespace mqf2vxb
