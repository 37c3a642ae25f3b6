#include "vxbtool/import/plain_gltf.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include <fmt/core.h>

#include "vxbtool/import/gltf_materials.h"
#include "vxbtool/import/gltf_nodes.h"
#include "vxbtool/import/linear_keys.h"
#include "vxbtool/import/source.h"
#include "vxbtool/shared/base64.h"

namespace vxbtool::importing {
namespace {

/// Refuses a file that means something else without an extension that import does not know.
void requireKnownExtensions(const GltfJson& document) {
    constexpr std::array known{"KHR_draco_mesh_compression", "KHR_lights_punctual",
                               "KHR_mesh_quantization",      "KHR_technique_webgl",
                               "KHR_techniques_webgl",       "KHR_texture_transform"};
    for (const GltfJson& extension : arrayOf(document, "extensionsRequired")) {
        const std::string name = extension.get<std::string>();
        if (!name.starts_with("KHR_materials_") && std::ranges::find(known, name) == known.end()) {
            throw ImportFault(
                fmt::format("it needs the glTF extension {}, which import does not know", name));
        }
    }
}

/// Changes a document; the numbers that become others then stand in a buffer of their own.
class Rewriter {
public:
    Rewriter(GltfDocument& document, const GltfAccessors::ReadFile& readFile, bool motions)
        : json_(document.json), accessors_(document, readFile), motions_(motions) {}

    /// False when there is nothing to change.
    bool rewrite() {
        // There before anything of the document is held, so that nothing moves.
        for (const char* name : {"accessors", "animations", "buffers", "bufferViews", "materials",
                                 "meshes", "nodes", "skins", "textures"}) {
            if (!json_.contains(name)) {
                json_[name] = GltfJson::array();
            }
        }
        requireKnownExtensions(json_);
        bool changed = renewMaterials(json_);
        changed = chooseTextureCoordinates(json_) || changed;
        changed = namePictures(json_) || changed;
        changed = nameNodes(json_) || changed;
        changed = divideMeshes(json_) || changed;
        changed = completeMovingNodes(json_) || changed;
        requireFewElements();
        for (GltfJson& animation : json_["animations"]) {
            if (motions_) {
                evenOut(animation);
            }
        }
        for (const auto& [number, joints] : misreadAccessors()) {
            makePlain(json_["accessors"].at(number), joints);
        }
        for (GltfJson& skin : json_["skins"]) {
            completeSkin(skin);
        }
        if (!bytes_.empty()) {
            json_["buffers"].push_back(
                {{"byteLength", bytes_.size()},
                 {"uri", "data:application/octet-stream;base64," + base64(bytes_)}});
        }
        return changed || !bytes_.empty();
    }

private:
    /// Refuses primitives that name the same vertices and corners over and over, which Assimp reads anew
    /// each time.
    void requireFewElements() const {
        constexpr std::size_t perByte = 4;
        constexpr std::size_t least = std::size_t{1} << 20U;
        std::size_t elements = 0;
        std::set<std::size_t> buffers;  // that Assimp has to read for them
        const auto add = [&](const GltfJson& number) {
            const GltfJson& accessor = json_.at("accessors").at(numberOf(number));
            if (accessor.contains("bufferView")) {
                buffers.insert(numberOf(
                    json_.at("bufferViews").at(numberOf(accessor, "bufferView")), "buffer"));
            }
            const std::size_t count = numberOf(accessor, "count");
            elements += std::min(count, std::size_t{largestSource});
            return count;
        };
        for (const GltfJson& mesh : json_.at("meshes")) {
            for (const GltfJson& primitive : arrayOf(mesh, "primitives")) {
                std::size_t vertices = 0;
                for (const GltfJson& accessor : primitive.at("attributes")) {
                    vertices = std::max(vertices, add(accessor));
                }
                if (primitive.contains("indices")) {
                    add(primitive.at("indices"));
                }
                // Each has all vertices, whatever it changes of them.
                elements += arrayOf(primitive, "targets").size() *
                            std::min(vertices, std::size_t{largestSource});
            }
        }
        // Each primitive has all joints of its skin.
        constexpr std::size_t ofJoint = 16;
        for (const GltfJson& node : json_.at("nodes")) {
            if (node.contains("mesh") && node.contains("skin")) {
                const GltfJson& mesh = json_.at("meshes").at(numberOf(node, "mesh"));
                const GltfJson& skin = json_.at("skins").at(numberOf(node, "skin"));
                elements +=
                    ofJoint * arrayOf(mesh, "primitives").size() * arrayOf(skin, "joints").size();
            }
        }
        std::size_t most = least;
        for (const std::size_t number : buffers) {
            most += perByte * std::min(numberOf(json_.at("buffers").at(number), "byteLength"),
                                       std::size_t{largestSource});
        }
        if (elements > most) {
            throw ImportFault("the meshes of the glTF file name the same vertices too often");
        }
    }

    /// The accessors where Assimp takes floats for granted that are none, or that it misreads with a
    /// stride; and whether they name joints.
    [[nodiscard]] std::map<std::size_t, bool> misreadAccessors() const {
        std::map<std::size_t, bool> found;
        const auto note = [&](const GltfJson& accessor) {
            const std::size_t number = numberOf(accessor);
            const GltfJson& noted = json_.at("accessors").at(number);
            const bool named = noted.contains("bufferView");  // else zeros, or compressed elsewhere
            if ((GltfAccessors::isWhole(noted) && named) || noted.contains("sparse")) {
                found.try_emplace(number, false);
            }
        };
        for (const GltfJson& mesh : json_.at("meshes")) {
            for (const GltfJson& primitive : arrayOf(mesh, "primitives")) {
                for (const auto& [name, accessor] : primitive.at("attributes").items()) {
                    const GltfJson& noted = json_.at("accessors").at(numberOf(accessor));
                    if (!name.starts_with("COLOR_") && !name.starts_with("JOINTS_")) {
                        note(accessor);
                    } else if (noted.contains("sparse")) {
                        found[numberOf(accessor)] = name.starts_with("JOINTS_");
                    }
                }
            }
        }
        for (const GltfJson& animation : json_.at("animations")) {
            for (const GltfJson& sampler : arrayOf(animation, "samplers")) {
                note(sampler.at("output"));
            }
        }
        return found;
    }

    /// Fractions become floats, and joints as wide as they can be.
    void makePlain(GltfJson& accessor, bool joints) {
        const std::vector<float> floats = accessors_.floats(accessor);
        if (joints) {
            std::vector<std::uint16_t> numbers;
            numbers.reserve(floats.size());
            for (const float number : floats) {
                numbers.push_back(static_cast<std::uint16_t>(number));
            }
            accessor["bufferView"] = addView<std::uint16_t>(numbers);
        } else {
            accessor["bufferView"] = addView<float>(floats);
        }
        accessor["componentType"] = joints ? component_type::unsignedShort : component_type::real;
        for (const char* name : {"byteOffset", "normalized", "min", "max", "sparse"}) {
            accessor.erase(name);
        }
    }

    /// Gives the samplers of an animation keys between which values go evenly.
    void evenOut(GltfJson& animation) {
        std::map<std::size_t, std::string> pathOf;
        for (const GltfJson& channel : arrayOf(animation, "channels")) {
            pathOf[numberOf(channel, "sampler")] =
                channel.at("target").at("path").get<std::string>();
        }
        for (const auto& [number, path] : pathOf) {
            GltfJson& sampler = animation.at("samplers").at(number);
            const std::string interpolation = sampler.value("interpolation", "LINEAR");
            const bool cubic = interpolation == "CUBICSPLINE";
            if (path == "weights" || (!cubic && interpolation != "STEP")) {
                continue;
            }
            const GltfJson& output = json_["accessors"].at(numberOf(sampler, "output"));
            const GltfJson& input = json_["accessors"].at(numberOf(sampler, "input"));
            const std::string type = output.at("type");
            const std::size_t parts = GltfAccessors::parts(output);
            const std::vector<float> values = accessors_.floats(output);
            const std::vector<float> times = accessors_.floats(input);
            if (GltfAccessors::parts(input) != 1 ||
                values.size() != times.size() * parts * (cubic ? 3 : 1)) {
                throw ImportFault("an animation of the glTF file has not as many values as keys");
            }
            const LinearKeys keys =
                linearKeys(cubic ? Interpolation::cubic : Interpolation::step, times, values, parts,
                           path == "rotation", keyValues_);
            sampler["interpolation"] = "LINEAR";
            sampler["input"] = addAccessor(keys.times, "SCALAR", 1);
            sampler["output"] = addAccessor(keys.values, type, parts);
        }
    }

    void completeSkin(GltfJson& skin) {
        if (skin.contains("inverseBindMatrices")) {
            return;
        }
        constexpr std::size_t parts = 16;
        constexpr std::size_t diagonal = 5;
        std::vector<float> matrices(arrayOf(skin, "joints").size() * parts);
        for (std::size_t i = 0; i < matrices.size(); ++i) {
            matrices[i] = i % parts % diagonal == 0 ? 1.0F : 0.0F;
        }
        skin["inverseBindMatrices"] = addAccessor(matrices, "MAT4", parts);
    }

    std::size_t addAccessor(std::span<const float> floats, const std::string& type,
                            std::size_t parts) {
        json_["accessors"].push_back({{"bufferView", addView<float>(floats)},
                                      {"componentType", component_type::real},
                                      {"count", floats.size() / parts},
                                      {"type", type}});
        return json_["accessors"].size() - 1;
    }

    /// A view of numbers in the new buffer.
    template <class Number>
    std::size_t addView(std::span<const Number> numbers) {
        bytes_.resize((bytes_.size() + sizeof(float) - 1) / sizeof(float) * sizeof(float));
        json_["bufferViews"].push_back({{"buffer", json_["buffers"].size()},
                                        {"byteOffset", bytes_.size()},
                                        {"byteLength", numbers.size_bytes()}});
        bytes_.append(reinterpret_cast<const char*>(numbers.data()), numbers.size_bytes());
        return json_["bufferViews"].size() - 1;
    }

    GltfJson& json_;
    GltfAccessors accessors_;
    bool motions_;
    std::size_t keyValues_ = 0;  // of all keys that became even
    std::string bytes_;          // of the new buffer
};

}  // namespace

std::optional<std::string> plainGltf(std::string_view file, const GltfAccessors::ReadFile& readFile,
                                     bool motions) {
    std::optional<GltfDocument> document = gltfDocument(file);
    try {
        if (!document || !Rewriter(*document, readFile, motions).rewrite()) {
            return std::nullopt;
        }
        return gltfFile(*document);
    } catch (const GltfJson::exception& fault) {
        throw ImportFault(
            fmt::format("the document of the glTF file is not sound: {}", causeOf(fault)));
    }
}

}  // namespace vxbtool::importing
