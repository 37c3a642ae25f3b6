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

#include "vxbtool/import/linear_keys.h"
#include "vxbtool/import/source.h"
#include "vxbtool/shared/base64.h"

namespace vxbtool::importing {
namespace {

// Types of numbers.
constexpr std::size_t unsignedShort = 5123;
constexpr std::size_t real = 5126;

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
        renewMaterials();
        chooseTextureCoordinates();
        namePictures();
        nameNodes();
        divideMeshes();
        requireFewElements();
        for (GltfJson& animation : json_["animations"]) {
            if (motions_) {
                evenOut(animation);
            }
        }
        completeMovingNodes();
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
        return changed_ || !bytes_.empty();
    }

private:
    void nameNodes() {
        std::set<std::string> taken{"ROOT"};      // what Assimp calls a node above several roots
        std::map<std::string, std::size_t> next;  // what to try next behind a name that is taken
        GltfJson& nodes = json_["nodes"];
        // Assimp's names end before a zero.
        const auto nameOf = [](const GltfJson& node) -> std::string {
            return node.contains("name") && node["name"].is_string()
                       ? node["name"].get<std::string>().c_str()
                       : "";
        };
        for (std::size_t n = 0; n < nodes.size(); ++n) {
            if (nameOf(nodes[n]).empty()) {
                taken.insert(fmt::format("nodes[{}]", n));  // as Assimp calls it
            }
        }
        for (GltfJson& node : nodes) {
            constexpr std::size_t longest = 256;
            const std::string given = nameOf(node);
            const std::string base = given.substr(0, longest);
            if (base.empty()) {
                continue;
            }
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

    /// A mesh with what is drawn of it.
    static GltfJson withoutExtras(const GltfJson& mesh) {
        GltfJson result{{"primitives", GltfJson::array()}};
        if (mesh.contains("name")) {
            result["name"] = mesh.at("name");
        }
        for (const GltfJson& primitive : arrayOf(mesh, "primitives")) {
            GltfJson& copy = result["primitives"].emplace_back(GltfJson::object());
            for (const auto& [name, value] : primitive.items()) {
                if (name != "extras" && name != "targets") {
                    copy[name] = value;
                }
            }
        }
        return result;
    }

    /// Refuses primitives that name the same vertices and corners over and over, which Assimp reads anew
    /// each time.
    void requireFewElements() const {
        constexpr std::size_t perByte = 4;
        std::size_t most = std::size_t{1} << 20U;
        for (const GltfJson& buffer : json_.at("buffers")) {
            most += perByte * std::min(numberOf(buffer, "byteLength"), std::size_t{largestSource});
        }
        std::size_t elements = 0;
        const auto add = [&](const GltfJson& accessor) {
            elements +=
                std::min(numberOf(json_.at("accessors").at(numberOf(accessor)), "count"), most);
            if (elements > most) {
                throw ImportFault("the meshes of the glTF file name the same vertices too often");
            }
        };
        for (const GltfJson& mesh : json_.at("meshes")) {
            for (const GltfJson& primitive : arrayOf(mesh, "primitives")) {
                if (primitive.at("attributes").contains("POSITION")) {
                    add(primitive.at("attributes").at("POSITION"));
                }
                if (primitive.contains("indices")) {
                    add(primitive.at("indices"));
                }
                for (const GltfJson& target : arrayOf(primitive, "targets")) {
                    if (target.contains("POSITION")) {
                        add(target.at("POSITION"));
                    }
                }
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
                primitives += arrayOf(json_["meshes"].at(mesh), "primitives").size();
                if (primitives > mostPrimitives) {
                    throw ImportFault("the glTF file draws its meshes with too many skins");
                }
                GltfJson copy = withoutExtras(json_["meshes"].at(mesh));
                place->second = json_["meshes"].size();
                json_["meshes"].push_back(std::move(copy));
            }
            if (place->second != mesh) {
                node["mesh"] = place->second;
                changed_ = true;
            }
        }
    }

    /// Gives materials of an older kind what stands for it.
    void renewMaterials() {
        constexpr const char* old = "KHR_materials_pbrSpecularGlossiness";
        for (GltfJson& material : json_["materials"]) {
            if (!material.contains("extensions") || !material["extensions"].contains(old)) {
                continue;
            }
            const GltfJson& before = material["extensions"][old];
            GltfJson made{{"metallicFactor", 0}};
            if (before.contains("diffuseFactor")) {
                made["baseColorFactor"] = before.at("diffuseFactor");
            }
            if (before.contains("diffuseTexture")) {
                made["baseColorTexture"] = before.at("diffuseTexture");
            }
            material["pbrMetallicRoughness"] = std::move(made);
            material["extensions"].erase(old);
            changed_ = true;
        }
    }

    /// Takes the set of texture coordinates that a texture's transform names instead of the texture's own.
    void chooseTextureCoordinates() {
        const GltfJson::json_pointer own("/extensions/KHR_texture_transform/texCoord");
        const GltfJson::json_pointer name("/pbrMetallicRoughness/baseColorTexture");
        for (GltfJson& material : json_["materials"]) {
            if (material.contains(name) && material[name].contains(own)) {
                material[name]["texCoord"] = numberOf(material[name][own]);
                changed_ = true;
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
            for (const float number : floats) {
                numbers.push_back(static_cast<std::uint16_t>(number));
            }
            accessor["bufferView"] = addView<std::uint16_t>(numbers);
        } else {
            accessor["bufferView"] = addView<float>(floats);
        }
        accessor["componentType"] = joints ? unsignedShort : real;
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
                                      {"componentType", real},
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
    bool changed_ = false;
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
        const std::string_view what = fault.what();
        throw ImportFault(fmt::format("the document of the glTF file is not sound: {}",
                                      what.substr(what.find("] ") + 2)));
    }
}

}  // namespace vxbtool::importing
