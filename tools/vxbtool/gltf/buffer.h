#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "vxbtool/gltf/tiny_gltf_model.h"

namespace vxbtool::gltf {

/// The views of the file's one buffer, but for pictures, which have one each.
enum class View : std::uint8_t {
    vectors,
    texels,
    colours,
    joints,
    weights,
    shortIndices,
    indices,
    matrices,
    keys,
};

/// The numbers of a glTF model, gathered view by view.
class Buffer {
public:
    explicit Buffer(tinygltf::Model& model) : model_(model) {}

    /// Adds values of `type` (TINYGLTF_TYPE_...) and returns their accessor. With bounds it tells the
    /// least and the greatest value.
    template <class Number>
    int add(View view, int type, std::span<const Number> values, bool bounds = false);
    /// Adds a picture's file and returns its image.
    int addPng(std::string png);
    /// Puts the buffer and its views into the model.
    void finish();

private:
    struct Bytes {
        std::string data;
        int index = -1;  ///< of the buffer view
    };

    int viewIndex(Bytes& bytes);

    tinygltf::Model& model_;
    static constexpr std::size_t viewNum = static_cast<std::size_t>(View::keys) + 1;
    std::array<Bytes, viewNum> views_;
    std::vector<Bytes> pictures_;
};

}  // namespace vxbtool::gltf
