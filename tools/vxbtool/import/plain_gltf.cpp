#include "vxbtool/import/plain_gltf.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include <fmt/core.h>

#include "vxbtool/import/linear_keys.h"
#include "vxbtool/import/source.h"
#include "vxbtool/shared/base64.h"

namespace vxbtool::importing {
namespace {

constexpr std::size_t real = 5126;  // the type of floats

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

/// Changes a document; the floats that it names then stand in a buffer of their own.
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
        chooseTextureCoordinates();
        namePictures();
        nameNodes();
        divideMeshes();
        for (GltfJson& animation : json_["animations"]) {
            if (motions_) {
                evenOut(animation);
            }
        }
        completeMovingNodes();
        for (const std::size_t number : misreadAccessors()) {
            makeFloats(json_["accessors"].at(number));
        }
        for (GltfJson& skin : json_["skins"]) {
            completeSkin(skin);
        }
        const std::size_t size = floats_.size() * sizeof(float);
        if (size > 0) {
            json_["buffers"].push_back(
                {{"byteLength", size},
                 {"uri", "data:application/octet-stream;base64," +
                             base64({reinterpret_cast<const char*>(floats_.data()), size})}});
        }
        return changed_ || size > 0;
    }

private:
    void nameNodes() {
        std::set<std::string> taken{"ROOT"};      // what Assimp calls a node above several roots
        std::map<std::string, std::size_t> next;  // what to try next behind a name that is taken
        GltfJson& nodes = json_["nodes"];
        const auto isNamed = [](const GltfJson& node) {
            return node.contains("name") && node["name"].is_string();
        };
        for (std::size_t n = 0; n < nodes.size(); ++n) {
            if (!isNamed(nodes[n])) {
                taken.insert(fmt::format("nodes[{}]", n));  // as Assimp calls it
            }
        }
        for (GltfJson& node : nodes) {
            if (!isNamed(node)) {
                continue;
            }
            constexpr std::size_t longest = 256;
            const std::string given = node["name"];
            const std::string base = given.substr(0, longest);
            std::string name = base;
            for (std::size_t& number = next.try_emplace(base, 2).first->second;
                 !taken.insert(name).second; ++number) {
                name = fmt::format("{} ({})", base, number);
            }
            if (name != given) {
                node["name"] = name;
                changed_ = true;
            }
        }
    }

    void divideMeshes() {
        constexpr std::size_t mostPrimitives = 65536;
        constexpr auto noSkin = static_cast<std::size_t>(-1);
        std::map<std::size_t, std::map<std::size_t, std::size_t>> meshes;  // by mesh and skin
        std::size_t primitives = 0;
        for (GltfJson& node : json_["nodes"]) {
            if (!node.contains("mesh")) {
                continue;
            }
            const std::size_t mesh = numberOf(node, "mesh");
            auto& ofSkins = meshes[mesh];
            const bool isFirst = ofSkins.empty();
            const auto [place, isNew] = ofSkins.try_emplace(numberOf(node, "skin", noSkin), mesh);
            if (isNew && !isFirst) {
                GltfJson copy = json_["meshes"].at(mesh);
                primitives += arrayOf(copy, "primitives").size();
                if (primitives > mostPrimitives) {
                    throw ImportFault("the glTF file draws its meshes with too many skins");
                }
                place->second = json_["meshes"].size();
                json_["meshes"].push_back(std::move(copy));
            }
            if (place->second != mesh) {
                node["mesh"] = place->second;
                changed_ = true;
            }
        }
    }

    /// Takes the set of texture coordinates that a texture's transform names instead of the texture's own.
    void chooseTextureCoordinates() {
        const GltfJson::json_pointer own("/extensions/KHR_texture_transform/texCoord");
        const std::array textures{
            GltfJson::json_pointer("/pbrMetallicRoughness/baseColorTexture"),
            GltfJson::json_pointer(
                "/extensions/KHR_materials_pbrSpecularGlossiness/diffuseTexture")};
        for (GltfJson& material : json_["materials"]) {
            for (const GltfJson::json_pointer& name : textures) {
                if (material.contains(name) && material[name].contains(own)) {
                    material[name]["texCoord"] = numberOf(material[name][own]);
                    changed_ = true;
                }
            }
        }
    }

    /// Names the pictures that extensions name, so that they are missed when nobody can read them.
    void namePictures() {
        for (GltfJson& texture : json_["textures"]) {
            if (texture.contains("source") || !texture.contains("extensions")) {
                continue;
            }
            for (const GltfJson& extension : texture["extensions"]) {
                if (extension.contains("source")) {
                    texture["source"] = numberOf(extension, "source");
                    changed_ = true;
                    break;
                }
            }
        }
    }

    /// Writes down what a node that moves has by default. Assimp would take it from the node's matrix
    /// instead, and one that mirrors, or has no size, has several scales and rotations.
    void completeNode(GltfJson& node) {
        if (node.contains("matrix")) {
            return;
        }
        const std::array<std::pair<const char*, GltfJson>, 3> defaults{
            {{"translation", {0, 0, 0}}, {"rotation", {0, 0, 0, 1}}, {"scale", {1, 1, 1}}}};
        for (const auto& [name, value] : defaults) {
            if (!node.contains(name)) {
                node[name] = value;
                changed_ = true;
            }
        }
    }

    void completeMovingNodes() {
        for (const GltfJson& animation : json_["animations"]) {
            for (const GltfJson& channel : arrayOf(animation, "channels")) {
                if (channel.at("target").contains("node")) {
                    completeNode(json_["nodes"].at(numberOf(channel.at("target"), "node")));
                }
            }
        }
    }

    /// The accessors where Assimp takes floats for granted that are none, or that it misreads with a
    /// stride.
    [[nodiscard]] std::set<std::size_t> misreadAccessors() const {
        std::set<std::size_t> found;
        const auto note = [&](const GltfJson& accessor) {
            const std::size_t number = numberOf(accessor);
            const GltfJson& noted = json_.at("accessors").at(number);
            const bool named = noted.contains("bufferView");  // else zeros, or compressed elsewhere
            if ((GltfAccessors::isWhole(noted) && named) || noted.contains("sparse")) {
                found.insert(number);
            }
        };
        for (const GltfJson& mesh : json_.at("meshes")) {
            for (const GltfJson& primitive : arrayOf(mesh, "primitives")) {
                for (const auto& [name, accessor] : primitive.at("attributes").items()) {
                    if (name.starts_with("WEIGHTS_") || name.starts_with("TEXCOORD_") ||
                        name == "POSITION" || name == "NORMAL" || name == "TANGENT") {
                        note(accessor);
                    } else if (name.starts_with("COLOR_") &&
                               json_.at("accessors").at(numberOf(accessor)).contains("sparse")) {
                        note(accessor);
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

    void makeFloats(GltfJson& accessor) {
        accessor["bufferView"] = addView(accessors_.floats(accessor));
        accessor["componentType"] = real;
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
        json_["accessors"].push_back({{"bufferView", addView(floats)},
                                      {"componentType", real},
                                      {"count", floats.size() / parts},
                                      {"type", type}});
        return json_["accessors"].size() - 1;
    }

    /// A view of floats in the new buffer.
    std::size_t addView(std::span<const float> floats) {
        json_["bufferViews"].push_back({{"buffer", json_["buffers"].size()},
                                        {"byteOffset", floats_.size() * sizeof(float)},
                                        {"byteLength", floats.size() * sizeof(float)}});
        floats_.insert(floats_.end(), floats.begin(), floats.end());
        return json_["bufferViews"].size() - 1;
    }

    GltfJson& json_;
    GltfAccessors accessors_;
    bool motions_;
    bool changed_ = false;
    std::size_t keyValues_ = 0;  // of all keys that became even
    std::vector<float> floats_;
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
        const std::string_view what = fault.what();
        throw ImportFault(fmt::format("the document of the glTF file is not sound: {}",
                                      what.substr(what.find("] ") + 2)));
    }
}

}  // namespace vxbtool::importing
