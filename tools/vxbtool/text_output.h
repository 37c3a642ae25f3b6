#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace vxbtool {

/// Text on its way to a file, in large blocks. What cannot be written is an exception.
class TextOutput {
public:
    explicit TextOutput(std::FILE* file) : file_(file) {}

    void put(std::string_view text) {
        buffer_.append(text.data(), text.data() + text.size());
        flushLarge();
    }
    template <class... Values>
    void format(fmt::format_string<Values...> form, Values&&... values) {
        fmt::format_to(fmt::appender(buffer_), form, std::forward<Values>(values)...);
        flushLarge();
    }
    /// Writes what is left; to be called at the end.
    void finish();

private:
    void flushLarge() {
        constexpr std::size_t large = std::size_t{1} << 16U;
        if (buffer_.size() >= large) {
            flush();
        }
    }
    void flush();

    std::FILE* file_;
    fmt::memory_buffer buffer_;
};

}  // namespace vxbtool
