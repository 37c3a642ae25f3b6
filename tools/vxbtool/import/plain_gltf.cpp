#include "vxbtool/import/plain_gltf.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "vxbtool/import/linear_keys.h"
#include "vxbtool/shared/base64.h"

namespace vxbtool::importing {
namespace {

using Json = nlohmann::ordered_json;
using ReadFile = std::function<std::optional<std::string>(const std::string& name)>;

/// The document asks for something that is not there. Assimp tells of it.
class Unsound : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum ComponentType : unsigned {
    signedByte = 5120,
    unsignedByte = 5121,
    signedShort = 5122,
    unsignedShort = 5123,
    unsignedInt = 5125,
    real = 5126
};

template <class Value>
Value valueAt(const char* bytes) {
    Value value{};
    std::memcpy(&value, bytes, sizeof(value));
    return value;
}

std::size_t sizeOf(unsigned type) {
    switch (type) {
    case signedByte:
    case unsignedByte: return 1;
    case signedShort:
    case unsignedShort: return 2;
    case unsignedInt:
    case real: return 4;
    default: throw Unsound("a type of numbers");
    }
}

double numberAt(const char* bytes, unsigned type) {
    switch (type) {
    case signedByte: return valueAt<std::int8_t>(bytes);
    case unsignedByte: return valueAt<std::uint8_t>(bytes);
    case signedShort: return valueAt<std::int16_t>(bytes);
    case unsignedShort: return valueAt<std::uint16_t>(bytes);
    case unsignedInt: return valueAt<std::uint32_t>(bytes);
    default: return static_cast<double>(valueAt<float>(bytes));
    }
}

/// What stands for 1 when the numbers of a type are fractions.
double oneOf(unsigned type) {
    switch (type) {
    case signedByte: return 0x7F;
    case unsignedByte: return 0xFF;
    case signedShort: return 0x7FFF;
    case unsignedShort: return 0xFFFF;
    default: return 1;
    }
}

std::size_t partsOf(const Json& accessor) {
    static const std::map<std::string, std::size_t> parts{
        {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}};
    const auto found = parts.find(accessor.at("type").get<std::string>());
    if (found == parts.end()) {
        throw Unsound("a type of elements");
    }
    return found->second;
}

/// The document of a file, and the bytes that stand in the file behind it.
struct Document {
    Json json;
    std::string_view chunk;   ///< of a binary file: the bytes of buffer 0
    std::string_view behind;  ///< of a binary file: all chunks behind the document's
    bool binary = false;
};

constexpr std::size_t glbHeader = 12;
constexpr std::size_t chunkHeader = 8;
constexpr std::string_view magic = "glTF";
constexpr std::string_view jsonChunk = "JSON";
constexpr std::string_view binaryChunk{"BIN\0", 4};

/// A chunk's bytes, which are taken from what is left of a file.
std::string_view takeChunk(std::string_view type, std::string_view& rest) {
    if (rest.size() < chunkHeader || rest.substr(4, 4) != type) {
        throw Unsound("a chunk");
    }
    const std::size_t size = valueAt<std::uint32_t>(rest.data());
    const std::string_view chunk = rest.substr(chunkHeader, size);
    rest.remove_prefix(std::min(rest.size(), chunkHeader + size));
    return chunk;
}

Document parsed(std::string_view file) {
    Document document;
    document.binary = file.starts_with(magic) && file.size() >= glbHeader;
    if (document.binary) {
        std::string_view rest = file.substr(glbHeader);
        document.json = Json::parse(takeChunk(jsonChunk, rest));
        document.behind = rest;
        document.chunk = rest.empty() ? rest : takeChunk(binaryChunk, rest);
    } else {
        document.json = Json::parse(file);
    }
    return document;
}

/// The bytes of the document's buffers, each read once.
class Buffers {
public:
    Buffers(const Document& document, const ReadFile& readFile)
        : document_(document), readFile_(readFile) {}

    std::string_view view(std::size_t number) {
        const Json& view = document_.json.at("bufferViews").at(number);
        const std::string_view bytes = buffer(view.at("buffer").get<std::size_t>());
        const auto offset = view.value("byteOffset", std::size_t{0});
        if (offset > bytes.size()) {
            throw Unsound("a place in a buffer");
        }
        return bytes.substr(offset, view.at("byteLength").get<std::size_t>());
    }

private:
    std::string_view buffer(std::size_t number) {
        const Json& buffer = document_.json.at("buffers").at(number);
        if (document_.binary && number == 0 && !buffer.contains("uri")) {
            return document_.chunk;
        }
        const auto [place, isNew] = read_.try_emplace(number);
        if (isNew) {
            const std::string name = buffer.at("uri").get<std::string>();
            const std::size_t data = name.find(";base64,");
            std::optional<std::string> bytes =
                name.starts_with("data:") && data != std::string::npos
                    ? bytesOfBase64(std::string_view(name).substr(data + 8))
                    : readFile_(name);
            if (!bytes) {
                throw Unsound("a buffer");
            }
            place->second = std::move(*bytes);
        }
        return place->second;
    }

    const Document& document_;
    const ReadFile& readFile_;
    std::map<std::size_t, std::string> read_;
};

/// Changes a document; the floats that it names then stand in a buffer of their own.
class Rewriter {
public:
    Rewriter(Document& document, const ReadFile& readFile)
        : json_(document.json), buffers_(document, readFile) {}

    /// False when there is nothing to change.
    bool rewrite() {
        for (const std::size_t number : wholeNumbers()) {
            makeFloats(json_.at("accessors").at(number));
        }
        if (json_.contains("animations")) {
            for (Json& animation : json_["animations"]) {
                evenOut(animation);
            }
        }
        if (json_.contains("skins")) {
            for (Json& skin : json_["skins"]) {
                completeSkin(skin);
            }
        }
        if (floats_.empty()) {
            return false;
        }
        const std::size_t size = floats_.size() * sizeof(float);
        json_["buffers"].push_back(
            {{"byteLength", size},
             {"uri", "data:application/octet-stream;base64," +
                         base64({reinterpret_cast<const char*>(floats_.data()), size})}});
        return true;
    }

private:
    [[nodiscard]] bool isWhole(std::size_t accessor) const {
        const auto type = json_.at("accessors").at(accessor).at("componentType").get<unsigned>();
        return type >= signedByte && type <= unsignedShort;
    }

    /// The accessors of whole numbers where Assimp takes floats for granted.
    [[nodiscard]] std::set<std::size_t> wholeNumbers() const {
        std::set<std::size_t> found;
        const auto note = [&](const Json& accessor) {
            const auto number = accessor.get<std::size_t>();
            if (isWhole(number)) {
                found.insert(number);
            }
        };
        for (const Json& mesh : json_.value("meshes", Json::array())) {
            for (const Json& primitive : mesh.at("primitives")) {
                for (const auto& [name, accessor] : primitive.at("attributes").items()) {
                    if (name.starts_with("WEIGHTS_") || name.starts_with("TEXCOORD_") ||
                        name == "POSITION" || name == "NORMAL" || name == "TANGENT") {
                        note(accessor);
                    }
                }
            }
        }
        for (const Json& animation : json_.value("animations", Json::array())) {
            for (const Json& sampler : animation.at("samplers")) {
                note(sampler.at("output"));
            }
        }
        return found;
    }

    /// How the elements of an accessor stand in a buffer.
    struct Elements {
        unsigned type;
        std::size_t parts;
        bool fractions;

        [[nodiscard]] std::size_t size() const { return sizeOf(type) * parts; }
        void read(const char* bytes, float* to) const {
            for (std::size_t i = 0; i < parts; ++i) {
                const double number = numberAt(bytes + i * sizeOf(type), type);
                to[i] =
                    static_cast<float>(fractions ? std::max(number / oneOf(type), -1.0) : number);
            }
        }
    };

    /// The first of `count` elements of `size` bytes that lie `stride` apart in a view.
    std::string_view elements(std::size_t view, std::size_t offset, std::size_t count,
                              std::size_t size, std::size_t stride) {
        const std::string_view bytes = buffers_.view(view);
        if (count == 0 || offset > bytes.size() || size > bytes.size() - offset ||
            (count - 1) > (bytes.size() - offset - size) / std::max<std::size_t>(stride, 1)) {
            throw Unsound("elements of a buffer");
        }
        return bytes.substr(offset);
    }

    [[nodiscard]] std::vector<float> floatsOf(const Json& accessor) {
        const Elements each{accessor.at("componentType").get<unsigned>(), partsOf(accessor),
                            accessor.value("normalized", false)};
        const auto count = accessor.at("count").get<std::size_t>();
        std::vector<float> floats;
        if (accessor.contains("bufferView")) {
            const auto view = accessor["bufferView"].get<std::size_t>();
            const std::size_t stride =
                json_.at("bufferViews").at(view).value("byteStride", each.size());
            const std::string_view bytes = elements(
                view, accessor.value("byteOffset", std::size_t{0}), count, each.size(), stride);
            floats.resize(count * each.parts);
            for (std::size_t i = 0; i < count; ++i) {
                each.read(&bytes[i * stride], &floats[i * each.parts]);
            }
        } else {
            constexpr std::size_t most = std::size_t{1}
                                         << 24U;  // zeros, which no bytes account for
            if (count > most) {
                throw Unsound("so many elements");
            }
            floats.resize(count * each.parts);
        }
        if (accessor.contains("sparse")) {
            replaceSome(accessor["sparse"], each, floats);
        }
        return floats;
    }

    void replaceSome(const Json& sparse, const Elements& each, std::vector<float>& floats) {
        const auto count = sparse.at("count").get<std::size_t>();
        const Json& indices = sparse.at("indices");
        const Json& values = sparse.at("values");
        const auto indexType = indices.at("componentType").get<unsigned>();
        const auto part = [&](const Json& from, std::size_t size) {
            return elements(from.at("bufferView").get<std::size_t>(),
                            from.value("byteOffset", std::size_t{0}), count, size, size);
        };
        const std::string_view index = part(indices, sizeOf(indexType));
        const std::string_view value = part(values, each.size());
        for (std::size_t i = 0; i < count; ++i) {
            const double at = numberAt(&index[i * sizeOf(indexType)], indexType);
            const auto first = static_cast<std::size_t>(std::clamp(at, 0.0, 1e9)) * each.parts;
            if (first >= floats.size()) {
                throw Unsound("an element to replace");
            }
            each.read(&value[i * each.size()], &floats[first]);
        }
    }

    void makeFloats(Json& accessor) {
        accessor["bufferView"] = addView(floatsOf(accessor));
        accessor["componentType"] = unsigned{real};
        for (const char* name : {"byteOffset", "normalized", "min", "max", "sparse"}) {
            accessor.erase(name);
        }
    }

    std::size_t addAccessor(std::span<const float> floats, const std::string& type,
                            std::size_t parts) {
        json_["accessors"].push_back({{"bufferView", addView(floats)},
                                      {"componentType", unsigned{real}},
                                      {"count", floats.size() / parts},
                                      {"type", type}});
        return json_["accessors"].size() - 1;
    }

    /// Gives the samplers of an animation keys between which values go evenly.
    void evenOut(Json& animation) {
        std::map<std::size_t, std::string> pathOf;
        for (const Json& channel : animation.at("channels")) {
            pathOf[channel.at("sampler").get<std::size_t>()] =
                channel.at("target").at("path").get<std::string>();
        }
        for (const auto& [number, path] : pathOf) {
            Json& sampler = animation.at("samplers").at(number);
            const std::string interpolation = sampler.value("interpolation", "LINEAR");
            const bool cubic = interpolation == "CUBICSPLINE";
            if (path == "weights" || (!cubic && interpolation != "STEP")) {
                continue;
            }
            const Json& output = json_.at("accessors").at(sampler.at("output").get<std::size_t>());
            const std::string type = output.at("type").get<std::string>();
            const std::size_t parts = partsOf(output);
            const std::vector<float> values = floatsOf(output);
            const std::vector<float> times =
                floatsOf(json_.at("accessors").at(sampler.at("input").get<std::size_t>()));
            if (values.size() != times.size() * parts * (cubic ? 3 : 1)) {
                throw Unsound("values of keys");
            }
            const LinearKeys keys = linearKeys(cubic ? Interpolation::cubic : Interpolation::step,
                                               times, values, parts, path == "rotation");
            sampler["interpolation"] = "LINEAR";
            sampler["input"] = addAccessor(keys.times, "SCALAR", 1);
            sampler["output"] = addAccessor(keys.values, type, parts);
        }
    }

    void completeSkin(Json& skin) {
        if (skin.contains("inverseBindMatrices")) {
            return;
        }
        constexpr std::size_t parts = 16;
        constexpr std::size_t diagonal = 5;
        std::vector<float> matrices(skin.at("joints").size() * parts);
        for (std::size_t i = 0; i < matrices.size(); ++i) {
            matrices[i] = i % parts % diagonal == 0 ? 1.0F : 0.0F;
        }
        skin["inverseBindMatrices"] = addAccessor(matrices, "MAT4", parts);
    }

    /// A view of floats in the new buffer.
    std::size_t addView(std::span<const float> floats) {
        const std::size_t buffer = json_.contains("buffers") ? json_["buffers"].size() : 0;
        json_["bufferViews"].push_back({{"buffer", buffer},
                                        {"byteOffset", floats_.size() * sizeof(float)},
                                        {"byteLength", floats.size() * sizeof(float)}});
        floats_.insert(floats_.end(), floats.begin(), floats.end());
        return json_["bufferViews"].size() - 1;
    }

    Json& json_;
    Buffers buffers_;
    std::vector<float> floats_;
};

void append(std::string& bytes, std::size_t number) {
    const auto word = static_cast<std::uint32_t>(number);
    bytes.append(reinterpret_cast<const char*>(&word), sizeof(word));
}

std::string fileOf(const Document& document) {
    std::string text = document.json.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (!document.binary) {
        return text;
    }
    text.resize((text.size() + 3) / 4 * 4, ' ');
    std::string file(magic);
    append(file, 2);
    append(file, glbHeader + chunkHeader + text.size() + document.behind.size());
    append(file, text.size());
    file += jsonChunk;
    file += text;
    file += document.behind;
    return file;
}

}  // namespace

std::optional<std::string> plainGltf(std::string_view file, const ReadFile& readFile) {
    try {
        Document document = parsed(file);
        if (!document.json.at("asset").at("version").get<std::string>().starts_with('2') ||
            !Rewriter(document, readFile).rewrite()) {
            return std::nullopt;
        }
        return fileOf(document);
    } catch (const Json::exception&) {
        return std::nullopt;
    } catch (const Unsound&) {
        return std::nullopt;
    }
}

}  // namespace vxbtool::importing
