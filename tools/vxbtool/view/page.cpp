#include "vxbtool/view/page.h"

#include <cstdint>
#include <stdexcept>

namespace vxbtool::view {
namespace {

/// What stands before a mark of the page. The rest begins behind the mark then.
std::string_view upTo(std::string_view mark, std::string_view& rest) {
    const std::size_t place = rest.find(mark);
    if (place == std::string_view::npos) {
        throw std::logic_error("the page has no place for the model");
    }
    const std::string_view before = rest.substr(0, place);
    rest.remove_prefix(place + mark.size());
    return before;
}

/// JSON that holds no "<", so that no end of an element is in it. Bytes that are not UTF-8 are
/// replaced.
std::string embedded(const Json& data) {
    const std::string text = data.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (c == '<') {
            result += "\\u003c";
        } else {
            result += c;
        }
    }
    return result;
}

}  // namespace

std::string filledPage(std::string_view pageTemplate, const Json& data, std::string_view glb) {
    std::string page(upTo("@MODEL_DATA@", pageTemplate));
    page += embedded(data);
    page += upTo("@MODEL_GLB@", pageTemplate);
    page += base64(glb);
    page += pageTemplate;
    return page;
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t group = 3;
    std::string result;
    result.reserve((bytes.size() + 2) / group * 4);
    for (std::size_t i = 0; i < bytes.size(); i += group) {
        std::uint32_t bits = 0;
        for (std::size_t j = 0; j < group; ++j) {
            const bool there = i + j < bytes.size();
            bits = bits << 8U | (there ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        }
        for (std::size_t j = 0; j <= group; ++j) {
            const bool padding = i + j > bytes.size();
            result += padding ? '=' : digits[bits >> (18U - 6U * j) & 63U];
        }
    }
    return result;
}

}  // namespace vxbtool::view
