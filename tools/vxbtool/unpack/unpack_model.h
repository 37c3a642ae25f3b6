#pragma once

#include <string>

#include "vxb/vxb_file.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::unpack {

/// A model that converts to a file.
struct UnpackedModel {
    model_text::ModelText text;
    bool withoutImages = false;  ///< it has to be converted with -ni
};

/// The model of a file without errors. One that the converter could not have written becomes a model
/// as far as it goes.
UnpackedModel unpackModel(const mqf2vxb::VxbFile& file);

}  // namespace vxbtool::unpack
