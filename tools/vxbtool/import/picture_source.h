#pragma once

#include <string>

#include <assimp/scene.h>

#include "vxbtool/pictures/picture.h"

namespace vxbtool::importing {

/// The picture that a material of a scene names: an embedded one, or a file beside the model, whose
/// name may be written in another case, with other separators, or with folders of another machine.
/// Throws pictures::PictureFault when there is none.
pictures::Picture loadPicture(const aiScene& scene, const std::string& modelFile,
                              const std::string& name);

}  // namespace vxbtool::importing
