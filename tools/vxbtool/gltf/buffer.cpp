#include "vxbtool/gltf/buffer.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace vxbtool::gltf {
namespace {

/// What a view is for, and how far its values stand apart where several vertices' values do.
struct ViewTraits {
    int target = 0;
    std::size_t stride = 0;
};

ViewTraits traitsOf(View view) {
    switch (view) {
    case View::vectors: return {TINYGLTF_TARGET_ARRAY_BUFFER, 12};
    case View::texels:
    case View::colours:
    case View::joints: return {TINYGLTF_TARGET_ARRAY_BUFFER, 8};
    case View::weights: return {TINYGLTF_TARGET_ARRAY_BUFFER, 4};
    case View::shortIndices:
    case View::indices: return {TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER, 0};
    case View::matrices:
    case View::keys: break;
    }
    return {};
}

template <class Number>
constexpr int componentType() {
    if constexpr (std::is_same_v<Number, float>) {
        return TINYGLTF_COMPONENT_TYPE_FLOAT;
    } else if constexpr (std::is_same_v<Number, std::uint8_t>) {
        return TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE;
    } else if constexpr (std::is_same_v<Number, std::uint16_t>) {
        return TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT;
    } else {
        return TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
    }
}

}  // namespace

int Buffer::viewIndex(Bytes& bytes) {
    if (bytes.index < 0) {
        bytes.index = static_cast<int>(model_.bufferViews.size());
        model_.bufferViews.emplace_back().buffer = 0;
    }
    return bytes.index;
}

template <class Number>
int Buffer::add(View view, int type, std::span<const Number> values, bool bounds) {
    Bytes& bytes = views_[static_cast<std::size_t>(view)];
    const auto components = static_cast<std::size_t>(
        tinygltf::GetNumComponentsInType(static_cast<std::uint32_t>(type)));
    tinygltf::Accessor accessor;
    accessor.bufferView = viewIndex(bytes);
    accessor.byteOffset = bytes.data.size();
    accessor.componentType = componentType<Number>();
    accessor.type = type;
    accessor.count = values.size() / components;
    accessor.normalized = view == View::colours || view == View::weights;
    for (std::size_t c = 0; bounds && c < components; ++c) {
        Number least = values[c];
        Number greatest = values[c];
        for (std::size_t i = c; i < values.size(); i += components) {
            least = std::min(least, values[i]);
            greatest = std::max(greatest, values[i]);
        }
        accessor.minValues.push_back(least);
        accessor.maxValues.push_back(greatest);
    }
    bytes.data.append(reinterpret_cast<const char*>(values.data()), values.size_bytes());
    model_.accessors.push_back(std::move(accessor));
    return static_cast<int>(model_.accessors.size() - 1);
}

template int Buffer::add(View, int, std::span<const float>, bool);
template int Buffer::add(View, int, std::span<const std::uint8_t>, bool);
template int Buffer::add(View, int, std::span<const std::uint16_t>, bool);
template int Buffer::add(View, int, std::span<const std::uint32_t>, bool);

int Buffer::addPng(std::string png) {
    Bytes& bytes = pictures_.emplace_back();
    bytes.data = std::move(png);
    tinygltf::Image image;
    image.mimeType = "image/png";
    image.bufferView = viewIndex(bytes);
    model_.images.push_back(std::move(image));
    return static_cast<int>(model_.images.size() - 1);
}

void Buffer::finish() {
    constexpr std::size_t alignment = 4;
    tinygltf::Buffer whole;
    const auto put = [&](const Bytes& bytes, const ViewTraits& traits) {
        if (bytes.index < 0) {
            return;
        }
        tinygltf::BufferView& view = model_.bufferViews[static_cast<std::size_t>(bytes.index)];
        view.byteOffset = whole.data.size();
        view.byteLength = bytes.data.size();
        view.byteStride = traits.stride;
        view.target = traits.target;
        const std::size_t padded = (bytes.data.size() + alignment - 1) / alignment * alignment;
        constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
        if (padded > most - whole.data.size()) {
            throw std::length_error("the glTF file would be larger than 2147483647 bytes");
        }
        whole.data.insert(whole.data.end(), bytes.data.begin(), bytes.data.end());
        whole.data.resize(view.byteOffset + padded);
    };
    for (std::size_t i = 0; i < views_.size(); ++i) {
        put(views_[i], traitsOf(static_cast<View>(i)));
    }
    for (const Bytes& picture : pictures_) {
        put(picture, {});
    }
    if (!whole.data.empty()) {
        model_.buffers.push_back(std::move(whole));
    }
}

}  // namespace vxbtool::gltf
