#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace bench {

/// Random numbers that are the same for a seed everywhere: the standard's distributions are not.
class Random {
public:
    explicit Random(std::uint32_t seed) : engine_(seed) {}

    /// From 0 to `end` - 1.
    std::int32_t below(std::int32_t end) {
        return static_cast<std::int32_t>(engine_() * static_cast<std::uint64_t>(end) >> 32U);
    }
    /// From `first` to `last`, both included.
    std::int32_t between(std::int32_t first, std::int32_t last) {
        return first + below(last - first + 1);
    }
    bool percent(std::int32_t chance) { return below(100) < chance; }
    double real(double low, double high) { return low + (high - low) * bits() / 4294967296.0; }
    std::uint32_t bits() { return static_cast<std::uint32_t>(engine_()); }

private:
    std::mt19937 engine_;
};

/// A text that grows by words: each is followed by a blank, and endLine() makes of the last one a
/// line feed.
class Text {
public:
    template <std::integral Number>
    Text& word(Number number) {
        append(number);
        return blank();
    }
    Text& word(std::string_view text) {
        text_ += text;
        return blank();
    }
    Text& real(double number, int decimals) {
        append(number, std::chars_format::fixed, decimals);
        return blank();
    }
    Text& range(std::int32_t first, std::int32_t last) {
        append(first);
        if (last != first) {
            text_ += '-';
            append(last);
        }
        return blank();
    }
    Text& hex(std::uint32_t number) {
        append(number, 16);
        return blank();
    }
    Text& endLine() {
        text_.back() = '\n';
        return *this;
    }
    Text& line(std::string_view text) { return word(text).endLine(); }

    [[nodiscard]] std::string& string() { return text_; }

private:
    template <class... Arguments>
    void append(Arguments... arguments) {
        std::array<char, 64> digits;
        const auto end =
            std::to_chars(digits.data(), digits.data() + digits.size(), arguments...).ptr;
        text_.append(digits.data(), end);
    }
    Text& blank() {
        text_ += ' ';
        return *this;
    }

    std::string text_;
};

}  // namespace bench
