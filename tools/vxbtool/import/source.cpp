#include "vxbtool/import/source.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

#include <assimp/DefaultIOSystem.h>
#include <assimp/Importer.hpp>
#include <assimp/MemoryIOWrapper.h>
#include <assimp/ProgressHandler.hpp>
#include <assimp/commonMetaData.h>
#include <assimp/config.h>
#include <assimp/scene.h>
#include <fmt/core.h>

#include "vxbtool/import/plain_gltf.h"
#include "vxbtool/import/unescaped.h"

namespace vxbtool::importing {
namespace {

namespace fs = std::filesystem;

constexpr const char* tooMuchMemory = "reading it takes more memory than it may";

[[noreturn]] void failAsTooLarge() {
    throw ImportFault(
        fmt::format("it and the files that it names have more than {} MiB", largestSource >> 20U));
}

/// Lets Assimp open regular files only, for reading, and until they are too large together: a model
/// may name a pipe, which never ends, or a file of another's.
class SourceFiles final : public Assimp::DefaultIOSystem {
public:
    SourceFiles(std::string model, const SourceOptions& options)
        : model_(std::move(model)), options_(options) {}

    /// Changes the model's file if Assimp would misread it.
    void makePlain() {
        const std::optional<std::string> file = beginsLikeGltf() ? bytesOf(model_) : std::nullopt;
        if (!file) {
            return;
        }
        plain_ = plainGltf(
            *file,
            [this](const std::string& name) {
                const fs::path folder = fs::path(model_).parent_path();
                std::optional<std::string> bytes = bytesOf(folder / name);
                if (!bytes) {
                    std::string plain = unescaped(name);
                    std::ranges::replace(plain, '\\', '/');
                    bytes = bytesOf(folder / fs::path(plain).relative_path());
                }
                return bytes;
            },
            options_.motions);
    }

    /// By default that opens the file, and waits for what a pipe has to say.
    [[nodiscard]] bool Exists(const char* file) const override {
        std::error_code error;
        return fs::is_regular_file(file, error);
    }

    Assimp::IOStream* Open(const char* file, const char* mode) override {
        std::error_code error;
        if (mode == nullptr || mode[0] != 'r' || !Exists(file)) {
            return nullptr;
        }
        const std::uintmax_t size = fs::file_size(file, error);
        if (error) {
            return nullptr;
        }
        bytes_ += size;
        if (bytes_ > largestSource) {
            tooLarge_ = true;
            return nullptr;
        }
        if (options_.opening) {
            options_.opening(file, size);
        }
        if (plain_ && file == model_) {
            return new Assimp::MemoryIOStream(reinterpret_cast<const std::uint8_t*>(plain_->data()),
                                              plain_->size());
        }
        return DefaultIOSystem::Open(file, mode);
    }

    [[nodiscard]] bool tooLarge() const { return tooLarge_; }

private:
    /// Whether the model begins as glTF files do, whatever its name.
    [[nodiscard]] bool beginsLikeGltf() const {
        constexpr std::size_t enough = 256;
        std::string start(enough, '\0');
        std::ifstream stream(model_, std::ios::binary);
        stream.read(start.data(), enough);
        start.resize(static_cast<std::size_t>(stream.gcount()));
        const std::size_t first = start.find_first_not_of("\xEF\xBB\xBF \t\r\n");
        return start.starts_with("glTF") || (first != std::string::npos && start[first] == '{');
    }

    [[nodiscard]] std::optional<std::string> bytesOf(const fs::path& file) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(file, error);
        if (error || !Exists(file.c_str())) {
            return std::nullopt;
        }
        changedBytes_ += size;
        if (changedBytes_ > largestSource) {
            failAsTooLarge();
        }
        if (options_.opening) {
            options_.opening(file, size);
        }
        std::string bytes(size, '\0');
        std::ifstream stream(file, std::ios::binary);
        if (!stream.read(bytes.data(), static_cast<std::streamsize>(size))) {
            return std::nullopt;
        }
        return bytes;
    }

    std::string model_;
    const SourceOptions& options_;
    std::optional<std::string> plain_;
    std::uintmax_t bytes_ = 0;         // that Assimp reads
    std::uintmax_t changedBytes_ = 0;  // that are read before, to be changed
    bool tooLarge_ = false;
};

class Progress final : public Assimp::ProgressHandler {
public:
    explicit Progress(const SourceOptions& options) : options_(options) {}
    bool Update(float /*percentage*/) override { return !options_.goOn || options_.goOn(); }

private:
    const SourceOptions& options_;
};

template <class Item>
std::span<Item* const> items(Item* const* first, unsigned count) {
    return {first, first == nullptr ? 0 : count};
}

void require(bool holds, const char* what) {
    if (!holds) {
        throw ImportFault(fmt::format("{} that is not there", what));
    }
}

void checkMesh(const aiScene& scene, const aiMesh& mesh) {
    require(mesh.mVertices != nullptr || mesh.mNumVertices == 0, "a mesh has vertices");
    require(mesh.mMaterialIndex < scene.mNumMaterials, "a mesh names a material");
    const std::span<const aiFace> faces(mesh.mFaces, mesh.mFaces == nullptr ? 0 : mesh.mNumFaces);
    for (const aiFace& face : faces) {
        const std::span<const unsigned> corners(face.mIndices, face.mNumIndices);
        require(std::ranges::all_of(corners, [&](unsigned v) { return v < mesh.mNumVertices; }),
                "a polygon names a vertex");
    }
    for (const aiBone* bone : items(mesh.mBones, mesh.mNumBones)) {
        const std::span<const aiVertexWeight> weights(bone->mWeights, bone->mNumWeights);
        require(std::ranges::all_of(weights,
                                    [&](const auto& w) { return w.mVertexId < mesh.mNumVertices; }),
                "a bone names a vertex");
    }
}

void checkNodes(const aiScene& scene) {
    std::vector<const aiNode*> open{scene.mRootNode};
    while (!open.empty()) {
        const aiNode& node = *open.back();
        open.pop_back();
        const std::span<const float> values(&node.mTransformation.a1, 16);
        if (!std::ranges::all_of(values, [](float value) { return std::isfinite(value); })) {
            throw ImportFault(fmt::format("the transformation of node \"{}\" is no finite number",
                                          node.mName.C_Str()));
        }
        const std::span<const unsigned> meshes(node.mMeshes, node.mNumMeshes);
        require(std::ranges::all_of(meshes, [&](unsigned m) { return m < scene.mNumMeshes; }),
                "a node names a mesh");
        for (const aiNode* child : items(node.mChildren, node.mNumChildren)) {
            if (child != nullptr) {  // some readers leave places of children empty
                open.push_back(child);
            }
        }
    }
}

void check(const aiScene* scene) {
    if (scene == nullptr || scene->mRootNode == nullptr || scene->mNumMeshes == 0) {
        throw ImportFault("it holds no polygons");
    }
    for (const aiMesh* mesh : items(scene->mMeshes, scene->mNumMeshes)) {
        checkMesh(*scene, *mesh);
    }
    checkNodes(*scene);
}

}  // namespace

struct Source::Loader {
    explicit Loader(SourceOptions given) : options(std::move(given)) {}

    SourceOptions options;
    Assimp::Importer importer;
};

Source::Source() = default;
Source::Source(Source&&) noexcept = default;
Source& Source::operator=(Source&&) noexcept = default;
Source::~Source() = default;

Source Source::load(const std::string& file, const SourceOptions& options) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        throw ImportFault(error              ? error.message()
                          : fs::exists(file) ? "it is no regular file"
                                             : "there is no such file");
    }
    Source source;
    source.loader_ = std::make_unique<Loader>(options);
    Assimp::Importer& importer = source.loader_->importer;
    // The importer owns both.
    auto* const files = new SourceFiles(file, source.loader_->options);
    importer.SetIOHandler(files);
    importer.SetProgressHandler(new Progress(source.loader_->options));
    // A node for each node: pivots of FBX files go into its transformation.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    try {
        files->makePlain();
        source.scene_ = importer.ReadFile(file, 0);
    } catch (const std::bad_alloc&) {
        throw ImportFault(tooMuchMemory);
    } catch (const std::exception& fault) {
        throw ImportFault(fault.what());
    }
    if (files->tooLarge()) {
        failAsTooLarge();
    }
    if (source.scene_ == nullptr) {
        const std::string cause = importer.GetErrorString();
        if (cause == std::bad_alloc().what()) {
            throw ImportFault(tooMuchMemory);
        }
        throw ImportFault(cause.empty() ? "Assimp cannot read it" : cause);
    }
    check(source.scene_);
    return source;
}

std::string formatOf(const aiScene& scene) {
    aiString format;
    return scene.mMetaData != nullptr && scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format)
               ? format.C_Str()
               : "";
}

bool isGltf(const aiScene& scene) { return formatOf(scene).find("glTF2") != std::string::npos; }

}  // namespace vxbtool::importing
