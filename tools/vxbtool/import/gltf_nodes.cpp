#include "vxbtool/import/gltf_nodes.h"

#include <array>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/import/source.h"

namespace vxbtool::importing {
namespace {

/// A mesh with what is drawn of it.
GltfJson withoutExtras(const GltfJson& mesh) {
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

bool completeNode(GltfJson& node) {
    if (node.contains("matrix")) {
        return false;
    }
    bool changed = false;
    const std::array<std::pair<const char*, GltfJson>, 3> defaults{
        {{"translation", {0, 0, 0}}, {"rotation", {0, 0, 0, 1}}, {"scale", {1, 1, 1}}}};
    for (const auto& [name, value] : defaults) {
        if (!node.contains(name)) {
            node[name] = value;
            changed = true;
        }
    }
    return changed;
}

}  // namespace

bool nameNodes(GltfJson& document) {
    bool changed = false;
    std::set<std::string> taken{"ROOT"};      // what Assimp calls a node above several roots
    std::map<std::string, std::size_t> next;  // what to try next behind a name that is taken
    GltfJson& nodes = document["nodes"];
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
            changed = true;
        }
    }
    return changed;
}

bool divideMeshes(GltfJson& document) {
    bool changed = false;
    constexpr std::size_t mostPrimitives = 65536;
    constexpr auto noSkin = static_cast<std::size_t>(-1);
    std::map<std::size_t, std::map<std::size_t, std::size_t>> meshes;  // by mesh and skin
    std::size_t primitives = 0;
    for (GltfJson& node : document["nodes"]) {
        if (!node.contains("mesh")) {
            continue;
        }
        const std::size_t mesh = numberOf(node, "mesh");
        auto& ofSkins = meshes[mesh];
        const bool isFirst = ofSkins.empty();
        const auto [place, isNew] = ofSkins.try_emplace(numberOf(node, "skin", noSkin), mesh);
        if (isNew && !isFirst) {
            primitives += arrayOf(document["meshes"].at(mesh), "primitives").size();
            if (primitives > mostPrimitives) {
                throw ImportFault("the glTF file draws its meshes with too many skins");
            }
            GltfJson copy = withoutExtras(document["meshes"].at(mesh));
            place->second = document["meshes"].size();
            document["meshes"].push_back(std::move(copy));
        }
        if (place->second != mesh) {
            node["mesh"] = place->second;
            changed = true;
        }
    }
    return changed;
}

bool completeMovingNodes(GltfJson& document) {
    bool changed = false;
    for (const GltfJson& animation : document["animations"]) {
        for (const GltfJson& channel : arrayOf(animation, "channels")) {
            if (channel.at("target").contains("node")) {
                GltfJson& node = document["nodes"].at(numberOf(channel.at("target"), "node"));
                changed = completeNode(node) || changed;
            }
        }
    }
    return changed;
}

}  // namespace vxbtool::importing
