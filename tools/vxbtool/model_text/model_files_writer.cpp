#include "vxbtool/model_text/model_files_writer.h"

#include <algorithm>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/model_text/component_files.h"

namespace vxbtool::model_text {
namespace {

/// The longest name that leaves room for its number and for the key in front of it in a line.
constexpr std::size_t longestModelName = 200;

/// The names of the model's files by what they hold.
struct Names {
    std::string model;
    std::string geometry;  // these are empty when the model has no such file
    std::string materials;
    std::string hierarchy;
    std::string meshes;
    std::vector<std::string> textures;
    std::vector<std::string> motions;
};

std::vector<std::string> numberedNames(std::size_t number, const std::string& name,
                                       const std::string& ending) {
    if (number == 1) {
        return {name + ending};
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < number; ++i) {
        names.push_back(fmt::format("{}-{}{}", name, i, ending));
    }
    return names;
}

Names namesOf(const ModelText& model, const std::string& name) {
    Names names;
    names.model = name + ".mqf";
    names.geometry = model.geometry ? name + ".geo" : "";
    names.materials = model.materials ? name + ".srf" : "";
    names.hierarchy = model.hierarchy ? name + ".frm" : "";
    names.meshes = model.meshes ? name + ".bnd" : "";
    names.textures = numberedNames(model.textures.size(), name, ".pxl");
    names.motions = numberedNames(model.motions.size(), name, ".clp");
    return names;
}

void writeKey(std::string_view key, const std::string& name, TextFile& file) {
    if (!name.empty()) {
        file.put(key);
        file.put(name);
        file.put("\n");
    }
}

/// The lines of a numbered list; `comment` tells that of an entry.
template <class Comment>
void writeSlots(std::string_view countKey, std::string_view slotKey,
                const std::vector<std::string>& names, Comment comment, TextFile& file) {
    if (names.empty()) {
        return;
    }
    file.put(countKey);
    file.number(static_cast<std::int64_t>(names.size()));
    file.put("\n");
    for (std::size_t i = 0; i < names.size(); ++i) {
        file.comment(comment(i));
        file.put(slotKey);
        file.number(static_cast<std::int64_t>(i));
        file.put("]=");
        file.put(names[i]);
        file.put("\n");
    }
}

void writeModelFile(const ModelText& model, const Names& names, TextFile& file) {
    file.comment(model.heading);
    file.put("@MQF970401\n");
    writeKey("GEO=", names.geometry, file);
    writeKey("SRF=", names.materials, file);
    writeKey("FRM=", names.hierarchy, file);
    writeKey("BND=", names.meshes, file);
    writeSlots(
        "NTEX=", "TEX[", names.textures,
        [&](std::size_t i) -> std::string_view { return model.textures[i].comment; }, file);
    writeSlots(
        "NCLP=", "CLP[", names.motions, [](std::size_t) -> std::string_view { return {}; }, file);
}

}  // namespace

bool isModelName(std::string_view name) {
    return !name.empty() && name.size() <= longestModelName && name != "." && name != ".." &&
           std::all_of(name.begin(), name.end(), [](char c) {
               return static_cast<unsigned char>(c) > ' ' && c != '/' && c != 0x7F;
           });
}

std::vector<std::string> fileNames(const ModelText& model, std::string_view name) {
    Names names = namesOf(model, std::string(name));
    std::vector<std::string> all{names.model};
    for (std::string* file : {&names.geometry, &names.materials, &names.hierarchy, &names.meshes}) {
        if (!file->empty()) {
            all.push_back(std::move(*file));
        }
    }
    for (std::vector<std::string>* files : {&names.textures, &names.motions}) {
        all.insert(all.end(), files->begin(), files->end());
    }
    return all;
}

void writeModelFiles(const ModelText& model, const std::string& folder, const std::string& name,
                     mqf2vxb::OutputFiles& files) {
    const Names names = namesOf(model, name);
    const std::string prefix = folder.empty() || folder.ends_with('/') ? folder : folder + "/";
    const auto write = [&](const std::string& fileName, auto put) {
        TextFile file(files, prefix + fileName);
        put(file);
        file.close();
    };
    // Outputs that take their places in the opposite order put the model's own file there last.
    write(names.model, [&](TextFile& file) { writeModelFile(model, names, file); });
    if (model.geometry) {
        write(names.geometry,
              [&](TextFile& file) { writeGeometry(*model.geometry, model.geometryComment, file); });
    }
    if (model.materials) {
        write(names.materials, [&](TextFile& file) {
            writeMaterials(*model.materials, model.materialComment, file);
        });
    }
    if (model.hierarchy) {
        write(names.hierarchy, [&](TextFile& file) {
            writeHierarchy(*model.hierarchy, model.hierarchyComment, file);
        });
    }
    if (model.meshes) {
        write(names.meshes,
              [&](TextFile& file) { writeMeshes(*model.meshes, model.meshComment, file); });
    }
    for (std::size_t i = 0; i < model.textures.size(); ++i) {
        write(names.textures[i], [&](TextFile& file) { writeTexture(model.textures[i], file); });
    }
    for (std::size_t i = 0; i < model.motions.size(); ++i) {
        write(names.motions[i], [&](TextFile& file) { writeMotion(model.motions[i], file); });
    }
}

}  // namespace vxbtool::model_text
