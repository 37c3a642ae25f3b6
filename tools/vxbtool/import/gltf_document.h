#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace vxbtool::importing {

using GltfJson = nlohmann::json;

/// Types of numbers in accessors.
namespace component_type {
inline constexpr std::size_t signedByte = 5120;
inline constexpr std::size_t unsignedByte = 5121;
inline constexpr std::size_t signedShort = 5122;
inline constexpr std::size_t unsignedShort = 5123;
inline constexpr std::size_t unsignedInt = 5125;
inline constexpr std::size_t real = 5126;
}  // namespace component_type

/// What the parser says of a fault, without its number.
std::string causeOf(const GltfJson::exception& fault);

// NOLINTBEGIN(bugprone-exception-escape): a document moves without copies.
/// A glTF 2.0 file: its document, and of a binary file the chunks behind it.
struct GltfDocument {
    GltfJson json;
    std::string_view buffer;  ///< the bytes of buffer 0 of a binary file
    std::string_view behind;  ///< all chunks behind the document
    bool binary = false;
};
// NOLINTEND(bugprone-exception-escape)

/// Takes a file apart; nothing of one of another version. Throws ImportFault of one that is no JSON, and
/// of JSON that nests deeper than anyone needs.
std::optional<GltfDocument> gltfDocument(std::string_view file);

/// The file that a document is, with its chunks.
std::string gltfFile(const GltfDocument& document);

/// Whole numbers of a document. Throws ImportFault of what is none, or negative.
std::size_t numberOf(const GltfJson& value);
std::size_t numberOf(const GltfJson& object, const char* name);
std::size_t numberOf(const GltfJson& object, const char* name, std::size_t otherwise);

/// The array that an object has by a name, or none.
const GltfJson& arrayOf(const GltfJson& object, const char* name);

/// Reads what accessors name.
class GltfAccessors {
public:
    using ReadFile = std::function<std::optional<std::string>(const std::string& name)>;

    /// `readFile` reads a file by the name that the document has for it.
    GltfAccessors(const GltfDocument& document, const ReadFile& readFile)
        : document_(document), readFile_(readFile) {}

    /// The numbers of each element.
    [[nodiscard]] static std::size_t parts(const GltfJson& accessor);
    /// Whether its numbers are whole ones of 8 or 16 bits.
    [[nodiscard]] static bool isWhole(const GltfJson& accessor);

    /// The numbers of an accessor, which stand for fractions where it says so. Throws ImportFault of
    /// bytes that are not there, and when accessors name the same bytes too often.
    std::vector<float> floats(const GltfJson& accessor);

private:
    struct Elements;

    std::string_view buffer(std::size_t number);
    std::string_view elements(std::size_t view, std::size_t offset, std::size_t count,
                              std::size_t size, std::size_t stride);
    void replaceSome(const GltfJson& sparse, const Elements& each, std::vector<float>& floats);
    void spend(std::size_t count, std::size_t parts);

    const GltfDocument& document_;
    const ReadFile& readFile_;
    std::map<std::string, std::string> read_;  // by what names the buffer
    std::size_t bytes_ = 0;                    // of all buffers that are read
    std::size_t spent_ = 0;                    // in numbers
};

}  // namespace vxbtool::importing
