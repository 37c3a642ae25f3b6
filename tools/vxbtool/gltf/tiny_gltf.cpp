// The one place where the library's code is compiled.
#define TINYGLTF_IMPLEMENTATION
#include "vxbtool/gltf/tiny_gltf_model.h"
