#include "vxbtool/model_text/index_list.h"

#include <array>
#include <charconv>

namespace vxbtool::model_text {
namespace {

void appendIndex(std::size_t index, std::string& text) {
    std::array<char, 20> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), index).ptr;
    text.append(digits.data(), end);
}

}  // namespace

std::size_t runLength(std::span<const std::uint32_t> indices) {
    std::size_t length = 1;
    while (length < indices.size() && indices[length] == indices[length - 1] + 1) {
        ++length;
    }
    return length;
}

void appendRun(std::uint32_t first, std::size_t length, std::string& text) {
    appendIndex(first, text);
    if (length > 1) {
        text += '-';
        appendIndex(first + length - 1, text);
    }
}

}  // namespace vxbtool::model_text
