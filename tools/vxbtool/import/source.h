#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct aiScene;

/// A model of another program's on its way to the files of a model.
namespace vxbtool::importing {

/// A model that cannot come in; what() is the cause, a line without the file's name.
class ImportFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The most bytes of a model's files together.
inline constexpr std::uint64_t largestSource = std::uint64_t{1} << 30U;

struct SourceOptions {
    bool motions = true;  ///< what moves is of interest
    /// Called now and then while the model is read; false ends it.
    std::function<bool()> goOn;
    /// Called with each file of the model and its size before it is read.
    std::function<void(const std::string& file, std::uint64_t bytes)> opening;
};

/// The scene that Assimp made of a file, unchanged: no step of Assimp's runs behind its reader. Its
/// references are sound: faces name vertices that are there, meshes and nodes materials and meshes
/// that are, bones vertices; the nodes' transformations are finite numbers.
class Source {
public:
    /// Throws ImportFault for what Assimp refuses, what has no polygon, and what is larger than
    /// `largestSource`.
    static Source load(const std::string& file, const SourceOptions& options);

    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    Source(Source&&) noexcept;
    Source& operator=(Source&&) noexcept;
    ~Source();

    [[nodiscard]] const aiScene& scene() const { return *scene_; }

private:
    struct Loader;
    Source();

    std::unique_ptr<Loader> loader_;
    const aiScene* scene_ = nullptr;
};

/// What Assimp calls the format that it read a scene from.
std::string formatOf(const aiScene& scene);
bool isGltf(const aiScene& scene);

}  // namespace vxbtool::importing
