#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace mqf2vxb {

/// The bytes of one file, read in one gulp. Views into it stay good when it is moved or copied.
class FileContents {
public:
    /// So many NUL characters follow the text: a scan may look ahead that far, and one that no NUL
    /// passes has to look for no end.
    static constexpr std::size_t padding = 8;

    FileContents() = default;
    /// Room for `size` bytes, to be filled through data().
    explicit FileContents(std::size_t size)
        : FileContents(std::make_shared_for_overwrite<char[]>(size + padding), size) {}
    /// The same in memory that others share; `padding` more bytes are there.
    FileContents(std::shared_ptr<char[]> bytes, std::size_t size) : bytes_(std::move(bytes)) {
        shrink(size);
    }

    [[nodiscard]] char* data() { return bytes_.get(); }
    [[nodiscard]] std::string_view text() const {
        static constexpr std::array<char, padding> nothing{};
        return {bytes_ ? bytes_.get() : nothing.data(), size_};
    }
    /// Keeps the first `size` bytes.
    void shrink(std::size_t size) {
        size_ = size;
        std::fill_n(bytes_.get() + size, padding, '\0');
    }

private:
    std::shared_ptr<char[]> bytes_;
    std::size_t size_ = 0;
};

}  // namespace mqf2vxb
