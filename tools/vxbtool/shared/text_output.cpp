#include "vxbtool/shared/text_output.h"

#include <cerrno>
#include <iterator>
#include <system_error>

#include "vxbtool/shared/printable.h"

namespace vxbtool {
namespace {

[[noreturn]] void cannotBeWritten() {
    throw std::system_error(errno, std::generic_category(), "the output cannot be written");
}

}  // namespace

void TextOutput::put(std::string_view text) {
    buffer_.append(text);
    flushLarge();
}

void TextOutput::formatAll(fmt::string_view form, fmt::format_args values) {
    fmt::vformat_to(std::back_inserter(buffer_), form, values);
    flushLarge();
}

void TextOutput::flushLarge() {
    constexpr std::size_t large = std::size_t{1} << 16U;
    if (buffer_.size() >= large) {
        flush();
    }
}

void TextOutput::flush() {
    if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size()) {
        cannotBeWritten();
    }
    buffer_.clear();
}

void TextOutput::finish() {
    flush();
    if (std::fflush(file_) != 0) {
        cannotBeWritten();
    }
}

void printText(std::string_view text) {
    TextOutput output(stdout);
    output.put(text);
    output.finish();
}

void printError(std::string_view text) { fmt::print(stderr, "{}\n", printableLines(text)); }

}  // namespace vxbtool
