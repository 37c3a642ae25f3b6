#include "vxbtool/shared/base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vxbtool {
namespace {

constexpr std::string_view digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t noDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> valuesOfDigits() {
    std::array<std::uint8_t, 256> values{};
    values.fill(noDigit);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        values.at(static_cast<unsigned char>(digits[i])) = static_cast<std::uint8_t>(i);
    }
    return values;
}

}  // namespace

std::string base64(std::string_view bytes) {
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

std::optional<std::string> bytesOfBase64(std::string_view text) {
    static constexpr std::array<std::uint8_t, 256> values = valuesOfDigits();
    text = text.substr(0, text.find_last_not_of('=') + 1);
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t bits = 0;
    unsigned number = 0;  // of bits that wait
    for (const char c : text) {
        const std::uint8_t value = values.at(static_cast<unsigned char>(c));
        if (value == noDigit) {
            return std::nullopt;
        }
        bits = bits << 6U | value;
        number += 6;
        if (number >= 8) {
            number -= 8;
            bytes += static_cast<char>(bits >> number & 0xFFU);
        }
    }
    return bytes;
}

}  // namespace vxbtool
