#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include <fmt/core.h>

namespace vxbtool {

/// Text on its way to a file, in large blocks. What cannot be written is an exception.
class TextOutput {
public:
    explicit TextOutput(std::FILE* file) : file_(file) {}

    void put(std::string_view text);
    template <class... Values>
    void format(fmt::format_string<Values...> form, Values&&... values) {
        formatAll(form, fmt::make_format_args(values...));
    }
    /// Writes what is left; to be called at the end.
    void finish();

private:
    void formatAll(fmt::string_view form, fmt::format_args values);
    void flushLarge();
    void flush();

    std::FILE* file_;
    std::string buffer_;
};

/// Prints a whole text on standard output. What cannot be written is an exception.
void printText(std::string_view text);

/// Prints a text for people on standard error, with its last line's end and without control characters.
void printError(std::string_view text);

}  // namespace vxbtool
