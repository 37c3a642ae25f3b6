#pragma once

#include "base/table.h"
#include "files/inputs.h"
#include "model/image.h"

namespace mqf2vxb {

/// Reads the image file of every slot, in slot order: what the records hold of it. The data stays
/// in the file where it can be read from there again, since to keep the data of all images in
/// memory costs more than to read each of them a second time.
void readImages(Inputs& inputs, Table<ImageRecord>& images);

/// The bytes of an image's file, for its data. A file that is no longer what was read is refused.
[[nodiscard]] FileContents imageFile(const ImageRecord& image, InputFiles& files);

}  // namespace mqf2vxb
