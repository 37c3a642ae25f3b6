#include "vxbtool/text_output.h"

#include <cerrno>
#include <system_error>

namespace vxbtool {
namespace {

[[noreturn]] void failed() {
    throw std::system_error(errno, std::generic_category(), "the output cannot be written");
}

}  // namespace

void TextOutput::flush() {
    if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size()) {
        failed();
    }
    buffer_.clear();
}

void TextOutput::finish() {
    flush();
    if (std::fflush(file_) != 0) {
        failed();
    }
}

}  // namespace vxbtool
