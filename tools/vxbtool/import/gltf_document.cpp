#include "vxbtool/import/gltf_document.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/import/source.h"
#include "vxbtool/shared/base64.h"

namespace vxbtool::importing {
namespace {

using namespace component_type;

constexpr std::size_t glbHeader = 12;
constexpr std::size_t chunkHeader = 8;
constexpr std::uint32_t glbVersion = 2;
constexpr std::string_view magic = "glTF";
constexpr std::string_view jsonChunk = "JSON";
constexpr std::string_view binaryChunk{"BIN\0", 4};

[[noreturn]] void failOf(std::string_view what) {
    throw ImportFault(fmt::format("the glTF file names {} that is not there", what));
}

template <class Value>
Value valueAt(const char* bytes) {
    Value value{};
    std::memcpy(&value, bytes, sizeof(value));
    return value;
}

std::size_t sizeOf(std::size_t type) {
    switch (type) {
    case signedByte:
    case unsignedByte: return 1;
    case signedShort:
    case unsignedShort: return 2;
    case unsignedInt:
    case real: return 4;
    default: failOf("a type of numbers");
    }
}

double numberAt(const char* bytes, std::size_t type) {
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
double oneOf(std::size_t type) {
    switch (type) {
    case signedByte: return 0x7F;
    case unsignedByte: return 0xFF;
    case signedShort: return 0x7FFF;
    case unsignedShort: return 0xFFFF;
    default: return 1;
    }
}

/// A chunk's bytes, which are taken from what is left of a file.
std::string_view takeChunk(std::string_view type, std::string_view& rest) {
    if (rest.size() < chunkHeader || rest.substr(4, 4) != type) {
        return {};
    }
    const std::size_t size = valueAt<std::uint32_t>(rest.data());
    const std::string_view chunk = rest.substr(chunkHeader, size);
    rest.remove_prefix(std::min(rest.size(), chunkHeader + size));
    return chunk;
}

/// How many bytes the character at the beginning has in UTF-8; 0 when it is none.
std::size_t lengthInUtf8(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    std::size_t length = 0;
    if (first < 0x80) {
        length = 1;
    } else if (first >= 0xC2 && first < 0xE0) {
        length = 2;
    } else if (first >= 0xE0 && first < 0xF0) {
        length = 3;
    } else if (first >= 0xF0 && first < 0xF5) {
        length = 4;
    }
    const std::string_view rest = text.substr(1, std::max<std::size_t>(length, 1) - 1);
    const bool follows = std::ranges::all_of(
        rest, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; });
    return follows && rest.size() + 1 == length ? length : 0;
}

/// The text in UTF-8. Programs that write names in another way mean Latin-1.
std::string inUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = lengthInUtf8(text);
        if (length > 0) {
            result += text.substr(0, length);
        } else {
            const auto c = static_cast<unsigned char>(text.front());
            result += static_cast<char>(0xC0U | c >> 6U);
            result += static_cast<char>(0x80U | (c & 0x3FU));
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

/// Refuses nesting that goes deeper than what writes the document again can follow.
void requireShallow(std::string_view text) {
    constexpr std::size_t deepest = 256;
    std::size_t depth = 0;
    bool inText = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inText) {
            i += c == '\\' ? 1 : 0;
            inText = c != '"';
        } else if (c == '"') {
            inText = true;
        } else if (c == '{' || c == '[') {
            if (++depth > deepest) {
                throw ImportFault("the JSON of the glTF file nests too deep");
            }
        } else if ((c == '}' || c == ']') && depth > 0) {
            --depth;
        }
    }
}

GltfJson parsed(std::string_view text) {
    requireShallow(text);
    try {
        return GltfJson::parse(inUtf8(text));
    } catch (const GltfJson::exception& fault) {
        throw ImportFault(
            fmt::format("the JSON of the glTF file cannot be read: {}", causeOf(fault)));
    }
}

void append(std::string& bytes, std::size_t number) {
    const auto word = static_cast<std::uint32_t>(number);
    bytes.append(reinterpret_cast<const char*>(&word), sizeof(word));
}

}  // namespace

std::string causeOf(const GltfJson::exception& fault) {
    const std::string what = fault.what();
    return what.substr(std::min(what.find("] ") + 2, what.size()));
}

std::optional<GltfDocument> gltfDocument(std::string_view file) {
    GltfDocument document;
    document.binary = file.starts_with(magic) && file.size() >= glbHeader;
    std::string_view text = file;
    if (document.binary) {
        if (valueAt<std::uint32_t>(&file[magic.size()]) != glbVersion) {
            return std::nullopt;
        }
        std::string_view rest = file.substr(glbHeader);
        text = takeChunk(jsonChunk, rest);
        document.behind = rest;
        document.buffer = takeChunk(binaryChunk, rest);
    }
    document.json = parsed(text);
    const GltfJson::json_pointer version("/asset/version");
    if (!document.json.is_object() || !document.json.contains(version) ||
        !document.json.at(version).is_string() ||
        !document.json.at(version).get<std::string>().starts_with('2')) {
        return std::nullopt;
    }
    return document;
}

std::string gltfFile(const GltfDocument& document) {
    std::string text = document.json.dump(-1, ' ', false, GltfJson::error_handler_t::replace);
    if (!document.binary) {
        return text;
    }
    text.resize((text.size() + 3) / 4 * 4, ' ');
    std::string file(magic);
    append(file, glbVersion);
    append(file, glbHeader + chunkHeader + text.size() + document.behind.size());
    append(file, text.size());
    file += jsonChunk;
    file += text;
    file += document.behind;
    return file;
}

std::size_t numberOf(const GltfJson& value) {
    if (!value.is_number_unsigned()) {
        throw ImportFault("the glTF file has something else where a whole number belongs");
    }
    return value.get<std::size_t>();
}

std::size_t numberOf(const GltfJson& object, const char* name) { return numberOf(object.at(name)); }

std::size_t numberOf(const GltfJson& object, const char* name, std::size_t otherwise) {
    return object.contains(name) ? numberOf(object, name) : otherwise;
}

const GltfJson& arrayOf(const GltfJson& object, const char* name) {
    static const GltfJson none = GltfJson::array();
    return object.contains(name) && object.at(name).is_array() ? object.at(name) : none;
}

/// How the elements of an accessor stand in a buffer.
struct GltfAccessors::Elements {
    std::size_t type;
    std::size_t parts;
    bool fractions;

    [[nodiscard]] std::size_t size() const { return sizeOf(type) * parts; }
    void read(const char* bytes, float* to) const {
        for (std::size_t i = 0; i < parts; ++i) {
            const double number = numberAt(bytes + i * sizeOf(type), type);
            to[i] = static_cast<float>(fractions ? std::max(number / oneOf(type), -1.0) : number);
        }
    }
};

std::size_t GltfAccessors::parts(const GltfJson& accessor) {
    static const std::map<std::string, std::size_t> partsOf{
        {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}};
    const auto found = partsOf.find(accessor.at("type").get<std::string>());
    if (found == partsOf.end()) {
        failOf("a type of elements");
    }
    return found->second;
}

bool GltfAccessors::isWhole(const GltfJson& accessor) {
    const std::size_t type = numberOf(accessor, "componentType");
    return type >= signedByte && type <= unsignedShort;
}

std::vector<float> GltfAccessors::floats(const GltfJson& accessor) {
    const Elements each{numberOf(accessor, "componentType"), parts(accessor),
                        accessor.value("normalized", false)};
    const std::size_t count = numberOf(accessor, "count");
    std::vector<float> floats;
    if (accessor.contains("bufferView")) {
        const std::size_t view = numberOf(accessor, "bufferView");
        const std::size_t stride =
            numberOf(document_.json.at("bufferViews").at(view), "byteStride", each.size());
        const std::string_view bytes =
            elements(view, numberOf(accessor, "byteOffset", 0), count, each.size(), stride);
        spend(count, each.parts);
        floats.resize(count * each.parts);
        for (std::size_t i = 0; i < count; ++i) {
            each.read(&bytes[i * stride], &floats[i * each.parts]);
        }
    } else {
        spend(count, each.parts);
        floats.resize(count * each.parts);
    }
    if (accessor.contains("sparse")) {
        replaceSome(accessor.at("sparse"), each, floats);
    }
    return floats;
}

std::string_view GltfAccessors::buffer(std::size_t number) {
    const GltfJson& buffer = document_.json.at("buffers").at(number);
    if (document_.binary && number == 0 && !buffer.contains("uri")) {
        bytes_ += read_.try_emplace("").second ? document_.buffer.size() : 0;
        return document_.buffer;
    }
    const std::string name = buffer.at("uri").get<std::string>();
    const auto [place, isNew] = read_.try_emplace(name);
    if (isNew) {
        constexpr std::string_view mark = ";base64,";
        const std::size_t data = name.find(mark);
        std::optional<std::string> bytes =
            name.starts_with("data:") && data != std::string::npos
                ? bytesOfBase64(std::string_view(name).substr(data + mark.size()))
                : readFile_(name);
        if (!bytes) {
            failOf("a buffer");
        }
        place->second = std::move(*bytes);
        bytes_ += place->second.size();
    }
    return place->second;
}

/// The first of `count` elements of `size` bytes that lie `stride` apart in a view.
std::string_view GltfAccessors::elements(std::size_t view, std::size_t offset, std::size_t count,
                                         std::size_t size, std::size_t stride) {
    const GltfJson& place = document_.json.at("bufferViews").at(view);
    std::string_view bytes = buffer(numberOf(place, "buffer"));
    bytes.remove_prefix(std::min(numberOf(place, "byteOffset", 0), bytes.size()));
    bytes = bytes.substr(0, numberOf(place, "byteLength"));
    if (count > 0 &&
        (offset > bytes.size() || size > bytes.size() - offset ||
         (count - 1) > (bytes.size() - offset - size) / std::max(stride, std::size_t{1}))) {
        failOf("a part of a buffer");
    }
    return bytes.substr(std::min(offset, bytes.size()));
}

void GltfAccessors::replaceSome(const GltfJson& sparse, const Elements& each,
                                std::vector<float>& floats) {
    const std::size_t count = numberOf(sparse, "count");
    const GltfJson& indices = sparse.at("indices");
    const GltfJson& values = sparse.at("values");
    const std::size_t indexType = numberOf(indices, "componentType");
    const auto part = [&](const GltfJson& from, std::size_t size) {
        return elements(numberOf(from, "bufferView"), numberOf(from, "byteOffset", 0), count, size,
                        size);
    };
    const std::string_view index = part(indices, sizeOf(indexType));
    const std::string_view value = part(values, each.size());
    spend(count, each.parts);
    for (std::size_t i = 0; i < count; ++i) {
        const double at = numberAt(&index[i * sizeOf(indexType)], indexType);
        constexpr double farthest = 1e12;
        const auto first =
            at >= 0 && at < farthest ? static_cast<std::size_t>(at) * each.parts : floats.size();
        if (first >= floats.size()) {
            failOf("an element to replace");
        }
        each.read(&value[i * each.size()], &floats[first]);
    }
}

void GltfAccessors::spend(std::size_t count, std::size_t parts) {
    constexpr std::size_t least = std::size_t{1} << 20U;
    constexpr std::size_t perByte = 4;
    const std::size_t most = least + perByte * bytes_;
    if (count > most || (spent_ += count * parts) > most) {
        throw ImportFault("the accessors of the glTF file name the same bytes too often");
    }
}

}  // namespace vxbtool::importing
