#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "files/input_files.h"
#include "files/inputs.h"
#include "files/output_files.h"
#include "model/model.h"
#include "model/options.h"

namespace mqf2vxb {

/// What of a model is read at a time, in this order.
enum class ModelPart : std::uint8_t {
    description,
    images,
    geometry,
    materials,
    meshes,
    pivots,
    coordinates,
    groups,
    motions,
};
inline constexpr std::array modelParts{
    ModelPart::description, ModelPart::images, ModelPart::geometry,
    ModelPart::materials,   ModelPart::meshes, ModelPart::pivots,
    ModelPart::coordinates, ModelPart::groups, ModelPart::motions};

/// Reads the files of one part, if the model has such; the parts before it are read.
void readPart(ModelPart part, const std::string& mqfName, Inputs& inputs, Model& model);

/// Reads every file of the model into its tables.
void readModel(const std::string& mqfName, Inputs& inputs, Model& model);

/// Makes of the tables what the file needs: type codes, bodies and headers, image types, numbers
/// of the animation, the shared blocks. From then on no table changes.
void organiseModel(const RunOptions& options, Model& model);

/// Refuses an output name that is the same file as an input or as the other output.
void checkOutputNames(const RunOptions& options, const Inputs& inputs, const OutputFiles& outputs);

/// Converts one model. A conversion is a function of its options and its files: any number may run
/// in one process, also side by side. Throws a Report when it fails.
void convert(RunOptions options, const std::string& mqfName, InputFiles& inputFiles,
             OutputFiles& outputFiles);

/// The whole program: banner, options, conversion; what there is to say goes to standard output.
void run(int argumentCount, const char* const* arguments);

}  // namespace mqf2vxb
